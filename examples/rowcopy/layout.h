// Layout files: which columns of a CSV file are copied, in which order, as which datatypes. They
// are configuration files of the library (comnlib/config.h), read through its scanner and store.
//
//   ; a comment, at the start of a line
//   [birdstrikes]                         a section for each file
//   speed = int                           an entry for each column: name = type
//   cost = money : "Cost Total $"         the column's heading, where it is no identifier
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
  std::string place;    // of its entry: file and line
};

struct Layout {
  std::string path;
  std::string section;
  std::vector<Column> columns;  // at least one, in the order in which their names came up first
};

// Reads the section `wanted` of the file; without a name the section called as the CSV file is
// (directory and suffix left out), or the only one there is. As in every configuration file,
// sections of one name are one section and the last entry of a name counts. The context must have
// no configuration, and has none afterwards. Throws Fatal for a file that cannot be read or has an
// error, which the library reports on standard error first, an unknown type, a section that is
// missing or empty.
Layout read_layout(CS_CONTEXT* context, const std::string& path, const std::string& wanted,
                   const std::string& csv_path);

}  // namespace rowcopy
