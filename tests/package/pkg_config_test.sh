#!/usr/bin/env bash
# A C11 host builds against the installed pkg-config file, shared and static, and runs.
#   pkg_config_test.sh PKG_CONFIG LIB_DIR SCRATCH_DIR CC FLAG...
set -euo pipefail
pkg_config=$1 lib_dir=$2 scratch=$3
compile=("${@:4}" -std=c11 -Wall -Wextra -Wpedantic -Werror)
source=$(dirname "$0")/host/host.c
export PKG_CONFIG_PATH=$lib_dir/pkgconfig

read -ra cflags < <("$pkg_config" --cflags comnlib)
read -ra shared < <("$pkg_config" --libs comnlib)
read -ra static < <("$pkg_config" --libs --static comnlib)
"${compile[@]}" "${cflags[@]}" "$source" -o "$scratch/pc_shared" "${shared[@]}"
LD_LIBRARY_PATH=$lib_dir "$scratch/pc_shared"

# The archive beside the shared object has to be asked for by its name.
"${compile[@]}" "${cflags[@]}" "$source" -o "$scratch/pc_static" "${static[@]/#-lcomnlib/-l:libcomnlib.a}"
"$scratch/pc_static"
