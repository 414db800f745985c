// Locale names, the cache, a load with each of its steps failing, and what is asked of a locale.
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "comnlib/charset.h"
#include "comnlib/convert.h"
#include "comnlib/datetime.h"
#include "intl/charset.h"
#include "intl/com_intl.h"
#include "intl/com_loc.h"
#include "intl/locdata.h"
#include "intl/message.h"
#include "intl_host.h"
#include "support/cancelled.h"
#include "support/host_alloc.h"

namespace {

using intl_host::all;
using intl_host::Context;
using intl_host::HomeCopy;
using intl_host::ShippedContext;

const std::string kTable = "locales/locales.dat";

TEST(Lookup, LinesOfTheTable) {
  const HomeCopy home;
  const struct {
    std::string table;
    CS_RETCODE result;
    const char* values = nullptr;  // language/charset/sort order/date/number/money
  } rows[] = {{"[linux]\nlocale = x, l, c, , , n\n", CS_SUCCEED, "l/c/binary//n/"},
              {"[linux]\nlocale = x, l, c, s, d, n, m, more\n", CS_SUCCEED, "l/c/s/d/n/m"},
              {"[x]\nkey = x\n[linux]\nlocale = x, l, c\n", CS_SUCCEED, "l/c/binary///"},
              {"[linux]\n[linux]\nlocale = x, l, c\n", CS_FAIL},
              {"[Linux]\nlocale = x, l, c\n", CS_FAIL},
              {"[linux]\nlocales = y\nlocale = x, l, c\n", CS_FAIL},
              {"[linux]\nlocale = x, l, c\nother = y\n", CS_SUCCEED, "l/c/binary///"},
              {"[linux]\nlocale = x, l\n", CS_FAIL},
              {"[linux]\nlocale = x, , c\n", CS_FAIL},
              {"[linux]\nlocale = x, l, , s\n", CS_FAIL},
              {"[linux]\nlocale = xy, l, c\n", CS_FAIL},
              {"[linux]\nlocale = y, \"\nlocale = x, l, c\n", CS_SUCCEED, "l/c/binary///"},
              {"[linux]\nlocale = \"y\nlocale = x, l, c\n", CS_INTL_LIBERR},
              {"[linux]\nlocale = x, l, c, \"s\n", CS_INTL_LIBERR},
              {"[linux\nlocale = x, l, c\n", CS_INTL_LIBERR},
              {"[linux]\nlocale = x, l, c, " + std::string(255, 's') + "\n", CS_SUCCEED}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.table);
    home.write(kTable, row.table);
    CS_CONTEXT context{};
    CsLocNames names;
    char error[300];
    EXPECT_EQ(row.result, comn__intl_lookup(&context, "x", 1, &names, error, sizeof error));
    EXPECT_EQ(home.file(kTable), error);
    EXPECT_EQ(row.result == CS_INTL_LIBERR, context.ctxintlerr < 0);
    if (row.values == nullptr) continue;
    std::string values = names.lang;
    for (const char* name :
         {names.charset, names.sortorder, names.datetime, names.numeric, names.money})
      values += std::string("/") + name;
    EXPECT_EQ(row.values, values);
    EXPECT_EQ(std::strlen(names.sortorder), static_cast<std::size_t>(names.sortorderlen));
  }
  CS_CONTEXT context{};
  CsLocNames names;
  home.write(kTable, "[linux]\nlocale = x, l, c\n");
  intl_host::close_fails = true;
  EXPECT_EQ(CS_INTL_LIBERR, comn__intl_lookup(&context, "x", 1, &names, nullptr, 0));
  EXPECT_EQ(-7, context.ctxintlerr);
  intl_host::close_fails = false;
  home.remove(kTable);
  EXPECT_EQ(CS_INTL_NOFILE, comn__intl_lookup(&context, "x", 1, &names, nullptr, 0));
  home.write(kTable, "[linux]\nlocale = x, l, " + std::string(256, 'c') + "\n");
  EXPECT_DEATH(comn__intl_lookup(&context, "x", 1, &names, nullptr, 0), "assertion failed");
  EXPECT_EQ(0, intl_host::files_open);
}

TEST(Load, SharesAndCachesAndTakesNamedConventions) {
  ShippedContext context;
  CsOid oid = 0;
  EXPECT_EQ(CS_SUCCEED, comn_globalid(context, "charset", "ucs2x", 4, &oid));
  EXPECT_EQ(context.globals.ucs2_oid, oid);
  EXPECT_EQ(CS_FAIL, comn_globalid(context, "collate", "ucs2", CS_NULLTERM, &oid));
  const int after_init = intl_host::files_opened;
  EXPECT_EQ(CS_SUCCEED, context.init()) << "a second set-up does nothing";
  EXPECT_EQ(after_init, intl_host::files_opened);
  CsLocCache *first = nullptr, *again = nullptr, *same_sets = nullptr;
  ASSERT_EQ(CS_SUCCEED, context.load("default", &first));
  const int files = intl_host::files_opened;
  ASSERT_EQ(CS_SUCCEED, comn_intl_load(context, "defaultX", 7, &again, nullptr, 0));
  EXPECT_EQ(first, again);
  EXPECT_EQ(files, intl_host::files_opened) << "no file is read again";
  ASSERT_EQ(CS_SUCCEED, context.load("us_english", &same_sets));
  EXPECT_EQ(files + 1, intl_host::files_opened) << "locales.dat alone";
  EXPECT_NE(first, same_sets);
  EXPECT_EQ(first->locchardesc, same_sets->locchardesc);
  EXPECT_EQ(first->locdateinfo, same_sets->locdateinfo);
  EXPECT_EQ(first->locmessage, same_sets->locmessage);
  EXPECT_EQ(same_sets, context.globals.cmg_lcache);
  EXPECT_EQ(first, same_sets->locnext);

  CsLocCache* given = nullptr;
  ASSERT_EQ(CS_SUCCEED, context.load("mine", "cp850", "french", "nocase", &given));
  EXPECT_STREQ("cp850", given->charname);
  const std::array<const char*, 4> names{"mine", "cp850", "french", "nocase"};
  const std::array<const char*, 4> others{"yours", "iso_1", "us_english", "binary"};
  for (std::size_t i = 0; i <= names.size(); ++i) {
    auto asked = names;
    if (i < names.size()) asked[i] = others[i];
    CsLocCache* found = nullptr;
    ASSERT_EQ(CS_SUCCEED, context.load(asked[0], asked[1], asked[2], asked[3], &found));
    EXPECT_EQ(i == names.size(), found == given) << asked[0] << asked[1] << asked[2] << asked[3];
    EXPECT_STREQ(asked[1], found->charname);
    EXPECT_STREQ(asked[2], found->langname);
    ASSERT_EQ(CS_SUCCEED, context.load("mine", &found));
    EXPECT_EQ(given, found) << "the name alone goes on naming the first";
  }
  EXPECT_EQ("d\202cembre", given->locdateinfo->conventions.months[11]);
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

  CsLocCache* entry = nullptr;
  ASSERT_EQ(CS_SUCCEED, context.load("us_english.named", &entry));
  EXPECT_STREQ("us_english", entry->com__datename);
  EXPECT_STREQ("us_english", entry->numname);
  EXPECT_EQ(nullptr, entry->locdateinfo);
  EXPECT_EQ("$", entry->locmoninfo->symbol);
  EXPECT_EQ(CS_SUCCEED, comn__load_locdata(context, 5, "us_english", entry, nullptr, 0));
  EXPECT_EQ(CS_SUCCEED, comn__load_locdata(context, 6, "us_english", entry, nullptr, 0));
  EXPECT_EQ("December", entry->locdateinfo->conventions.months[11]);
  const int before = intl_host::files_opened;
  EXPECT_EQ(CS_SUCCEED, comn__load_locdata(context, 6, "us_english", entry, nullptr, 0));
  EXPECT_EQ(before, intl_host::files_opened);
  EXPECT_EQ(CS_FAIL, comn__load_locdata(context, 3, "us_english", entry, nullptr, 0));
  EXPECT_EQ(CS_INTL_NOFILE, comn__load_locdata(context, 4, "none", entry, nullptr, 0));
}

// Each fault breaks one file of the home: "text->its replacement", or the file is removed. The load
// names the file and leaves nothing behind. A "!" marks those that the companion library finds.
// The refusals of character sets are tested with their loader.
TEST(Load, EveryRefusal) {
  const std::pair<std::string, std::string> rows[] = {
      {kTable, "locale = default->locale = other"},
      {"config/objectid.dat",
       "removed|![natlang]->[natlang|[->;|binary = ->x = |ucs2 = ->x = |iso_1 = 2->iso_x = 2|"
       "iso_1 = 2->iso_1 = 2x|iso_1 = 2->iso_1 = 0|iso_1 = 2->iso_1 = 0x80000000"},
      {"locales/message/us_english/comnlib.loc",
       "removed|-101 =->0x-65 =|[messages]->[message]|!-101 =->-101|!-101 = \"->-101 = \"\"x"},
      {"charsets/iso_1/iso_1.cfg",
       "replacement->description|= 3F->= 3G|= 3F->=|= 3F->= 3F3F3F3F3F|table =->x = y\ntable =|"
       "!to = utf8->to|!to = utf8->to = \"utf8|table =->algorithm = utf8\ntable =|"
       "table = iso_1->algorithm = x|table = iso_1->table = " +
           std::string(256, 't')},
      {"charsets/utf8/utf8.cfg", "to = iso_1->to = iso_x"},
      {"charsets/iso_1/binary.srt",
       "removed|kind = binary->kind = x|kind = binary->|kind->x = y\nkind|"
       "!kind = binary->kind = binary\nx|kind = binary->kind = weights\nweights = 00|"
       "kind = binary->kind = binary\nfold = 1, 1, 1, 2|"
       "kind = binary->kind = folded\nfold = 2, 1, 1, 3|"
       "kind = binary->kind = folded\nfold = 1, 2, 0, 3|"
       "kind = binary->kind = folded\nfold = 1, 2, 1|"
       "kind = binary->kind = folded\nfold = 1, 2, 1, 0x10FFFF|"
       "kind = binary->kind = folded\nfold = 5, 6, 1, 8\nfold = 6, 7, 1, 9"},
      {"locales/us_english/iso_1/common.loc",
       "removed|January, ->|months = ->;|days = ->;|order = mdy->order = mmm|style = ->styles = |"
       "style = default->style = x|grouping = 3->grouping = -1|grouping = 3->grouping = 10|"
       "decimal = .->decimal =|before\ndecimal = .->before|place = before->place = x|"
       "[money]->[cash]|[datetime]->[x]|[numeric]->[x]|!separator = \",\"->separator = \",|"
       "[money]->[numeric]\ndecimal = .\n[money]"}};
  const HomeCopy home;
  testing::internal::CaptureStderr();
  for (const auto& [file, faults] : rows) {
    const std::string whole = home.read(file);
    std::istringstream list(faults);
    for (std::string fault; std::getline(list, fault, '|');) {
      SCOPED_TRACE(file + ": " + fault);
      const bool by_companion = fault.starts_with('!'), removed = fault == "removed";
      const std::size_t arrow = fault.find("->");
      if (removed) {
        home.remove(file);
      } else {
        home.change(file, fault.substr(by_companion, arrow - by_companion),
                    fault.substr(arrow + 2));
      }
      {
        Context context;
        CsLocCache* entry = nullptr;
        CS_RETCODE result = context.init();
        const CsCharDesc* sets = context.globals.cmg_chardesc;
        EXPECT_TRUE(result != CS_SUCCEED || !fault.ends_with("->x = ")) << "a set that init needs";
        EXPECT_EQ(result == CS_SUCCEED, context.globals.utf8_charset != nullptr);
        EXPECT_EQ(result == CS_SUCCEED, context.globals.lm != nullptr);
        if (result == CS_SUCCEED) result = context.load("default", &entry);
        EXPECT_EQ(removed ? CS_INTL_NOFILE : by_companion ? CS_INTL_LIBERR : CS_FAIL, result);
        if (file != "config/objectid.dat" && file != "charsets/utf8/utf8.cfg") {
          EXPECT_EQ(home.file(file), context.error);
        }
        EXPECT_EQ(nullptr, entry);
        EXPECT_EQ(nullptr, context.globals.cmg_lcache);
        EXPECT_EQ(sets, context.globals.cmg_chardesc);
      }
      EXPECT_EQ(0U, host_alloc::live_blocks());
      home.write(file, whole);
    }
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

// A text in a locale, or "" with the result of its conversion.
std::pair<CS_RETCODE, std::string> date_text(CS_CONTEXT& context, CsLocCache* entry) {
  CS_LOCALE locale = all(entry);
  CS_DATAFMT from{}, to{};
  from.datatype = CS_DATETIME_TYPE;
  to.datatype = CS_CHAR_TYPE;
  to.maxlength = 40;
  to.locale = &locale;
  const CS_DATETIME value{46205, 16292775};
  char text[40];
  CS_INT length = 0;
  const CS_RETCODE code = comn_datetochar(&context, &from, &value, &to, text, &length);
  if (code != CS_SUCCEED) return {code, ""};
  CS_DATAFMT back = to;
  back.maxlength = length;
  CS_DATETIME read{};
  CS_INT size = 0;
  EXPECT_EQ(CS_SUCCEED, comn_chartodatetime(&context, &back, text, &from, &read, &size));
  EXPECT_EQ(value.dtdays, read.dtdays);
  return {code, std::string(text, static_cast<std::size_t>(length))};
}

TEST(Load, NamedDateConventionsAreReadWhenTheyAreNeeded) {
  const HomeCopy home;
  const char* const file = "locales/datetime/us_english.dt";
  const std::string whole = home.read(file);
  home.change(file, "Jul, Aug", "juil, Aug");
  home.change(file, "order = mdy", "order = dmy");
  Context context;
  ASSERT_EQ(CS_SUCCEED, context.init());
  CsLocCache *named = nullptr, *plain = nullptr, *iso = nullptr;
  ASSERT_EQ(CS_SUCCEED, context.load("us_english.named", &named));
  ASSERT_EQ(CS_SUCCEED, context.load("us_english", &plain));
  ASSERT_EQ(CS_SUCCEED, context.load("iso", &iso));
  EXPECT_EQ(nullptr, named->locdateinfo);

  using Result = std::pair<CS_RETCODE, std::string>;
  const std::string changed = home.read(file);
  for (const std::string& bad : {std::string("[x]\n"), std::string("[datetime\n")}) {
    home.write(file, bad);
    EXPECT_EQ((Result{CS_CVT_STYLE, ""}), date_text(context.context, named)) << bad;
  }
  home.remove(file);
  EXPECT_EQ((Result{CS_CVT_STYLE, ""}), date_text(context.context, named));
  home.write(file, changed);
  const int before = intl_host::files_opened;
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i)
    threads.emplace_back([&] {
      EXPECT_EQ((Result{CS_SUCCEED, " 4 juil 2026  3:05PM"}), date_text(context.context, named));
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(before + 1, intl_host::files_opened);
  EXPECT_NE(nullptr, named->locdateinfo);
  EXPECT_EQ((Result{CS_SUCCEED, "Jul  4 2026  3:05PM"}), date_text(context.context, plain));
  EXPECT_EQ((Result{CS_SUCCEED, "2026-07-04T15:05:09.250"}), date_text(context.context, iso));
  home.write(file, whole);
}

// Decimal mark, separator, digits of a group, symbol and its place, as "," "." 3 "x" 1.
std::string digits_text(Context& context, const CS_LOCALE* locale, CS_INT category) {
  com_digits digits{};
  const CS_RETCODE code = comn_loc_digits(context, locale, category, &digits);
  if (code != CS_SUCCEED) return std::to_string(code);
  std::string text;
  text.append(digits.decimal, static_cast<std::size_t>(digits.decimallen)) += ' ';
  text.append(digits.separator, static_cast<std::size_t>(digits.separatorlen)) += ' ';
  text += std::to_string(digits.grouping) + ' ';
  text.append(digits.symbol, static_cast<std::size_t>(digits.symbollen)) += ' ';
  return text + std::to_string(digits.symbolafter);
}

TEST(Load, DigitsOfALocaleAreReadWhenTheyAreNeeded) {
  const HomeCopy home;
  Context context;
  ASSERT_EQ(CS_SUCCEED, context.init());
  EXPECT_EQ(".  0  0", digits_text(context, nullptr, COM_LC_NUMERIC)) << "no locale";
  CsLocCache *german = nullptr, *named = nullptr;
  ASSERT_EQ(CS_SUCCEED, context.load("de_DE.UTF-8", &german));
  ASSERT_EQ(CS_SUCCEED, context.load("de_CH.UTF-8", &named));
  CS_LOCALE in_german = all(german), in_swiss = all(named), none{};
  EXPECT_EQ(".  0  0", digits_text(context, &none, COM_LC_MONETARY));
  EXPECT_EQ(", . 3  0", digits_text(context, &in_german, COM_LC_NUMERIC));
  context.context.ctxlocale = &in_german;
  EXPECT_EQ(", . 3 \u20ac 1", digits_text(context, nullptr, COM_LC_MONETARY));
  context.context.ctxlocale = nullptr;
  ASSERT_NE(nullptr, named->numname);
  EXPECT_EQ(nullptr, named->locnuminfo);
  const std::string file = std::string("locales/numeric/") + named->numname + ".num";
  const std::string whole = home.read(file);
  home.remove(file);
  EXPECT_EQ(std::to_string(CS_INTL_NOFILE), digits_text(context, &in_swiss, COM_LC_NUMERIC));
  home.write(file, whole);
  EXPECT_EQ(". ' 3  0", digits_text(context, &in_swiss, COM_LC_NUMERIC));
  EXPECT_EQ(". ' 3 CHF 0", digits_text(context, &in_swiss, COM_LC_MONETARY));
}

// An identifier file that is being written holds nothing for a moment.
TEST(Load, EmptyIdentifiersAreReadAgain) {
  const HomeCopy home;
  const std::string whole = home.read("config/objectid.dat");
  home.write("config/objectid.dat", "");
  Context context;
  EXPECT_EQ(CS_FAIL, context.init());
  home.write("config/objectid.dat", whole);
  EXPECT_EQ(CS_SUCCEED, context.init());
}

// A thread that is cancelled while it sets up and loads finishes first, on a stack of 32 KB.
TEST(Load, CancellationWaitsAndAStackOf32KB) {
  const intl_host::ShippedHome home;
  Context context;
  CsLocCache* entry = nullptr;
  pthread_attr_t attributes;
  ASSERT_EQ(0, pthread_attr_init(&attributes));
#ifndef __SANITIZE_ADDRESS__
  ASSERT_EQ(0, pthread_attr_setstacksize(&attributes, 32 << 10));
#endif
  const auto load = [&] {
    context.init();
    context.load("german", &entry);
  };
  EXPECT_TRUE(cancelled::waits_for(load, &attributes));
  EXPECT_EQ(0, pthread_attr_destroy(&attributes));
  EXPECT_NE(nullptr, entry);
}

// Whichever step of a host's own reader finds no memory, the load says so, and the next one
// succeeds.
TEST(Load, AReaderWithoutMemory) {
  const intl_host::ShippedHome home;
  CS_RETCODE result = CS_MEM_ERROR;
  int steps = 0;
  for (; result == CS_MEM_ERROR; steps += 1 + steps / 32) {
    Context context;
    CsLocCache* entry = nullptr;
    ASSERT_EQ(CS_SUCCEED, context.init());
    intl_host::steps_left = steps;
    result = context.load("ja_JP.SJIS", &entry);
    intl_host::steps_left = -1;
    EXPECT_EQ(CS_SUCCEED, context.load("ja_JP.SJIS", &entry)) << "after " << steps << " steps";
  }
  EXPECT_EQ(CS_SUCCEED, result);
  EXPECT_LT(1000, steps);
  EXPECT_EQ(0, intl_host::files_open);
}

TEST(Load, TakesTheHostsLocks) {
  static int locks_taken;
  locks_taken = 0;
  ShippedContext context;
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
    EXPECT_EQ(CS_SUCCEED, context_.load("de_DE.utf8", &german_));
    EXPECT_EQ(CS_SUCCEED, context_.load("ja_JP", &japanese_));
  }
  ShippedContext context_;
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
  context_.context.ctxdeflocale = first;
  CS_LOCALE other{};
  other.next = second;
  EXPECT_EQ(CS_SUCCEED, comn_loc_copy(&other, first));
  EXPECT_EQ(japanese_, other.timeptr);
  EXPECT_EQ(second, other.next);
  EXPECT_EQ(CS_FAIL, comn_loc_validate(context_, &other));
  EXPECT_EQ(CS_SUCCEED, comn_loc_drop(context_, first));
  EXPECT_EQ(nullptr, context_.context.ctxlocale);
  EXPECT_EQ(nullptr, context_.context.ctxdeflocale);
  EXPECT_DEATH(comn_loc_drop(context_, &other), "assertion") << "in no list";
  EXPECT_EQ(CS_FAIL, comn_loc_validate(context_, first));
  EXPECT_EQ(empty, second->next);
  context_.context.ctxlocale = context_.context.ctxdeflocale = second;
  EXPECT_EQ(CS_SUCCEED, comn_loc_drop_all(context_)) << "the default is in the list: freed once";
  EXPECT_EQ(nullptr, context_.context.ctxdeflocale);
  context_.context.ctxdeflocale = static_cast<CS_LOCALE*>(comn_malloc(sizeof(CS_LOCALE)));
  EXPECT_EQ(CS_SUCCEED, comn_loc_drop_all(context_));
  EXPECT_EQ(nullptr, context_.globals.cmg_locale);
  EXPECT_EQ(nullptr, context_.context.ctxlocale);
  EXPECT_EQ(nullptr, context_.context.ctxdeflocale);
}

TEST_F(Locales, NamesInTheLocalesCharacterSet) {
  const CS_LOCALE japanese = all(japanese_), german = all(german_);
  const struct {
    const CS_LOCALE* locale;
    std::string name;
    CS_INT room;
    const char* converted;  // null: refused
  } rows[] = {{&japanese, "\u65e5x", 20, "\x93\xfax"},
              {&japanese, "\u00fc", 20, "\x81\xac"},
              {&japanese, "\xC0\xAF", 20, nullptr},
              {&japanese, "\u65e5x", 2, nullptr},
              {&german, "\u00fc", 20, "\u00fc"},
              {&german, "\u00fc", 1, nullptr},
              {&german, "\xED\xA0\x80", 20, nullptr},
              {nullptr, "", 20, ""},
              {nullptr, "a", 20, nullptr}};
  char buffer[20];
  CS_INT outlen = -1;
  for (const auto& [locale, name, room, converted] : rows) {
    EXPECT_EQ(
        converted == nullptr ? CS_FAIL : CS_SUCCEED,
        com_intl_get_locname(context_, locale, name.c_str(), CS_NULLTERM, buffer, room, &outlen))
        << name;
    if (converted == nullptr) continue;
    EXPECT_EQ(converted, std::string(buffer, static_cast<std::size_t>(outlen)));
  }
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
  CsLocCache *latin = nullptr, *unicode = nullptr;
  ASSERT_EQ(CS_SUCCEED, context_.load("d", "iso_1", "french", "dictionary", &latin));
  ASSERT_EQ(CS_SUCCEED, context_.load("u", "utf8", "russian", "dictionary", &unicode));
  const CS_LOCALE folding = all(nocase), bytes = all(binary), pairs = all(sjis), none{};
  const CS_LOCALE alphabet = all(latin), codes = all(unicode);
  const struct {
    const CS_LOCALE* locale;
    std::string_view text1, text2;
    int sign;
  } rows[] = {{&bytes, "a", "B", 1},
              {&bytes, "a", "aB", -1},
              {&folding, "a", "B", -1},
              {&folding, "Stra\xDF\xE9", "sTRA\xDF\xC9", 0},
              {&folding, "ab", "abc", -1},
              {&pairs, "\x81\x61", "\x81\x41", 1},
              {&pairs, "z", "\x81\x40", -1},
              {&pairs, "\x81", "\x81\x40", -1},
              {&alphabet, "c\xF4te", "COTE", 0},
              {&alphabet, "\xE9t\xE9", "etude", -1},
              {&alphabet, "z", "\xE0", 1},
              {&codes, "\u00c9t\u00e9 \u0420\u042f", "\u00e9T\u00c9 \u0440\u044f", 0},
              {&codes, "\u0100x", "\u0101Y", -1},
              {&codes, "\u0102", "\u0101", 1},
              {&codes, "[", "a", -1},
              {&codes, "\xE9", "\U0010FFFF", 1},
              {&codes, "a", "A\xE9", -1},
              {&none, "a", "B", 1}};
  for (const auto& row : rows) {
    const auto compare = [&](std::string_view a, std::string_view b) {
      const CS_INT order = com_intl_compare(
          row.locale, reinterpret_cast<const CS_BYTE*>(a.data()), static_cast<CS_INT>(a.size()),
          reinterpret_cast<const CS_BYTE*>(b.data()), static_cast<CS_INT>(b.size()));
      return (order > 0) - (order < 0);
    };
    EXPECT_EQ(row.sign, compare(row.text1, row.text2)) << row.text1;
    EXPECT_EQ(-row.sign, compare(row.text2, row.text1)) << row.text1;
  }
  const auto* high = reinterpret_cast<const CS_BYTE*>("a\xFF");
  EXPECT_LT(0, com_unsignstrcmp(high, reinterpret_cast<const CS_BYTE*>("ab")));
}

}  // namespace
