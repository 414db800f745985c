// The names of the shipped home: those of the C library's list of locales, what the locales
// with them write and read, and what a context costs.
#include <gtest/gtest.h>

#include <malloc.h>
#include <time.h>

#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include "comnlib/charset.h"
#include "comnlib/convert.h"
#include "comnlib/diag.h"
#include "intl/com_intl.h"
#include "intl/message.h"
#include "intl_host.h"

namespace {

struct Listed {
  std::string name, codeset;
};

std::vector<Listed> c_library_locales() {
  std::vector<Listed> list;
  std::ifstream file("/usr/share/i18n/SUPPORTED");
  EXPECT_TRUE(file) << "the Debian package locales is missing";
  for (std::string line; std::getline(file, line);) {
    std::istringstream fields(line);
    Listed listed;
    if (line.empty() || line[0] == '#' || !(fields >> listed.name >> listed.codeset)) continue;
    list.push_back(listed);
  }
  return list;
}

// The locale names of locales.dat, without the lines that none but the first of a name serves.
std::vector<std::string> shipped_names() {
  std::vector<std::string> names;
  std::ifstream file(COMNLIB_HOME "/locales/locales.dat");
  for (std::string line; std::getline(file, line);) {
    const std::string key = "locale = ";
    if (line.starts_with(key))
      names.push_back(line.substr(key.size(), line.find(',') - key.size()));
  }
  return names;
}

// The languages that the home has, by their codes in the C library's list.
const std::set<std::string> kLanguages{"ar", "bn", "de", "en", "es", "fa", "fil", "fr", "gu",
                                       "ha", "hi", "id", "it", "ja", "kn", "ko",  "ml", "mr",
                                       "ms", "or", "pa", "pl", "ps", "pt", "ru",  "sd", "sw",
                                       "ta", "te", "th", "tr", "ur", "vi", "yue", "zh"};

const std::map<std::string, std::string> kCharsets{
    {"UTF-8", "utf8"},          {"ISO-8859-1", "iso_1"}, {"ISO-8859-2", "iso_2"},
    {"ISO-8859-5", "iso_5"},    {"ISO-8859-6", "iso_6"}, {"ISO-8859-9", "iso_9"},
    {"ISO-8859-15", "iso15"},   {"TIS-620", "iso11"},    {"KOI8-R", "koi8"},
    {"KOI8-U", "koi8u"},        {"CP1251", "cp1251"},    {"EUC-JP", "eucjp"},
    {"EUC-KR", "euckr"},        {"EUC-TW", "euctw"},     {"GB2312", "cp936"},
    {"GBK", "cp936"},           {"GB18030", "gb18030"},  {"BIG5", "big5"},
    {"BIG5-HKSCS", "big5hkscs"}};

TEST(ShippedNames, ServeTheCLibrarysList) {
  intl_host::ShippedContext context;
  const auto list = c_library_locales();
  EXPECT_GT(list.size(), 400U);
  for (const auto& [name, codeset] : list) {
    SCOPED_TRACE(name);
    const bool shipped = kLanguages.contains(name.substr(0, name.find_first_of("_.@")));
    if (!shipped && codeset != "UTF-8") continue;
    CsLocNames names;
    ASSERT_EQ(CS_SUCCEED,
              comn__intl_lookup(context, name.c_str(), CS_NULLTERM, &names, nullptr, 0));
    ASSERT_TRUE(kCharsets.contains(codeset)) << codeset;
    EXPECT_EQ(kCharsets.at(codeset), names.charset);
    EXPECT_EQ(!shipped || name.starts_with("en_"), std::string("us_english") == names.lang);
  }
}

TEST(ShippedNames, UsualSpellings) {
  intl_host::ShippedContext context;
  const struct {
    const char *name, *is;  // language, character set
  } rows[] = {{"pt_BR.utf8", "portuguese utf8"},
              {"en_US.UTF8", "us_english utf8"},
              {"C.UTF8", "us_english utf8"},
              {"sd_IN.UTF-8", "sindhi_arabic utf8"},
              {"sd_IN@devanagari", "sindhi utf8"},
              {"jv", "javanese iso_1"},
              {"pt_BR.iso88591", "portuguese iso_1"},
              {"es_MX.ISO8859-1", "spanish iso_1"},
              {"es_ES.UTF-8@euro", "spanish utf8"},
              {"it_IT.iso885915@euro", "italian iso15"},
              {"pl_PL.CP1250", "polish cp1250"},
              {"ru_RU.koi8r", "russian koi8"},
              {"ru_RU.cp866", "russian cp866"},
              {"ja_JP.eucJP", "japanese eucjp"},
              {"ja_JP.ujis", "japanese eucjp"},
              {"ko_KR.euckr", "korean euckr"},
              {"zh_CN.gb18030", "chinese gb18030"},
              {"zh_TW.Big5", "chinese_traditional big5"},
              {"hi_IN", "hindi utf8"},
              {"ar_EG.cp1256", "arabic cp1256"},
              {"sv_SE", "us_english iso_1"},
              {"uz_UZ.utf8@cyrillic", "us_english utf8"},
              {"en_US.CP1253", "us_english cp1253"},
              {"turkish", "turkish iso_9"},
              {"tr", "turkish iso_9"},
              {"thai.utf8", "thai utf8"}};
  for (const auto& row : rows) {
    CsLocNames names;
    EXPECT_EQ(CS_SUCCEED, comn__intl_lookup(context, row.name, CS_NULLTERM, &names, nullptr, 0));
    EXPECT_EQ(row.is, std::string(names.lang) + ' ' + names.charset) << row.name;
  }
}

// What a locale writes of a date it reads back, in each month, morning and afternoon; by way of
// Unicode, so that the names are text of the locale's character set.
TEST(ShippedNames, DatesThereAndBack) {
  intl_host::ShippedContext context;
  for (const std::string& name : shipped_names()) {
    SCOPED_TRACE(name);
    CsLocCache* entry = nullptr;
    ASSERT_EQ(CS_SUCCEED, context.load(name, &entry)) << context.error;
    CS_LOCALE locale = intl_host::all(entry);
    CS_DATAFMT date{}, text{};
    date.datatype = CS_DATETIME_TYPE;
    text.datatype = CS_UNICHAR_TYPE;
    date.locale = text.locale = &locale;
    for (int month = 0; month < 12; ++month) {
      // The 12th and the 28th and a half of a day, so that day, month and year tell apart.
      const CS_DATETIME value{45'000 + 31 * month, month % 2 == 0 ? 3 * 3'600 * 300 : 64'800 * 300};
      CS_UNICHAR buffer[200];
      CS_INT length = 0;
      text.maxlength = sizeof buffer;
      ASSERT_EQ(CS_SUCCEED, comn_datetimetounichar(context, &date, &value, &text, buffer, &length));
      text.maxlength = length;
      CS_DATETIME back{};
      EXPECT_EQ(CS_SUCCEED, comn_unichartodatetime(context, &text, buffer, &date, &back, &length))
          << month;
      EXPECT_EQ(value.dtdays, back.dtdays);
      EXPECT_EQ(value.dttime, back.dttime);
    }
  }
}

// Territories that differ from their language have conventions of their own.
TEST(ShippedNames, DatesOfTerritories) {
  intl_host::ShippedContext context;
  const struct {
    const char* name;
    std::u16string_view text;
  } rows[] = {
      {"en_US.UTF-8", u"Jan 15 2024  3:04AM"},     {"en_GB", u"15 Jan 2024  3:04am"},
      {"fr_CA.UTF-8", u"2024 janv. 15  3:04a.m."}, {"fr_CA.CP850", u"2024 janv. 15  3:04a.m."},
      {"de_AT", u"15 Jän. 2024  3:04AM"},           {"pt_BR.UTF-8", u"15 jan. 2024  3:04AM"},
      {"ru_RU.KOI8-R", u"15 янв. 2024  3:04AM"},   {"zh_TW.BIG5", u"2024 1月 15  3:04上午"},
      {"iso", u"2024-01-15T03:04:00.000"},         {"iso.utf8", u"2024-01-15T03:04:00.000"}};
  for (const auto& row : rows) {
    CsLocCache* entry = nullptr;
    ASSERT_EQ(CS_SUCCEED, context.load(row.name, &entry));
    CS_LOCALE locale = intl_host::all(entry);
    CS_DATAFMT date{}, text{};
    date.datatype = CS_DATETIME_TYPE;
    text.datatype = CS_UNICHAR_TYPE;
    text.maxlength = 200;
    date.locale = text.locale = &locale;
    const CS_DATETIME value{45'304, (3 * 60 + 4) * 60 * 300};
    char16_t buffer[100];
    CS_INT length = 0;
    ASSERT_EQ(CS_SUCCEED, comn_datetimetounichar(context, &date, &value, &text, buffer, &length));
    EXPECT_EQ(row.text, std::u16string_view(buffer, static_cast<std::size_t>(length) / 2))
        << row.name;
  }
}

// Every result code that has a name has a message, and every message's number a name.
TEST(ShippedMessages, OfEveryResultCode) {
  using comnlib::MessageFile;
  intl_host::ShippedContext context;
  for (const char* language :
       {"us_english", "chinese", "chinese_traditional", "french", "german", "italian", "japanese",
        "korean", "polish", "portuguese", "russian", "spanish", "turkish"}) {
    SCOPED_TRACE(language);
    CsLocCache* entry = nullptr;
    ASSERT_EQ(CS_SUCCEED, context.load(language, "utf8", language, "binary", &entry));
    std::set<std::string> texts;
    int named = 0;
    for (CS_RETCODE code = -2000; code < 2000; ++code) {
      const CS_CHAR* text =
          comnlib::message_text(*entry->locmessage, MessageFile::kCommonServices, code);
      EXPECT_EQ(*comn_result_name(code) != '\0', text != nullptr) << code;
      if (text == nullptr) continue;
      ++named;
      texts.insert(text);
    }
    EXPECT_EQ(named, static_cast<int>(texts.size())) << "one text stands for two codes";
    for (CS_INT severity = 1; severity <= 4; ++severity)
      EXPECT_NE(nullptr, comnlib::message_text(*entry->locmessage, MessageFile::kCommon, severity));
  }
}

std::int64_t processor_time() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return std::int64_t{now.tv_sec} * 1'000'000'000 + now.tv_nsec;
}

std::size_t memory_in_use() {
  const auto facts = mallinfo2();
  return facts.uordblks + facts.hblkhd;
}

// A context of its own for each combination of language, character set and conventions: the time
// of its set-up and its first load, the best of three, and the memory that they take.
TEST(ShippedNames, FirstLoadIsFastAndSmall) {
  const intl_host::ShippedHome home;
  std::set<std::string> seen;
  std::int64_t slowest = 0;
  std::size_t largest = 0;
  for (const std::string& name : shipped_names()) {
    CsLocNames names;
    CS_CONTEXT lookup{};
    ASSERT_EQ(CS_SUCCEED,
              comn__intl_lookup(&lookup, name.c_str(), CS_NULLTERM, &names, nullptr, 0));
    const std::string combination =
        std::string(names.lang) + '/' + names.charset + '/' + names.datetime + '/' + names.money;
    if (!seen.insert(combination).second) continue;
    SCOPED_TRACE(name);
    std::int64_t best = INT64_MAX;
    for (int run = 0; run < 3; ++run) {
      const std::size_t before = memory_in_use();
      const std::int64_t start = processor_time();
      intl_host::Context context;
      ASSERT_EQ(CS_SUCCEED, context.init());
      CsLocCache* entry = nullptr;
      ASSERT_EQ(CS_SUCCEED, context.load(name, &entry));
      best = std::min(best, processor_time() - start);
      const std::size_t size = memory_in_use() - before;
      if (entry->locchardesc->char_attrib->cs_class == COMN_CS_SINGLEBYTE) {
        largest = std::max(largest, size);
      }
    }
    EXPECT_LT(best, 5'000'000);
    slowest = std::max(slowest, best);
  }
  EXPECT_LT(largest, 400'000U);
  RecordProperty("slowest_ns", std::to_string(slowest));
  RecordProperty("largest_bytes", std::to_string(largest));
  std::printf("%d combinations: %lld ns, %zu bytes\n", static_cast<int>(seen.size()),
              static_cast<long long>(slowest), largest);
}

}  // namespace
