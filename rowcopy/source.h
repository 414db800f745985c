// The bytes of a CSV file, in the order in which they are parsed: of a file or standard input,
// unpacked when the name ends in ".gz", without a byte order mark, UTF-16 as UTF-8.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace rowcopy {

// A stage of reading. Fewer bytes than asked for come only at the end; failures are Fatal.
class ByteStream {
 public:
  ByteStream() = default;
  ByteStream(const ByteStream&) = delete;
  ByteStream& operator=(const ByteStream&) = delete;
  virtual ~ByteStream() = default;
  virtual std::size_t read(std::span<char> bytes) = 0;
};

class Source {
 public:
  // The encodings that a byte order mark, or the name of the character set, can announce.
  enum class Encoding { kUnmarked, kUtf8, kUtf16 };

  // `charset` may be "UTF-16", "UTF-16LE" or "UTF-16BE" in any usual spelling; other names are
  // ignored here.
  Source(const std::string& path, const std::string& charset);
  ~Source();

  // Fewer bytes than asked for come only at the end.
  std::size_t read(std::span<char> bytes) { return stream_->read(bytes); }

  const std::string& name() const { return name_; }
  Encoding encoding() const { return encoding_; }
  // Bytes of the file, still packed: those taken so far, and all of them (0: not known).
  std::uint64_t bytes_taken() const;
  std::uint64_t size() const { return size_; }

 private:
  class Descriptor;

  std::string name_;
  Descriptor* file_ = nullptr;  // the first stage, which stream_ owns
  std::unique_ptr<ByteStream> stream_;
  Encoding encoding_ = Encoding::kUnmarked;
  std::uint64_t size_ = 0;
};

// Whether the name is that of a packed file.
bool is_packed(const std::string& path);

}  // namespace rowcopy
