#include "source.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <bit>
#include <cerrno>
#include <cstring>
#include <string_view>
#include <utility>
#include <vector>

#include "charset_names.h"
#include "fatal.h"
#ifdef ROWCOPY_ZLIB
#include <zlib.h>
#endif

namespace rowcopy {
namespace {

constexpr std::size_t kBlock = 65536;

// Returns the bytes that were read ahead, then the rest.
class Peeked : public ByteStream {
 public:
  Peeked(std::string_view bytes, std::unique_ptr<ByteStream> rest)
      : bytes_(bytes), rest_(std::move(rest)) {}

  std::size_t read(std::span<char> bytes) override {
    const std::size_t count = bytes_.copy(bytes.data(), bytes.size());
    bytes_.erase(0, count);
    return count + (bytes_.empty() ? rest_->read(bytes.subspan(count)) : 0);
  }

 private:
  std::string bytes_;
  std::unique_ptr<ByteStream> rest_;
};

#ifdef ROWCOPY_ZLIB

// A gzip file of one member or several. What follows a member must be another member: no byte of
// the file is ignored.
class Unpacked : public ByteStream {
 public:
  Unpacked(std::unique_ptr<ByteStream> packed, std::string name)
      : packed_(std::move(packed)), name_(std::move(name)), input_(kBlock) {
    constexpr int kGzip = 16;
    if (inflateInit2(&state_, MAX_WBITS + kGzip) != Z_OK) throw std::bad_alloc();
  }
  ~Unpacked() override { inflateEnd(&state_); }

  std::size_t read(std::span<char> bytes) override {
    state_.next_out = reinterpret_cast<Bytef*>(bytes.data());
    state_.avail_out = static_cast<uInt>(bytes.size());
    while (state_.avail_out != 0 && (state_.avail_in != 0 || fill())) {
      member_ended_ = false;
      const int status = inflate(&state_, Z_NO_FLUSH);
      if (status == Z_STREAM_END) {
        member_ended_ = true;
        inflateReset(&state_);
      } else if (status != Z_OK) {
        throw Fatal("cannot unpack " + name_ + ": " +
                    (state_.msg == nullptr ? "not the gzip format" : state_.msg));
      }
    }
    return bytes.size() - state_.avail_out;
  }

 private:
  bool fill() {
    state_.next_in = reinterpret_cast<Bytef*>(input_.data());
    state_.avail_in = static_cast<uInt>(packed_->read(input_));
    if (state_.avail_in == 0 && !member_ended_)
      throw Fatal("cannot unpack " + name_ + ": the file ends too early");
    return state_.avail_in != 0;
  }

  std::unique_ptr<ByteStream> packed_;
  std::string name_;
  std::vector<char> input_;
  z_stream state_{};
  bool member_ended_ = false;
};

std::unique_ptr<ByteStream> unpack(std::unique_ptr<ByteStream> packed, const std::string& name) {
  return std::make_unique<Unpacked>(std::move(packed), name);
}

#else

std::unique_ptr<ByteStream> unpack(std::unique_ptr<ByteStream>, const std::string& name) {
  throw Fatal("cannot unpack " + name + ": built without zlib");
}

#endif

void append_utf8(std::string& text, std::uint32_t code) {
  const auto tail = [&](int shift) { text += static_cast<char>(0x80 | (code >> shift & 0x3F)); };
  if (code < 0x80) {
    text += static_cast<char>(code);
  } else if (code < 0x800) {
    text += static_cast<char>(0xC0 | code >> 6);
    tail(0);
  } else if (code < 0x10000) {
    text += static_cast<char>(0xE0 | code >> 12);
    tail(6);
    tail(0);
  } else {
    text += static_cast<char>(0xF0 | code >> 18);
    tail(12);
    tail(6);
    tail(0);
  }
}

// UTF-16 as UTF-8. A surrogate without its partner has no form in UTF-8.
class FromUtf16 : public ByteStream {
 public:
  FromUtf16(std::unique_ptr<ByteStream> units, std::endian order, std::string name)
      : units_(std::move(units)), order_(order), name_(std::move(name)), input_(kBlock) {}

  std::size_t read(std::span<char> bytes) override {
    std::size_t done = 0;
    for (;;) {
      const std::size_t count = text_.copy(bytes.data() + done, bytes.size() - done, taken_);
      taken_ += count;
      done += count;
      if (done == bytes.size() || !fill()) return done;
    }
  }

 private:
  bool fill() {
    text_.clear();
    taken_ = 0;
    const std::size_t count = units_->read(input_);
    if (count % 2 != 0) throw Fatal(name_ + ": ends within a character of UTF-16");
    for (std::size_t at = 0; at < count; at += 2) take_unit(unit_at(at));
    if (count == 0 && high_ != 0) fail();
    return count != 0;
  }

  std::uint32_t unit_at(std::size_t at) const {
    const std::uint32_t first = static_cast<unsigned char>(input_[at]);
    const std::uint32_t second = static_cast<unsigned char>(input_[at + 1]);
    return order_ == std::endian::little ? first | second << 8 : first << 8 | second;
  }

  void take_unit(std::uint32_t unit) {
    const bool low = unit >= 0xDC00 && unit < 0xE000;
    if (low != (high_ != 0)) fail();
    if (low) {
      append_utf8(text_, 0x10000 + (high_ - 0xD800) * 0x400 + (unit - 0xDC00));
      high_ = 0;
    } else if (unit >= 0xD800 && unit < 0xDC00) {
      high_ = unit;
    } else {
      append_utf8(text_, unit);
    }
  }

  [[noreturn]] void fail() const {
    throw Fatal(name_ + ": is not valid UTF-16 (half of a surrogate pair)");
  }

  std::unique_ptr<ByteStream> units_;
  std::endian order_;
  std::string name_;
  std::vector<char> input_;
  std::string text_;
  std::size_t taken_ = 0;   // of text_
  std::uint32_t high_ = 0;  // a high surrogate that waits for its partner
};

}  // namespace

// A file or standard input.
class Source::Descriptor : public ByteStream {
 public:
  Descriptor(const std::string& path, std::string name)
      : name_(std::move(name)),
        descriptor_(path == "-" ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
    if (descriptor_ < 0) fail("open");
  }
  ~Descriptor() override {
    if (descriptor_ != STDIN_FILENO) close(descriptor_);
  }

  std::size_t read(std::span<char> bytes) override {
    std::size_t done = 0;
    while (done < bytes.size()) {
      const ssize_t count = ::read(descriptor_, bytes.data() + done, bytes.size() - done);
      if (count < 0 && errno == EINTR) continue;
      if (count < 0) fail("read");
      if (count == 0) break;
      done += static_cast<std::size_t>(count);
    }
    taken_ += done;
    return done;
  }

  std::uint64_t taken() const { return taken_; }
  std::uint64_t size() const {
    struct stat status {};
    const bool known = fstat(descriptor_, &status) == 0 && S_ISREG(status.st_mode);
    return known ? static_cast<std::uint64_t>(status.st_size) : 0;
  }

 private:
  [[noreturn]] void fail(const char* action) const { fail_at_file(action, name_); }

  std::string name_;
  int descriptor_;
  std::uint64_t taken_ = 0;
};

Source::Source(const std::string& path, const std::string& charset)
    : name_(path == "-" ? "standard input" : path) {
  auto file = std::make_unique<Descriptor>(path, name_);
  file_ = file.get();
  size_ = file->size();
  stream_ = std::move(file);
  if (is_packed(path)) stream_ = unpack(std::move(stream_), name_);

  struct Mark {
    std::string_view bytes;
    Encoding encoding;
    std::endian order;
  };
  constexpr std::array kMarks = {Mark{"\xEF\xBB\xBF", Encoding::kUtf8, std::endian::little},
                                 Mark{"\xFF\xFE", Encoding::kUtf16, std::endian::little},
                                 Mark{"\xFE\xFF", Encoding::kUtf16, std::endian::big}};
  std::array<char, 3> bytes{};
  std::string_view begin(bytes.data(), stream_->read(bytes));
  const std::string wanted = squeeze(charset);
  std::endian order = wanted == "UTF16BE" ? std::endian::big : std::endian::little;
  if (wanted.starts_with("UTF16")) encoding_ = Encoding::kUtf16;
  for (const Mark& mark : kMarks) {
    if (!begin.starts_with(mark.bytes)) continue;
    begin.remove_prefix(mark.bytes.size());
    encoding_ = mark.encoding;
    order = mark.order;
    break;
  }
  stream_ = std::make_unique<Peeked>(begin, std::move(stream_));
  if (encoding_ == Encoding::kUtf16)
    stream_ = std::make_unique<FromUtf16>(std::move(stream_), order, name_);
}

Source::~Source() = default;

std::uint64_t Source::bytes_taken() const {
  return file_->taken();
}

bool is_packed(const std::string& path) {
  return path.ends_with(".gz");
}

}  // namespace rowcopy
