// Layout files: which columns of a CSV file are copied, in which order, as which datatypes.
//
//   ; a comment, at the start of a line
//   [birdstrikes]                         a section for each file
//   speed = int                           an entry for each column: name = type
//   cost = int : "Cost Total $"           the column's heading, where it is no identifier
//   weight = float/char(24)               read as the first type, converted to the second
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "datatype.h"

namespace rowcopy {

struct Column {
  std::string name;
  std::string heading;  // in the first row of the CSV file
  Datatype read_as;     // what the text is read as
  Datatype type;        // what the record holds
  std::size_t line;     // in the layout file
};

struct Layout {
  std::string path;
  std::string section;
  std::vector<Column> columns;  // at least one
};

// Reads the section `wanted` of the file; without a name the section called as the CSV file is
// (directory and suffix left out), or the only one there is. Throws Fatal for a file that cannot be
// read, a line that is neither header nor entry, an unknown type, a name given twice, a section
// that is missing or empty.
Layout read_layout(const std::string& path, const std::string& wanted, const std::string& csv_path);

}  // namespace rowcopy
