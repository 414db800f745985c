#!/usr/bin/env bash
# Both libraries below one prefix: hosts of both kinds find their own, by CMake and by pkg-config,
# among one set of headers.
#   side_by_side_test.sh BUILD_I386 BUILD_X86_64
set -euo pipefail
host=$(cd "$(dirname "$0")/host" && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
prefix="$scratch/one prefix"
for build in "$1" "$2"; do
  cmake --install "$build" --prefix "$prefix" >/dev/null
  mkdir -p "$scratch/headers"
  cp -r "$prefix/include" "$scratch/headers/$(basename "$build")"
done
# The second one brings nothing but its mark.
[ "$(diff -rq "$scratch/headers"/* | wc -l)" = 1 ]

for kind in 32:i386 64:x86_64; do
  bits=${kind%:*} target=${kind#*:}
  cmake -S "$host" -B "$scratch/$target" -DCMAKE_C_FLAGS="-m$bits" -DCMAKE_CXX_FLAGS="-m$bits" \
    -DCMAKE_PREFIX_PATH="$prefix" >"$scratch/log" || { cat "$scratch/log"; exit 1; }
  if grep 'comnlib: this package is for' "$scratch/log"; then exit 1; fi
  cmake --build "$scratch/$target" --parallel "$(nproc)"
  (cd "$scratch/$target" && ctest --output-on-failure --no-tests=error)
  readelf -h "$scratch/$target/host_comnlib" | grep "ELF$bits"

  flags=$(PKG_CONFIG_PATH="$prefix/lib/$target-linux-gnu/pkgconfig" pkg-config --cflags --libs comnlib)
  # The prefix has a blank, which pkg-config quotes for a shell.
  eval "cc -std=c11 '$host/host.c' -o '$scratch/pc' $flags"
  LD_LIBRARY_PATH="$prefix/lib/$target-linux-gnu" "$scratch/pc"
  readelf -h "$scratch/pc" | grep "ELF$bits"
done
