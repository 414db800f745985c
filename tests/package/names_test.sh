#!/usr/bin/env bash
# Every routine and table has its name: the public ones are exported, under a version, and nothing
# else is; public and internal ones can be linked from the archive.
#   names_test.sh NAMES LIB_DIR
set -euo pipefail
names=$1 lib_dir=$2
export LC_ALL=C

group() { awk -v group="[$1]" '/^\[/ { wanted = $1 == group; next } wanted && NF' "$names" | sort; }
exported() { nm -D --defined-only --with-symbol-versions "$lib_dir/libcomnlib.so" | awk '$2 != "A" { print $3 }'; }
linkable() { nm -g --defined-only "$lib_dir/libcomnlib.a" | awk 'NF == 3 { print $3 }' | sort -u; }

is() { sed "s/$/: $1/"; }
faults=$(
  comm -23 <(group public) <(exported | sed 's/@.*//' | sort) | is 'not exported'
  comm -13 <(group public) <(exported | sed 's/@.*//' | sort) | is 'exported, and not on the list'
  sort <(group public) <(group internal) | comm -23 - <(linkable) | is 'not in the archive'
  exported | sed '/@@COMNLIB_1/d' | is 'without its version'
)
[ -z "$faults" ] || { echo "$faults"; exit 1; }
