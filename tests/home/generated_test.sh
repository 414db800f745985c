#!/usr/bin/env bash
# The committed localization home is what its generators write.
#   generated_test.sh SOURCES
set -euo pipefail

directory=$(mktemp -d)
trap 'rm -rf "$directory"' EXIT
# Python's Unicode tables are those of one version, which the files name.
version=$(/usr/bin/python3 -c 'import unicodedata; print(unicodedata.unidata_version)')
grep -q "Unicode $version\"" "$1/home/charsets/iso_1/charset.loc" || exit 77
/usr/bin/python3 -B "$1/tools/mkhome.py" "$directory"
diff -r "$1/home" "$directory"
