#include "output.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <utility>

#include "fatal.h"
#include "source.h"
#ifdef ROWCOPY_ZLIB
#include <zlib.h>
#endif

namespace rowcopy {
namespace {

namespace fs = std::filesystem;

constexpr std::array kDeadly = {SIGHUP,  SIGINT,  SIGQUIT, SIGABRT, SIGBUS,
                                SIGSEGV, SIGPIPE, SIGTERM, SIGXCPU, SIGXFSZ};

// The names of unfinished files, for a signal handler to remove.
class Hidden {
 public:
  static void add(const std::string& path) {
    static const bool installed = install();
    (void)installed;
    for (Slot& slot : slots_) {
      if (slot.used) continue;
      path.copy(slot.path.data(), slot.path.size() - 1);
      slot.path[path.size()] = '\0';
      slot.used = true;
      return;
    }
  }
  static void remove(const std::string& path) {
    for (Slot& slot : slots_)
      if (slot.used && path == slot.path.data()) slot.used = false;
  }

 private:
  struct Slot {
    std::atomic<bool> used;
    std::array<char, PATH_MAX> path;
  };

  static bool install() {
    struct sigaction action {};
    action.sa_handler = clear;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    for (const int number : kDeadly) {
      struct sigaction before {};
      sigaction(number, nullptr, &before);
      if (before.sa_handler == SIG_DFL) sigaction(number, &action, nullptr);
    }
    return true;
  }

  // By now the signal has its own effect again.
  static void clear(int number) {
    for (const Slot& slot : slots_)
      if (slot.used) unlink(slot.path.data());
    std::raise(number);
  }

  static constexpr std::size_t kOutputs = 4;
  static std::array<Slot, kOutputs> slots_;
};

std::array<Hidden::Slot, Hidden::kOutputs> Hidden::slots_{};

// While an object of this class lives, no signal ends the process.
class Undisturbed {
 public:
  Undisturbed() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before_);
  }
  ~Undisturbed() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  Undisturbed(const Undisturbed&) = delete;
  Undisturbed& operator=(const Undisturbed&) = delete;

 private:
  sigset_t before_{};
};

mode_t new_file_mode() {
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}

fs::path directory_of(const std::string& path) {
  const fs::path directory = fs::path(path).parent_path();
  return directory.empty() ? "." : directory;
}

}  // namespace

#ifdef ROWCOPY_ZLIB

class Output::Packer {
 public:
  Packer() {
    constexpr int kGzip = 16;
    constexpr int kMemory = 8;
    if (deflateInit2(&state_, Z_DEFAULT_COMPRESSION, Z_DEFLATED, MAX_WBITS + kGzip, kMemory,
                     Z_DEFAULT_STRATEGY) != Z_OK)
      throw std::bad_alloc();
  }
  ~Packer() { deflateEnd(&state_); }
  Packer(const Packer&) = delete;
  Packer& operator=(const Packer&) = delete;

  // Hands the packed bytes to `write`, all of them when this is the end.
  template <class Write>
  void pack(std::span<const char> bytes, bool end, Write write) {
    state_.next_in = reinterpret_cast<z_const Bytef*>(const_cast<char*>(bytes.data()));
    state_.avail_in = static_cast<uInt>(bytes.size());
    do {
      state_.next_out = reinterpret_cast<Bytef*>(packed_.data());
      state_.avail_out = static_cast<uInt>(packed_.size());
      deflate(&state_, end ? Z_FINISH : Z_NO_FLUSH);
      write(std::span<const char>(packed_).first(packed_.size() - state_.avail_out));
    } while (state_.avail_out == 0);
  }

 private:
  z_stream state_{};
  std::array<char, 65536> packed_;
};

#else

class Output::Packer {
 public:
  Packer() { throw Fatal("cannot pack: built without zlib"); }
  template <class Write>
  void pack(std::span<const char>, bool, Write) {}
};

#endif

Output::Output(const std::string& path) : path_(path) {
  if (is_packed(path)) packer_ = std::make_unique<Packer>();
  if (path == "-") {
    path_ = "standard output";
    descriptor_ = STDOUT_FILENO;
    return;
  }
  std::error_code error;
  path_ = fs::weakly_canonical(path, error).string();
  if (error) path_ = path;
  struct stat status {};
  const bool exists = stat(path_.c_str(), &status) == 0;
  if (exists && !S_ISREG(status.st_mode)) {
    descriptor_ = open(path_.c_str(), O_WRONLY | O_CLOEXEC);
    if (descriptor_ < 0) fail("open");
    return;
  }
  replaces_ = true;
  open_unnamed();
  fchmod(descriptor_, exists ? status.st_mode & 07777 : new_file_mode());
}

Output::~Output() {
  if (descriptor_ > STDERR_FILENO) close(descriptor_);
  if (hidden_.empty()) return;
  unlink(hidden_.c_str());
  Hidden::remove(hidden_);
}

void Output::open_unnamed() {
  descriptor_ = open(directory_of(path_).c_str(), O_WRONLY | O_TMPFILE | O_CLOEXEC, 0600);
  if (descriptor_ >= 0) return;
  // Not every file system has files without names.
  if (errno != EOPNOTSUPP && errno != EISDIR && errno != EINVAL) fail("open");
  open_named();
}

void Output::open_named() {
  std::string name = (directory_of(path_) / ".rowcopy.XXXXXX").string();
  if (name.size() >= PATH_MAX) errno = ENAMETOOLONG;
  const Undisturbed undisturbed;
  if (name.size() < PATH_MAX) descriptor_ = mkostemp(name.data(), O_CLOEXEC);
  if (descriptor_ < 0) fail("open");
  hidden_ = name;
  Hidden::add(hidden_);
}

void Output::write(std::span<const char> bytes) {
  if (!packer_) return write_raw(bytes);
  packer_->pack(bytes, false, [this](std::span<const char> packed) { write_raw(packed); });
}

void Output::write_raw(std::span<const char> bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::write(descriptor_, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) fail("write");
    bytes = bytes.subspan(static_cast<std::size_t>(count));
  }
}

void Output::flush_to_disk() {
  if (packer_) packer_->pack({}, true, [this](std::span<const char> packed) { write_raw(packed); });
  if (replaces_ && fsync(descriptor_) != 0) fail("write");
}

// Gives an unnamed file a temporary name, since linkat cannot replace an existing file.
void Output::give_name() {
  if (!replaces_) return;
  std::string name = hidden_;
  if (name.empty()) {
    const std::string file = "/proc/self/fd/" + std::to_string(descriptor_);
    for (int attempt = 0;; ++attempt) {
      name = (directory_of(path_) /
              (".rowcopy." + std::to_string(getpid()) + "." + std::to_string(attempt)))
                 .string();
      if (linkat(AT_FDCWD, file.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0) break;
      if (errno != EEXIST) fail("name");
    }
  }
  if (rename(name.c_str(), path_.c_str()) != 0) {
    const int error = errno;
    unlink(name.c_str());
    errno = error;
    fail("name");
  }
  if (hidden_.empty()) return;
  Hidden::remove(hidden_);
  hidden_.clear();
}

void Output::fail(const char* action) const {
  fail_at_file(action, path_);
}

void publish(std::span<Output* const> outputs) {
  const Undisturbed undisturbed;
  for (Output* const output : outputs) output->give_name();
}

}  // namespace rowcopy
