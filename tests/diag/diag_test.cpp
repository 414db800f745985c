// The trace with its three levels, the debug output file, and the stops in child processes.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "comnlib/diag.h"

namespace {

namespace fs = std::filesystem;

std::string contents(const fs::path& path) {
  std::ostringstream text;
  text << std::ifstream(path).rdbuf();
  return text.str();
}

// A fresh current directory for the length of a test.
class ScratchDirectory {
 public:
  ScratchDirectory() : before_(fs::current_path()) {
    std::string name = (fs::temp_directory_path() / "comnlib-XXXXXX").string();
    directory_ = mkdtemp(name.data());
    fs::current_path(directory_);
  }
  ~ScratchDirectory() {
    fs::current_path(before_);
    fs::remove_all(directory_);
  }

 private:
  fs::path before_;
  fs::path directory_;
};

std::string traced(CS_INT level, CS_RETCODE code, const char* file) {
  testing::internal::CaptureStdout();
  com_errset(level);
  EXPECT_EQ(code, com_errtrace(code, file, 42));
  com_errset(COM_TRACE_NONE);
  return testing::internal::GetCapturedStdout();
}

TEST(Trace, LevelsChooseWhatIsPrinted) {
  const CS_RETCODE routine[] = {CS_SUCCEED,  CS_PENDING,     CS_INTERRUPT,
                                CS_END_DATA, CS_END_RESULTS, CS_END_ITEM};
  for (const CS_RETCODE code : routine) {
    EXPECT_EQ("", traced(COM_TRACE_NONE, code, "a.c"));
    EXPECT_EQ("", traced(COM_TRACE_FAULTS, code, "a.c"));
    EXPECT_NE("", traced(COM_TRACE_ALL, code, "a.c"));
  }
  EXPECT_EQ("", traced(COM_TRACE_NONE, CS_FAIL, "a.c"));
  EXPECT_EQ("(CS_FAIL) file a.c, line 42\n", traced(COM_TRACE_FAULTS, CS_FAIL, "a.c"));
}

TEST(Trace, GeneralCodesHaveNamesOthersNumbers) {
  const struct {
    CS_RETCODE code;
    const char* text;
  } rows[] = {{1, "CS_SUCCEED"},
              {0, "CS_FAIL"},
              {-1, "CS_MEM_ERROR"},
              {-2, "CS_PENDING"},
              {-3, "CS_QUIET"},
              {-4, "CS_BUSY"},
              {-5, "CS_INTERRUPT"},
              {-202, "CS_CANCELED"},
              {-203, "CS_ROW_FAIL"},
              {-204, "CS_END_DATA"},
              {-205, "CS_END_RESULTS"},
              {-206, "CS_END_ITEM"},
              {-207, "CS_NOMSG"},
              {-208, "CS_TIMED_OUT"},
              {-210, "CS_PASSTHRU_EOM"},
              {-211, "CS_PASSTHRU_MORE"},
              {-213, "CS_TRYING"},
              {-101, "-101"},
              {-209, "-209"},
              {-414, "-414"},
              {34, "34"}};
  for (const auto& row : rows) {
    EXPECT_EQ(std::string("(") + row.text + ") file t.cpp, line 42\n",
              traced(COM_TRACE_ALL, row.code, "src/x/t.cpp"));
  }
}

TEST(Trace, DebugFileTakesOutputUntilClosed) {
  const ScratchDirectory scratch;
  ASSERT_EQ(CS_SUCCEED, comn_debug_setfile(nullptr, "first", 1));
  comn_debug_print("%d %s\n", 7, "seven");
  ASSERT_EQ(CS_SUCCEED, comn_debug_setfile(nullptr, "second", 1));
  EXPECT_EQ("", traced(COM_TRACE_ALL, CS_BUSY, "a.c"));
  ASSERT_EQ(CS_SUCCEED, comn_debug_setfile(nullptr, "second", 0));
  EXPECT_EQ("7 seven\n", contents("first"));
  EXPECT_EQ("(CS_BUSY) file a.c, line 42\n", contents("second"));

  ASSERT_EQ(CS_SUCCEED, comn_debug_setfile(nullptr, "first", 1));
  EXPECT_EQ("", contents("first")) << "an existing file is emptied";
  EXPECT_EQ(CS_FAIL, comn_debug_setfile(nullptr, "no/such/directory", 1));
  EXPECT_NE("", traced(COM_TRACE_ALL, CS_BUSY, "a.c")) << "standard output again";
  EXPECT_EQ(CS_SUCCEED, comn_debug_setfile(nullptr, nullptr, 1));
}

TEST(StopDeathTest, TextsAndEnds) {
  const int value = 0;
  com_chkptr(&value, "f.c", 1);
  com_chkptr(reinterpret_cast<const void*>(8), "f.c", 1);  // never read through
  const auto aborted = testing::KilledBySignal(SIGABRT);
  EXPECT_EXIT(com_chkptr(nullptr, "f.c", 12), aborted,
              "^\n\rInvalid pointer 0x0, file 'f.c' line 12\n\r$");
  EXPECT_EXIT(com_bomb("dir/f.c", 13), aborted,
              "^\n\rassertion failed, file 'dir/f.c' line 13\n\r$");
  EXPECT_EXIT(com_panic("out of %d"), testing::ExitedWithCode(255),
              "^\nINTERNAL ERROR: unrecoverable error: out of %d\n$");
  for (const CS_INT level : {0, 4, -1})
    EXPECT_EXIT(com_errset(level), aborted, "assertion failed") << level;
}

TEST(Perr, WritesTheTextItselfAndAppends) {
  const ScratchDirectory scratch;
  testing::internal::CaptureStderr();
  com_perr("50% %s\n");
  com_perr("two\n");
  EXPECT_EQ("50% %s\ntwo\n", testing::internal::GetCapturedStderr());
  EXPECT_EQ("50% %s\ntwo\n", contents("tlvinit.err"));
}

TEST(Version, IsOneLineOfSevenFields) {
  const std::string text = com_version();
  EXPECT_EQ(6, std::count(text.begin(), text.end(), '/')) << text;
  EXPECT_EQ(std::string::npos, text.find('\n')) << text;
}

}  // namespace
