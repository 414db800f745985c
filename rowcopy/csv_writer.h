// Makes rows of CSV: LF after each row, quotes only where a field needs them. A null is an empty
// field, an empty text a quoted one, so that reading the text again tells them apart.
#pragma once

#include <string>

#include "csv_reader.h"
#include "special.h"

namespace rowcopy {

class CsvWriter {
 public:
  explicit CsvWriter(const Dialect& dialect) : dialect_(dialect), specials_(dialect) {}

  // After the field's text kSpecialSlack bytes may be read. A field that needs quotes in a dialect
  // without them is a Fatal.
  void add(const Field& field);
  void end_row();

  // The rows made since the last clear().
  const std::string& text() const { return text_; }
  void clear() { text_.clear(); }

 private:
  void add_quoted(std::string_view text);

  Dialect dialect_;
  Specials specials_;
  std::string text_;
  bool row_begun_ = false;
};

}  // namespace rowcopy
