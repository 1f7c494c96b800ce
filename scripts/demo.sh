#!/usr/bin/env bash
# Builds the library and the command-line tool, then runs `digitfilt demo` on its built-in signal.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/deps.sh
cmake -S . -B build/release -DCMAKE_BUILD_TYPE=Release -DDIGITFILT_BUILD_TESTS=OFF > /dev/null
cmake --build build/release -j"$(nproc)" --target digitfilt_cli > /dev/null
./build/release/tools/digitfilt/digitfilt demo "$@"
