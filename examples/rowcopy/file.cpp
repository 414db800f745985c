#include "file.h"

#include <cerrno>
#include <cstring>
#include <utility>

#include "fatal.h"

namespace rowcopy {

File::File(std::string path, Mode mode)
    : path_(std::move(path)),
      stream_(std::fopen(path_.c_str(), mode == Mode::kRead ? "rb" : "wb")) {
  if (!stream_) fail("open");
  // All callers move large blocks.
  std::setvbuf(stream_.get(), nullptr, _IONBF, 0);
}

std::size_t File::read(std::span<char> bytes) {
  const std::size_t count = std::fread(bytes.data(), 1, bytes.size(), stream_.get());
  if (count < bytes.size() && std::ferror(stream_.get()) != 0) fail("read");
  return count;
}

void File::write(std::span<const char> bytes) {
  if (std::fwrite(bytes.data(), 1, bytes.size(), stream_.get()) != bytes.size()) fail("write");
}

void File::close() {
  if (std::fclose(stream_.release()) != 0) fail("write");
}

void File::fail(const char* action) const {
  const int error = errno;
  throw Fatal(std::string("cannot ") + action + " " + path_ + ": " + std::strerror(error));
}

}  // namespace rowcopy
