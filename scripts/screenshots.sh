#!/usr/bin/env bash
# Takes the README's screenshots from the real program: the simulator and the application
# run under Xvfb, in a temporary working directory holding a copy of the demo settings,
# and the windows are driven with xdotool as an operator would. The PNGs go to docs/.
#
#   scripts/screenshots.sh [--display N]      (default :97)
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
display=97
if [ "${1:-}" = "--display" ]; then display=$2; fi

tools=(Xvfb:xvfb xdotool:xdotool import:imagemagick optipng:optipng)
missing=()
for entry in "${tools[@]}"; do
    command -v "${entry%%:*}" >/dev/null || missing+=("${entry#*:}")
done
if ((${#missing[@]})); then
    sudo=""
    [ "$(id -u)" -ne 0 ] && sudo=sudo
    $sudo apt-get update -qq
    DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
"$root/scripts/ensure-deps.sh"
cmake -S "$root" -B "$root/build" -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$root/build" -j2 --target orvex-road-app-gui orvex-radar-sim orvex-translations

docs=$root/docs
mkdir -p "$docs"
work=$(mktemp -d)
pids=()
stop() {
    for ((i = ${#pids[@]} - 1; i >= 0; i--)); do kill "${pids[i]}" 2>/dev/null || true; done
    wait 2>/dev/null || true
    pids=()
}
trap 'stop; rm -rf "$work"' EXIT

export DISPLAY=:$display
# Large enough to lay every window side by side, so that none hides another.
Xvfb "$DISPLAY" -screen 0 2600x1700x24 -nolisten tcp >/dev/null 2>&1 &
pids+=($!)
for _ in $(seq 100); do xdotool getdisplaygeometry >/dev/null 2>&1 && break; sleep 0.1; done

# The simulator drives its vehicles on the demo road; the same seed gives the same traffic.
"$root/build/bin/orvex-radar-sim" --port 0 --seed 7 --vehicles 14 \
    --road "$root/demo/demo-settings.json" >"$work/sim.out" 2>/dev/null &
sim=$!
for _ in $(seq 100); do grep -q 'listening on' "$work/sim.out" && break; sleep 0.1; done
url=$(sed -n 's/.*listening on \(ws:[^ ]*\).*/\1/p' "$work/sim.out")

# A camera beside the radar that sees the road, for the projection.
camera='"tvms_config": {"horizontal_view_angle": 50, "altitude_misalignment": 15, "azimuth_misalignment": 12}'

# Starts the application on a copy of the demo settings changed by the given Perl
# substitutions; sets `app` to its process and `main` to its main window.
start_app() {
    local settings=$work/.orvex-road-app-gui_config.json
    perl -0pe "s|ws://127.0.0.1:7578/|$url|; s|\"tvms_config\": \\{\\}|$camera|; $1" \
        "$root/demo/demo-settings.json" >"$settings"
    (cd "$work" && LC_ALL=C LANG=C exec "$root/build/bin/orvex-road-app-gui") >/dev/null 2>&1 &
    app=$!
    main=$(window '^Dunvel Orvex Road App')
}
visible() { echo "s/(\"$1\": \\{\\s*\"visible\": )false/\${1}true/;"; }
window() { xdotool search --sync --name "$1" | head -1; }
shot() { import -window "$1" "$docs/$2"; }
# The menus are opened by their mnemonics, as from the keyboard.
keys() {
    xdotool windowfocus --sync "$1"
    shift
    for key in "$@"; do
        xdotool key "$key"
        sleep 0.3
    done
}

# 1. Horizontal scheme with the objects table; the road editor.
start_app "$(visible 2)"
xdotool windowsize "$main" 1600 1100
sleep 12
shot "$main" main-window-horizontal.png
keys "$main" alt+v t t
editor=$(window '^Traffic scheme customization')
xdotool windowmove "$editor" 1400 0
sleep 1
shot "$editor" road-editor.png
kill "$app"; wait "$app" 2>/dev/null || true

# 2. Vertical scheme with the objects history and the projection to video open.
start_app "s/\"draw_vertical\": false/\"draw_vertical\": true/; $(visible 12) $(visible 13)"
history=$(window '^Objects history')
video=$(window '^Projecting to video')
xdotool windowmove "$history" 1400 0
xdotool windowmove "$video" 0 860
xdotool windowsize "$video" 1280 720
# The command panels while the values the radar sent at start-up are marked as received.
sleep 3
shot "$main" panels-full.png
sleep 9
shot "$main" main-window-vertical.png
shot "$history" history.png
shot "$video" projection.png

# The pick-up of the radar's position: four checkpoints clicked on the lane lines of the
# picture above (the road's right edge at Y -8.5 m and the next lane border at -5 m),
# each with the Y the operator knows for it; the dialog of the last one.
keys "$main" alt+d p p
keys "$(window '^Picking up parameters')" Return
marks=("604 640 -8.5" "785 330 -8.5" "296 640 -5" "645 330 -5")
for ((i = 0; i < ${#marks[@]}; i++)); do
    read -r x y value <<<"${marks[i]}"
    xdotool mousemove --window "$video" "$x" "$y" click 1
    dialog=$(xdotool search --sync --name '^Checkpoint position' | tail -1)
    keys "$dialog" ctrl+a
    xdotool type -- "$value"
    if ((i == ${#marks[@]} - 1)); then
        import -window root -crop 1280x720+0+860 +repage "$docs/pickup.png"
    fi
    keys "$dialog" Return
done
report=$(window '^Picked parameters')
sleep 0.5
xdotool windowfocus --sync "$report"
xdotool key Return
kill "$app"; wait "$app" 2>/dev/null || true

# The panels: the right part of the window, beside the scheme.
convert "$docs/panels-full.png" -gravity east -crop 61%x100%+0+0 +repage "$docs/panels.png"
rm -f "$docs/panels-full.png"
kill "$sim"
optipng -quiet -o2 "$docs"/*.png
ls -l "$docs"/*.png
