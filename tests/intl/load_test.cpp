// Locale names, the cache, a load with each of its steps failing, and what is asked of a locale.
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "comnlib/charset.h"
#include "comnlib/diag.h"
#include "comnlib/message.h"
#include "intl/charset.h"
#include "intl/com_intl.h"
#include "intl/com_loc.h"
#include "intl/locdata.h"
#include "intl/message.h"
#include "support/cancelled.h"
#include "support/dates.h"
#include "support/faulty_files.h"
#include "support/hosts.h"
#include "support/stops.h"
#include "support/translated.h"

namespace {

using hosts::all;
using hosts::HomeCopy;
using hosts::LocaleContext;
using hosts::ShippedContext;
using translated::kUnicode, translated::translate, translated::utf16;

constexpr CS_DATETIME kDate{46205, 16292775};  // 4 July 2026, 15:05:09.25
const std::string kTable = "locales/locales.dat";

struct LookUp {
  CS_RETCODE code;
  std::string names;  // language/charset/sort order/date/number/money
  int status;
};

LookUp look_up(const HomeCopy& home) {
  CS_CONTEXT context{};
  CsLocNames names;
  char error[300];
  const CS_RETCODE code = comn__intl_lookup(&context, "x", 1, &names, error, sizeof error);
  EXPECT_EQ(home.file(kTable), error);
  EXPECT_EQ(code < 0, context.ctxintlerr < 0);
  EXPECT_EQ(std::strlen(names.sortorder), static_cast<std::size_t>(names.sortorderlen));
  std::string found = names.lang;
  for (const char* name :
       {names.charset, names.sortorder, names.datetime, names.numeric, names.money})
    found += std::string("/") + name;
  return {code, found, context.ctxintlerr};
}

TEST(Lookup, LinesOfTheTable) {
  const HomeCopy home;
  home.write(kTable, "[linux]\nlocale = x, l, c\n");
  table::for_each_line("intl/data/lookups.txt", [&](const table::Fields& row) {
    faulty_files::expect(home, kTable, row[0], table::text_of(row[1]), table::text_of(row[2]),
                         [&](auto&) {
                           const LookUp found = look_up(home);
                           EXPECT_TRUE(row[3].empty() || row[3] == found.names) << found.names;
                           return found.code;
                         });
  });
  hosts::close_fails = true;
  EXPECT_EQ(CS_INTL_LIBERR, look_up(home).code);
  EXPECT_EQ(-7, look_up(home).status);
  hosts::close_fails = false;
  home.change(kTable, "c\n", "c, " + std::string(256, 's') + "\n");
  EXPECT_DEATH(look_up(home), "assertion failed");
  EXPECT_EQ(0, hosts::files_open);
}

TEST(Load, SharesAndCaches) {
  ShippedContext context;
  CsOid oid = 0;
  EXPECT_EQ(CS_SUCCEED, comn_globalid(context, "charset", "ucs2x", 4, &oid));
  EXPECT_EQ(context.globals.ucs2_oid, oid);
  EXPECT_EQ(CS_FAIL, comn_globalid(context, "collate", "ucs2", CS_NULLTERM, &oid));
  const int after_init = hosts::files_opened;
  EXPECT_EQ(CS_SUCCEED, context.init()) << "a second set-up does nothing";
  EXPECT_EQ(after_init, hosts::files_opened);
  CsLocCache* first = context.entry("default");
  const int files = hosts::files_opened;
  CsLocCache* again = nullptr;
  ASSERT_EQ(CS_SUCCEED, comn_intl_load(context, "defaultX", 7, &again, nullptr, 0));
  EXPECT_EQ(first, again);
  EXPECT_EQ(files, hosts::files_opened) << "no file is read again";
  CsLocCache* same_sets = context.entry("us_english");
  EXPECT_EQ(files + 1, hosts::files_opened) << "locales.dat alone";
  EXPECT_NE(first, same_sets);
  EXPECT_EQ(first->locchardesc, same_sets->locchardesc);
  EXPECT_EQ(first->locdateinfo, same_sets->locdateinfo);
  EXPECT_EQ(first->locmessage, same_sets->locmessage);
  EXPECT_EQ(same_sets, context.globals.cmg_lcache);
  EXPECT_EQ(first, same_sets->locnext);

  CsLocCache* given = context.entry("mine", "cp850", "french", "nocase");
  const std::array<const char*, 4> names{"mine", "cp850", "french", "nocase"};
  const std::array<const char*, 4> others{"yours", "iso_1", "us_english", "binary"};
  for (std::size_t i = 0; i <= names.size(); ++i) {
    auto asked = names;
    if (i < names.size()) asked[i] = others[i];
    CsLocCache* found = context.entry(asked[0], asked[1], asked[2], asked[3]);
    EXPECT_EQ(i == names.size(), found == given) << asked[0] << asked[1] << asked[2] << asked[3];
    EXPECT_STREQ(asked[1], found->charname);
    EXPECT_STREQ(asked[2], found->langname);
    EXPECT_EQ(given, context.entry("mine")) << "the name alone goes on naming the first";
  }
  using comnlib::MessageFile, comnlib::message_text;
  EXPECT_EQ("d\202cembre", given->locdateinfo->conventions.months[11]);
  EXPECT_EQ(",", given->locnuminfo->digits.decimal_point);
  EXPECT_EQ(comnlib::SymbolPlace::kAfter, given->locmoninfo->symbol_place);
  EXPECT_STREQ("division par z\u00e9ro",
               message_text(*given->locmessage, MessageFile::kCommonServices, CS_CVT_DIVZERO));
  EXPECT_EQ(nullptr, message_text(*given->locmessage, MessageFile::kCommon, CS_CVT_DIVZERO));
  CsLocCache* copy = nullptr;
  ASSERT_EQ(CS_SUCCEED, comn__copy_loccache(context, same_sets, &copy));
  EXPECT_STREQ("us_english", copy->locname);
  EXPECT_EQ(same_sets->locchardesc, copy->locchardesc);
  EXPECT_EQ(nullptr, copy->locnext);
  copy->locnext = context.globals.cmg_lcache;  // for the drop of the cache
  context.globals.cmg_lcache = copy;
}

// Money conventions that have a name are read with the locale, the others when they are needed.
TEST(Load, NamedConventions) {
  ShippedContext context;
  CsLocCache* entry = context.entry("fr_CA.utf8");
  EXPECT_STREQ("fr_CA.utf8", entry->com__datename);
  EXPECT_EQ(nullptr, entry->locdateinfo);
  EXPECT_EQ("$", entry->locmoninfo->symbol);
  const std::tuple<CS_INT, const char*, int, CS_RETCODE> rows[] = {
      {COM_LC_NUMERIC, "us_english", 1, CS_SUCCEED}, {COM_LC_TIME, "de_AT.utf8", 1, CS_SUCCEED},
      {COM_LC_TIME, "de_AT.utf8", 0, CS_SUCCEED},    {COM_LC_TIME, "de_AT", 0, CS_INTL_NOFILE},
      {COM_LC_MESSAGE, "us_english", 0, CS_FAIL},    {COM_LC_MONETARY, "x", 0, CS_INTL_NOFILE}};
  for (const auto& [kind, name, files, code] : rows) {
    const int before = hosts::files_opened;
    EXPECT_EQ(code, comn__load_locdata(context, kind, name, entry, nullptr, 0)) << kind << name;
    EXPECT_EQ(before + files, hosts::files_opened) << kind << name;
  }
  EXPECT_EQ("Dezember", entry->locdateinfo->conventions.months[11]);
}

// The load names the file and leaves nothing behind. The refusals of character sets and of their
// tables are tested with their loaders.
TEST(Load, EveryRefusal) {
  const std::string ids = "config/objectid.dat";
  const HomeCopy home;
  const auto load = [&](const std::string& file) {
    LocaleContext context;
    CsLocCache* entry = nullptr;
    CS_RETCODE result = context.init();
    const CsCharDesc* sets = context.globals.cmg_chardesc;
    EXPECT_EQ(result == CS_SUCCEED, context.globals.utf8_charset != nullptr);
    EXPECT_EQ(result == CS_SUCCEED, context.globals.lm != nullptr);
    if (result == CS_SUCCEED) result = context.load("default", &entry);
    if (file != ids && file != "charsets/utf8/utf8.cfg") {
      EXPECT_EQ(home.file(file), context.error);
    }
    EXPECT_EQ(nullptr, entry);
    EXPECT_EQ(nullptr, context.globals.cmg_lcache);
    EXPECT_EQ(sets, context.globals.cmg_chardesc);
    return result;
  };
  testing::internal::CaptureStderr();
  faulty_files::expect_table(home, "intl/data/faulty_files.txt", load);
  const std::string printed = testing::internal::GetCapturedStderr();
  EXPECT_NE(std::string::npos, printed.find("Conversion from utf8 to iso_1 is not defined in "
                                            "$TALVEN/charsets/utf8/utf8.cfg\n"))
      << printed;
  for (const char* const used_by_all : {"binary = ", "ucs2 = "})
    faulty_files::expect(home, ids, "CS_FAIL", used_by_all,
                         "x = ", [](auto&) { return LocaleContext().init(); });
  std::filesystem::remove("tlvinit.err");

  // An identifier file that is being written holds nothing for a moment: it is read again.
  const std::string whole = home.read(ids);
  home.write(ids, "");
  LocaleContext context;
  EXPECT_EQ(CS_FAIL, context.init());
  home.write(ids, whole);
  EXPECT_EQ(CS_SUCCEED, context.init());
}

// A set by itself: it takes its sort order along when the context has a locale, and needs a way
// from UTF-8 unless its name is a leading part of "utf8".
TEST(Load, CharacterSetAlone) {
  const HomeCopy home;
  home.write("charsets/u/charset.loc", home.read("charsets/koi8/charset.loc"));
  home.write("charsets/u/u.cfg", home.read("charsets/koi8/koi8.cfg"));
  home.remove("charsets/cp850/nocase.srt");
  home.remove("charsets/cp437/cp437.cfg");
  const std::tuple<std::string, std::string, bool, CS_RETCODE> rows[] = {
      {"koi8", "nocase", true, CS_SUCCEED},      {"koi8", "nocase", false, CS_SUCCEED},
      {"cp850", "nocase", true, CS_INTL_NOFILE}, {"iso15", "none", true, CS_FAIL},
      {"iso15", "none", false, CS_SUCCEED},      {"u", "", true, CS_SUCCEED},
      {"cp437", "", false, CS_INTL_NOFILE}};
  testing::internal::CaptureStderr();
  for (auto [charset, sortorder, has_locale, result] : rows) {
    SCOPED_TRACE(charset + (has_locale ? " with a locale" : " alone"));
    LocaleContext context;
    ASSERT_EQ(CS_SUCCEED, context.init());
    const CsCharDesc* before = context.globals.cmg_chardesc;
    CS_LOCALE locale{};
    context.context.ctxlocale = has_locale ? &locale : nullptr;
    CsLocCache entry{};
    entry.charname = charset.data();
    entry.charnamelen = static_cast<CS_INT>(charset.size());
    if (!sortorder.empty()) entry.sortname = sortorder.data();
    EXPECT_EQ(result, comn__intl_load_charset(context, 99, &entry, nullptr, 0));
    EXPECT_EQ(result == CS_SUCCEED, entry.locchardesc != nullptr);
    EXPECT_EQ(result == CS_SUCCEED, before != context.globals.cmg_chardesc);
    if (entry.locchardesc == nullptr) continue;
    EXPECT_EQ(has_locale && charset == "koi8", entry.locchardesc->sort_order != nullptr);
  }
  EXPECT_EQ(
      "Cannot load the conversion configuration of cp437 from $TALVEN/charsets/cp437/cp437.cfg\n",
      testing::internal::GetCapturedStderr());
  std::filesystem::remove("tlvinit.err");
}

// Decimal mark, separator, digits of a group, symbol and its place: ", . 3 x 1"; or the code.
std::string digits_text(CS_CONTEXT* context, const CS_LOCALE* locale, CS_INT category) {
  com_digits digits{};
  const CS_RETCODE code = comn_loc_digits(context, locale, category, &digits);
  if (code != CS_SUCCEED) return comn_result_name(code);
  const auto view = [](const CS_CHAR* text, CS_INT length) {
    return std::string_view(text, static_cast<std::size_t>(length));
  };
  std::ostringstream text;
  text << view(digits.decimal, digits.decimallen) << ' '
       << view(digits.separator, digits.separatorlen) << ' ' << digits.grouping << ' '
       << view(digits.symbol, digits.symbollen) << ' ' << digits.symbolafter;
  return text.str();
}

// A locale, and conventions, tables and English messages that are read when they are first needed,
// by whichever thread comes first, and then kept.
TEST(Load, EightThreadsReadFilesOnce) {
  const HomeCopy home;
  const std::string file = "locales/datetime/fr_CA.utf8.dt", whole = home.read(file);
  LocaleContext context;
  ASSERT_EQ(CS_SUCCEED, context.init());
  CsLocCache* named = context.entry("fr_CA.UTF-8");
  // A file that is broken or not there is read again at the next need.
  home.remove(file);
  EXPECT_EQ(CS_CVT_STYLE, dates::write(context, named, kDate).code);
  home.write(file, whole);
  CS_LOCALE thai = all(context.entry("thai")), canadian = all(named);
  context.context.ctxlocale = &thai;
  std::vector<comnlib::Encoding> sets;
  for (const char* name : {"fr_FR@euro", "ru_RU.KOI8-R", "ja_JP.SJIS", "zh_CN.GBK"})
    sets.push_back({context.entry(name)->locchardesc, false});
  EXPECT_EQ(nullptr, named->locdateinfo);
  const int before = hosts::files_opened;
  std::array<CsLocCache*, 8> loaded{};
  std::vector<std::thread> threads;
  for (std::size_t t = 0; t < loaded.size(); ++t)
    threads.emplace_back([&, t] {
      char error[300];
      EXPECT_EQ(CS_SUCCEED,
                comn_intl_load(context, "ru_RU", CS_NULLTERM, &loaded[t], error, sizeof error));
      for (std::size_t i = 0; i < 50; ++i) {
        const auto &set = sets[(t + i) % sets.size()], &other = sets[t % sets.size()];
        const std::string one = translate(context, kUnicode, set, utf16(U'°'), 2).bytes;
        const std::string two = translate(context, set, other, one, 2).bytes;
        EXPECT_EQ(utf16(U'°'), translate(context, other, kUnicode, two, 2).bytes);
      }
      EXPECT_EQ(u"2026 juill.  4  3:05p.m.", dates::write(context, named, kDate).text);
      EXPECT_EQ(", \u00a0 3  0", digits_text(context, &canadian, COM_LC_NUMERIC));
      char words[80];
      CS_INT length = 0;
      EXPECT_EQ(CS_SUCCEED, comn_result_text(context, CS_CVT_DIVZERO, words, 80, &length));
      EXPECT_STREQ("division by zero", words);
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(before + 4 + 1 + 2 + 3 + 5, hosts::files_opened)
      << "tables, Thai's one, dates and numbers, English, Russian";
  for (const CsLocCache* entry : loaded) EXPECT_TRUE(entry != nullptr && entry == loaded[0]);
  EXPECT_NE(nullptr, named->locdateinfo);
  context.context.ctxlocale = nullptr;
}

// A territory may write money with other marks than numbers.
TEST(Load, DigitsOfALocaleAreReadWhenTheyAreNeeded) {
  const HomeCopy home;
  LocaleContext context;
  ASSERT_EQ(CS_SUCCEED, context.init());
  EXPECT_EQ(".  0  0", digits_text(context, nullptr, COM_LC_NUMERIC)) << "no locale";
  CS_LOCALE german = all(context.entry("de_DE.UTF-8"));
  const CS_LOCALE none{}, austrian = all(context.entry("de_AT.UTF-8"));
  EXPECT_EQ(".  0  0", digits_text(context, &none, COM_LC_MONETARY));
  EXPECT_EQ(", . 3  0", digits_text(context, &german, COM_LC_NUMERIC));
  EXPECT_EQ(", . 3 \u20ac 0", digits_text(context, &austrian, COM_LC_MONETARY));
  EXPECT_EQ(", \u00a0 3  0", digits_text(context, &austrian, COM_LC_NUMERIC));
  context.context.ctxlocale = &german;
  EXPECT_EQ(", . 3 \u20ac 1", digits_text(context, nullptr, COM_LC_MONETARY));
  context.context.ctxlocale = nullptr;
  const CsLocCache* named = context.entry("fr_CH.UTF-8");
  const CS_LOCALE swiss = all(context.entry("fr_CH.UTF-8"));
  EXPECT_STREQ("fr_CH", named->numname);
  faulty_files::expect_table(home, "intl/data/faulty_digits.txt", [&](auto&) {
    com_digits digits{};
    const CS_RETCODE code = comn_loc_digits(context, &swiss, COM_LC_NUMERIC, &digits);
    EXPECT_EQ(nullptr, digits.decimal) << "nothing is stored";
    EXPECT_EQ(nullptr, named->locnuminfo);
    return code;
  });
  EXPECT_EQ(", ' 3  0", digits_text(context, &swiss, COM_LC_NUMERIC));
  EXPECT_EQ(". ' 3 CHF 1", digits_text(context, &swiss, COM_LC_MONETARY));
  com_digits digits{};
  stops::expect({STOP(stops::kPointer, comn_loc_digits(nullptr, &swiss, COM_LC_NUMERIC, &digits)),
                 STOP(stops::kPointer, comn_loc_digits(context, &swiss, COM_LC_NUMERIC, nullptr)),
                 STOP(stops::kAssertion, comn_loc_digits(context, &swiss, COM_LC_TIME, &digits))});
}

TEST(Load, StylesOfNamedDates) {
  const HomeCopy home;
  table::for_each_line("intl/data/date_styles.txt", [&](const table::Fields& row) {
    const auto write = [&](auto&) {
      LocaleContext context;
      EXPECT_EQ(CS_SUCCEED, context.init());
      const auto written = dates::write(context, context.entry("us_english.named"), kDate);
      const std::string text = table::text_of(row[3]);
      EXPECT_EQ(std::u16string(text.begin(), text.end()), written.text);
      return written.code;
    };
    faulty_files::expect(home, "locales/datetime/us_english.dt", row[0], row[1], row[2], write);
  });
}

// A thread that is cancelled while it sets up and loads finishes first, on a stack of 32 KB.
TEST(Load, CancellationWaitsAndAStackOf32KB) {
  const hosts::ShippedHome home;
  LocaleContext context;
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
  const hosts::ShippedHome home;
  CS_RETCODE result = CS_MEM_ERROR;
  int steps = 0;
  for (; result == CS_MEM_ERROR; steps += 1 + steps / 32) {
    LocaleContext context;
    CsLocCache* entry = nullptr;
    ASSERT_EQ(CS_SUCCEED, context.init());
    hosts::steps_left = steps;
    result = context.load("ja_JP.SJIS", &entry);
    hosts::steps_left = -1;
    EXPECT_EQ(CS_SUCCEED, context.load("ja_JP.SJIS", &entry)) << "after " << steps << " steps";
  }
  EXPECT_EQ(CS_SUCCEED, result);
  EXPECT_LT(1000, steps);
  EXPECT_EQ(0, hosts::files_open);
}

TEST(Load, TakesTheHostsLocks) {
  static int locks_taken;
  locks_taken = 0;
  const hosts::NothingLost nothing_lost;
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
  ShippedContext context_;
  CsLocCache* german_ = context_.entry("de_DE.utf8");
  CsLocCache* japanese_ = context_.entry("ja_JP");
};

TEST_F(Locales, Strings) {
  CS_LOCALE locale = all(german_);
  locale.ctypeptr = japanese_;
  CS_INT outlen = -1;
  const auto get = [&](CS_INT category, CS_INT item, std::string& buffer, CS_INT room) {
    return com_intl_getstr(&locale, category, item, buffer.data(), room, &outlen);
  };
  std::string buffer(20, '#');
  const std::tuple<CS_INT, CS_INT, std::string> rows[] = {
      {1, 1, "utf8"}, {2, 4, "japanese.sjis"}, {3, 2, "german"}, {4, 3, "binary"}};
  for (const auto& [category, item, text] : rows) {
    buffer.assign(20, '#');
    const auto length = static_cast<CS_INT>(text.size());
    EXPECT_EQ(CS_FAIL, get(category, item, buffer, length - 1));
    EXPECT_EQ(std::string(20, '#'), buffer) << text;
    EXPECT_EQ(CS_SUCCEED, get(category, item, buffer, length));
    EXPECT_EQ(length, outlen);
    EXPECT_EQ(text + "#", buffer.substr(0, text.size() + 1));
  }
  for (const auto& [category, item, room] :
       {std::array{0, 1, 20}, {7, 1, 20}, {1, 5, 20}, {1, 1, 0}})
    EXPECT_DEATH(get(category, item, buffer, room), "assertion");
}

TEST_F(Locales, Comparison) {
  const CS_LOCALE german = all(german_), iso = all(context_.entry("german")),
                  japanese = all(japanese_), none{};
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
  const std::map<std::string, CS_LOCALE> locales{{"japanese", all(japanese_)},
                                                 {"german", all(german_)}};
  char buffer[20];
  CS_INT outlen = 0;
  table::for_each_line("intl/data/locale_names.txt", [&](const table::Fields& row) {
    const std::string name = table::text_of(row[1]), converted = table::text_of(row[4]);
    outlen = 0;
    EXPECT_EQ(row[3], comn_result_name(com_intl_get_locname(
                          context_, row[0] == "none" ? nullptr : &locales.at(row[0]), name.c_str(),
                          CS_NULLTERM, buffer, table::number(row[2]), &outlen)));
    EXPECT_EQ(converted, std::string(buffer, static_cast<std::size_t>(outlen)));
  });
  CS_LOCALE current = all(japanese_);
  context_.context.ctxlocale = &current;
  EXPECT_EQ(CS_SUCCEED, com_intl_get_locname(context_, nullptr, "\u65e5", 3, buffer, 4, &outlen));
  EXPECT_EQ(2, outlen);
  context_.context.ctxlocale = nullptr;
}

TEST_F(Locales, SortOrders) {
  const std::map<std::string, CS_LOCALE> locales{
      {"none", CS_LOCALE{}},
      {"bytes", all(context_.entry("us_english"))},
      {"folding", all(context_.entry("us_english.nocase"))},
      {"pairs", all(context_.entry("s", "sjis", "japanese", "nocase"))},
      {"alphabet", all(context_.entry("d", "iso_1", "french", "dictionary"))},
      {"codes", all(context_.entry("u", "utf8", "russian", "dictionary"))}};
  const auto bytes_of = [](const std::string& text) {
    return reinterpret_cast<const CS_BYTE*>(text.data());
  };
  table::for_each_line("intl/data/sort_orders.txt", [&](const table::Fields& row) {
    const std::string texts[] = {table::text_of(row[1]), table::text_of(row[3])};
    const auto compare = [&](int first, int second) {
      const CS_INT order = com_intl_compare(
          &locales.at(row[0]), bytes_of(texts[first]), static_cast<CS_INT>(texts[first].size()),
          bytes_of(texts[second]), static_cast<CS_INT>(texts[second].size()));
      return (order > 0) - (order < 0);
    };
    const int order = row[2] == "<" ? -1 : row[2] == ">" ? 1 : 0;
    EXPECT_EQ(order, compare(0, 1));
    EXPECT_EQ(-order, compare(1, 0));
  });
  EXPECT_LT(0, com_unsignstrcmp(bytes_of("a\xFF"), bytes_of("ab")));
}

}  // namespace
