// Configuration files: tokens, the grammar and its error reports by example, the store, includes.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <array>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "comnlib/diag.h"
#include "config/comcfg.h"
#include "support/cancelled.h"
#include "support/hosts.h"
#include "support/stops.h"

namespace {

using namespace std::string_literals;

// The names of the configuration files in the working directory.
std::vector<std::string> configurations() {
  std::vector<std::string> files;
  for (const auto& entry : std::filesystem::directory_iterator("."))
    if (entry.path().extension() == ".cfg") files.push_back(entry.path().filename().string());
  EXPECT_LT(1U, files.size());
  return files;
}

// The kinds of a text's tokens, a letter for each from CFG_INCLUDE on, and the text with bars
// between them.
constexpr std::string_view kKinds = "ic=qw[n]s'\"?v_";
using Tokens = std::pair<std::string, std::string>;

std::string without_bars(std::string texts) {
  std::erase(texts, '|');
  return texts;
}

class Config : public testing::Test {
 protected:
  const hosts::NothingLost nothing_lost_;
  const scratch::WorkingDirectory directory_;
  CS_CONTEXT context_{};

  ~Config() override { comn_drop_cfg(&context_); }

  // A parse of a text by itself, which the caller cleans up.
  CfgParseInfo* open(const std::string& text) {
    directory_.write("scan.cfg", text);
    CfgParseInfo* parse = nullptr;
    EXPECT_EQ(CS_SUCCEED, cfg__open_parse(&context_, "scan.cfg", &parse));
    return parse;
  }

  Tokens scan(const std::string& text) {
    CfgParseInfo* parse = open(text);
    auto [kinds, texts] = Tokens();
    for (CS_INT code = cfg__lex(parse); code != CFG_END; code = cfg__lex(parse)) {
      CS_INT length = 0;
      const CS_CHAR* bytes = cfg__toktext(parse, &length);
      kinds += kKinds.at(static_cast<std::size_t>(code - CFG_INCLUDE));
      texts += (texts.empty() ? "" : "|");
      texts.append(bytes, static_cast<std::size_t>(length));
    }
    EXPECT_EQ(CS_SUCCEED, cfg__clean_parse(parse));
    return {kinds, texts};
  }

  CS_RETCODE load(const std::string& text) {
    comn_drop_cfg(&context_);
    directory_.write("nuv.cfg", text);
    return comn_init_cfg(&context_, "nuv.cfg");
  }

  // Loading `text` fails with a report that has these words.
  void expect_complaint(const std::string& text, std::string_view words) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(CS_FAIL, load(text));
    EXPECT_EQ(nullptr, context_.ctxconfig);
    const std::string report = testing::internal::GetCapturedStderr();
    EXPECT_NE(report.npos, report.find(words)) << text << report;
  }

  std::string get(const char* section, const char* entry) {
    char buffer[256];
    CS_INT length = -1;
    const CS_RETCODE result = comn_get_cfg(&context_, section, entry, buffer, 256, &length);
    return result == CS_SUCCEED ? std::string(buffer, static_cast<std::size_t>(length)) : "absent";
  }

  // What a walk meets: sections and entries, with the places of the entries.
  std::string walk() {
    std::ostringstream met;
    const CS_CHAR* section = nullptr;
    CS_RETCODE result = CS_SUCCEED;
    for (CS_INT at = 0; (result = comn_next_cfg_section(&context_, &at, &section)) == CS_SUCCEED;) {
      met << '[' << section << "]\n";
      CS_CFGENTRY entry{};
      CS_INT in = 0;
      while ((result = comn_next_cfg_entry(&context_, section, &in, &entry)) == CS_SUCCEED) {
        EXPECT_EQ('\0', entry.value[entry.valuelen]);
        met << entry.name << " = "
            << std::string_view(entry.value, static_cast<std::size_t>(entry.valuelen)) << "  ; "
            << entry.file << ':' << entry.line << '\n';
      }
      EXPECT_EQ(CS_END_DATA, result);
    }
    EXPECT_EQ(CS_END_DATA, result);
    return met.str();
  }
};

TEST_F(Config, Tokens) {
  const Tokens rows[] = {
      {"", ""},
      {"i_i_w", "include| |InClude|\t|includes"},
      {"v_v", "include:| |\\include"},
      {"w_v_v", "a_b.c/d#e1| |12ab| |a-b"},
      {"[w]n", "[|a|]|\r\n"},
      {"w=v=n", "a|=|a\v\xc3\0|=|\n"s},
      {"_n_n_", " \f; c\r;|\r\n|;\"[|\n|\t"},
      {"v_v?w", "a;| \t\f|;|\r|a"},
      {"?n", "\r|\r\n"},
      {"wcw", "a|\\\n|b"},
      {"c_", "\\\r\n| ; c"},
      {"v_v_?_w?]?=?", "a\\\\b| |\\x| |\\| |a|\\|]|\\|=|\\"},
      {"?\"q'", "\\|\"|\"\"|\""},
      {"\"sq'w", "\"|a =[;\r\n b|\"\"|\"|w"},
      {"\"s'v", "\"|c:\\\"|\"|\\\\"},
      {"\"scs'", "\"|one|\\\r\n|two\\x|\""},
      {"\"s", "\"|\\\r\\"},
      {"\"'w\"", "\"|\"|w|\""},
  };
  for (const Tokens& row : rows) EXPECT_EQ(row, scan(without_bars(row.second)));
}

// A comment of every length near the window's moves the text over the window's end.
TEST_F(Config, TokensOverTheWindowsEnd) {
  const auto [kinds, texts] =
      Tokens{"\"scsqs'cv_n_n\"scs",
             "\"|a|\\\n|\\\"|\"\"|b|\"|\\\r\n|word;| |\r\n| ; c|\r\n|\"|d|\\\r\n|\\"};
  for (std::size_t length = 16384 - 60; length < 16384 + 4; ++length) {
    const Tokens expected{"_n" + kinds, std::string(length, ';') + "|\n|" + texts};
    EXPECT_TRUE(expected == scan(without_bars(expected.second))) << length;
  }
}

// The helpers under their names; the scanner has them in line.
TEST_F(Config, WindowAndCollectedTexts) {
  CfgParseInfo* parse = open("ab");
  EXPECT_EQ('a', cfg__getc(parse));
  cfg__marktok(parse);
  EXPECT_EQ('b', cfg__getc(parse));
  EXPECT_EQ(-1, cfg__getc(parse));
  cfg__newtok(parse);
  cfg__cat(parse, 0);
  cfg__cat(parse, 1);
  cfg__catbuf(parse, "xyz", 2);
  EXPECT_EQ("a axy", comnlib::collected(*parse, 0));
  cfg__nexttok(parse);
  EXPECT_EQ('b', cfg__getc(parse));
  cfg__clean_parse(parse);
}

TEST_F(Config, TokensHaveAnyLength) {
  const std::string word(3000000, 'w');
  EXPECT_TRUE((Tokens{"w", word}) == scan(word));
  EXPECT_EQ(CS_SUCCEED, load("[s]\na = \"" + word + "\"\n"));
  CS_INT length = 0;
  EXPECT_EQ(CS_FAIL, comn_get_cfg(&context_, "s", "a", nullptr, 0, &length));
  EXPECT_EQ(static_cast<CS_INT>(word.size()), length);
}

// Every file of `valid`, and what a walk over it meets, in the text beside it.
TEST_F(Config, ValidFiles) {
  std::filesystem::copy(COMNLIB_TESTS "/config/valid", ".",
                        std::filesystem::copy_options::recursive);
  for (const std::string& file : configurations()) {
    EXPECT_EQ(CS_SUCCEED, comn_init_cfg(&context_, file.c_str())) << file;
    EXPECT_EQ(scratch::read(file.substr(0, file.find('.')) + ".txt"), walk());
    comn_drop_cfg(&context_);
  }
}

// Every file of `faulty`, which begins with its report as a comment.
TEST_F(Config, FaultyFiles) {
  std::filesystem::copy(COMNLIB_TESTS "/config/faulty", ".",
                        std::filesystem::copy_options::recursive);
  for (const std::string& file : configurations()) {
    std::ifstream lines(file);
    std::string report;
    for (std::string line; std::getline(lines, line) && line.starts_with("; ");)
      report += line.substr(2) + '\n';
    testing::internal::CaptureStderr();
    EXPECT_EQ(CS_FAIL, comn_init_cfg(&context_, file.c_str())) << file;
    EXPECT_EQ(nullptr, context_.ctxconfig);
    EXPECT_EQ(report, testing::internal::GetCapturedStderr());
  }
}

// A FIFO without a writer would hold the load up, the device would never end.
TEST_F(Config, FilesThatCannotBeRead) {
  std::filesystem::create_directory("directory");
  ASSERT_EQ(0, mkfifo("fifo", 0600));
  for (const char* const path :
       {"directory", "fifo", "/dev/zero", "/proc/self/mem", "missing.cfg", ""}) {
    context_.ctxintlerr = 0;
    testing::internal::CaptureStderr();
    EXPECT_EQ(CS_FAIL, comn_init_cfg(&context_, path)) << path;
    EXPECT_NE("", testing::internal::GetCapturedStderr()) << path;
    EXPECT_GT(0, context_.ctxintlerr) << path;
  }
  CfgParseInfo* parse = open("[section]\n");
  parse->size = (256U << 20) - 9;  // of a file that grows while it is read
  testing::internal::CaptureStderr();
  EXPECT_EQ(CS_FAIL, cfg__parse(parse));
  EXPECT_EQ("scan.cfg, line 1: cannot read on: the file has more than 256 MB\n",
            testing::internal::GetCapturedStderr());
  cfg__clean_parse(parse);
}

// Reading and reporting are cancellation points; what the loader holds there must not be lost.
TEST_F(Config, IsNotCancelled) {
  directory_.write("scan.cfg", "include \"nuv.cfg\"\n= error");
  directory_.write("nuv.cfg", "[s]\na = value");
  testing::internal::CaptureStderr();
  EXPECT_TRUE(cancelled::waits_for([this] {
    CfgParseInfo* parse = nullptr;
    EXPECT_EQ(CS_SUCCEED, cfg__open_parse(&context_, "scan.cfg", &parse));
    EXPECT_EQ(CFG_INCLUDE, cfg__lex(parse));
    EXPECT_EQ(CS_FAIL, cfg__parse(parse));
    EXPECT_EQ(CS_SUCCEED, cfg__clean_parse(parse));
    EXPECT_EQ(CS_SUCCEED, comn_init_cfg(&context_, "nuv.cfg"));
  }));
  EXPECT_NE("", testing::internal::GetCapturedStderr());
  EXPECT_EQ("value", get("s", "a"));
}

TEST_F(Config, LookUps) {
  EXPECT_EQ("absent", get("s", "a"));
  ASSERT_EQ(CS_SUCCEED, load("[s]\na = value\n[t]\na = other\n[s]\nb = more\n[empty]"));
  EXPECT_EQ("value", get("s", "a"));
  EXPECT_EQ("more", get("s", "b"));
  EXPECT_EQ("other", get("t", "a"));
  for (const auto& [section, entry] : std::initializer_list<std::pair<const char*, const char*>>{
           {"S", "a"}, {"s", "A"}, {"s", ""}, {"", "a"}, {"t", "b"}, {"empty", "a"}, {"s", "t"}})
    EXPECT_EQ("absent", get(section, entry)) << section << "." << entry;
  for (const auto& [room, code, written] :
       {std::tuple(4, +CS_FAIL, "*******"), {5, CS_SUCCEED, "value**"}, {6, CS_SUCCEED, "value"}}) {
    char buffer[8] = "*******";
    CS_INT length = 0;
    EXPECT_EQ(code, comn_get_cfg(&context_, "s", "a", buffer, room, &length)) << room;
    EXPECT_EQ(5, length);
    EXPECT_STREQ(written, buffer);
  }

  const CsConfig* shared = context_.ctxconfig;
  EXPECT_EQ(CS_SUCCEED, comn_init_cfg(&context_, "nuv.cfg"));
  EXPECT_EQ(shared, context_.ctxconfig);
  EXPECT_EQ(CS_FAIL, comn_init_cfg(&context_, "other.cfg"));
  EXPECT_EQ("value", get("s", "a"));
  EXPECT_EQ(CS_SUCCEED, comn_drop_cfg(&context_));
  EXPECT_EQ("absent", get("s", "a"));
}

TEST_F(Config, ManyEntriesFromManyThreads) {
  const auto name = [](int i) { return "n" + std::to_string(i); };
  std::string text;
  for (int i = 0; i < 3000; ++i)
    text += "[" + name(i / 10) + "]\n" + name(i) + " = " + name(-i) + "\n";
  ASSERT_EQ(CS_SUCCEED, load(text));
  std::vector<std::thread> readers;
  for (int t = 0; t < 3; ++t)
    readers.emplace_back([&] {
      for (int i = 0; i < 3000; ++i)
        EXPECT_EQ(name(-i), get(name(i / 10).c_str(), name(i).c_str()));
    });
  for (auto& reader : readers) reader.join();
}

TEST_F(Config, IncludesUpToTheLargestDepth) {
  for (int i = 0; i < CFG_MAX_DEPTH; ++i)
    directory_.write("d" + std::to_string(i), "include d" + std::to_string(i + 1) + "\n");
  directory_.write("d" + std::to_string(CFG_MAX_DEPTH), "[s]\na = deep\n");
  ASSERT_EQ(CS_SUCCEED, load("include d1"));
  EXPECT_EQ("deep", get("s", "a"));
  expect_complaint("include d0", "files are included too deep");
}

TEST_F(Config, ReadsAtMostAThousandFiles) {
  directory_.write("leaf.cfg", "");
  std::string text;
  for (int i = 1; i < CFG_MAX_FILES; ++i) text += "include leaf.cfg\n";
  EXPECT_EQ(CS_SUCCEED, load(text));
  expect_complaint(text + "include leaf.cfg\n",
                   "nuv.cfg, line 1000: too many files are included\n");
}

TEST_F(Config, WalksThatFail) {
  ASSERT_EQ(CS_SUCCEED, load("[s]\na = 1\n[t]"));
  CS_INT position = 0;
  CS_CFGENTRY entry{};
  EXPECT_EQ(CS_FAIL, comn_next_cfg_entry(&context_, "u", &position, &entry));
  const CS_CHAR* name = nullptr;
  ASSERT_EQ(CS_SUCCEED, comn_next_cfg_section(&context_, &position, &name));
  for (const CS_INT wrong : {position, -1, 1 << 30})
    EXPECT_DEATH((position = wrong, comn_next_cfg_entry(&context_, "s", &position, &entry)),
                 "assertion failed");
  ASSERT_EQ(CS_SUCCEED, load(""));
  EXPECT_EQ("", walk());
  comn_drop_cfg(&context_);
  position = 0;
  EXPECT_EQ(CS_FAIL, comn_next_cfg_section(&context_, &position, &name));
  EXPECT_EQ(CS_FAIL, comn_next_cfg_entry(&context_, "s", &position, &entry));
}

// Without a store includes are only read as lines.
TEST_F(Config, ChecksWithoutOpeningOtherFiles) {
  for (const auto& [text, result] :
       {std::pair("a = 1\ninclude missing.cfg\n[s]", +CS_SUCCEED), {"include \"\"", CS_FAIL}}) {
    CfgParseInfo* parse = open(text);
    testing::internal::CaptureStderr();
    EXPECT_EQ(result, cfg__parse(parse)) << text;
    EXPECT_EQ(result == CS_FAIL, !testing::internal::GetCapturedStderr().empty()) << text;
    cfg__clean_parse(parse);
  }
}

TEST_F(Config, DefaultFileLiesBelowTheHome) {
  directory_.write("home/config/nuv.cfg", "[s]\na = plain\n");
  directory_.write("home/sub/config/nuv.cfg", "[s]\na = nuv\n");
  const scratch::Variable home("TALVEN", "home");
  const scratch::Variable variable("TALVEN_NUV", nullptr);
  for (const char* const nuv : {"", "sub"}) {
    variable.set(nuv);
    ASSERT_EQ(CS_SUCCEED, comn_init_cfg(&context_, nullptr));
    EXPECT_EQ(*nuv == '\0' ? "plain" : "nuv", get("s", "a"));
    comn_drop_cfg(&context_);
  }
  // The home may be as long as lets the file's path fit, the subdirectory not counted.
  const std::string file = "/config/nuv.cfg";
  for (const std::size_t spare : {0U, 1U}) {
    const scratch::Variable long_home("TALVEN",
                                      std::string(1026 - spare - file.size(), '/').c_str());
    testing::internal::CaptureStderr();
    EXPECT_EQ(CS_FAIL, comn_init_cfg(&context_, nullptr));
    const bool too_long = testing::internal::GetCapturedStderr().ends_with("too long\n");
    EXPECT_EQ(spare == 0, too_long);
  }
}

TEST_F(Config, DebugSwitchPrintsTokens) {
  ASSERT_EQ(CS_SUCCEED, comn_debug_setfile(nullptr, "debug.txt", 1));
  cfg__debug = 1;
  scan("; c\n[a]");
  cfg__debug = 0;
  comn_debug_setfile(nullptr, nullptr, 0);
  EXPECT_EQ(
      "cfg__lex: comment >; c<\ncfg__lex: newline >\n<\ncfg__lex: [ >[<\n"
      "cfg__lex: ident >a<\ncfg__lex: ] >]<\n",
      scratch::read("debug.txt"));
}

using ConfigDeathTest = Config;

TEST_F(ConfigDeathTest, Stops) {
  CfgParseInfo* parse = open("");
  parse->state = static_cast<comnlib::ScanState>(2);
  const auto get = [&](const char* entry, CS_INT room, CS_INT* length) {
    comn_get_cfg(&context_, "s", entry, nullptr, room, length);
  };
  using stops::kAssertion, stops::kPointer;
  CS_INT length = 0;
  stops::expect({
      STOP(kAssertion, cfg__lexstate(parse, 2)),
      STOP(kAssertion, cfg__lex(parse)),
      STOP(kPointer, get(nullptr, 0, &length)),
      STOP(kPointer, get("a", 0, nullptr)),
      STOP(kPointer, get("a", 1, &length)),
      STOP(kAssertion, get("a", -1, &length)),
      STOP(kPointer, comn_init_cfg(nullptr, "")),
      STOP(kPointer, comn_drop_cfg(nullptr)),
  });
  cfg__clean_parse(parse);
}

}  // namespace
