// Moves the values of one column between text and record, every datatype through the routines of
// the context's conversion matrix, which are looked up once, with formats that are made once.
#pragma once

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "csv_reader.h"
#include "layout.h"

namespace rowcopy {

// The length of a null value in a record.
constexpr CS_INT kNull = -1;

// The locales of the text that is read and of the text that is written, whose character set is the
// records' too; null for the context's.
struct Locales {
  CS_LOCALE* from = nullptr;
  CS_LOCALE* to = nullptr;
};

// One entry of the matrix with the formats of its two sides.
class Conversion {
 public:
  Conversion() = default;
  Conversion(CS_CONTEXT* context, CS_CONV_FUNC routine, const CS_DATAFMT& source,
             const CS_DATAFMT& target)
      : context_(context), routine_(routine), source_(source), target_(target) {}

  explicit operator bool() const { return routine_ != nullptr; }

  CS_RETCODE operator()(const void* source, std::size_t size, void* target, CS_INT& length) {
    source_.maxlength = static_cast<CS_INT>(size);
    length = 0;
    return routine_(context_, &source_, source, &target_, target, &length);
  }

 private:
  CS_CONTEXT* context_ = nullptr;
  CS_CONV_FUNC routine_ = nullptr;
  CS_DATAFMT source_{};
  CS_DATAFMT target_{};
};

// Reads text as the type of a column, straight or by way of another type.
class TextReader {
 public:
  // A pair of datatypes without a routine is a Fatal. The context outlives the reader.
  TextReader(CS_CONTEXT* context, const Column& column, const Datatype& read_as, Locales locales);

  // Stores the value in `room`, which has the column type's size, and its number of bytes, or
  // kNull. CS_SUCCEED or a conversion code; the room then holds what the routine left there.
  CS_RETCODE read(const Field& field, char* room, CS_INT& length) {
    if (onward_ || field.text.empty()) return read_other(field, room, length);
    return from_text_(field.text.data(), field.text.size(), room, length);
  }

 private:
  CS_RETCODE read_other(const Field& field, char* room, CS_INT& length);
  CS_RETCODE read_text(const Field& field, char* room, CS_INT& length);

  Conversion from_null_;
  Conversion from_empty_;  // a character value has at least one byte, a varchar may be empty
  Conversion from_text_;
  Conversion onward_;  // of what the text is read as, where it is another type
  std::vector<char> intermediate_;
};

class ColumnConverter {
 public:
  ColumnConverter(CS_CONTEXT* context, const Column& column, Locales locales);

  CS_RETCODE to_record(const Field& field, char* room, CS_INT& length) {
    return reader_.read(field, room, length);
  }

  // Writes the text of a value of `length` bytes, which is not kNull, to `room`, which has the
  // type's text_size.
  CS_RETCODE to_text(const char* value, CS_INT length, char* room, CS_INT& text_length) {
    text_length = 0;
    if (length == 0) return CS_SUCCEED;  // empty data
    return to_text_(value, static_cast<std::size_t>(length), room, text_length);
  }

  // Whether a text in the character set of the records reads as that value.
  bool reads_as(const Field& field, const char* value, CS_INT length) {
    CS_INT again_length = 0;
    return rereader_.read(field, again_.data(), again_length) == CS_SUCCEED &&
           again_length == length &&
           std::memcmp(again_.data(), value, used_bytes(value, length)) == 0;
  }

 private:
  // The bytes of a stored value that count: those behind a varying value's own length do not.
  std::size_t used_bytes(const char* value, CS_INT length) const {
    if (!varying_) return static_cast<std::size_t>(length);
    CS_SMALLINT count = 0;
    std::memcpy(&count, value, sizeof count);
    return std::min(sizeof count + static_cast<CS_USHORT>(count), static_cast<std::size_t>(length));
  }

  bool varying_;
  TextReader reader_;
  TextReader rereader_;
  Conversion to_text_;
  std::vector<char> again_;
};

// The text in the character set of the records; text that does not convert without a loss is a
// Fatal.
std::string translate(CS_CONTEXT* context, const std::string& text, Locales locales);

}  // namespace rowcopy
