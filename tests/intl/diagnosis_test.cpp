// Verification of files, and the words of the diagnosis for every fault that it names.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "comnlib/diag.h"
#include "intl/chkfile.h"
#include "intl_host.h"

namespace {

using intl_host::HomeCopy;

std::string diagnosis() {
  CS_CONTEXT context{};
  context.ctxintlerr = 5;
  testing::internal::CaptureStderr();
  com_intl_verify_ctxloc(&context);
  EXPECT_EQ(5, context.ctxintlerr) << "the diagnosis only prints";
  std::filesystem::remove("tlvinit.err");
  return testing::internal::GetCapturedStderr();
}

const std::string kHead =
    "\n\nThe context allocation routine failed when it tried to load localization files!!\n"
    "One or more following problems may caused the failure\n\n";

TEST(Diagnosis, WordsInOrder) {
  const HomeCopy home;
  const scratch::Variable all("LC_ALL", nullptr);
  const scratch::Variable lang("LANG", nullptr);
  const std::string found = kHead + "Your talven home directory is " +
                            home.file("").substr(0, home.file("").size() - 1) +
                            ". Check the environment variable TALVEN if it is not the one you "
                            "want!\n";
  const std::string table = home.file("locales/locales.dat");
  const std::string by_default = found + "Using default locale name: \"default\"\n";
  EXPECT_EQ(by_default, diagnosis());

  const std::vector<std::string> files{
      "locales/message/us_english/common.loc", "locales/message/us_english/cslib.loc",
      "charsets/iso_1/binary.srt", "charsets/iso_1/charset.loc", "charsets/iso_1/iso_1.cfg"};
  std::string missing;
  for (const std::string& file : files) {
    home.remove(file);
    missing += "Cannot access " + home.file(file) + " file\n";
    EXPECT_EQ(by_default + missing, diagnosis());
  }
  lang.set("xx");
  EXPECT_EQ(found + "Using locale name \"xx\" defined in environment variable LANG\n" +
                "Locale name \"xx\" doesn't exist in your " + table + " file\n",
            diagnosis());
  all.set("yy");
  EXPECT_EQ(found + "Using locale name \"yy\" defined in environment variable LC_ALL\n" +
                "Locale name \"yy\" doesn't exist in your " + table + " file\n",
            diagnosis());
  home.write("locales/locales.dat", "[linux\n");
  EXPECT_EQ(found + "Using locale name \"yy\" defined in environment variable LC_ALL\n" +
                "An intl library error occurs when trying to get local names from file: " + table +
                ", can't continue!\n",
            diagnosis());
  all.set(std::string(1024, 'l').c_str());
  EXPECT_EQ(found +
                "An intl library error occurs when trying to get locale name from environment "
                "variable LC_ALL\n",
            diagnosis());
  home.remove("locales/locales.dat");
  EXPECT_EQ(found + "Cannot access file " + table + "\n", diagnosis());
  home.remove("config/objectid.dat");
  EXPECT_EQ(found + "Cannot access file " + home.file("config/objectid.dat") + "\n", diagnosis());
  const std::string no_home =
      kHead +
      "Cannot access the talven home directory, please check environment variable TALVEN or "
      "~talven\n";
  const scratch::Variable nowhere("TALVEN", nullptr);
  EXPECT_EQ(no_home, diagnosis());
  nowhere.set(std::string(2000, 'h').c_str());
  EXPECT_EQ(no_home, diagnosis()) << "longer than its buffer";
}

TEST(Diagnosis, PathsThatDoNotFit) {
  const HomeCopy home;
  const scratch::Variable all("LC_ALL", "x");
  const std::string name(255, 'c');
  home.write("locales/locales.dat",
             "[linux]\nlocale = x, " + name + ", " + name + ", " + name + "\n");
  const std::string text = diagnosis();
  EXPECT_NE(std::string::npos, text.find("/charset.loc file\n")) << text;
  std::string deep = home.file("");
  while (deep.size() < 900) deep += "./";
  const scratch::Variable far("TALVEN", deep.c_str());
  EXPECT_NE(std::string::npos, diagnosis().find("Cannot access * file\n")) << diagnosis();
}

TEST(Verify, ReadableOrNotOrNoPath) {
  const intl_host::ShippedHome home;
  intl_host::Context context;
  char path[200] = "";
  EXPECT_EQ(CS_SUCCEED, com__verify_msgfile(context, "us", 2, "cslib.loc", 9, path, 200));
  EXPECT_EQ(CS_FAIL, com__verify_msgfile(context, "us", 2, "none.loc", 8, path, 200));
  EXPECT_EQ(CS_SUCCEED, com__verify_charfile(context, "utf8", "utf8", "cfg", path, 200));
  const auto exact = static_cast<CS_INT>(std::string(path).size());
  EXPECT_EQ(CS_FAIL, com__verify_charfile(context, "utf8", "utf8", "cfg", path, exact))
      << "no room for its NUL";
  EXPECT_STREQ("*", path);
  EXPECT_EQ(CS_FAIL, com__verify_charfile(context, "utf8", "utf8", "cfg", path, exact - 1));
  EXPECT_STREQ("*", path);
  {
    const scratch::Variable nowhere("TALVEN", nullptr);
    EXPECT_EQ(CS_INTL_LIBERR, com__verify_msgfile(context, "us", 2, "cslib.loc", 9, path, 200));
    EXPECT_STREQ("*", path);
  }

  ASSERT_EQ(CS_SUCCEED, context.init());
  CsLocCache* entry = nullptr;
  ASSERT_EQ(CS_SUCCEED, context.load("french", &entry));
  CS_LOCALE locale{};
  locale.messageptr = entry;
  EXPECT_EQ(CS_SUCCEED, com_intl_verify_a_msgfile(context, &locale, "common.loc", path, 200));
  EXPECT_NE(std::string::npos, std::string(path).find("/message/french/common.loc"));
  EXPECT_EQ(CS_FAIL, com_intl_verify_a_msgfile(context, &locale, "other.loc", path, 200));
}

// The tool names every fault of a home, each file by itself.
TEST(CheckHome, NamesEveryFault) {
  const HomeCopy home;
  const auto run = [&home] {
    const std::string command = std::string(COMNLIB_CHECKHOME) + " " + home.file("");
    std::FILE* pipe = popen(command.c_str(), "r");
    std::string text(20000, '\0');
    text.resize(std::fread(text.data(), 1, text.size(), pipe));
    return std::pair(pclose(pipe), text);
  };
  EXPECT_EQ(0, run().first) << run().second;
  home.remove("charsets/koi8/koi8.ctb");
  home.remove("locales/message/german/cslib.loc");
  home.change("charsets/cp437/cp437.cfg", "replacement = ", "replacement = X");
  home.change("charsets/cp850/binary.srt", "kind", "kin");
  home.change("charsets/cp850/charset.loc", "definition = 00000800", "definition = 01000880");
  home.change("charsets/sjis/charset.loc", "name = sjis", "name = jis");
  home.change("charsets/utf8/utf8.cfg", "to = iso15", "to = iso_15");
  home.change("config/objectid.dat", "cp850 = 5", "cp850 = 6");
  home.change("locales/french/utf8/common.loc", "[money]", "[money");
  home.change("locales/locales.dat", "ja_JP, japanese", "ja_JP, klingon");
  const auto [status, text] = run();
  EXPECT_NE(0, status);
  for (const char* fault :
       {"/charsets/koi8/koi8.ctb: No such file or directory\n",
        "/locales/message/german/cslib.loc: No such file or directory\n",
        "/charsets/cp437/cp437.cfg: what it holds is not valid\n",
        "/charsets/cp850/binary.srt: what it holds is not valid\n",
        "/charsets/cp850/charset.loc: a first byte names a table that is not there\n",
        "/charsets/sjis/charset.loc: the name is not that of its directory\n",
        "/charsets/utf8/utf8.cfg: no conversion to iso15\n",
        "/config/objectid.dat: [charset] gives the number of cp1252 twice\n",
        "/locales/french/utf8/common.loc: line ",
        "/locales/locales.dat: locale ja_JP: \"klingon\" is no known natlang\n"})
    EXPECT_NE(std::string::npos, text.find(fault)) << fault << "in\n" << text;
}

}  // namespace
