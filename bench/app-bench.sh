#!/usr/bin/env bash
# Whole-application benchmark: starts the radar server simulator and the operator's
# application against it, with every view that repaints per frame open (traffic scheme,
# current objects table, objects history window, video projection overlay), lets them
# warm up, then samples the application's CPU time and resident memory and prints them.
#
# The application runs in a temporary working directory with a copy of the demo
# settings (demo/demo-settings.json) changed only where the measurement needs it: its
# own server port, the objects table, history and projection windows shown, every
# overlay layer on, and a camera 6.5 m up on the right roadside, tilted 3 degrees down
# with a 60 degree view, so that the projection has a picture to draw from the camera's
# own offsets (the radar's position is not asked for: automatic data reading is off, so
# every run sees the same picture). Under Xvfb (when installed) the main window is sized to the screen;
# otherwise the offscreen platform is used and the windows keep their own sizes.
#
# Usage: bench/app-bench.sh [--rate HZ] [--vehicles N] [--seconds S] [--warmup S]
#                           [--display xvfb|offscreen|:N] [--size WxH] [--port P]
#                           [--build DIR] [--keep] [--screenshot FILE]
#   --rate      radar cycles per second sent by the simulator (default 200)
#   --vehicles  vehicles on the road at once, at most 60 (default 60)
#   --seconds   length of the sampling window (default 20)
#   --warmup    seconds before sampling starts (default 8)
#   --display   xvfb (a private Xvfb, the default when Xvfb is installed), offscreen,
#               or an X display that is already running
#   --size      main window size under X (default 1600x1000)
#   --port      simulator port (default 7661)
#   --build     build directory holding bin/ (default build/ beside this folder)
#   --keep      keep the temporary working directory and print its path
#   --screenshot  under X, save the screen as this PNG at the end of the sampling
set -euo pipefail

root="$(cd "$(dirname "$0")/.." && pwd)"
rate=200
vehicles=60
seconds=20
warmup=8
display=""
size=1600x1000
port=7661
build="$root/build"
keep=0
screenshot=""

while [ $# -gt 0 ]; do
    case "$1" in
    --rate) rate="$2"; shift 2 ;;
    --vehicles) vehicles="$2"; shift 2 ;;
    --seconds) seconds="$2"; shift 2 ;;
    --warmup) warmup="$2"; shift 2 ;;
    --display) display="$2"; shift 2 ;;
    --size) size="$2"; shift 2 ;;
    --port) port="$2"; shift 2 ;;
    --build) build="$(cd "$2" && pwd)"; shift 2 ;;
    --keep) keep=1; shift ;;
    --screenshot) screenshot="$(realpath -m "$2")"; shift 2 ;;
    -h | --help) sed -n '2,/^set -euo/p' "$0" | sed '$d; s/^# \{0,1\}//'; exit 0 ;;
    *) echo "app-bench: unknown option $1 (see --help)" >&2; exit 2 ;;
    esac
done

app="$build/bin/orvex-road-app-gui"
sim="$build/bin/orvex-radar-sim"
for program in "$app" "$sim"; do
    if [ ! -x "$program" ]; then
        echo "app-bench: $program is missing; build the targets orvex-road-app-gui and" \
            "orvex-radar-sim first" >&2
        exit 1
    fi
done
for tool in jq; do
    command -v "$tool" >/dev/null || { echo "app-bench: $tool is needed" >&2; exit 1; }
done
if [ -z "$display" ]; then
    if command -v Xvfb >/dev/null; then display=xvfb; else display=offscreen; fi
fi

work="$(mktemp -d "${TMPDIR:-/tmp}/orvex-app-bench.XXXXXX")"
pids=()
cleanup() {
    # Only what this script started, newest first.
    for ((i = ${#pids[@]} - 1; i >= 0; i--)); do
        kill "${pids[i]}" 2>/dev/null || true
        wait "${pids[i]}" 2>/dev/null || true
    done
    if [ "$keep" = 1 ]; then echo "working directory kept: $work"; else rm -rf "$work"; fi
}
trap cleanup EXIT

# The demo settings with the views of a busy operator's desk.
settings="$work/.orvex-road-app-gui_config.json"
jq --arg url "ws://127.0.0.1:$port/" '
    .profiles[.current_id].connection.radar_server_url = $url
  | .profiles[.current_id].view.controls["2"].visible = true
  | .profiles[.current_id].view.controls["12"].visible = true
  | .profiles[.current_id].view.controls["13"].visible = true
  | .profiles[.current_id].view.traffic_scheme.show_current_tracks = true
  | .profiles[.current_id].view.traffic_scheme.show_average_tracks = true
  | .profiles[.current_id].view.monitoring_system.show_lane_boundaries = true
  | .profiles[.current_id].view.monitoring_system.show_distance_lines = true
  | .profiles[.current_id].view.monitoring_system.show_current_tracks = true
  | .profiles[.current_id].view.monitoring_system.show_average_tracks = true
  | .profiles[.current_id].view.monitoring_system.tvms_config
        = {"z_offset": 6.5, "y_offset": -12, "altitude_misalignment": 3,
           "horizontal_view_angle": 60}
  | .profiles[.current_id].data.auto_get_data = false
' "$root/demo/demo-settings.json" >"$settings"

env_app=()
case "$display" in
xvfb)
    width="${size%x*}"
    height="${size#*x}"
    number=61
    while [ -e "/tmp/.X11-unix/X$number" ] || [ -e "/tmp/.X$number-lock" ]; do
        number=$((number + 1))
    done
    Xvfb ":$number" -screen 0 "${width}x${height}x24" -nolisten tcp >"$work/xvfb.log" 2>&1 &
    pids+=($!)
    for _ in $(seq 50); do
        [ -e "/tmp/.X11-unix/X$number" ] && break
        sleep 0.1
    done
    display=":$number"
    env_app=(DISPLAY="$display" QT_QPA_PLATFORM=xcb)
    ;;
offscreen) env_app=(QT_QPA_PLATFORM=offscreen) ;;
*) env_app=(DISPLAY="$display" QT_QPA_PLATFORM=xcb) ;;
esac

"$sim" --port "$port" --rate "$rate" --vehicles "$vehicles" --road "$settings" --seed 1 \
    --quiet >"$work/sim.log" 2>&1 &
sim_pid=$!
pids+=("$sim_pid")
for _ in $(seq 50); do
    [ -s "$work/sim.log" ] && break
    sleep 0.1
done

(cd "$work" && exec env "${env_app[@]}" "$app") >"$work/app.log" 2>&1 &
app_pid=$!
pids+=("$app_pid")
echo "application pid $app_pid, simulator pid $sim_pid (port $port)" >&2

# Under X: size the main window (the first top-level window titled after the program).
window_note="windows at their own sizes"
if [ "$display" != offscreen ] && command -v xdotool >/dev/null; then
    for _ in $(seq 100); do
        main_window="$(DISPLAY="$display" xdotool search --sync --limit 1 --onlyvisible \
            --pid "$app_pid" --name 'Orvex Road App' 2>/dev/null | head -n 1 || true)"
        [ -n "$main_window" ] && break
        sleep 0.1
    done
    if [ -n "${main_window:-}" ]; then
        DISPLAY="$display" xdotool windowmove "$main_window" 0 0 windowsize "$main_window" \
            "${size%x*}" "${size#*x}"
        window_note="main window ${size}"
    fi
    window_note="$window_note; $(DISPLAY="$display" xdotool search --onlyvisible --pid \
        "$app_pid" --name '.' 2>/dev/null | while read -r w; do
            DISPLAY="$display" xdotool getwindowname "$w" | sed 's/ — .*//' | tr -d '\n'
            DISPLAY="$display" xwininfo -id "$w" | awk '/Width:/ {w=$2} /Height:/ {h=$2}
                END {printf " %sx%s, ", w, h}'
        done | sed 's/, $//')"
fi

sleep "$warmup"
if ! kill -0 "$app_pid" 2>/dev/null; then
    echo "app-bench: the application ended early:" >&2
    cat "$work/app.log" >&2
    exit 1
fi

ticks="$(getconf CLK_TCK)"
cpu_ticks() { awk '{print $14 + $15}' "/proc/$1/stat"; }
rss_kb() { awk '/^VmRSS:/ {print $2}' "/proc/$1/status"; }

app_start="$(cpu_ticks "$app_pid")"
sim_start="$(cpu_ticks "$sim_pid")"
clock_start="$(date +%s.%N)"
rss_samples="$work/rss"
: >"$rss_samples"
end="$(awk -v s="$clock_start" -v d="$seconds" 'BEGIN {printf "%.3f", s + d}')"
while awk -v now="$(date +%s.%N)" -v end="$end" 'BEGIN {exit !(now < end)}'; do
    rss_kb "$app_pid" >>"$rss_samples"
    sleep 0.5
done
app_end="$(cpu_ticks "$app_pid")"
sim_end="$(cpu_ticks "$sim_pid")"
clock_end="$(date +%s.%N)"
if [ -n "$screenshot" ] && [ "$display" != offscreen ] && command -v import >/dev/null; then
    DISPLAY="$display" import -window root "$screenshot"
fi

wall="$(awk -v a="$clock_start" -v b="$clock_end" 'BEGIN {print b - a}')"
percent() { awk -v t="$1" -v hz="$ticks" -v w="$wall" 'BEGIN {printf "%.1f", 100 * t / hz / w}'; }
rss_figures="$(sort -n "$rss_samples" | awk '{v[NR] = $1} END {
    printf "median %.1f MB, max %.1f MB over %d samples", v[int((NR + 1) / 2)] / 1024,
        v[NR] / 1024, NR}')"

echo "application with ${vehicles} vehicles at ${rate} radar cycles a second," \
    "display ${display} (${window_note})"
printf "application CPU: %s %% of one core over %.1f s after %s s warm-up\n" \
    "$(percent $((app_end - app_start)))" "$wall" "$warmup"
echo "application resident memory: $rss_figures"
echo "simulator CPU: $(percent $((sim_end - sim_start))) % of one core"
