// Layout files: which columns of a CSV file are copied, in which order, as which datatypes. They
// are configuration files of the library (comnlib/config.h), read through its store.
//
//   ; a comment, at the start of a line
//   [birdstrikes]                         a section for each file
//   speed = int                           an entry for each column: name = type
//   cost = money : "Cost Total $"         the column's heading, where it is no identifier
//   rate = float : #3                     the third column
//   weight = float/char(24)               read as the first type, converted to the second
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "datatype.h"

namespace rowcopy {

struct Column {
  std::string name;
  std::string heading;  // in the first row of the CSV file, or "#" and the column's number
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
// (directory and suffixes left out), or section_name() of it, or the only one there is. As in every
// configuration file, sections of one name are one section and the last entry of a name counts. The
// context must have no configuration, and has none afterwards. Throws Fatal for a file that cannot
// be read or has an error, which the library reports on standard error first, an unknown type, a
// section that is missing or empty.
Layout read_layout(CS_CONTEXT* context, const std::string& path, const std::string& wanted,
                   const std::string& csv_path);

// The name of a section for a CSV file of any name: its own, made an identifier.
std::string section_name(const std::string& csv_path);

// A text as an identifier: "_" for every byte that no identifier has, and an "x" before it where it
// does not begin with a letter.
std::string identifier(std::string_view text);

}  // namespace rowcopy
