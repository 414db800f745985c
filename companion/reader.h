// The sectioned reader over a file held in memory, and the plain reads below it.
#pragma once

#include <cstddef>
#include <string_view>

#include "status.h"

namespace comnlib::companion {

// Walks sections, entries and values of a text, which it cuts into NUL-terminated pieces in place:
// a piece stays where it is as long as the text does.
class SectionedText {
 public:
  // One byte after the `size` bytes of `text` may be written too.
  SectionedText(char* text, std::size_t size);

  const char* next_section(CS_INT& status);
  const char* next_entry(CS_INT& status);
  const char* next_value(CS_INT& status);

 private:
  struct Line {
    char* begin;
    char* end;
  };
  bool take_line(Line& line);
  CS_INT fault(Fault kind) const { return make_status(kind, line_number_); }
  const char* quoted_value(CS_INT& status);

  char* next_;  // first byte of the line that is read next
  char* end_;
  CS_INT line_number_ = 0;  // of the line taken last
  bool in_section_ = false;
  char* value_ = nullptr;  // where the next value begins; null when there is none
  char* value_end_ = nullptr;
};

// Reads the file at `path` whole, into one block from comn_malloc with the walk over it. Status 0;
// null with a negative status on failure.
SectionedText* open_sectioned(const char* path, CS_INT& status);
void close_sectioned(SectionedText* file);

}  // namespace comnlib::companion
