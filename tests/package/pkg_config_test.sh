#!/usr/bin/env bash
# A C11 host and a C++20 host build against the installed pkg-config file, shared and static, and
# run.
#   pkg_config_test.sh PKG_CONFIG LIB_DIR SCRATCH_DIR CC CXX FLAG...
set -euo pipefail
pkg_config=$1 lib_dir=$2 scratch=$3 cc=$4 cxx=$5
flags=("${@:6}" -Wall -Wextra -Wpedantic -Werror)
source=$(dirname "$0")/host
export PKG_CONFIG_PATH=$lib_dir/pkgconfig

read -ra cflags < <("$pkg_config" --cflags comnlib)
read -ra shared < <("$pkg_config" --libs comnlib)
read -ra static < <("$pkg_config" --libs --static comnlib)
[ -f "$("$pkg_config" --variable=homedir comnlib)/locales/locales.dat" ]

host() {
  local source_file=${*: -1}
  "$@" "${flags[@]}" "${cflags[@]}" -o "$scratch/pc_shared" "${shared[@]}"
  LD_LIBRARY_PATH=$lib_dir "$scratch/pc_shared"

  # The archive beside the shared object has to be asked for by its name.
  "$@" "${flags[@]}" "${cflags[@]}" -o "$scratch/pc_static" "${static[@]/#-lcomnlib/-l:libcomnlib.a}"
  if [[ $source_file != */home.c ]]; then "$scratch/pc_static"; fi
}
host "$cc" -std=c11 "$source/host.c"
host "$cxx" -std=c++20 "$source/host.cpp"

# The library finds its home in a tree that was moved, and a program that it is part of in its own.
unset TALVEN
host "$cc" -std=c11 "$source/home.c" >/dev/null
prefix=$(realpath "$("$pkg_config" --variable=homedir comnlib)/../../..")
moved=$scratch/moved
library=$(realpath --relative-to "$prefix" "$lib_dir")
rm -rf "$moved"
cp -r "$prefix" "$moved"
mkdir -p "$moved/bin"
cp "$scratch/pc_static" "$moved/bin/host"
found=$(realpath "$moved")/share/comnlib/home/locales/locales.dat
[ "$(LD_LIBRARY_PATH=$moved/$library "$scratch/pc_shared")" = "$found" ]
[ "$("$moved/bin/host")" = "$found" ]
[ "$(cd / && exec -a host "$moved/bin/host")" = "$found" ]
rm -r "$moved/share/comnlib/home"
if LD_LIBRARY_PATH=$moved/$library "$scratch/pc_shared"; then
  echo "a home was found where there is none"
  exit 1
fi
