#!/usr/bin/env bash
# Every routine and table can be linked from the archive: the public ones, which the shared object
# exports, and the internal ones, a name a line.
#   names_test.sh INTERNAL_NAMES LIB_DIR
set -euo pipefail
names=$1 lib_dir=$2
export LC_ALL=C

missing=$(sort -u <(grep -v '^#' "$names" | grep .) \
  <(nm -D --defined-only "$lib_dir/libcomnlib.so" | awk '$2 != "A" { sub("@.*", "", $3); print $3 }') |
  comm -23 - <(nm -g --defined-only "$lib_dir/libcomnlib.a" | awk 'NF == 3 { print $3 }' | sort -u))
[ -z "$missing" ] || { printf 'not in the archive: %s\n' "$missing"; exit 1; }
