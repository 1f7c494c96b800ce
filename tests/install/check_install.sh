#!/usr/bin/env bash
# usage: check_install.sh BUILD_DIR WORK_DIR CONSUMER_SOURCE CXX
set -euo pipefail
build=$1 work=$2 consumer=$3 cxx=$4
rm -rf "$work"
mkdir -p "$work"
prefix="$work/prefix"
cmake --install "$build" --prefix "$prefix" > "$work/install.log"

# find_package route.
cmake -S "$consumer" -B "$work/cmake-build" -DCMAKE_PREFIX_PATH="$prefix" \
      -DCMAKE_CXX_COMPILER="$cxx" > "$work/configure.log"
cmake --build "$work/cmake-build" > "$work/build.log"
LD_LIBRARY_PATH="$prefix/lib:${LD_LIBRARY_PATH:-}" "$work/cmake-build/consumer"

# pkg-config route, with the prefix found from the .pc file's own place.
pcdir=$(dirname "$(find "$prefix" -name digitfilt.pc | head -n 1)")
flags=$(PKG_CONFIG_PATH="$pcdir" pkg-config --cflags --libs digitfilt)
# shellcheck disable=SC2086
"$cxx" "$consumer/main.cpp" -o "$work/consumer-pc" $flags
LD_LIBRARY_PATH="$prefix/lib:${LD_LIBRARY_PATH:-}" "$work/consumer-pc"
echo "install consumer: ok"
