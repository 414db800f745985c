#include "csv_writer.h"

#include "fatal.h"

namespace rowcopy {

void CsvWriter::add(const Field& field) {
  if (row_begun_) text_ += dialect_.delimiter;
  row_begun_ = true;
  if (field.null) return;
  const char* const end = field.text.data() + field.text.size();
  if (field.text.empty() || field.text == dialect_.null_word ||
      specials_.find(field.text.data(), end) != end) {
    add_quoted(field.text);
  } else {
    text_ += field.text;
  }
}

void CsvWriter::add_quoted(std::string_view text) {
  if (!dialect_.quote) throw Fatal("a field of the text needs quotes, and there are none to be");
  const char quote = *dialect_.quote;
  text_ += quote;
  for (const char c : text) {
    if (c == quote) text_ += c;
    text_ += c;
  }
  text_ += quote;
}

void CsvWriter::end_row() {
  text_ += '\n';
  row_begun_ = false;
}

}  // namespace rowcopy
