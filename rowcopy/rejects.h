// The rows that were not copied, as CSV: line, column, code and reason of the first fault, and the
// row as it is in the file.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "csv_writer.h"

namespace rowcopy {

struct Reject {
  std::size_t line;
  std::string column;  // empty: the row as a whole
  std::string code;
  std::string reason;
  std::string_view row;
};

// Writes the rows that have one or more entries in `rejects` to `writer`, in the order of their
// lines.
void write_rejects(std::vector<Reject>& rejects, CsvWriter& writer);

// The heading of the file.
void write_reject_heading(CsvWriter& writer);

}  // namespace rowcopy
