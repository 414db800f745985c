// The companion library: home and environment, the sectioned reader with the words of its faults,
// and the plain reader.
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <optional>

#include "intl.h"
#include "status.h"
#include "support/hosts.h"
#include "support/table.h"

namespace {

// While it is set, every file ends after that many bytes.
std::optional<std::size_t> early_end;

// What has been read so far.
std::ptrdiff_t bytes_read = 0;

std::string words(CS_INT status) {
  char text[200];
  const CS_INT length = intl_errstr(status, text, sizeof text);
  EXPECT_EQ(static_cast<std::size_t>(length), std::string(text).size());
  return text;
}

// Everything a walk meets, as "[section]", "key", ":value" and "!words of a fault".
std::string walk(const std::string& path) {
  INTL_HANDLE handle = nullptr;
  const CS_INT opened = intl_open(path.c_str(), &handle);
  if (opened != 0) return "open: " + words(opened);
  std::string seen;
  CS_INT status = 0;
  const auto next = [&](auto* routine, const char* before, const char* after) {
    const char* text = routine(handle, &status);
    if (text != nullptr) seen += before + std::string(text) + after;
    if (status < 0) seen += "!" + words(status) + "!";
    return text != nullptr || status < 0;
  };
  while (next(intl_nextsection, "[", "]"))
    while (next(intl_nextentry, " ", ""))
      while (next(intl_nextvalue, ":", "")) {
      }
  EXPECT_EQ(0, intl_close(handle));
  return seen;
}

TEST(Sections, SyntaxAndFaults) {
  const scratch::Directory directory;
  table::for_each_line("companion/data/sections.txt", [&](const table::Fields& line) {
    EXPECT_EQ(line[1], walk(directory.write("f", table::text_of(line[0]))));
  });
  const std::string wide(100000, 'v');
  EXPECT_EQ("[a] k:" + wide + ":w", walk(directory.write("f", "[a]\nk = " + wide + ",w\n")));
}

TEST(Sections, PassedOverTextIsNotChecked) {
  const scratch::Directory directory;
  const std::string path = directory.write("f", "[a]\nj = \"v\nk = v\nbad\n[b]\nx = y\n");
  INTL_HANDLE handle = nullptr;
  ASSERT_EQ(0, intl_open(path.c_str(), &handle));
  CS_INT status = 1;
  EXPECT_EQ(nullptr, intl_nextentry(handle, &status)) << "before the first section";
  EXPECT_EQ(nullptr, intl_nextvalue(handle, &status));
  EXPECT_STREQ("a", intl_nextsection(handle, &status));
  EXPECT_STREQ("j", intl_nextentry(handle, &status));
  EXPECT_STREQ("k", intl_nextentry(handle, &status));
  EXPECT_STREQ("b", intl_nextsection(handle, &status));
  EXPECT_EQ(nullptr, intl_nextvalue(handle, &status)) << "no entry taken yet";
  EXPECT_STREQ("x", intl_nextentry(handle, &status));
  EXPECT_EQ(0, status);
  EXPECT_EQ(0, intl_close(handle));
}

constexpr const char* kCut = "the file is not as long as its size says";

// What the plain reader reads by pieces of `size` bytes, or the words of its fault.
std::string read_plainly(
    const std::string& path, CS_INT size, const std::function<void()>& meanwhile = [] {}) {
  INTL_HANDLE handle = nullptr;
  const CS_INT status = intl_iocsfopen(path.c_str(), &handle);
  if (handle == nullptr) return words(status);
  std::string text, piece(static_cast<std::size_t>(size), '#');
  CS_INT got = 0;
  while ((got = intl_iocsfread(handle, reinterpret_cast<CS_BYTE*>(piece.data()), size)) > 0) {
    text.append(piece, 0, static_cast<std::size_t>(got));
    meanwhile();
  }
  EXPECT_EQ(0, intl_iocsfclose(handle));
  return got < 0 ? words(got) : text;
}

// One rule for both readers. What ends before its size says so is not the whole file.
TEST(Files, ThatCannotBeRead) {
  const hosts::NothingLost nothing_lost;
  const scratch::WorkingDirectory directory;
  directory.write("big", "[a]\n");
  directory.write("text", "[a]\nk = v\n");
  ASSERT_EQ(0, mkfifo("fifo", 0600));
  std::filesystem::create_symlink("/dev/zero", "endless");
  constexpr off_t kMost = 256 << 20;
  ASSERT_EQ(0, truncate("big", kMost + 1));
  const struct {
    const char *path, *words;
    std::optional<std::size_t> end = std::nullopt;
  } rows[] = {{"none", "No such file or directory"},
              {".", "Is a directory"},
              {"fifo", "not a regular file"},
              {"endless", "not a regular file"},
              {"big", "the file is larger than 256 MB"},
              {"text", kCut, 0},
              {"text", kCut, 4},
              {"text", kCut, 9}};
  for (const auto& row : rows) {
    early_end = row.end;
    EXPECT_EQ(row.words, read_plainly(row.path, 20)) << row.path;
    EXPECT_EQ("open: " + std::string(row.words), walk(row.path)) << row.path;
  }
  early_end.reset();
  EXPECT_EQ(kCut, read_plainly("text", 2, [&] { EXPECT_EQ(0, truncate("text", 0)); }));
  ASSERT_EQ(0, truncate("big", kMost));
  INTL_HANDLE handle = nullptr;
  EXPECT_EQ(0, intl_iocsfopen("big", &handle));
  EXPECT_EQ(0, intl_iocsfclose(handle));
}

TEST(Files, ThatCanBeRead) {
  const hosts::NothingLost nothing_lost;
  const scratch::WorkingDirectory directory;
  directory.write("text", "[a]\nk = v\n");
  EXPECT_EQ("[a] k:v", walk("text"));
  for (const CS_INT size : {1, 2, 20}) EXPECT_EQ("[a]\nk = v\n", read_plainly("text", size));
  // A file of no size, made while it is read.
  bytes_read = 0;
  EXPECT_EQ("", walk("/proc/self/smaps"));
  EXPECT_LT(4096, bytes_read);
  EXPECT_LT(4096U, read_plainly("/proc/self/smaps", 512).size());
}

TEST(Environment, LengthUnsetAndTooLong) {
  const scratch::Variable variable("COMNLIB_TEST", "value");
  char text[8] = "#######";
  EXPECT_EQ(5, intlgetenv(text, 6, "COMNLIB_TEST"));
  EXPECT_STREQ("value", text);
  EXPECT_EQ(14, intl_errstr(-31, text, 5));
  EXPECT_STREQ("unkn", text) << "cut to fit";
  EXPECT_EQ("unknown status", words(0));
  EXPECT_EQ("out of memory", words(INTL_NO_MEMORY));
  using comnlib::companion::Fault, comnlib::companion::make_status;
  EXPECT_EQ("line 67108862: the entry has no '='", words(make_status(Fault::kNoEquals, INT32_MAX)))
      << "the last line that has a number";
  text[0] = '#';
  EXPECT_EQ("the value is longer than its buffer", words(intlgetenv(text, 5, "COMNLIB_TEST")));
  for (const char* none : {"", static_cast<const char*>(nullptr)}) {
    variable.set(none);
    EXPECT_EQ(0, intlgetenv(text, 6, "COMNLIB_TEST"));
  }
  EXPECT_EQ('#', text[0]);
}

TEST(Home, VariableAndUser) {
  const scratch::Variable variable("TALVEN", "/home/dir");
  char text[16] = "###############";
  EXPECT_EQ(9, intl_home(text, sizeof text));
  EXPECT_STREQ("/home/dir", text);
  std::fill(std::begin(text), std::end(text), '#');
  EXPECT_EQ(9, intl_home(text, 9)) << "fits without its NUL";
  EXPECT_EQ("/home/dir#", std::string(text, 10));
  EXPECT_EQ(9, intl_home(text, 3)) << "the whole length";
  for (const char* none : {"", static_cast<const char*>(nullptr)}) {
    variable.set(none);
    EXPECT_EQ("neither TALVEN, nor the user talven, nor the installation gives a home directory",
              words(intl_home(text, sizeof text)))
        << "this machine has no such user";
  }
}

}  // namespace

// In place of the C library's. A signal interrupts every other call.
extern "C" ssize_t read(int file, void* to, std::size_t room) {
  static bool interrupted = false;
  interrupted = !interrupted;
  if (interrupted) {
    errno = EINTR;
    return -1;
  }
  if (early_end) {
    const auto at = static_cast<std::size_t>(lseek(file, 0, SEEK_CUR));
    room = std::min(room, *early_end - std::min(*early_end, at));
  }
  const ssize_t got = syscall(SYS_read, file, to, room);
  bytes_read += got;
  return got;
}
