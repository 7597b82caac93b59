#!/usr/bin/env bash
# Soak test: the application (offscreen) against the radar server simulator, while the
# simulator is restarted again and again with each fault it can inject, in turn, and
# then without. Fails when the application dies, when its resident memory grows more
# than 5 % beyond its settled level (medians of each minute's samples, five a second:
# in a soak of three minutes or more, the second minute's; in a shorter one, the
# first's),
# or when the radar link is not back to Working within 3 s after a fault ends (the
# clean simulator listens again).
#
# The application writes no log and takes no options, so the radar state is read from
# orvex-radar-observer: it connects alongside the application with the same radar
# client and the same reconnect delay, and sees the same data. That the application is
# back on the link too is read from the simulator's count of connected clients.
#
# Usage: scripts/soak.sh SECONDS [BUILD_DIR]      (BUILD_DIR defaults to build/)
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
duration="${1:?usage: scripts/soak.sh SECONDS [BUILD_DIR]}"
build="${2:-$root/build}"

fault_seconds=6        # how long each fault lasts
clean_seconds=4        # how long the link runs clean after recovering
recovery_limit_ms=3000 # back to Working this soon after a fault ends
faults=("--busy-acks 20" "--error-ack 7" "--no-acks" "--garbage-every 2" "--silence-after 1"
        "--ignore-pings" "")   # the last: a plain restart, killed without a goodbye

"$root/scripts/ensure-deps.sh"
[ -f "$build/CMakeCache.txt" ] || cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$build" -j2 --target orvex-road-app-gui orvex-radar-sim orvex-radar-observer \
    orvex-translations >/dev/null
app="$build/bin/orvex-road-app-gui"
sim="$build/bin/orvex-radar-sim"
observer="$build/bin/orvex-radar-observer"

work="$(mktemp -d)"
app_pid="" sim_pid="" observer_pid=""
cleanup() {
    for pid in $observer_pid $app_pid $sim_pid; do
        kill "$pid" 2>/dev/null || true
        wait "$pid" 2>/dev/null || true
    done
    [ -n "${SOAK_KEEP:-}" ] && echo "soak: logs kept in $work" || rm -rf "$work"
}
trap cleanup EXIT

now_ms() { date +%s%3N; }
fail() {
    echo "soak: FAILED: $*" >&2
    echo "--- observer (last lines)" >&2; tail -n 15 "$work/observer.log" >&2 || true
    echo "--- simulator (last lines)" >&2; tail -n 15 "$work/sim.log" >&2 || true
    exit 1
}

# Starts the simulator with the given fault options and waits until it listens.
sim_run=0
start_sim() {
    sim_run=$((sim_run + 1))
    echo "=== run $sim_run: ${*:-clean}" >>"$work/sim.log"
    # shellcheck disable=SC2068
    "$sim" --port "$port" --road "$work/road.json" --seed "$sim_run" $@ \
        >"$work/sim.out" 2>>"$work/sim.log" &
    sim_pid=$!
    for _ in $(seq 100); do
        grep -q "listening on" "$work/sim.out" 2>/dev/null && return 0
        kill -0 "$sim_pid" 2>/dev/null || break
        sleep 0.05
    done
    fail "the simulator did not start (${*:-clean})"
}
stop_sim() {
    kill "-$1" "$sim_pid" 2>/dev/null || true
    wait "$sim_pid" 2>/dev/null || true
    sim_pid=""
}
clients_now() {
    # The simulator's last count of connected clients in this run.
    sed -n "/^=== run $sim_run:/,\$p" "$work/sim.log" | grep -o '([0-9]* now)' | tail -n 1 \
        | tr -dc '0-9'
}

# A free port, found by the simulator itself; every restart then takes the same one.
cp "$root/demo/demo-settings.json" "$work/road.json"
"$sim" --port 0 --quiet >"$work/sim.out" 2>/dev/null &
probe=$!
for _ in $(seq 100); do grep -q "listening on" "$work/sim.out" && break; sleep 0.05; done
port="$(grep -o ':[0-9]*/' "$work/sim.out" | tr -dc '0-9')"
kill "$probe"; wait "$probe" 2>/dev/null || true
[ -n "$port" ] || fail "no free port"
sed "s#ws://127.0.0.1:7578/#ws://127.0.0.1:$port/#" "$root/demo/demo-settings.json" \
    >"$work/.orvex-road-app-gui_config.json"

start_sim
# The start is timed from before the programs are launched: the observer may connect
# before the shell gets round to reading the clock.
start_ms=$(now_ms)
# The allocator runs as it does for the operator. (With glibc's threshold for separate
# mappings fixed at 128 kB, resident memory crept up by about 100 kB a minute for as long
# as the soak ran, from heap fragmentation; with its own adaptive threshold it settles
# within the first two minutes and stays flat.)
(cd "$work" && QT_QPA_PLATFORM=offscreen exec "$app") \
    >"$work/app.log" 2>&1 &
app_pid=$!
"$observer" --url "ws://127.0.0.1:$port/" --poll-ms 1000 >"$work/observer.log" 2>&1 &
observer_pid=$!

# Memory is judged by the median of each minute's samples: the application takes and
# gives back a picture's worth (2 MB) now and then, which a single sample would see
# as growth; a leak raises the whole minute. The first minute is the warm-up where the
# soak is long enough to leave it out: the history fills, the views keep their
# pictures, the allocator settles, and RSS steps by a picture or two at moments that
# vary from run to run (a trace of one run: 41.8 MB at 10 s, 43.7 MB from 20 s, 45.0 MB
# from 80 s on, with dips back), so a first-minute baseline flagged growth by chance.
baseline_minute=1
((duration >= 180)) && baseline_minute=2
baseline_kb=0 worst_kb=0 first_kb=0 last_kb=0 peak_kb=0 samples=0 minute=0
minute_samples=()
worst_recovery_ms=0 cycles=0
median() { printf '%s\n' "$@" | sort -n | awk '{v[NR] = $1} END {print v[int((NR + 1) / 2)]}'; }
judge_minute() {
    ((${#minute_samples[@]})) || return 0
    local m
    m=$(median "${minute_samples[@]}")
    minute_samples=()
    minute=$((minute + 1))
    echo "soak: minute $minute: resident memory median $m kB" >>"$work/memory.log"
    ((minute < baseline_minute)) && return 0
    if ((minute == baseline_minute)); then
        baseline_kb=$m
        return 0
    fi
    ((m > worst_kb)) && worst_kb=$m
    ((m * 100 > baseline_kb * 105)) \
        && fail "resident memory: minute $minute's median ${m} kB is more than 5 % above minute ${baseline_minute}'s ${baseline_kb} kB"
    return 0
}
# Called often: the application must be alive, and its memory within bounds.
check_app() {
    if ! kill -0 "$app_pid" 2>/dev/null; then
        wait "$app_pid" && status=0 || status=$?
        tail -n 20 "$work/app.log" >&2
        fail "the application died (exit status $status)"
    fi
    local kb
    kb=$(awk '/^VmRSS:/ {print $2}' "/proc/$app_pid/status" 2>/dev/null || echo 0)
    [ -n "$kb" ] && [ "$kb" -gt 0 ] || return 0
    samples=$((samples + 1)); last_kb=$kb
    echo "$(($(now_ms) - start_ms)) $kb" >>"$work/rss.log"
    ((first_kb == 0)) && first_kb=$kb
    ((kb > peak_kb)) && peak_kb=$kb
    (($(now_ms) - start_ms >= (minute + 1) * 60000)) && judge_minute
    minute_samples+=("$kb")
    return 0
}
hold() { # seconds
    local until=$(($(now_ms) + $1 * 1000))
    while (($(now_ms) < until)); do check_app; sleep 0.2; done
}

# The link first comes up like after any fault.
wait_recovered() { # since_ms, what
    local since=$1
    while :; do
        check_app
        local t working
        # Working: the state last printed is 2, and the link came up again since and
        # has carried enough messages for that state to be current.
        working=$(awk -v s="$since" '
            $2 == "state" { state = $3 }
            $1 >= s && $2 == "connected" { fresh = 0; up = 1 }
            $1 >= s && $2 == "receiving" && up { fresh = 1 }
            $1 >= s && fresh && state == 2 { print $1; exit }' "$work/observer.log")
        if [ -n "$working" ] && [ "$(clients_now)" = "2" ]; then
            t=$((working - since))
            ((t > worst_recovery_ms)) && worst_recovery_ms=$t
            echo "soak: $(( ($(now_ms) - start_ms) / 1000 )) s: ${2}: Working again after $t ms"
            return 0
        fi
        (($(now_ms) - since > recovery_limit_ms)) \
            && fail "${2}: not Working with both clients within ${recovery_limit_ms} ms (clients: $(clients_now))"
        sleep 0.05
    done
}
wait_recovered "$start_ms" "start"

while (($(now_ms) - start_ms < duration * 1000)); do
    for fault in "${faults[@]}"; do
        stop_sim TERM
        start_sim $fault
        echo "$(($(now_ms) - start_ms)) ${fault:-plain restart}" >>"$work/phases.log"
        hold "$fault_seconds"
        if [ -z "$fault" ]; then stop_sim KILL; else stop_sim TERM; fi
        start_sim
        wait_recovered "$(now_ms)" "after ${fault:-a plain restart}"
        cycles=$((cycles + 1))
        hold "$clean_seconds"
        (($(now_ms) - start_ms < duration * 1000)) || break
    done
done

check_app
# A last part of a minute counts when it is at least half a minute long.
((${#minute_samples[@]} >= 150)) && judge_minute
growth="n/a"
((worst_kb > 0)) && growth=$(awk -v w="$worst_kb" -v b="$baseline_kb" 'BEGIN {printf "%+.1f %%", (w - b) * 100 / b}')
echo "soak: $(( ($(now_ms) - start_ms) / 1000 )) s, $cycles fault cycles, worst recovery ${worst_recovery_ms} ms"
echo "soak: resident memory: ${first_kb} kB at start; per-minute median ${baseline_kb} kB in minute ${baseline_minute}, at most ${worst_kb} kB after it (${growth}); highest sample ${peak_kb} kB, ${last_kb} kB at the end; $samples samples"
echo "soak: the application never died; OK"
