#include "file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>

#include "status.h"

namespace comnlib::companion {
namespace {

CS_INT check(const struct stat& facts) {
  if (S_ISDIR(facts.st_mode)) return make_status(Fault::kSystem, EISDIR);
  if (!S_ISREG(facts.st_mode)) return make_status(Fault::kNotRegular);
  return facts.st_size > std::int64_t{kMaxFile} ? make_status(Fault::kTooLarge) : 0;
}

}  // namespace

int open_file(const char* path, std::size_t& size) {
  const int file = ::open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (file < 0) return system_status();
  struct stat facts {};
  const CS_INT status = ::fstat(file, &facts) == 0 ? check(facts) : system_status();
  if (status < 0) {
    ::close(file);
    return status;
  }
  size = static_cast<std::size_t>(facts.st_size);
  return file;
}

CS_INT read_up_to(int file, void* to, std::size_t room) {
  std::size_t held = 0;
  while (held < room) {
    const ssize_t got = ::read(file, static_cast<char*>(to) + held, room - held);
    if (got == 0) break;
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return system_status();
    held += static_cast<std::size_t>(got);
  }
  return static_cast<CS_INT>(held);
}

CS_INT check_end(int file) {
  struct stat facts {};
  const off_t read = ::lseek(file, 0, SEEK_CUR);
  if (read < 0 || ::fstat(file, &facts) != 0) return system_status();
  if (facts.st_size == read) return 0;
  // A file that the system makes while it is read has size 0, but bytes can be read from it again.
  // A file that was emptied meanwhile has none.
  char first = 0;
  const bool is_made = facts.st_size == 0 && ::pread(file, &first, 1, 0) == 1;
  return is_made ? 0 : make_status(Fault::kSizeChanged);
}

}  // namespace comnlib::companion
