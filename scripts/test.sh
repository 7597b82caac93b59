#!/usr/bin/env bash
# Installs what is missing, builds, and runs the whole test suite (headless).
# With --sanitize the same suites are built with AddressSanitizer and
# UndefinedBehaviorSanitizer in build-asan/.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/ensure-deps.sh

if [ "${1:-}" = "--sanitize" ]; then
    dir=build-asan
    args=(-DCMAKE_BUILD_TYPE=Debug -DORVEX_SANITIZE=ON -DORVEX_BUILD_BENCH=OFF)
else
    dir=build
    args=(-DCMAKE_BUILD_TYPE=RelWithDebInfo)
fi
cmake -S . -B "$dir" "${args[@]}" >/dev/null
cmake --build "$dir" -j2
cd "$dir"
QT_QPA_PLATFORM=offscreen ctest -j2 --output-on-failure
