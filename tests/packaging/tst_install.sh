#!/usr/bin/env bash
# Installs the build into a temporary prefix, checks the layout the program relies on
# (catalogues in "translations" beside the real executable), validates the desktop entry
# and the AppStream metadata, and starts the installed program the way the desktop menu
# does: it must run in the user's own folder, read the settings file there and connect
# to the server that file names (the installed simulator).
set -euo pipefail
build=$1 source=$2 app_id=$3 private=$4 bindir=$5 datadir=$6

for tool in desktop-file-validate appstreamcli; do
    if ! command -v "$tool" >/dev/null; then
        echo "SKIP: $tool is not installed"
        exit 77
    fi
done

tmp=$(mktemp -d)
pids=()
cleanup() {
    for pid in "${pids[@]}"; do kill "$pid" 2>/dev/null || true; done
    wait 2>/dev/null || true
    rm -rf "$tmp"
}
trap cleanup EXIT
fail() { echo "FAIL: $*" >&2; exit 1; }
# Polls a condition every 0.1 s for at most the given seconds.
await() {
    local seconds=$1; shift
    for ((i = 0; i < seconds * 10; i++)); do
        if "$@"; then return 0; fi
        sleep 0.1
    done
    return 1
}

prefix=$tmp/prefix
cmake --install "$build" --prefix "$prefix" >/dev/null

programs=(orvex-road-app orvex-road-app-gui orvex-radar-sim orvex-radar-inspect)
for program in "${programs[@]}"; do
    [ -x "$prefix/$private/$program" ] || fail "$private/$program is not installed"
    link=$prefix/$bindir/$program
    [ -L "$link" ] || fail "$bindir/$program is not a link"
    case "$(readlink "$link")" in /*) fail "$bindir/$program is an absolute link" ;; esac
    [ "$(readlink -f "$link")" = "$(readlink -f "$prefix/$private/$program")" ] ||
        fail "$bindir/$program does not lead to $private/$program"
done
for catalogue in "$source"/translations/*.ts; do
    qm=$(basename "${catalogue%.ts}").qm
    [ -s "$prefix/$private/translations/$qm" ] || fail "$qm is not beside the program"
done

desktop=$prefix/$datadir/applications/$app_id.desktop
[ -f "$desktop" ] || fail "no desktop entry $app_id.desktop"
report=$(desktop-file-validate "$desktop" 2>&1) || fail "desktop-file-validate: $report"
[ -z "$report" ] || fail "desktop-file-validate: $report"
exec_name=$(sed -n 's/^Exec=\([^ ]*\).*/\1/p' "$desktop")
[ -x "$prefix/$bindir/$exec_name" ] || fail "the desktop entry starts $exec_name, not on the PATH"
icon=$(sed -n 's/^Icon=//p' "$desktop")
[ -s "$prefix/$datadir/icons/hicolor/scalable/apps/$icon.svg" ] || fail "no icon $icon.svg"

metainfo=$prefix/$datadir/metainfo/$app_id.metainfo.xml
[ -f "$metainfo" ] || fail "no AppStream metadata $app_id.metainfo.xml"
# Offline: the screenshots' addresses are not fetched.
report=$(appstreamcli validate --no-net "$metainfo" 2>&1) || fail "appstreamcli: $report"
for image in $(sed -n 's|.*<image>.*/\([^/]*\.png\)</image>.*|\1|p' "$metainfo"); do
    [ -s "$source/docs/$image" ] || fail "the metadata shows docs/$image, which does not exist"
done

"$prefix/$bindir/orvex-radar-sim" --port 0 >"$tmp/sim.out" 2>"$tmp/sim.err" &
pids+=($!)
await 20 grep -q 'listening on' "$tmp/sim.out" || fail "the installed simulator did not start"
url=$(sed -n 's/.*listening on \(ws:[^ ]*\).*/\1/p' "$tmp/sim.out")

home=$tmp/home
workdir=$home/.local/share/orvex-road-app
mkdir -p "$workdir"
sed "s|ws://127.0.0.1:7578/|$url|" "$source/demo/demo-settings.json" \
    >"$workdir/.orvex-road-app-gui_config.json"
env -C "$tmp" -u XDG_DATA_HOME HOME="$home" "$prefix/$bindir/$exec_name" &
gui=$!
pids+=($gui)
await 30 grep -q 'client .* connected' "$tmp/sim.err" ||
    fail "the installed program did not connect to $url named in its settings file"
kill -0 "$gui" 2>/dev/null || fail "the installed program stopped"
[ "$(readlink "/proc/$gui/cwd")" = "$workdir" ] || fail "the program does not run in $workdir"
echo "installed into $prefix, program connected to $url"
