// The sectioned reader. The file is read whole, so its lines have any length and nothing is
// allocated while it is walked; each piece handed out is cut from the text in place.
#include "reader.h"

#include <unistd.h>

#include <cstring>
#include <new>
#include <utility>

#include "chars/ascii.h"
#include "comnlib/memory.h"
#include "file.h"
#include "runtime/hostmemory.h"

namespace comnlib::companion {
namespace {

char* skip_blanks(char* begin, const char* end) {
  while (begin != end && is_blank(*begin)) ++begin;
  return begin;
}

char* trim_end(char* begin, char* end) {
  while (end != begin && is_blank(end[-1])) --end;
  return end;
}

char* find(char* begin, char* end, char wanted) {
  auto* found =
      static_cast<char*>(std::memchr(begin, wanted, static_cast<std::size_t>(end - begin)));
  return found == nullptr ? end : found;
}

// Trims the blanks around [begin, end) and ends the text with a NUL, which may overwrite *end.
const char* cut(char* begin, char* end) {
  begin = skip_blanks(begin, end);
  *trim_end(begin, end) = '\0';
  return begin;
}

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() {
    if (number_ >= 0) ::close(number_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int number() const { return number_; }

 private:
  int number_;
};

constexpr std::size_t kHead = sizeof(SectionedText);

// The memory block of a file: a SectionedText, the file's text, and one byte more.
class Block {
 public:
  ~Block() { release(bytes_); }
  Block() = default;
  Block(const Block&) = delete;
  Block& operator=(const Block&) = delete;

  // Gives the text `room` bytes; false, with all as it was, when memory is out.
  bool resize(std::size_t room) {
    const std::size_t size = kHead + room + 1;
    void* moved = bytes_ == nullptr ? comn_malloc(size) : comn_realloc(bytes_, size);
    if (moved != nullptr) bytes_ = static_cast<char*>(moved);
    return moved != nullptr;
  }
  char* text() const { return bytes_ + kHead; }
  char* hand_over() { return std::exchange(bytes_, nullptr); }

 private:
  char* bytes_ = nullptr;
};

// Reads a file whose size is known. It asks for one byte more, so that it sees the file's end.
CS_INT read_sized(int file, Block& block, std::size_t size) {
  if (!block.resize(size + 1)) return make_status(Fault::kNoMemory);
  const CS_INT got = read_up_to(file, block.text(), size + 1);
  return got < 0 || static_cast<std::size_t>(got) == size ? got : make_status(Fault::kSizeChanged);
}

// Reads a file that is made while it is read.
CS_INT read_unsized(int file, Block& block) {
  std::size_t held = 0;
  for (std::size_t room = 4096; held <= kMaxFile; room *= 2) {
    if (!block.resize(room)) return make_status(Fault::kNoMemory);
    const CS_INT got = read_up_to(file, block.text() + held, room - held);
    if (got < 0) return got;
    held += static_cast<std::size_t>(got);
    if (held < room) return static_cast<CS_INT>(held);
  }
  return make_status(Fault::kTooLarge);
}

}  // namespace

SectionedText::SectionedText(char* text, std::size_t size) : next_(text), end_(text + size) {}

// The next line that is neither blank nor a comment, without its blanks.
bool SectionedText::take_line(Line& line) {
  value_ = nullptr;
  while (next_ != end_) {
    ++line_number_;
    char* end = find(next_, end_, '\n');
    line = {skip_blanks(next_, end), end};
    next_ = end == end_ ? end_ : end + 1;
    if (line.end != line.begin && line.end[-1] == '\r') --line.end;
    line.end = trim_end(line.begin, line.end);
    if (line.begin != line.end && *line.begin != ';') return true;
  }
  return false;
}

const char* SectionedText::next_section(CS_INT& status) {
  status = 0;
  in_section_ = false;
  Line line{};
  do {
    if (!take_line(line)) return nullptr;
  } while (*line.begin != '[');

  char* close = find(line.begin, line.end, ']');
  if (close == line.end) {
    status = fault(Fault::kSectionOpen);
  } else if (close + 1 != line.end) {
    status = fault(Fault::kSectionTail);
  } else if (find(line.begin, close, '\0') != close) {
    status = fault(Fault::kNulByte);
  }
  if (status != 0) return nullptr;
  in_section_ = true;
  return cut(line.begin + 1, close);
}

const char* SectionedText::next_entry(CS_INT& status) {
  status = 0;
  if (!in_section_) return nullptr;
  char* const line_start = next_;
  const CS_INT number = line_number_;
  Line line{};
  if (!take_line(line)) return nullptr;
  if (*line.begin == '[') {
    // The end of the section. next_section will read this line.
    next_ = line_start;
    line_number_ = number;
    return nullptr;
  }
  char* equals = find(line.begin, line.end, '=');
  if (equals == line.end) {
    status = fault(Fault::kNoEquals);
  } else if (equals == line.begin) {
    status = fault(Fault::kNoKey);
  } else if (find(line.begin, line.end, '\0') != line.end) {
    status = fault(Fault::kNulByte);
  }
  if (status != 0) return nullptr;
  value_ = equals + 1;
  value_end_ = line.end;
  return cut(line.begin, equals);
}

const char* SectionedText::next_value(CS_INT& status) {
  status = 0;
  if (value_ == nullptr) return nullptr;
  value_ = skip_blanks(value_, value_end_);
  if (value_ != value_end_ && *value_ == '"') return quoted_value(status);
  char* begin = value_;
  char* comma = find(begin, value_end_, ',');
  value_ = comma == value_end_ ? nullptr : comma + 1;
  return cut(begin, comma);
}

// Each doubled quote becomes one in place, so the text only gets shorter.
const char* SectionedText::quoted_value(CS_INT& status) {
  char* const begin = ++value_;
  char* to = begin;
  char* from = begin;
  for (;; ++from) {
    if (from == value_end_) {
      value_ = nullptr;
      status = fault(Fault::kQuoteOpen);
      return nullptr;
    }
    if (*from == '"') {
      if (from + 1 == value_end_ || from[1] != '"') break;
      ++from;
    }
    *to++ = *from;
  }
  char* after = skip_blanks(from + 1, value_end_);
  if (after != value_end_ && *after != ',') {
    value_ = nullptr;
    status = fault(Fault::kQuoteTail);
    return nullptr;
  }
  value_ = after == value_end_ ? nullptr : after + 1;
  *to = '\0';
  return begin;
}

SectionedText* open_sectioned(const char* path, CS_INT& status) {
  std::size_t size = 0;
  status = open_file(path, size);
  if (status < 0) return nullptr;
  const Descriptor file(status);
  Block block;
  status = size == 0 ? read_unsized(file.number(), block) : read_sized(file.number(), block, size);
  if (status < 0) return nullptr;
  char* const text = block.text();
  const auto length = static_cast<std::size_t>(std::exchange(status, 0));
  return new (block.hand_over()) SectionedText(text, length);
}

void close_sectioned(SectionedText* file) {
  comn_free(file);
}

}  // namespace comnlib::companion
