#!/usr/bin/env bash
# Each installed header compiles alone, as C11 and as C++, without a warning; a host of the other
# kind gets one sentence.
#   headers_test.sh CC CXX INCLUDE_DIR TARGET
set -euo pipefail
cc=$1 cxx=$2 include=$3 target=$4
declare -A option=([i386]=-m32 [x86_64]=-m64) bits=([i386]=32 [x86_64]=64)
other=i386
[ "$target" = i386 ] && other=x86_64

# compile OPTION HEADER COMPILER...
compile() {
  printf '#include <%s>\nextern int not_empty;\n' "$2" |
    "${@:3}" "$1" -fsyntax-only -Wall -Wextra -Wpedantic -Werror -I"$include" - 2>&1
}

mapfile -t headers < <(cd "$include" && find . -name '*.h' -printf '%P\n' | sort)
[ ${#headers[@]} -gt 1 ] || { echo "no headers in $include"; exit 1; }
status=0
for header in "${headers[@]}"; do
  for compiler in "$cc -x c -std=c11" "$cxx -x c++ -std=c++11" "$cxx -x c++ -std=c++20"; do
    # The names of compiler and standard are words of their own.
    # shellcheck disable=SC2086
    compile "${option[$target]}" "$header" $compiler ||
      { echo "FAILED: $header with $compiler"; status=1; }
  done
done

sentence="comnlib: this package is for ${bits[$target]}-bit hosts; compile with ${option[$target]} or \
install the $other library"
errors=$(compile "${option[$other]}" comnlib.h "$cc" -x c -std=c11 | grep 'error:' || true)
[ "$(wc -l <<<"$errors")" = 1 ] && grep -qF "$sentence" <<<"$errors" ||
  { printf 'FAILED: a host of the other kind reads:\n%s\n' "$errors"; status=1; }
echo "${#headers[@]} headers"
exit $status
