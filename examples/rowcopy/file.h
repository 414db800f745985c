// A binary file that is closed with its owner; every failure is a Fatal that names the path.
#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>
#include <span>
#include <string>

namespace rowcopy {

class File {
 public:
  enum class Mode { kRead, kWrite };

  // Writing creates or empties the file.
  File(std::string path, Mode mode);

  // Reads up to bytes.size() bytes; fewer only at the end of the file.
  std::size_t read(std::span<char> bytes);
  void write(std::span<const char> bytes);
  // Closes a written file; the data have reached the system when it returns.
  void close();

  const std::string& path() const { return path_; }

 private:
  struct Closer {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
  };

  [[noreturn]] void fail(const char* action) const;

  std::string path_;
  std::unique_ptr<std::FILE, Closer> stream_;
};

}  // namespace rowcopy
