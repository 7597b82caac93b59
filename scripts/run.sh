#!/usr/bin/env bash
# Installs what is missing, builds, and runs the operator's application against the
# bundled radar server simulator (ws://127.0.0.1:7578/). The simulator stops when the
# application closes. The application runs in demo/, whose settings file starts as a
# copy of demo/demo-settings.json (a four-lane road with a gentle curve) and keeps what
# the operator changes; the simulator's vehicles drive on the road of that file.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
"$root/scripts/ensure-deps.sh"
cmake -S "$root" -B "$root/build" -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$root/build" -j2 --target orvex-road-app-gui orvex-radar-sim orvex-translations

app="$root/build/bin/orvex-road-app-gui"
sim="$root/build/bin/orvex-radar-sim"

display=()
if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ]; then
    if ! command -v xvfb-run >/dev/null; then
        echo "No display found (DISPLAY is not set). Start this from a desktop session." >&2
        exit 1
    fi
    echo "No display: running under xvfb-run."
    display=(xvfb-run -a -s "-screen 0 1600x1000x24")
fi

workdir="$root/demo"
settings="$workdir/.orvex-road-app-gui_config.json"
[ -f "$settings" ] || cp "$workdir/demo-settings.json" "$settings"
cd "$workdir"

"$sim" --road "$settings" "$@" &
sim_pid=$!
trap 'kill "$sim_pid" 2>/dev/null || true; wait "$sim_pid" 2>/dev/null || true' EXIT
"${display[@]}" "$app"
