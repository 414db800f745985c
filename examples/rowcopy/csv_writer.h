// Writes rows of CSV: LF between rows, quotes only where a field needs them. A null is an empty
// field, an empty text a quoted one, so that reading the file again tells them apart.
#pragma once

#include <string>

#include "csv_reader.h"
#include "file.h"

namespace rowcopy {

class CsvWriter {
 public:
  explicit CsvWriter(const std::string& path) : file_(path, File::Mode::kWrite) {}

  // Behind the field's text kSpecialSlack bytes may be read.
  void add(const Field& field);
  void end_row();
  void close();

 private:
  void add_quoted(std::string_view text);

  File file_;
  std::string text_;
  bool row_begun_ = false;
};

}  // namespace rowcopy
