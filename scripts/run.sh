#!/usr/bin/env bash
# Installs what is missing, builds, and runs the operator's application.
# The settings file is read from and written to the current directory.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
"$root/scripts/ensure-deps.sh"
cmake -S "$root" -B "$root/build" -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$root/build" -j2 --target orvex-road-app-gui orvex-translations

app="$root/build/bin/orvex-road-app-gui"
if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ]; then
    if command -v xvfb-run >/dev/null; then
        echo "No display: running under xvfb-run."
        exec xvfb-run -a -s "-screen 0 1600x1000x24" "$app"
    fi
    echo "No display found (DISPLAY is not set). Start this from a desktop session." >&2
    exit 1
fi
exec "$app"
