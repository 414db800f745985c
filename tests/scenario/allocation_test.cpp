// Whole scenarios, from set-up to tear-down, with every allocation failing in turn: the stated
// code, everything as before the failed call, nothing lost, and success once memory is back.
#include <array>
#include <cstring>
#include <filesystem>
#include <functional>
#include <sstream>
#include <string_view>
#include <utility>
#include <vector>

#include "comnlib.h"
#include "intl.h"
#include "intl/charset.h"
#include "intl/com_intl.h"
#include "intl/com_loc.h"
#include "support/hosts.h"

namespace {

using namespace std::string_view_literals;

// --- Runs of a scenario: its steps are the calls that need memory, of which one may fail ---------

template <class... Words>
std::string words(const Words&... list) {
  std::ostringstream text;
  ((text << list << ' '), ...);
  return text.str();
}

// What a failed step may leave allocated; progress is what the next attempt or the tear-down finds.
enum class Keeps { kNothing, kProgress };

using Call = std::function<CS_RETCODE()>;
using State = std::function<std::string()>;

// How a step fails: with this code, the state as it was.
struct Failure {
  State state = [] { return ""; };
  CS_RETCODE code = CS_MEM_ERROR;
  Keeps keeps = Keeps::kNothing;
};

class Run {
 public:
  using Mode = hosts::Failing::Mode;

  // Without `failing` nothing fails.
  Run(const hosts::Failing* failing, Mode mode) : failing_(failing), mode_(mode) {}

  // A call that succeeds when it finds memory. After a failure memory is back and the same call
  // succeeds, or it stays away and the scenario is over but for its tear-down.
  void step(const char* name, const Failure& failure, const Call& call) {
    if (over_) return;
    SCOPED_TRACE(name);
    const bool reached_before = reached();
    const std::string state = failure.state();
    const std::size_t blocks = hosts::live_blocks();
    const auto files = hosts::open_files();
    CS_RETCODE code = call();
    if (reached() && !reached_before) {
      EXPECT_EQ(failure.code, code);
      EXPECT_EQ(state, failure.state());
      EXPECT_EQ(files, hosts::open_files());
      EXPECT_TRUE(failure.keeps == Keeps::kProgress || hosts::live_blocks() == blocks);
      over_ = mode_ == Mode::kFromThereOn;
      if (over_) return;
      code = call();
    }
    EXPECT_EQ(CS_SUCCEED, code);
    results_ += words(name, failure.state()) + "\n";
  }

  bool over() const { return over_; }
  // The states after all steps, in their order.
  const std::string& results() const { return results_; }

 private:
  bool reached() const { return failing_ != nullptr && failing_->reached(); }

  const hosts::Failing* failing_;
  Mode mode_;
  bool over_ = false;
  std::string results_;
};

// Runs a scenario without failures, and then with its first, second, ... allocation failing, once
// and from there on. No run leaves blocks or open files, and one that got its memory in the end
// gives what the first one gave.
void sweep(void (*scenario)(Run&)) {
  const std::size_t before = hosts::allocations();
  Run whole(nullptr, Run::Mode::kOnce);
  scenario(whole);
  const std::size_t count = hosts::allocations() - before;
  EXPECT_LT(0U, count);
  for (const auto mode : {Run::Mode::kOnce, Run::Mode::kFromThereOn}) {
    for (std::size_t n = 1; n <= count && !testing::Test::HasFailure(); ++n) {
      SCOPED_TRACE(testing::Message() << "allocation " << n << " of " << count << " fails"
                                      << (mode == Run::Mode::kOnce ? "" : ", all later ones too"));
      const hosts::NothingLost nothing_lost;
      const hosts::Failing failing(n, mode);
      Run run(&failing, mode);
      scenario(run);
      EXPECT_TRUE(failing.reached());
      EXPECT_EQ(whole.results().substr(0, run.over() ? run.results().size() : std::string::npos),
                run.results());
    }
  }
}

// Whether a pointer is there, as the state of a step that makes what it points to.
template <class Object>
State made(Object* const& object) {
  return [&object] { return words(object != nullptr); };
}

// --- Context set-up ------------------------------------------------------------------------------

std::string tables_of(const CS_CONTEXT& context) {
  std::string text = words(context.ctxcvttbl.cvtdim, context.ctxcvttbl.cvttbl != nullptr);
  for (const auto* source = context.ctxusrcvttbl; source != nullptr; source = source->nextsrc)
    for (const auto* pair = source; pair != nullptr; pair = pair->nextdest)
      text += words(pair->srctype, pair->desttype);
  for (const auto* user = context.ctxusrnulls; user != nullptr; user = user->nextnull)
    text += words(user->dttype, std::string_view(static_cast<char*>(user->dventity),
                                                 static_cast<std::size_t>(user->dvsize)));
  return text;
}

void context_tables(Run& run) {
  CS_CONTEXT context{};
  const auto tables = [&] { return tables_of(context); };
  run.step("matrix", {tables}, [&] { return com_conv_init(&context); });
  for (const auto& [from, to] : {std::pair{30, 0}, {30, 1}, {8, 31}})
    run.step("conversion", {tables}, [&, from = from, to = to] {
      return com_conv_install(&context, from, to, comn_voidtoany);
    });
  // What a failed call has made of the null table is kept until it is freed.
  run.step("null values", {.keeps = Keeps::kProgress},
           [&] { return com_null_free(&context), com_null_init(&context); });
  for (const auto& [type, value] : {std::pair{8, "A"sv}, {40, "abc"sv}, {40, "wxyz"sv}, {41, ""sv}})
    run.step("null value", {tables}, [&, type = type, value = value] {
      return com_null_set(&context, type, value.data(), static_cast<CS_INT>(value.size()));
    });
  run.step("default", {tables}, [&] { return com_null_reinstall(&context, CS_INT_TYPE); });
  for (const CS_INT type : {41, 40}) EXPECT_EQ(CS_SUCCEED, com_null_reinstall(&context, type));
  EXPECT_EQ(CS_SUCCEED, com_null_free(&context));
  EXPECT_EQ(CS_SUCCEED, com_conv_free(&context));
}

// --- Localization --------------------------------------------------------------------------------

// The shipped home, but the first bytes of one character set name tables that its file lacks.
void write_home(const scratch::Directory& home) {
  std::filesystem::copy(hosts::kShippedHome, home.path(), std::filesystem::copy_options::recursive);
  const auto entry = [](std::size_t digits, char digit) {
    return "definition = " + std::string(digits, digit) + "\n";
  };
  std::string types = entry(2048, '7');
  types.replace(types.find('7') + 8 * 0x81, 8, "FF0000FF");
  home.write("charsets/sjis/charset.loc",
             "[charset]\nclass = 2\nname = sjis\nimage_size = 1324\n"
             "definition = 090901020201010100000000FFFFFFFF00000100FFFFFFFF00000100"
             "FFFFFFFF00000400FFFFFFFF00000100\n" +
                 entry(512, '2') + entry(512, 'F') + types + entry(512, '0'));
}

// Runs a call that tells on standard error why it failed.
CS_RETCODE quietly(const Call& call) {
  testing::internal::CaptureStderr();
  const CS_RETCODE code = call();
  testing::internal::GetCapturedStderr();
  return code;
}

// A context for localization; its tear-down needs no memory.
class Localized : public hosts::LocaleContext {
 public:
  explicit Localized(Run& run) : LocaleContext(false), run_(run) {
    run.step("mutex", {.code = CS_FAIL}, [&] { return comn_create_mutex(&globals.cmg_mtx); });
    const auto set_up = [&] {
      return words(globals.utf8_charset != nullptr, globals.lm != nullptr);
    };
    run.step("set-up", {set_up, CS_MEM_ERROR, Keeps::kProgress},
             [&] { return quietly([&] { return init(); }); });
  }

  void step(const char* name, const Call& call) {
    run_.step(name, {[this] { return state(); }, CS_MEM_ERROR, Keeps::kProgress},
              [&] { return quietly(call); });
  }
  CsLocCache* load(const char* name) {
    CsLocCache* entry = nullptr;
    step(name, [&] { return LocaleContext::load(name, &entry); });
    return entry;
  }
  CsLocCache* load(const char* charset, const char* language, const char* order) {
    CsLocCache* entry = nullptr;
    step(charset, [&] { return LocaleContext::load(charset, charset, language, order, &entry); });
    return entry;
  }

 private:
  // The mutex, the cache with what its entries have, the character sets and the records.
  std::string state() const {
    std::string text = words(globals.cmg_mtx->use_count);
    for (const auto* entry = globals.cmg_lcache; entry != nullptr; entry = entry->locnext)
      text += words(entry->locname, entry->charname, entry->sortname, entry->langname,
                    entry->locdateinfo != nullptr, entry->locnuminfo != nullptr);
    for (const auto* set = globals.cmg_chardesc; set != nullptr; set = set->charnext)
      text += "character set ";
    for (const auto* record = globals.cmg_locale; record != nullptr; record = record->next)
      text += "record ";
    return text;
  }
  Run& run_;
};

void locales(Run& run) {
  Localized context(run);
  CsLocCache* const german = context.load("de_DE.CP1252");
  CsLocCache* const named = context.load("us_english.named");
  CsLocCache* const given = context.load("cp850", "french", "nocase");
  context.load("utf8", "french", "dictionary");
  context.load("japanese");
  for (const CS_INT kind : {COM_LC_NUMERIC, COM_LC_TIME})
    context.step("conventions", [&] {
      return comn__load_locdata(context, kind, "us_english", named, nullptr, 0);
    });
  CsLocCache* copy = nullptr;
  run.step("copy", {made(copy)}, [&] { return comn__copy_loccache(context, given, &copy); });
  if (copy != nullptr) {
    copy->locnext = context.globals.cmg_lcache;  // for the drop of the cache
    context.globals.cmg_lcache = copy;
  }
  CS_LOCALE locale = hosts::all(german);
  context.context.ctxlocale = &locale;
  // Where there is a locale a character set takes the sort order along that it is asked for with.
  std::string charset = "cp437", order = "nocase";
  CsLocCache wanted{};
  wanted.charname = charset.data();
  wanted.charnamelen = 5;
  wanted.sortname = order.data();
  context.step("character set", [&] {
    CsOid oid = 0;
    const CS_RETCODE code = comn_globalid(context, "charset", "cp437", 5, &oid);
    return code != CS_SUCCEED ? code : comn__intl_load_charset(context, oid, &wanted, nullptr, 0);
  });
  EXPECT_TRUE(run.over() || wanted.locchardesc->sort_order != nullptr);
  CS_LOCALE* record = nullptr;
  context.step("record", [&] { return comn_loc_alloc(context, &record); });
  run.step("name", {}, [&] {
    std::array<CS_CHAR, 100> name{};
    CS_INT length = 0;
    return com_intl_getstr(&locale, 1, COM_LOC_LANGCHARSET, name.data(), 100, &length);
  });
  run.step("diagnosis", {}, [&] {
    testing::internal::CaptureStderr();
    com_intl_verify_ctxloc(context);
    const std::string diagnosis = testing::internal::GetCapturedStderr();
    const bool gives_up = diagnosis.find("when trying to get local names") != std::string::npos;
    return gives_up ? CS_RETCODE{CS_MEM_ERROR} : CS_RETCODE{CS_SUCCEED};
  });
  context.context.ctxlocale = nullptr;
}

// What a locale reads when it is first needed: named conventions, and English messages.
void read_when_needed(Run& run) {
  Localized context(run);
  CsLocCache* const iso = context.load("iso");
  CS_LOCALE spoken = hosts::all(context.load("thai"));
  spoken.timeptr = iso;
  context.context.ctxlocale = &spoken;
  CS_DATAFMT from{}, to{};
  from.datatype = CS_DATETIME_TYPE;
  to.datatype = CS_CHAR_TYPE;
  to.maxlength = 40;
  const CS_DATETIME value{};
  std::array<CS_CHAR, 40> text{};
  CS_INT length = 0;
  if (iso != nullptr)
    context.step(
        "date", [&] { return comn_datetochar(context, &from, &value, &to, text.data(), &length); });
  com_digits digits{};
  if (iso != nullptr)
    context.step("digits", [&] {
      const CS_LOCALE locale = hosts::all(iso);
      return comn_loc_digits(context, &locale, COM_LC_NUMERIC, &digits);
    });
  // A message that finds no memory is the fixed one.
  run.step("message", {.code = CS_FAIL, .keeps = Keeps::kProgress}, [&] {
    return comn_result_text(context, CS_CVT_DIVZERO, text.data(), text.size(), &length);
  });
}

// Conversion tables are read when a text first needs them. Where one cannot be opened there is no
// route, and a text is no date.
void conversion_tables(Run& run) {
  Localized context(run);
  CS_LOCALE utf8 = hosts::all(context.load("utf8", "us_english", "binary"));
  CS_LOCALE koi8 = hosts::all(context.load("koi8", "us_english", "binary"));
  CS_LOCALE cp936 = hosts::all(context.load("cp936", "us_english", "binary"));
  CS_LOCALE cp850 = hosts::all(context.load("cp850", "french", "binary"));
  CS_LOCALE iso15 = hosts::all(context.load("iso15", "french", "binary"));
  const auto side = [](CS_INT type, CS_LOCALE& locale) {
    CS_DATAFMT format{};
    format.datatype = type;
    format.maxlength = 64;
    format.locale = &locale;
    return format;
  };
  const auto convert = [&](CS_DATAFMT from, std::string_view text, const CS_DATAFMT& to) {
    from.maxlength = static_cast<CS_INT>(text.size());
    const CS_CONV_FUNC routine = com_conv_func(context, from.datatype, to.datatype);
    std::array<char, 64> bytes{};
    CS_INT length = 0;
    context.step("convert",
                 [&] { return routine(context, &from, text.data(), &to, bytes.data(), &length); });
    const auto written = [&] {
      return std::string(bytes.data(), static_cast<std::size_t>(length));
    };
    run.step("bytes", {written}, [] { return CS_RETCODE{CS_SUCCEED}; });
  };
  run.step("matrix", {}, [&] { return com_conv_init(context); });
  if (!run.over()) {
    convert(side(CS_CHAR_TYPE, utf8), "\u044f", side(CS_CHAR_TYPE, koi8));
    convert(side(CS_CHAR_TYPE, cp936), "\xC4\xE3", side(CS_UNICHAR_TYPE, utf8));
    convert(side(CS_UNICHAR_TYPE, cp850), "2\0 \0f\0\xE9\0v\0r\0i\0e\0r\0 \0002\0000\0000\0000\0"sv,
            side(CS_DATETIME_TYPE, utf8));
  }
  EXPECT_EQ(CS_SUCCEED, com_conv_free(context));
  std::array<CS_CHAR, 20> name{};
  CS_INT length = 0;
  context.step("name", [&] {
    return com_intl_get_locname(context, &iso15, "\u20ac", CS_NULLTERM, name.data(), 20, &length);
  });
}

// --- Companion library and configuration ---------------------------------------------------------

// The second file has no size of its own, so that the reader has to ask for more and more.
void sectioned_files(Run& run) {
  const scratch::Directory directory;
  for (const auto& path : {directory.write("f", "[s]\n"), std::string("/proc/self/smaps")}) {
    INTL_HANDLE handle = nullptr;
    run.step("open", {made(handle)}, [&] {
      const CS_INT status = intl_open(path.c_str(), &handle);
      return status == INTL_NO_MEMORY ? CS_RETCODE{CS_MEM_ERROR} : CS_SUCCEED + status;
    });
    if (handle == nullptr) return;
    EXPECT_EQ(0, intl_close(handle));
  }
}

void configuration(Run& run) {
  const scratch::Directory directory;
  directory.write("config/more.cfg", "[t]\na = " + std::string(5000, 'x') + "\n[s]\nc = 3\n");
  std::string text =
      "[s]\na = 1\ninclude more.cfg\nb = \"" + std::string(40'000, 'y') + "\"\na = long\n";
  for (int i = 0; i < 100; ++i) text += "[s" + std::to_string(i) + "]\ne = 1\n";
  const std::string path = directory.write("config/nuv.cfg", text);
  const scratch::Variable home("TALVEN", directory.path().c_str());
  const scratch::Variable subdirectory("TALVEN_NUV", nullptr);
  CS_CONTEXT context{};
  const auto known = [&] {
    std::string lengths = words(context.ctxconfig != nullptr);
    for (const auto& [section, entry] : {std::pair{"s", "a"}, {"s", "b"}, {"t", "a"}, {"s", "c"}}) {
      CS_INT length = 0;
      comn_get_cfg(&context, section, entry, nullptr, 0, &length);
      lengths += words(length);
    }
    return lengths;
  };
  const auto load = [&](const CS_CHAR* file) {
    run.step("load", {known},
             [&] { return quietly([&] { return comn_init_cfg(&context, file); }); });
  };
  run.step("check", {known}, [&] {
    CfgParseInfo* parse = nullptr;
    const CS_RETCODE opened = cfg__open_parse(&context, path.c_str(), &parse);
    if (opened != CS_SUCCEED) return opened;
    const CS_RETCODE parsed = quietly([&] { return cfg__parse(parse); });
    return cfg__clean_parse(parse) == CS_SUCCEED ? parsed : CS_RETCODE{CS_FAIL};
  });
  load(nullptr);
  load(path.c_str());  // shared
  EXPECT_EQ(CS_SUCCEED, comn_drop_cfg(&context));
  load((std::string(250, '/') + path).c_str());  // which a store's first block has no room for
  EXPECT_EQ(CS_SUCCEED, comn_drop_cfg(&context));
}

// --- The sweep -----------------------------------------------------------------------------------

constexpr std::pair<const char*, void (*)(Run&)> kScenarios[] = {
    {"context", context_tables},
    {"locales", locales},
    {"read when needed", read_when_needed},
    {"conversion tables", conversion_tables},
    {"sectioned files", sectioned_files},
    {"configuration", configuration}};

TEST(Allocations, FailInTurn) {
  const scratch::Directory home;
  write_home(home);
  const scratch::Variable variable("TALVEN", home.path().c_str());
  const scratch::WorkingDirectory directory;  // diagnostics go to a file there too
  for (const auto& [name, scenario] : kScenarios) {
    SCOPED_TRACE(name);
    sweep(scenario);
  }
}

}  // namespace
