#!/usr/bin/env bash
# The committed localization home is what its generators write, and takes less than 12 MB.
#   generated_test.sh SOURCES
set -euo pipefail

directory=$(mktemp -d)
trap 'rm -rf "$directory"' EXIT
# Python's Unicode tables are those of one version, which the files name.
version=$(/usr/bin/python3 -c 'import unicodedata; print(unicodedata.unidata_version)')
grep -q "Unicode $version\"" "$1/home/charsets/iso_1/charset.loc" || exit 77
/usr/bin/python3 -B "$1/tools/mkhome.py" "$directory"
diff -r "$1/home" "$directory"
[ "$(du -sk "$1/home" | cut -f1)" -lt 12000 ]
