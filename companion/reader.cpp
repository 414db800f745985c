// The sectioned reader. The file is read whole, so its lines have any length and nothing is
// allocated while it is walked; each piece handed out is cut from the text in place.
#include "reader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <new>

#include "comnlib/memory.h"

namespace comnlib::companion {
namespace {

constexpr bool is_blank(char c) {
  return c == ' ' || c == '\t';
}

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

// Cuts [begin, end) free of its blanks and ends it with a NUL, which may take *end's place.
const char* cut(char* begin, char* end) {
  begin = skip_blanks(begin, end);
  *trim_end(begin, end) = '\0';
  return begin;
}

class Descriptor {
 public:
  explicit Descriptor(const char* path) : number_(::open(path, O_RDONLY | O_CLOEXEC)) {}
  ~Descriptor() {
    if (number_ >= 0) ::close(number_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int number() const { return number_; }

 private:
  int number_;
};

// Reads up to `room` bytes, fewer only at the end of the file; a negative status on failure.
ssize_t read_up_to(int file, char* to, std::size_t room) {
  std::size_t held = 0;
  while (held < room) {
    const ssize_t got = ::read(file, to + held, room - held);
    if (got == 0) break;
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return system_status();
    held += static_cast<std::size_t>(got);
  }
  return static_cast<ssize_t>(held);
}

constexpr std::size_t kHead = sizeof(SectionedText);
constexpr std::size_t kMaxText = INT32_MAX - kHead - 1;

// What a file's text is given at first: a byte more than its size says, so that its end is seen.
// Files that tell no size are read into what they turn out to need.
std::size_t first_room(const struct stat& facts) {
  constexpr std::size_t kUnknown = 4096;
  const bool known = facts.st_size > 0 && static_cast<std::uint64_t>(facts.st_size) < kMaxText;
  return known ? static_cast<std::size_t>(facts.st_size) + 1 : kUnknown;
}

// Reads a file to its end, behind the head of a block that grows with it and has a byte to spare.
// Null with a negative status on failure.
char* read_whole(int file, std::size_t room, std::size_t& size, CS_INT& status) {
  auto* block = static_cast<char*>(comn_malloc(kHead + room + 1));
  for (size = 0; block != nullptr;) {
    const ssize_t got = read_up_to(file, block + kHead + size, room - size);
    if (got < 0) {
      status = static_cast<CS_INT>(got);
      comn_free(block);
      return nullptr;
    }
    size += static_cast<std::size_t>(got);
    if (size < room) return block;
    const std::size_t wider = room <= kMaxText / 2 ? room * 2 : kMaxText;
    void* moved = wider == room ? nullptr : comn_realloc(block, kHead + wider + 1);
    if (moved == nullptr) comn_free(block);
    block = static_cast<char*>(moved);
    room = wider;
  }
  status = make_status(Fault::kNoMemory);
  return nullptr;
}

}  // namespace

SectionedText::SectionedText(char* text, std::size_t size) : next_(text), end_(text + size) {}

// The next line that holds anything but blanks and is no comment, without its blanks.
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
    // The section's end: its line is left for next_section.
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

// The value closes up over its doubled quotes; the text only ever gets shorter.
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
  char* behind = skip_blanks(from + 1, value_end_);
  if (behind != value_end_ && *behind != ',') {
    value_ = nullptr;
    status = fault(Fault::kQuoteTail);
    return nullptr;
  }
  value_ = behind == value_end_ ? nullptr : behind + 1;
  *to = '\0';
  return begin;
}

SectionedText* open_sectioned(const char* path, CS_INT& status) {
  const Descriptor file(path);
  struct stat facts {};
  if (file.number() < 0 || ::fstat(file.number(), &facts) != 0) {
    status = system_status();
    return nullptr;
  }
  std::size_t size = 0;
  char* block = read_whole(file.number(), first_room(facts), size, status);
  if (block == nullptr) return nullptr;
  status = 0;
  return new (block) SectionedText(block + kHead, size);
}

void close_sectioned(SectionedText* file) {
  comn_free(file);
}

}  // namespace comnlib::companion
