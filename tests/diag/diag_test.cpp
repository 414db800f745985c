// The trace with its three levels, the debug output file, and the stops in child processes.
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <thread>

#include "comnlib/diag.h"
#include "support/cancelled.h"
#include "support/hosts.h"
#include "support/stops.h"

namespace {

std::string output_of(CS_INT level, auto call) {
  testing::internal::CaptureStdout();
  com_errset(level);
  call();
  com_errset(COM_TRACE_NONE);
  return testing::internal::GetCapturedStdout();
}

// The header is the list of the codes. Those of normal work are left out at level 2, and those of
// conversions and localization are traced by number.
TEST(Trace, EveryCodeHasItsNameAndItsLevel) {
  const std::string header = scratch::read(COMNLIB_RESULT_HEADER);
  const std::set<std::string> routine{"CS_SUCCEED",  "CS_PENDING",     "CS_INTERRUPT",
                                      "CS_END_DATA", "CS_END_RESULTS", "CS_END_ITEM"};
  std::vector<std::pair<CS_RETCODE, std::string>> codes{{-209, ""}, {LM_NOTFOUND, "LM_NOTFOUND"}};
  std::istringstream words(header);
  for (std::string name, word; words >> word; name = word) {
    if (word != "=") continue;
    words >> word;
    codes.emplace_back(std::stoi(word), name);
  }
  EXPECT_EQ(34U, codes.size());
  for (const auto& [code, name] : codes) {
    EXPECT_EQ(name, comn_result_name(code));
    const auto trace = [code = code] { EXPECT_EQ(code, com_errtrace(code, "src/x/t.cpp", 42)); };
    const bool named =
        name.starts_with("CS_") && !name.starts_with("CS_CVT_") && !name.starts_with("CS_INTL_");
    const std::string line =
        "(" + (named ? name : std::to_string(code)) + ") file t.cpp, line 42\n";
    EXPECT_EQ("", output_of(COM_TRACE_NONE, trace)) << name;
    EXPECT_EQ(routine.contains(name) ? "" : line, output_of(COM_TRACE_FAULTS, trace)) << name;
    EXPECT_EQ(line, output_of(COM_TRACE_ALL, trace)) << name;
  }
  for (const CS_RETCODE none : {2, -109, INT32_MIN}) EXPECT_STREQ("", comn_result_name(none));
}

// The place is that of the family member, not of the templates that it is made from.
TEST(Trace, RoutinesPassTheirCodesThrough) {
  hosts::ConversionContext context;
  CS_DATAFMT from{}, to{};
  from.datatype = CS_INT_TYPE;
  to.datatype = CS_TINYINT_TYPE;
  const CS_INT value = 256;
  CS_TINYINT result = 0;
  CS_INT length = 0;
  const std::string overflow =
      output_of(2, [&] { comn_i4toi1(&context, &from, &value, &to, &result, &length); });
  EXPECT_TRUE(overflow.starts_with("(-101) file com_i4.cpp, line ")) << overflow;
  const std::string null = output_of(3, [&] { com_null_get(&context, &to, &result, 1, &length); });
  EXPECT_TRUE(null.starts_with("(CS_SUCCEED) file com_null.cpp, line ")) << null;
}

void trace_busy() {
  com_errtrace(CS_BUSY, "a.c", 42);
}
const std::string kBusy = "(CS_BUSY) file a.c, line 42\n";

TEST(Trace, DebugFileTakesOutputUntilClosed) {
  const scratch::WorkingDirectory directory;
  ASSERT_EQ(CS_SUCCEED, comn_debug_setfile(nullptr, "first", 1));
  comn_debug_print("%d %s\n", 7, "seven");
  EXPECT_EQ("7 seven\n", scratch::read("first")) << "a stop would lose what is not written at once";
  ASSERT_EQ(CS_SUCCEED, comn_debug_setfile(nullptr, "second", 1));
  EXPECT_EQ("", output_of(COM_TRACE_ALL, trace_busy));
  ASSERT_EQ(CS_SUCCEED, comn_debug_setfile(nullptr, "second", 0));
  EXPECT_EQ("7 seven\n", scratch::read("first"));
  EXPECT_EQ(kBusy, scratch::read("second"));
  EXPECT_EQ(kBusy, output_of(COM_TRACE_ALL, trace_busy));

  ASSERT_EQ(CS_SUCCEED, comn_debug_setfile(nullptr, "first", 1));
  EXPECT_EQ("", scratch::read("first")) << "an existing file is emptied";
  EXPECT_EQ(CS_FAIL, comn_debug_setfile(nullptr, "first/below", 1));
  EXPECT_EQ(kBusy, output_of(COM_TRACE_ALL, trace_busy)) << "standard output again";
  EXPECT_EQ(CS_SUCCEED, comn_debug_setfile(nullptr, nullptr, 1));
}

// The descriptors of this process whose files have that name, and whether exec closes them.
std::string descriptors_of(const std::filesystem::path& path) {
  std::string found;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code gone;
    if (read_symlink(entry.path(), gone) != path) continue;
    const int flags = fcntl(std::stoi(entry.path().filename()), F_GETFD);
    found += (flags & FD_CLOEXEC) != 0 ? "closed " : "inherited ";
  }
  return found;
}

// Diagnostics may go to a directory that others write to.
TEST(Trace, FilesAreOpenedWithCare) {
  const scratch::WorkingDirectory directory;
  directory.write("target", "kept");
  std::filesystem::create_symlink("target", "link");
  ASSERT_EQ(0, mkfifo("fifo", 0600));
  for (const char* const refused : {"link", "fifo"}) {
    EXPECT_EQ(CS_FAIL, comn_debug_setfile(nullptr, refused, 1)) << refused;
    std::filesystem::rename(refused, "tlvinit.err");
    com_perr("");
    std::filesystem::rename("tlvinit.err", refused);
  }
  EXPECT_EQ("kept", scratch::read("target"));
  for (const char* const name : {"one", "two"}) {
    ASSERT_EQ(CS_SUCCEED, comn_debug_setfile(nullptr, name, 1));
    EXPECT_EQ("closed ", descriptors_of(directory.path() / name));
  }
  EXPECT_EQ("", descriptors_of(directory.path() / "one")) << "the next file closes it";
  comn_debug_setfile(nullptr, nullptr, 0);
  EXPECT_EQ("", descriptors_of(directory.path() / "two"));
}

// A thread that waits in the output has the lock when the process forks.
TEST(Trace, WorksInAChildOfFork) {
  const scratch::WorkingDirectory directory;
  int full[2];
  ASSERT_EQ(0, pipe(full));
  fflush(stdout);
  const int output = dup(STDOUT_FILENO);
  dup2(full[1], STDOUT_FILENO);
  close(full[1]);
  std::thread writer([] {
    for (int n = 0; n < 10'000; ++n) comn_debug_print("%s\n", "more than the pipe holds");
  });
  for (int held = 0; held < 60'000; usleep(1000)) ioctl(full[0], FIONREAD, &held);
  const pid_t child = fork();
  if (child == 0) {
    alarm(10);
    comn_debug_setfile(nullptr, "debug", 1);
    com_errset(COM_TRACE_ALL);
    trace_busy();
    _exit(0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  // The writer goes on, to nowhere; before that nothing else can be written.
  dup2(open("/dev/null", O_WRONLY | O_CLOEXEC), STDOUT_FILENO);
  for (char drain[4096]; read(full[0], drain, sizeof drain) > 0;) continue;
  writer.join();
  close(full[0]);
  dup2(output, STDOUT_FILENO);
  close(output);
  EXPECT_EQ(0, status);
  EXPECT_EQ(kBusy, scratch::read("debug"));
}

// Writers and a thread that changes the file meet, and each writer ends cancelled.
TEST(Trace, ThreadsShareTheDebugFile) {
  const scratch::WorkingDirectory directory;
  ASSERT_EQ(CS_SUCCEED, comn_debug_setfile(nullptr, "one", 1));
  const auto write = [] {
    for (int n = 0; n < 500; ++n) comn_debug_print("%s\n", "one piece");
  };
  std::vector<std::thread> writers;
  for (int n = 0; n < 4; ++n)
    writers.emplace_back([&] { EXPECT_TRUE(cancelled::waits_for(write)); });
  for (int n = 0; n < 50; ++n) ASSERT_EQ(CS_SUCCEED, comn_debug_setfile(nullptr, "two", 1));
  for (std::thread& writer : writers) writer.join();
  ASSERT_EQ(CS_SUCCEED, comn_debug_setfile(nullptr, nullptr, 0));
  std::istringstream lines(scratch::read("one") + scratch::read("two"));
  for (std::string line; std::getline(lines, line);) ASSERT_EQ("one piece", line);
}

TEST(StopDeathTest, TextsAndEnds) {
  com_chkptr(reinterpret_cast<const void*>(8), "f.c", 1);  // never read through
  stops::expect({
      STOP("^\n\rInvalid pointer 0x0, file 'f.c' line 12\n\r$", com_chkptr(nullptr, "f.c", 12)),
      STOP("^\n\rassertion failed, file 'dir/f.c' line 13\n\r$", com_bomb("dir/f.c", 13)),
      STOP(stops::kAssertion, com_errset(0)),
      STOP(stops::kAssertion, com_errset(4)),
      STOP(stops::kAssertion, com_errset(-1)),
  });
  EXPECT_EXIT(com_panic("out of %d"), testing::ExitedWithCode(255),
              "^\nINTERNAL ERROR: unrecoverable error: out of %d\n$");
}

TEST(Perr, WritesTheTextItselfAndAppends) {
  const scratch::WorkingDirectory directory;
  testing::internal::CaptureStderr();
  com_perr("50% %s\n");
  com_perr("two\n");
  EXPECT_EQ("50% %s\ntwo\n", testing::internal::GetCapturedStderr());
  EXPECT_EQ("50% %s\ntwo\n", scratch::read("tlvinit.err"));
}

TEST(Version, IsOneLineOfSevenFields) {
  const std::string text = com_version();
  EXPECT_EQ(6, std::count(text.begin(), text.end(), '/')) << text;
  EXPECT_EQ(std::string::npos, text.find('\n')) << text;
  const char* const platform = sizeof(void*) == 4 ? "/Linux i386/" : "/Linux x86_64/";
  EXPECT_NE(std::string::npos, text.find(platform)) << text;
}

}  // namespace
