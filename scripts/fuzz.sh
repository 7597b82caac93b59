#!/usr/bin/env bash
# Builds the libFuzzer targets (clang, AddressSanitizer and UndefinedBehaviorSanitizer)
# in build-fuzz/ and runs each for a bounded time on its committed corpus. New inputs
# go to a scratch corpus (build-fuzz/corpus/<target>), crash inputs to
# build-fuzz/artifacts/. Fails when a target finds a crash, a leak or a hang.
#
# Usage: scripts/fuzz.sh [SECONDS_PER_TARGET] [TARGET...]   (default 60, all targets)
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
seconds="${1:-60}"
shift || true
targets=("$@")
((${#targets[@]})) || targets=(client_receive settings road)

ORVEX_FUZZ_DEPS=1 "$root/scripts/ensure-deps.sh"
build="$root/build-fuzz"
cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER=clang++-14 \
    -DORVEX_FUZZ=ON -DORVEX_BUILD_TESTS=OFF -DORVEX_BUILD_BENCH=OFF >/dev/null
cmake --build "$build" -j2 --target "${targets[@]/#/fuzz_}"

export QT_QPA_PLATFORM=offscreen
export LSAN_OPTIONS="suppressions=$root/tests/lsan.supp"
mkdir -p "$build/artifacts"
for target in "${targets[@]}"; do
    scratch="$build/corpus/$target"
    mkdir -p "$scratch"
    echo "=== fuzz_$target: $seconds s"
    # Leaks are looked for after each input of the receive path. The widget targets
    # leave them to the sanitizer builds of the suites: Qt's fonts and painting keep
    # caches for the life of the process that look like leaks, per input and at exit.
    leaks=1
    [ "$target" = client_receive ] || leaks=0
    export ASAN_OPTIONS="fast_unwind_on_malloc=1:detect_leaks=$leaks"
    # The committed crash inputs first (they must pass), then fuzzing from the seeds.
    "$build/bin/fuzz_$target" -runs=0 "$root/fuzz/regressions/$target" 2>&1 | tail -n 1
    "$build/bin/fuzz_$target" -max_total_time="$seconds" -timeout=20 -rss_limit_mb=3072 \
        -detect_leaks="$leaks" \
        -dict="$build/fuzz/$target.dict" -artifact_prefix="$build/artifacts/$target-" \
        -print_final_stats=1 "$scratch" "$root/fuzz/corpus/$target" >"$build/fuzz-$target.log" 2>&1 \
        || { tail -n 60 "$build/fuzz-$target.log"; echo "fuzz_$target FAILED" >&2; exit 1; }
    grep -E "^#[0-9]+ +DONE|stat::number_of_executed_units|stat::peak_rss_mb" \
        "$build/fuzz-$target.log" || true
done
