#!/usr/bin/env bash
# Each installed header compiles alone, as C11 and as C++, without a warning.
#   headers_test.sh CC CXX INCLUDE_DIR
set -euo pipefail
cc=$1 cxx=$2 include=$3

mapfile -t headers < <(cd "$include" && find . -name '*.h' -printf '%P\n' | sort)
[ ${#headers[@]} -gt 1 ] || { echo "no headers in $include"; exit 1; }
status=0
for header in "${headers[@]}"; do
  for compiler in "$cc -x c -std=c11" "$cxx -x c++ -std=c++11" "$cxx -x c++ -std=c++20"; do
    # The names of compiler and standard are words of their own.
    # shellcheck disable=SC2086
    printf '#include <%s>\n' "$header" | $compiler -m32 -msse2 -fsyntax-only -Wall -Wextra -Wpedantic \
      -Werror -I"$include" - || { echo "FAILED: $header with $compiler"; status=1; }
  done
done
echo "${#headers[@]} headers"
exit $status
