#include "csv_writer.h"

namespace rowcopy {

void CsvWriter::add(Field field) {
  if (row_begun_) row_ += ',';
  row_begun_ = true;
  if (field.null) return;
  if (!field.text.empty() && field.text.find_first_of(",\"\r\n") == field.text.npos) {
    row_ += field.text;
    return;
  }
  row_ += '"';
  for (const char c : field.text) {
    if (c == '"') row_ += c;
    row_ += c;
  }
  row_ += '"';
}

void CsvWriter::end_row() {
  row_ += '\n';
  file_.write(row_);
  row_.clear();
  row_begun_ = false;
}

}  // namespace rowcopy
