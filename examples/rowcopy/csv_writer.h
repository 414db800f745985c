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

  void add(Field field);
  void end_row();
  void close() { file_.close(); }

 private:
  File file_;
  std::string row_;
  bool row_begun_ = false;
};

}  // namespace rowcopy
