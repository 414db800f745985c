#!/usr/bin/env bash
# The installed rowcopy finds its library and its home from where it is, and copies.
#   installed_rowcopy_test.sh PREFIX BIN_DIR DATA_DIR
set -euo pipefail
prefix=$1 bin=$2 data=$3
unset TALVEN TALVEN_NUV LD_LIBRARY_PATH "${!LC_@}"
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cp -r "$prefix" "$scratch/moved"
cd "$scratch"

# A locale that no other home has.
echo 'locale = moved, german, utf8' >>"moved/$data/comnlib/home/locales/locales.dat"
printf '[prices]\nname = char(8)\nprice = numeric(6,2)\nsold = smalldatetime\n' >prices.layout
printf 'name,price,sold\nwing,12.5,Nov 21 2026 7:05PM\n"a ""b""",-0.07,\n' >prices.csv
LANG=moved "moved/$bin/rowcopy" --locale-dates --text text prices.layout prices.csv records
diff - text <<'END'
name,price,sold
wing,12.50,21 Nov 2026  7:05PM
"a ""b""",-0.07,
END
