# Reads the debug information of a file that includes the public headers, as readelf prints it, and
# prints every constant, typedef and record of those headers, with the offsets of the fields.
/^ The Directory Table/ { table = "folders" }
/^ The File Name Table/ { table = "files" }
/^  [0-9]+\t/ && table == "folders" { folder[$1] = $NF }
/^  [0-9]+\t/ && table == "files" { folder_of[$1] = folder[$2] }

/^ <[0-9a-f]+><[0-9a-f]+>: .*DW_TAG_/ {
  split($1, part, /[<>]+/)
  id = part[3]
  ids[++count] = id
  depth[id] = part[2]
  open_at[part[2]] = id
  parent[id] = open_at[part[2] - 1]
  tag[id] = substr($NF, 9, length($NF) - 9)
}
/^    <[0-9a-f]+> +DW_AT_/ {
  value = $0
  sub(/^[^:]*: (\(indirect[^)]*\): )?/, "", value)
  gsub(/^<0x|>$|[ \t]+$/, "", value)
  attribute = substr($2, 7)
  sub(/:$/, "", attribute)
  has[id, attribute] = value
}

function spelled(id,    of) {
  if (id == "") return "void"
  if ((id, "name") in has) return has[id, "name"]
  of = has[id, "type"]
  if (tag[id] == "pointer_type") return spelled(of) "*"
  if (tag[id] == "const_type") return spelled(of) " const"
  if (tag[id] == "array_type") return spelled(of) bounds[id]
  if (tag[id] == "subroutine_type") return spelled(of) "(" parameters[id] ")"
  return tag[id]
}

END {
  for (i = 1; i <= count; ++i) {
    id = ids[i]
    of = parent[id]
    if (tag[id] == "subrange_type") bounds[of] = bounds[of] "[" has[id, "upper_bound"] + 1 "]"
    if (tag[id] == "formal_parameter")
      parameters[of] = parameters[of] (parameters[of] == "" ? "" : ", ") spelled(has[id, "type"])
  }
  for (i = 1; i <= count; ++i) {
    id = ids[i]
    # System headers are known by their whole path.
    if (depth[id] == 1) is_public = folder_of[has[id, "decl_file"]] ~ /^[^\/]/
    if (!is_public) continue
    if (tag[id] == "enumerator") print has[id, "name"] " = " has[id, "const_value"]
    if (tag[id] == "typedef") print "typedef " has[id, "name"] " = " spelled(has[id, "type"])
    if (tag[id] ~ /^(structure|union)_type$/ && (id, "byte_size") in has)
      print spelled(id) ": " has[id, "byte_size"] " bytes"
    if (tag[id] == "member")
      print "  +" has[id, "data_member_location"] " " has[id, "name"] ": " spelled(has[id, "type"])
  }
}
