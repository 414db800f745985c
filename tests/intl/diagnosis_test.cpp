// Verification of files, and the words of the diagnosis for every fault that it names.
#include <gtest/gtest.h>

#include <string>

#include "comnlib/diag.h"
#include "intl/chkfile.h"
#include "support/hosts.h"

namespace {

using hosts::HomeCopy;

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
  const std::string found =
      kHead + "Your talven home directory is " + std::getenv("TALVEN") +
      ". Check the environment variable TALVEN if it is not the one you want!\n";
  const std::string table = home.file("locales/locales.dat");
  const std::string by_default = found + "Using default locale name: \"default\"\n";
  EXPECT_EQ(by_default, diagnosis());

  std::string missing;
  for (const char* file :
       {"locales/message/us_english/common.loc", "locales/message/us_english/cslib.loc",
        "charsets/iso_1/binary.srt", "charsets/iso_1/charset.loc", "charsets/iso_1/iso_1.cfg"}) {
    home.remove(file);
    missing += "Cannot access " + home.file(file) + " file\n";
    EXPECT_EQ(by_default + missing, diagnosis());
  }
  const std::string named = found + "Using locale name \"xx\" defined in environment variable ";
  const std::string unknown = "\nLocale name \"xx\" doesn't exist in your " + table + " file\n";
  lang.set("xx");
  EXPECT_EQ(named + "LANG" + unknown, diagnosis());
  lang.set("yy");
  all.set("xx");
  EXPECT_EQ(named + "LC_ALL" + unknown, diagnosis());
  home.write("locales/locales.dat", "[linux\n");
  EXPECT_EQ(named +
                "LC_ALL\nAn intl library error occurs when trying to get local names from file: " +
                table + ", can't continue!\n",
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

TEST(Verify, ReadableOrNotOrNoPath) {
  hosts::ShippedContext context;
  char path[200] = "";
  EXPECT_EQ(CS_SUCCEED, com__verify_msgfile(context, "us", 2, "cslib.loc", 9, path, 200));
  EXPECT_EQ(CS_FAIL, com__verify_msgfile(context, "us", 2, "none.loc", 8, path, 200));
  EXPECT_EQ(CS_SUCCEED, com__verify_charfile(context, "utf8", "utf8", "cfg", path, 200));
  const auto exact = static_cast<CS_INT>(std::string(path).size());
  path[exact] = '#';
  EXPECT_EQ(CS_SUCCEED, com__verify_charfile(context, "utf8", "utf8", "cfg", path, exact));
  EXPECT_EQ("utf8.cfg#", std::string(path + exact - 8, 9)) << "no room for its NUL";
  EXPECT_EQ(CS_FAIL, com__verify_charfile(context, "utf8", "utf8", "cfx", path, exact));
  EXPECT_EQ("utf8.cfx#", std::string(path + exact - 8, 9));
  EXPECT_EQ(CS_FAIL, com__verify_charfile(context, "utf8", "utf8", "cfg", path, exact - 1));
  EXPECT_STREQ("*", path);
  const CS_LOCALE locale = hosts::all(context.entry("french"));
  EXPECT_EQ(CS_SUCCEED, com_intl_verify_a_msgfile(context, &locale, "common.loc", path, 200));
  EXPECT_NE(std::string::npos, std::string(path).find("/message/french/common.loc"));
  EXPECT_EQ(CS_FAIL, com_intl_verify_a_msgfile(context, &locale, "other.loc", path, 200));
  context.set(nullptr);
  EXPECT_EQ(CS_INTL_LIBERR, com__verify_msgfile(context, "us", 2, "cslib.loc", 9, path, 200));
  EXPECT_STREQ("*", path);
}

}  // namespace
