// Moves the values of one column between text and record, every datatype through the routines of
// the context's conversion matrix.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "comnlib.h"
#include "csv_reader.h"
#include "layout.h"
#include "text_value.h"

namespace rowcopy {

// The host's context, with the default conversions and null values.
class Context {
 public:
  Context();
  ~Context();
  Context(const Context&) = delete;
  Context& operator=(const Context&) = delete;

  CS_CONTEXT* get() { return &context_; }

 private:
  void release();

  CS_CONTEXT context_{};
};

class ColumnConverter {
 public:
  // Looks the routines up; a pair without one is a Fatal. The context and the layout's path must
  // outlive the constructor, the context the converter too.
  ColumnConverter(Context& context, const Column& column, const std::string& layout_path);

  // Converts the text to the column's type and stores it in `room`, which has the type's size and
  // is zero behind the value. `length` becomes the number of bytes stored, or kNull.
  // CS_SUCCEED or a conversion code; the room then holds what the routine left there.
  CS_RETCODE to_record(Field field, std::span<char> room, CS_INT& length);

  // Replaces `text` by the text of a value as to_record stored it. CS_SUCCEED or a conversion code.
  CS_RETCODE to_text(std::span<const char> value, std::string& text);

  static constexpr CS_INT kNull = -1;

 private:
  CS_RETCODE convert(CS_CONV_FUNC routine, const CS_DATAFMT& source_format, const void* source,
                     CS_INT code, std::span<char> room, CS_INT& length);
  CS_RETCODE read(std::string_view text, const Datatype& type, std::span<char> room,
                  CS_INT& length);

  CS_CONTEXT* context_;
  Datatype read_as_;
  Datatype type_;
  CS_CONV_FUNC from_null_ = nullptr;
  CS_CONV_FUNC from_integer_ = nullptr;  // to read_as
  CS_CONV_FUNC from_float_ = nullptr;    // to read_as
  CS_CONV_FUNC onward_ = nullptr;        // from read_as to type, where they differ
  CS_CONV_FUNC to_characters_ = nullptr;
  std::vector<char> intermediate_;  // a value of read_as
  std::vector<char> bytes_;
};

}  // namespace rowcopy
