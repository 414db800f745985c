// Locale names, the cache, a load with each of its steps failing, and what is asked of a locale.
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>

#include "comnlib/charset.h"
#include "intl/charset.h"
#include "intl/com_intl.h"
#include "intl/com_loc.h"
#include "intl/locdata.h"
#include "intl/message.h"
#include "intl_host.h"
#include "support/host_alloc.h"

namespace {

using intl_host::all;
using intl_host::Context;
using intl_host::HomeCopy;
using intl_host::ShippedHome;

const std::string kTable = "locales/locales.dat";

TEST(Lookup, LinesOfTheTable) {
  const HomeCopy home;
  const struct {
    const char* label;
    std::string table;
    CS_RETCODE result;
    const char* values;  // language/charset/sort order/date/number/money
  } rows[] = {
      {"empty values", "[linux]\nlocale = x, l, c, , , n\n", CS_SUCCEED, "l/c/binary//n/"},
      {"all", "[linux]\nlocale = x, l, c, s, d, n, m, more\n", CS_SUCCEED, "l/c/s/d/n/m"},
      {"other section in front", "[x]\nkey = x\n[linux]\nlocale = x, l, c\n", CS_SUCCEED,
       "l/c/binary///"},
      {"first section alone", "[linux]\n[linux]\nlocale = x, l, c\n", CS_FAIL, nullptr},
      {"section by case", "[Linux]\nlocale = x, l, c\n", CS_FAIL, nullptr},
      {"foreign key", "[linux]\nlocales = y\nlocale = x, l, c\n", CS_FAIL, nullptr},
      {"foreign key behind", "[linux]\nlocale = x, l, c\nother = y\n", CS_SUCCEED, "l/c/binary///"},
      {"no charset", "[linux]\nlocale = x, l\n", CS_FAIL, nullptr},
      {"name is a leading part", "[linux]\nlocale = xy, l, c\n", CS_FAIL, nullptr},
      {"unread values", "[linux]\nlocale = y, \"\nlocale = x, l, c\n", CS_SUCCEED, "l/c/binary///"},
      {"damaged name", "[linux]\nlocale = \"y\nlocale = x, l, c\n", CS_INTL_LIBERR, nullptr},
      {"damaged value", "[linux]\nlocale = x, l, c, \"s\n", CS_INTL_LIBERR, nullptr},
      {"damaged section", "[linux\nlocale = x, l, c\n", CS_INTL_LIBERR, nullptr},
      {"255 bytes", "[linux]\nlocale = x, l, c, " + std::string(255, 's') + "\n", CS_SUCCEED,
       nullptr},
  };
  for (const auto& row : rows) {
    home.write(kTable, row.table);
    CS_CONTEXT context{};
    CsLocNames names;
    char error[300];
    EXPECT_EQ(row.result, comn__intl_lookup(&context, "x", 1, &names, error, sizeof error))
        << row.label;
    EXPECT_EQ(home.file(kTable), error) << row.label;
    EXPECT_EQ(row.result == CS_INTL_LIBERR, context.ctxintlerr < 0) << row.label;
    if (row.values == nullptr) continue;
    const std::string values = std::string(names.lang) + "/" + names.charset + "/" +
                               names.sortorder + "/" + names.datetime + "/" + names.numeric + "/" +
                               names.money;
    EXPECT_EQ(row.values, values) << row.label;
    EXPECT_EQ(std::strlen(names.sortorder), static_cast<std::size_t>(names.sortorderlen));
  }
  CS_CONTEXT context{};
  CsLocNames names;
  home.write(kTable, "[linux]\nlocale = x, l, c\n");
  {
    const intl_host::FailingClose failing;
    EXPECT_EQ(CS_INTL_LIBERR, comn__intl_lookup(&context, "x", 1, &names, nullptr, 0));
    EXPECT_EQ(-7, context.ctxintlerr);
  }
  home.remove(kTable);
  EXPECT_EQ(CS_INTL_NOFILE, comn__intl_lookup(&context, "x", 1, &names, nullptr, 0));
  home.write(kTable, "[linux]\nlocale = x, l, " + std::string(256, 'c') + "\n");
  EXPECT_DEATH(comn__intl_lookup(&context, "x", 1, &names, nullptr, 0), "assertion failed");
  EXPECT_EQ(0, intl_host::files_open());
}

TEST(Load, SharesAndCaches) {
  const ShippedHome home;
  Context context;
  ASSERT_EQ(CS_SUCCEED, context.init());
  CsOid oid = 0;
  EXPECT_EQ(CS_SUCCEED, comn_globalid(context, "charset", "ucs2x", 4, &oid));
  EXPECT_EQ(context.globals.ucs2_oid, oid);
  EXPECT_EQ(CS_FAIL, comn_globalid(context, "collate", "ucs2", CS_NULLTERM, &oid));
  const int after_init = intl_host::files_opened();
  EXPECT_EQ(CS_SUCCEED, context.init()) << "a second set-up does nothing";
  EXPECT_EQ(after_init, intl_host::files_opened());
  CsLocCache *first = nullptr, *again = nullptr, *same_sets = nullptr;
  ASSERT_EQ(CS_SUCCEED, context.load("default", &first));
  const int files = intl_host::files_opened();
  ASSERT_EQ(CS_SUCCEED, comn_intl_load(context, "defaultX", 7, &again, nullptr, 0));
  EXPECT_EQ(first, again);
  EXPECT_EQ(files, intl_host::files_opened()) << "no file is read again";
  ASSERT_EQ(CS_SUCCEED, context.load("us_english", &same_sets));
  EXPECT_EQ(files + 1, intl_host::files_opened()) << "locales.dat alone";
  EXPECT_NE(first, same_sets);
  EXPECT_EQ(first->locchardesc, same_sets->locchardesc);
  EXPECT_EQ(first->locdateinfo, same_sets->locdateinfo);
  EXPECT_EQ(first->locmessage, same_sets->locmessage);
  EXPECT_EQ(same_sets, context.globals.cmg_lcache);
  EXPECT_EQ(first, same_sets->locnext);

  CsLocCache* given = nullptr;
  ASSERT_EQ(CS_SUCCEED, context.load("mine", "cp850", "french", "nocase", &given));
  EXPECT_STREQ("cp850", given->charname);
  EXPECT_EQ(
      "d\x82"
      "cembre",
      given->locdateinfo->conventions.months[11]);
  EXPECT_EQ(",", given->locnuminfo->digits.decimal_point);
  EXPECT_EQ(comnlib::SymbolPlace::kAfter, given->locmoninfo->symbol_place);
  EXPECT_STREQ("division par z\u00e9ro",
               comnlib::message_text(*given->locmessage, comnlib::MessageFile::kCommonServices,
                                     CS_CVT_DIVZERO));
  EXPECT_EQ(nullptr, comnlib::message_text(*given->locmessage, comnlib::MessageFile::kCommon,
                                           CS_CVT_DIVZERO));
  CsLocCache* copy = nullptr;
  ASSERT_EQ(CS_SUCCEED, comn__copy_loccache(context, given, &copy));
  EXPECT_STREQ("mine", copy->locname);
  EXPECT_EQ(given->locchardesc, copy->locchardesc);
  copy->locnext = context.globals.cmg_lcache;  // for the drop of the cache
  context.globals.cmg_lcache = copy;
}

TEST(Load, NamedConventions) {
  const ShippedHome home;
  Context context;
  ASSERT_EQ(CS_SUCCEED, context.init());
  CsLocCache* entry = nullptr;
  ASSERT_EQ(CS_SUCCEED, context.load("us_english.named", &entry));
  EXPECT_STREQ("us_english", entry->com__datename);
  EXPECT_STREQ("us_english", entry->numname);
  EXPECT_EQ(nullptr, entry->locdateinfo);
  EXPECT_EQ("$", entry->locmoninfo->symbol);
  EXPECT_EQ(CS_SUCCEED, comn__load_locdata(context, 5, "us_english", entry, nullptr, 0));
  EXPECT_EQ(CS_SUCCEED, comn__load_locdata(context, 6, "us_english", entry, nullptr, 0));
  EXPECT_EQ("December", entry->locdateinfo->conventions.months[11]);
  const int files = intl_host::files_opened();
  EXPECT_EQ(CS_SUCCEED, comn__load_locdata(context, 6, "us_english", entry, nullptr, 0));
  EXPECT_EQ(files, intl_host::files_opened());
  EXPECT_EQ(CS_FAIL, comn__load_locdata(context, 3, "us_english", entry, nullptr, 0));
  EXPECT_EQ(CS_INTL_NOFILE, comn__load_locdata(context, 4, "none", entry, nullptr, 0));
}

// Each row breaks one file of the home; the load names it and leaves nothing behind. The character
// sets' own refusals stand with their loader.
TEST(Load, EveryRefusal) {
  const std::string common = "locales/us_english/iso_1/common.loc";
  const std::string texts = "locales/message/us_english/comnlib.loc";
  const std::string config = "charsets/iso_1/iso_1.cfg";
  const std::string order = "charsets/iso_1/binary.srt";
  const std::string ids = "config/objectid.dat";
  const std::string long_table = "table = " + std::string(256, 't');
  const struct {
    const char* label;
    std::string file;
    const char* from;
    const char* to;  // null: the file is removed
    CS_RETCODE result;
  } rows[] = {
      {"locale unknown", kTable, "locale = default", "locale = other", CS_FAIL},
      {"charset without number", ids, "iso_1 = 2", "iso_x = 2", CS_FAIL},
      {"number with a tail", ids, "iso_1 = 2", "iso_1 = 2x", CS_FAIL},
      {"number 0", ids, "iso_1 = 2", "iso_1 = 0", CS_FAIL},
      {"number too large", ids, "iso_1 = 2", "iso_1 = 0x80000000", CS_FAIL},
      {"set-up without binary", ids, "binary = ", "x = ", CS_FAIL},
      {"set-up without ucs2", ids, "ucs2 = ", "x = ", CS_FAIL},
      {"damaged numbers", ids, "[natlang]", "[natlang", CS_INTL_LIBERR},
      {"no numbers", ids, "", nullptr, CS_INTL_NOFILE},
      {"no messages", texts, "", nullptr, CS_INTL_NOFILE},
      {"signed hexadecimal number", texts, "-101 =", "0x-65 =", CS_FAIL},
      {"no message section", texts, "[messages]", "[message]", CS_FAIL},
      {"damaged entry", texts, "-101 =", "-101", CS_INTL_LIBERR},
      {"damaged message", texts, "-101 = \"", "-101 = \"\"x", CS_INTL_LIBERR},
      {"no replacement", config, "replacement", "description", CS_FAIL},
      {"bad replacement", config, "= 3F", "= 3G", CS_FAIL},
      {"empty replacement", config, "= 3F", "=", CS_FAIL},
      {"long table", config, "table = iso_1", long_table.c_str(), CS_FAIL},
      {"unknown configuration key", config, "table =", "x = y\ntable =", CS_FAIL},
      {"damaged configuration", config, "to = utf8", "to", CS_INTL_LIBERR},
      {"damaged targets", config, "to = utf8", "to = \"utf8", CS_INTL_LIBERR},
      {"long replacement", config, "= 3F", "= 3F3F3F3F3F", CS_FAIL},
      {"table and algorithm", config, "table =", "algorithm = utf8\ntable =", CS_FAIL},
      {"unknown algorithm", config, "table = iso_1", "algorithm = x", CS_FAIL},
      {"not reached from utf8", "charsets/utf8/utf8.cfg", "to = iso_1", "to = iso_x", CS_FAIL},
      {"no sort order", order, "", nullptr, CS_INTL_NOFILE},
      {"unknown kind", order, "kind = binary", "kind = x", CS_FAIL},
      {"neither kind nor weights", order, "kind = binary", "", CS_FAIL},
      {"unknown sort key", order, "kind", "x = y\nkind", CS_FAIL},
      {"damaged sort order", order, "kind = binary", "kind = binary\nx", CS_INTL_LIBERR},
      {"short weights", order, "kind = binary", "kind = weights\nweights = 00", CS_FAIL},
      {"no conventions", common, "", nullptr, CS_INTL_NOFILE},
      {"eleven months", common, "January, ", "", CS_FAIL},
      {"no months", common, "months = ", ";", CS_FAIL},
      {"no days", common, "days = ", ";", CS_FAIL},
      {"unknown order", common, "order = mdy", "order = mmm", CS_FAIL},
      {"unknown key", common, "style = ", "styles = ", CS_FAIL},
      {"unknown style", common, "style = default", "style = x", CS_FAIL},
      {"bad grouping", common, "grouping = 3", "grouping = -1", CS_FAIL},
      {"wide grouping", common, "grouping = 3", "grouping = 10", CS_FAIL},
      {"no decimal point", common, "decimal = .", "decimal =", CS_FAIL},
      {"none of money", common, "before\ndecimal = .", "before", CS_FAIL},
      {"unknown place", common, "place = before", "place = x", CS_FAIL},
      {"no money", common, "[money]", "[cash]", CS_FAIL},
      {"no dates", common, "[datetime]", "[x]", CS_FAIL},
      {"no numbers", common, "[numeric]", "[x]", CS_FAIL},
      {"two sections of a kind", common, "[money]", "[numeric]\ndecimal = .\n[money]", CS_FAIL},
      {"damaged conventions", common, "separator = \",\"", "separator = \",", CS_INTL_LIBERR},
  };
  const HomeCopy home;
  testing::internal::CaptureStderr();
  for (const auto& row : rows) {
    const std::string whole = home.read(row.file);
    if (row.to == nullptr) {
      home.remove(row.file);
    } else {
      home.change(row.file, row.from, row.to);
    }
    {
      Context context;
      CsLocCache* entry = nullptr;
      CS_RETCODE result = context.init();
      const CsCharDesc* sets = context.globals.cmg_chardesc;
      EXPECT_TRUE(result != CS_SUCCEED || !std::string_view(row.label).starts_with("set-up"));
      EXPECT_EQ(result == CS_SUCCEED, context.globals.utf8_charset != nullptr) << row.label;
      EXPECT_EQ(result == CS_SUCCEED, context.globals.lm != nullptr) << row.label;
      if (result == CS_SUCCEED) result = context.load("default", &entry);
      EXPECT_EQ(row.result, result) << row.label;
      if (row.file != ids && row.file != "charsets/utf8/utf8.cfg") {
        EXPECT_EQ(home.file(row.file), context.error) << row.label;
      }
      EXPECT_EQ(nullptr, entry) << row.label;
      EXPECT_EQ(nullptr, context.globals.cmg_lcache) << row.label;
      EXPECT_EQ(sets, context.globals.cmg_chardesc) << row.label;
    }
    EXPECT_EQ(0U, host_alloc::live_blocks()) << row.label;
    home.write(row.file, whole);
  }
  const std::string printed = testing::internal::GetCapturedStderr();
  EXPECT_NE(std::string::npos, printed.find("Conversion from utf8 to iso_1 is not defined in "
                                            "$TALVEN/charsets/utf8/utf8.cfg\n"))
      << printed;
  std::filesystem::remove("tlvinit.err");
}

// A set by itself: it takes its sort order along when the context has a locale, and needs a way
// from UTF-8 unless its name is a leading part of "utf8".
TEST(Load, CharacterSetAlone) {
  const HomeCopy home;
  home.write("charsets/u/charset.loc", home.read("charsets/koi8/charset.loc"));
  home.write("charsets/u/u.cfg", home.read("charsets/koi8/koi8.cfg"));
  home.remove("charsets/cp850/nocase.srt");
  home.remove("charsets/cp437/cp437.cfg");
  const struct {
    std::string charset, sortorder;
    bool has_locale;
    CS_RETCODE result;
    const char* printed;
  } rows[] = {{"koi8", "nocase", true, CS_SUCCEED, ""},
              {"koi8", "nocase", false, CS_SUCCEED, ""},
              {"cp850", "nocase", true, CS_INTL_NOFILE, ""},
              {"iso15", "none", true, CS_FAIL, ""},
              {"iso15", "none", false, CS_SUCCEED, ""},
              {"u", "", true, CS_SUCCEED, ""},
              {"cp437", "", false, CS_INTL_NOFILE,
               "Cannot load the conversion configuration of cp437 from "
               "$TALVEN/charsets/cp437/cp437.cfg\n"}};
  for (auto row : rows) {
    SCOPED_TRACE(row.charset + (row.has_locale ? " with a locale" : " alone"));
    Context context;
    ASSERT_EQ(CS_SUCCEED, context.init());
    const CsCharDesc* before = context.globals.cmg_chardesc;
    CS_LOCALE locale{};
    context.context.ctxlocale = row.has_locale ? &locale : nullptr;
    CsLocCache entry{};
    entry.charname = row.charset.data();
    entry.charnamelen = static_cast<CS_INT>(row.charset.size());
    if (!row.sortorder.empty()) entry.sortname = row.sortorder.data();
    testing::internal::CaptureStderr();
    EXPECT_EQ(row.result, comn__intl_load_charset(context, 99, &entry, nullptr, 0));
    EXPECT_EQ(row.printed, testing::internal::GetCapturedStderr());
    EXPECT_EQ(row.result == CS_SUCCEED, entry.locchardesc != nullptr);
    EXPECT_EQ(row.result == CS_SUCCEED, before != context.globals.cmg_chardesc);
    if (entry.locchardesc == nullptr) continue;
    EXPECT_EQ(row.has_locale && row.charset == "koi8", entry.locchardesc->sort_order != nullptr);
  }
  std::filesystem::remove("tlvinit.err");
}

TEST(Load, TakesTheHostsLocks) {
  static int locks_taken;
  locks_taken = 0;
  const ShippedHome home;
  Context context;
  ASSERT_EQ(CS_SUCCEED, context.init());
  CS_THREAD table{};
  table.take_mutex_fn = table.release_mutex_fn = [](COMN_MUTEX*) -> CS_RETCODE {
    ++locks_taken;
    return CS_SUCCEED;
  };
  context.context.ctxthread = &table;
  CsLocCache* entry = nullptr;
  EXPECT_EQ(CS_SUCCEED, context.load("default", &entry));
  EXPECT_EQ(2, locks_taken);
  table.take_mutex_fn = nullptr;
  EXPECT_EQ(CS_SUCCEED, context.load("german", &entry)) << "a host that needs no locks";
  table.take_mutex_fn = [](COMN_MUTEX*) -> CS_RETCODE { return CS_FAIL; };
  CS_LOCALE* locale = nullptr;
  EXPECT_EQ(CS_FAIL, context.load("default", &entry));
  EXPECT_EQ(CS_FAIL, comn_loc_alloc(context, &locale));
  EXPECT_EQ(3, locks_taken) << "what was not taken is not released";
  context.context.ctxthread = nullptr;
}

class Locales : public testing::Test {
 protected:
  Locales() {
    EXPECT_EQ(CS_SUCCEED, context_.init());
    EXPECT_EQ(CS_SUCCEED, context_.load("de_DE.utf8", &german_));
    EXPECT_EQ(CS_SUCCEED, context_.load("ja_JP", &japanese_));
  }
  ShippedHome home_;
  Context context_;
  CsLocCache *german_ = nullptr, *japanese_ = nullptr;
};

TEST_F(Locales, Strings) {
  CS_LOCALE locale = all(german_);
  locale.ctypeptr = japanese_;
  const struct {
    CS_INT category, item;
    const char* text;
  } rows[] = {{1, 1, "utf8"}, {2, 4, "japanese.sjis"}, {3, 2, "german"}, {4, 3, "binary"}};
  for (const auto& row : rows) {
    const auto length = static_cast<CS_INT>(std::strlen(row.text));
    std::string buffer(20, '#');
    CS_INT outlen = -1;
    EXPECT_EQ(CS_FAIL,
              com_intl_getstr(&locale, row.category, row.item, buffer.data(), length - 1, &outlen));
    EXPECT_EQ(std::string(20, '#'), buffer) << row.text;
    EXPECT_EQ(CS_SUCCEED,
              com_intl_getstr(&locale, row.category, row.item, buffer.data(), length, &outlen));
    EXPECT_EQ(length, outlen);
    EXPECT_EQ(std::string(row.text) + "#", buffer.substr(0, outlen + 1U));
  }
  char buffer[20];
  CS_INT outlen = 0;
  for (const auto& [category, item, room] :
       {std::array{0, 1, 20}, {7, 1, 20}, {1, 5, 20}, {1, 1, 0}})
    EXPECT_DEATH(com_intl_getstr(&locale, category, item, buffer, room, &outlen), "assertion");
}

TEST_F(Locales, Comparison) {
  CsLocCache* swiss = nullptr;
  ASSERT_EQ(CS_SUCCEED, context_.load("german", &swiss));
  const CS_LOCALE german = all(german_), iso = all(swiss), japanese = all(japanese_), none{};
  CS_LOCALE mixed = all(japanese_);
  mixed.timeptr = german_;
  for (CS_INT category = 1; category <= 6; ++category) {
    for (CS_INT level = 1; level <= 3; ++level) {
      EXPECT_EQ(0, com_intl_loccmp(category, level, &german, &german));
      EXPECT_EQ(level == 2 ? 0 : 1, com_intl_loccmp(category, level, &german, &iso))
          << "one language, two character sets: level " << level;
      EXPECT_EQ(1, com_intl_loccmp(category, level, &german, &japanese));
      EXPECT_EQ(1, com_intl_loccmp(category, level, &german, &none));
      EXPECT_EQ(category == 6 ? 0 : 1, com_intl_loccmp(category, level, &german, &mixed));
    }
  }
  EXPECT_DEATH(com_intl_loccmp(7, 1, &german, &iso), "assertion");
  EXPECT_DEATH(com_intl_loccmp(1, 4, &german, &iso), "assertion");
}

TEST_F(Locales, Records) {
  CS_LOCALE *empty = nullptr, *first = nullptr, *second = nullptr;
  ASSERT_EQ(CS_SUCCEED, comn_loc_alloc(context_, &empty));
  EXPECT_EQ(nullptr, empty->timeptr);
  ASSERT_EQ(CS_SUCCEED, comn_loc_alloc(context_, &first));
  *first = {german_, japanese_, german_, german_, german_, japanese_, first->next};
  context_.context.ctxlocale = first;
  ASSERT_EQ(CS_SUCCEED, comn_loc_alloc(context_, &second));
  EXPECT_EQ(japanese_, second->ctypeptr);
  EXPECT_EQ(first, second->next) << "newest first";
  EXPECT_EQ(second, context_.globals.cmg_locale);
  CS_LOCALE other{};
  other.next = second;
  EXPECT_EQ(CS_SUCCEED, comn_loc_copy(&other, first));
  EXPECT_EQ(japanese_, other.timeptr);
  EXPECT_EQ(second, other.next);
  EXPECT_EQ(CS_FAIL, comn_loc_validate(context_, &other));
  EXPECT_EQ(CS_SUCCEED, comn_loc_drop(context_, first));
  EXPECT_EQ(nullptr, context_.context.ctxlocale);
  EXPECT_EQ(CS_FAIL, comn_loc_validate(context_, first));
  EXPECT_EQ(empty, second->next);
  context_.context.ctxlocale = second;
  context_.context.ctxdeflocale = static_cast<CS_LOCALE*>(comn_malloc(sizeof(CS_LOCALE)));
  EXPECT_EQ(CS_SUCCEED, comn_loc_drop_all(context_));
  EXPECT_EQ(nullptr, context_.globals.cmg_locale);
  EXPECT_EQ(nullptr, context_.context.ctxlocale);
  EXPECT_EQ(nullptr, context_.context.ctxdeflocale);
}

TEST_F(Locales, NamesInTheLocalesCharacterSet) {
  const CS_LOCALE japanese = all(japanese_), german = all(german_);
  const struct {
    const char* label;
    const CS_LOCALE* locale;
    const char* name;
    const char* converted;  // null: refused
  } rows[] = {{"two bytes", &japanese, "\u65e5x", "\x93\xfax"},
              {"missing there", &japanese, "\u00fc", "\x81\xac"},
              {"malformed", &japanese, "\xC0\xAF", nullptr},
              {"utf8", &german, "\u00fc", "\u00fc"},
              {"malformed utf8", &german, "\xED\xA0\x80", nullptr}};
  for (const auto& row : rows) {
    std::string buffer(20, '#');
    CS_INT outlen = -1;
    const CS_RETCODE result = com_intl_get_locname(context_, row.locale, row.name, CS_NULLTERM,
                                                   buffer.data(), 20, &outlen);
    EXPECT_EQ(row.converted == nullptr ? CS_FAIL : CS_SUCCEED, result) << row.label;
    if (row.converted == nullptr) continue;
    EXPECT_EQ(row.converted, buffer.substr(0, static_cast<std::size_t>(outlen))) << row.label;
  }
  CS_INT outlen = -1;
  char buffer[4];
  EXPECT_EQ(CS_FAIL,
            com_intl_get_locname(context_, &japanese, "\u65e5x", CS_NULLTERM, buffer, 2, &outlen));
  EXPECT_EQ(CS_FAIL,
            com_intl_get_locname(context_, &german, "\u00fc", CS_NULLTERM, buffer, 1, &outlen));
  EXPECT_EQ(CS_SUCCEED, com_intl_get_locname(context_, nullptr, "", 0, buffer, 4, &outlen));
  EXPECT_EQ(0, outlen);
  EXPECT_EQ(CS_FAIL, com_intl_get_locname(context_, nullptr, "a", 1, buffer, 4, &outlen));
  CS_LOCALE current = japanese;
  context_.context.ctxlocale = &current;
  EXPECT_EQ(CS_SUCCEED, com_intl_get_locname(context_, nullptr, "\u65e5", 3, buffer, 4, &outlen));
  EXPECT_EQ(2, outlen);
  context_.context.ctxlocale = nullptr;
}

TEST_F(Locales, SortOrders) {
  CsLocCache *nocase = nullptr, *binary = nullptr, *sjis = nullptr;
  ASSERT_EQ(CS_SUCCEED, context_.load("us_english.nocase", &nocase));
  ASSERT_EQ(CS_SUCCEED, context_.load("us_english", &binary));
  ASSERT_EQ(CS_SUCCEED, context_.load("s", "sjis", "japanese", "nocase", &sjis));
  const CS_LOCALE folding = all(nocase), bytes = all(binary), pairs = all(sjis), none{};
  const struct {
    const char* label;
    const CS_LOCALE* locale;
    std::string_view text1, text2;
    int sign;
  } rows[] = {{"binary", &bytes, "a", "B", 1},
              {"binary leading part", &bytes, "a", "aB", -1},
              {"no case", &folding, "a", "B", -1},
              {"no case, equal", &folding, "Stra\xDF\xE9", "sTRA\xDF\xC9", 0},
              {"leading part", &folding, "ab", "abc", -1},
              {"second bytes keep their case", &pairs, "\x81\x61", "\x81\x41", 1},
              {"single before double", &pairs, "z", "\x81\x40", -1},
              {"cut character", &pairs, "\x81", "\x81\x40", -1},
              {"no sort order", &none, "a", "B", 1}};
  for (const auto& row : rows) {
    const auto compare = [&](std::string_view a, std::string_view b) {
      const CS_INT order = com_intl_compare(
          row.locale, reinterpret_cast<const CS_BYTE*>(a.data()), static_cast<CS_INT>(a.size()),
          reinterpret_cast<const CS_BYTE*>(b.data()), static_cast<CS_INT>(b.size()));
      return (order > 0) - (order < 0);
    };
    EXPECT_EQ(row.sign, compare(row.text1, row.text2)) << row.label;
    EXPECT_EQ(-row.sign, compare(row.text2, row.text1)) << row.label;
  }
  const auto* high = reinterpret_cast<const CS_BYTE*>("a\xFF");
  EXPECT_LT(0, com_unsignstrcmp(high, reinterpret_cast<const CS_BYTE*>("ab")));
}

}  // namespace
