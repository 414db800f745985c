#include "csv_writer.h"

#include "special.h"

namespace rowcopy {
namespace {

constexpr std::size_t kBlock = 65536;

}  // namespace

void CsvWriter::add(const Field& field) {
  if (row_begun_) text_ += ',';
  row_begun_ = true;
  if (field.null) return;
  const char* const end = field.text.data() + field.text.size();
  if (field.text.empty() || find_special(field.text.data(), end) != end) {
    add_quoted(field.text);
  } else {
    text_ += field.text;
  }
}

void CsvWriter::add_quoted(std::string_view text) {
  text_ += '"';
  for (const char c : text) {
    if (c == '"') text_ += c;
    text_ += c;
  }
  text_ += '"';
}

void CsvWriter::end_row() {
  text_ += '\n';
  row_begun_ = false;
  if (text_.size() < kBlock) return;
  file_.write(text_);
  text_.clear();
}

void CsvWriter::close() {
  file_.write(text_);
  file_.close();
}

}  // namespace rowcopy
