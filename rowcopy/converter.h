// Moves the values of one column between text and record, every datatype through the routines of
// the context's conversion matrix, and checks what became of them.
#pragma once

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "conversion.h"
#include "csv_reader.h"
#include "fidelity.h"
#include "layout.h"

namespace rowcopy {

// The length of a null value in a record.
constexpr CS_INT kNull = -1;

struct TextStyle {
  bool locale_dates = false;
  bool short_floats = false;
};

// Reads text as the type of a column, straight or by way of another type.
class TextReader {
 public:
  // A pair of datatypes without a routine is a Fatal. The context outlives the reader.
  TextReader(CS_CONTEXT* context, const Column& column, const Datatype& read_as, Locales locales);

  // Stores the value in `room`, which has the column type's size, and its number of bytes, or
  // kNull. CS_SUCCEED or a conversion code; the room then holds what the routine left there.
  // Empty text is a syntax error for types that have no empty value.
  CS_RETCODE read(const Field& field, char* room, CS_INT& length) {
    if (onward_ || field.text.empty() || field.null) return read_other(field, room, length);
    return from_text_(field.text.data(), field.text.size(), room, length);
  }

  // Of the last value: what its text was read as, before it was converted onward.
  const char* intermediate() const { return intermediate_.data(); }
  CS_INT intermediate_length() const { return intermediate_length_; }

 private:
  CS_RETCODE read_other(const Field& field, char* room, CS_INT& length);
  CS_RETCODE read_text(const Field& field, char* room, CS_INT& length);

  bool has_empty_;
  Conversion from_null_;
  Conversion from_empty_;  // a character value has at least one byte, a varchar may be empty
  Conversion from_text_;
  Conversion onward_;  // of what the text is read as, where it is another type
  std::vector<char> intermediate_;
  CS_INT intermediate_length_ = 0;
};

class ColumnConverter {
 public:
  struct Outcome {
    CS_RETCODE code;
    Verdict verdict;  // with CS_SUCCEED
  };

  ColumnConverter(CS_CONTEXT* context, const Column& column, Locales locales, TextStyle style);

  // As TextReader::read; the verdict compares the value with the field.
  Outcome to_record(const Field& field, char* room, CS_INT& length) {
    const CS_RETCODE code = reader_.read(field, room, length);
    if (code != CS_SUCCEED || length == kNull) return {code, Verdict::kSame};
    return {code,
            onward_ ? compare_onward(field, room, length) : fidelity_.compare(field, room, length)};
  }

  // Writes the text of a value of `length` bytes, which is not kNull, to `room`, which has the
  // type's text_size.
  CS_RETCODE to_text(const char* value, CS_INT length, char* room, CS_INT& text_length) {
    text_length = 0;
    if (length == 0) return CS_SUCCEED;  // empty data
    if (own_text_ && to_own_text(value, room, text_length)) return CS_SUCCEED;
    return to_text_(value, static_cast<std::size_t>(length), room, text_length);
  }

  // Whether the text that was written for a value reads as that value. `field` is what the value
  // was read from.
  bool reads_as(std::string_view text, const Field& field, const char* value, CS_INT length) {
    // The very text that was read reads as what it was read as.
    if (same_locale_ && !onward_ && text == field.text) return true;
    CS_INT again_length = 0;
    return rereader_.read({text, false}, again_.data(), again_length) == CS_SUCCEED &&
           again_length == length &&
           std::memcmp(again_.data(), value, used_bytes(value, length)) == 0;
  }

 private:
  // The bytes of a stored value that count: those after a varying value's own length do not.
  std::size_t used_bytes(const char* value, CS_INT length) const {
    if (!varying_) return static_cast<std::size_t>(length);
    CS_SMALLINT count = 0;
    std::memcpy(&count, value, sizeof count);
    return std::min(sizeof count + static_cast<CS_USHORT>(count), static_cast<std::size_t>(length));
  }

  Verdict compare_onward(const Field& field, const char* value, CS_INT length);
  bool comes_back(const Field& field, const char* value, CS_INT length);
  bool to_own_text(const char* value, char* room, CS_INT& text_length) const;

  Datatype read_as_;
  Datatype type_;
  bool onward_;
  bool varying_;
  bool same_locale_;
  bool short_floats_;
  bool own_text_;  // dates, and some floats, in a form that the library does not write
  TextReader reader_;
  TextReader rereader_;
  Fidelity fidelity_;
  Conversion to_text_;
  Conversion back_;       // to what the text was read as
  Conversion text_back_;  // the same from the value's text
  std::vector<char> again_;
  std::vector<char> came_back_;
  std::vector<char> text_;
};

// The text in the character set of the records; text that does not convert without a loss is a
// Fatal.
std::string translate(CS_CONTEXT* context, const std::string& text, Locales locales);

}  // namespace rowcopy
