# The table of docs/binary-interface.md: the fields of every record that two targets lay out
# differently, with their offsets in both.
#   awk -f tools/doc/offsets.awk generic/abi/{i386,x86_64}/comnlib.layout
BEGIN { print "| Field | i386 | x86_64 |\n|---|--:|--:|" }
NR == FNR && $1 == "typedef" && !($4 in name) { name[$4] = $2 }
/^[a-zA-Z_0-9]+: [0-9]+ bytes$/ {
  record = substr($1, 1, length($1) - 1)
  if (NR == FNR) size[record] = $2
  differs = $2 != size[record]
  if (differs) print "| **`" name[record] "`** | **" size[record] "** | **" $2 "** |"
}
/^  \+/ {
  field = substr($2, 1, length($2) - 1)
  if (NR == FNR) offset[record, field] = substr($1, 2)
  else if (differs) print "| `" field "` | " offset[record, field] " | " substr($1, 2) " |"
}
