#!/usr/bin/env bash
# Every internal routine and table, a name a line, can be linked from the archive.
#   names_test.sh INTERNAL_NAMES LIB_DIR
set -euo pipefail
names=$1 lib_dir=$2
export LC_ALL=C

missing=$(grep -v '^#' "$names" | grep . | sort -u |
  comm -23 - <(nm -g --defined-only "$lib_dir/libcomnlib.a" | awk 'NF == 3 { print $3 }' | sort -u))
[ -z "$missing" ] || { printf 'not in the archive: %s\n' "$missing"; exit 1; }
