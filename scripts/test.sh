#!/usr/bin/env bash
# Builds everything (library, tool, tests, benchmarks) and runs the whole suite twice: in the
# normal build and under AddressSanitizer + UndefinedBehaviorSanitizer.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/deps.sh
jobs=$(nproc)

cmake -S . -B build/release -DCMAKE_BUILD_TYPE=Release -DDIGITFILT_BUILD_BENCH=ON > /dev/null
cmake --build build/release -j"$jobs"
ctest --test-dir build/release -j"$jobs" --output-on-failure --label-exclude "fuzz-long|memcheck"

export ASAN_OPTIONS=halt_on_error=1:detect_leaks=1:abort_on_error=1
export UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1
cmake -S . -B build/sanitize -DCMAKE_BUILD_TYPE=Debug -DDIGITFILT_SANITIZE=ON \
      -DCMAKE_CXX_FLAGS="-O1" > /dev/null
cmake --build build/sanitize -j"$jobs"
ctest --test-dir build/sanitize -j"$jobs" --output-on-failure --label-exclude "fuzz-long|memcheck"
