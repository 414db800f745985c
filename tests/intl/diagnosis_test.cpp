// Verification of files, and the words of the diagnosis for every fault that it names.
#include <gtest/gtest.h>

#include <string>

#include "comnlib/diag.h"
#include "intl/chkfile.h"
#include "support/hosts.h"

namespace {

using hosts::HomeCopy;

// The diagnosis, in which the home's path is "$TALVEN".
std::string diagnosis(const std::string& home) {
  CS_CONTEXT context{};
  context.ctxintlerr = 5;
  testing::internal::CaptureStderr();
  com_intl_verify_ctxloc(&context);
  EXPECT_EQ(5, context.ctxintlerr) << "the diagnosis only prints";
  std::filesystem::remove("tlvinit.err");
  std::string text = testing::internal::GetCapturedStderr();
  for (std::size_t at; (at = text.find(home)) != text.npos;)
    text.replace(at, home.size(), "$TALVEN");
  return text;
}

TEST(Diagnosis, WordsInOrder) {
  const HomeCopy home;
  const std::string path = std::getenv("TALVEN");
  const scratch::Variable all("LC_ALL", nullptr);
  const scratch::Variable lang("LANG", nullptr);
  const auto words = [](const std::string& name) {
    return scratch::read(COMNLIB_TESTS "/intl/data/diagnosis/" + name + ".txt");
  };
  std::string by_default = words("default");
  EXPECT_EQ(by_default, diagnosis(path));
  for (const std::string file :
       {"locales/message/us_english/common.loc", "locales/message/us_english/cslib.loc",
        "charsets/iso_1/binary.srt", "charsets/iso_1/charset.loc", "charsets/iso_1/iso_1.cfg"}) {
    home.remove(file);
    by_default += "Cannot access $TALVEN/" + file + " file\n";
    EXPECT_EQ(by_default, diagnosis(path));
  }
  lang.set("xx");
  EXPECT_EQ(words("unknown_in_lang"), diagnosis(path));
  lang.set("yy");
  all.set("xx");
  EXPECT_EQ(words("unknown_in_lc_all"), diagnosis(path));
  home.write("locales/locales.dat", "[linux\n");
  EXPECT_EQ(words("faulty_table"), diagnosis(path));
  all.set(std::string(1024, 'l').c_str());
  EXPECT_EQ(words("long_name"), diagnosis(path));
  home.remove("locales/locales.dat");
  EXPECT_EQ(words("no_table"), diagnosis(path));
  home.remove("config/objectid.dat");
  EXPECT_EQ(words("no_identifiers"), diagnosis(path));
  const scratch::Variable nowhere("TALVEN", nullptr);
  EXPECT_EQ(words("no_home"), diagnosis(path));
  nowhere.set(std::string(2000, 'h').c_str());
  EXPECT_EQ(words("no_home"), diagnosis(path)) << "longer than its buffer";
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
