// The scenarios of all that reads files: localization, conversion tables, the companion library and
// configuration.
#include "scenario/files.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <filesystem>
#include <string_view>
#include <tuple>
#include <utility>

#include "comnlib/config.h"
#include "comnlib/convert.h"
#include "comnlib/locale.h"
#include "comnlib/thread.h"
#include "intl.h"
#include "intl/charset.h"
#include "intl/com_intl.h"
#include "intl/com_loc.h"
#include "support/scratch.h"

namespace scenario {
namespace {

using namespace std::string_view_literals;

// The shipped home, but the first bytes of one character set name tables that its file lacks.
class Home {
 public:
  Home() : variable_("TALVEN", directory_.path().c_str()) {
    std::filesystem::copy(COMNLIB_HOME, directory_.path(),
                          std::filesystem::copy_options::recursive);
    const auto entry = [](std::size_t digits, char digit) {
      return "definition = " + std::string(digits, digit) + "\n";
    };
    std::string types = entry(2048, '7');
    types.replace(types.find('7') + 8 * 0x81, 8, "FF0000FF");
    directory_.write("charsets/sjis/charset.loc",
                     "[charset]\nclass = 2\nname = sjis\nimage_size = 1324\n"
                     "definition = 090901020201010100000000FFFFFFFF00000100FFFFFFFF00000100"
                     "FFFFFFFF00000400FFFFFFFF00000100\n" +
                         entry(512, '2') + entry(512, 'F') + types + entry(512, '0'));
  }

 private:
  scratch::Directory directory_;
  scratch::Variable variable_;
};

bool is_out_of_memory(CS_INT status) {
  std::array<CS_CHAR, 100> text{};
  intl_errstr(status, text.data(), CS_INT{text.size()});
  return std::strcmp(text.data(), "out of memory") == 0;
}

// Runs a call that tells on standard error why it failed.
CS_RETCODE quietly(const Call& call) {
  static const int nowhere = open("/dev/null", O_WRONLY);
  static const int before = dup(STDERR_FILENO);
  dup2(nowhere, STDERR_FILENO);
  const CS_RETCODE code = call();
  dup2(before, STDERR_FILENO);
  return code;
}

// A context for localization; its tear-down needs no memory.
class Localized : public CS_CONTEXT {
 public:
  explicit Localized(Run& run) : CS_CONTEXT{}, run_(run) {
    ctxglobals = &globals;
    run.step("mutex", {.code = CS_FAIL}, [&] { return comn_create_mutex(&globals.cmg_mtx); });
    const auto set_up = [&] {
      return words(globals.utf8_charset != nullptr, globals.lm != nullptr);
    };
    run.step("set-up", {set_up, CS_MEM_ERROR, Keeps::kProgress},
             [&] { return judged([&] { return comn_intl_init(this, nullptr, 0); }); });
  }
  ~Localized() {
    if (globals.cmg_mtx == nullptr) return;
    EXPECT_EQ(CS_SUCCEED, comn_loc_drop_all(this));
    EXPECT_EQ(CS_SUCCEED, com_intl_loccache_drop(this));
    EXPECT_EQ(CS_SUCCEED, com_intl_chardesc_drop(this));
    EXPECT_TRUE(globals.lm == nullptr || comn_lm_exit(globals.lm) == CS_SUCCEED);
    EXPECT_EQ(CS_SUCCEED, comn_delete_mutex(globals.cmg_mtx));
  }
  Localized(const Localized&) = delete;
  Localized& operator=(const Localized&) = delete;

  void step(const char* name, const Call& call, CS_RETCODE unopened = CS_INTL_NOFILE) {
    run_.step(name, {[this] { return state(); }, CS_MEM_ERROR, Keeps::kProgress},
              [&] { return judged(call, unopened); });
  }
  CsLocCache* load(const char* name) {
    return entry(name, [&](CsLocCache** made) {
      return comn_intl_load(this, name, CS_NULLTERM, made, nullptr, 0);
    });
  }
  CsLocCache* load(const char* charset, const char* language, const char* order) {
    return entry(charset, [&](CsLocCache** made) {
      return comn_intl_load_tlvtypes(this, charset, CS_NULLTERM, charset, CS_NULLTERM, language,
                                     CS_NULLTERM, order, CS_NULLTERM, made, nullptr, 0);
    });
  }

  CsCtxGlobals globals{};

 private:
  template <class Load>
  CsLocCache* entry(const char* name, Load load) {
    CsLocCache* made = nullptr;
    step(name, [&] {
      const CS_RETCODE code = load(&made);
      EXPECT_EQ(code == CS_SUCCEED, made != nullptr);
      return code;
    });
    return made;
  }
  // The mutex, the cache with what its entries have, the character sets and the records.
  std::string state() const {
    std::string text = words(globals.cmg_mtx->use_count);
    for (const auto* entry = globals.cmg_lcache; entry != nullptr; entry = entry->locnext)
      text += words(entry->locname, entry->charname, entry->sortname, entry->langname,
                    entry->locdateinfo != nullptr, entry->locnuminfo != nullptr);
    for (const auto* set = globals.cmg_chardesc; set != nullptr; set = set->charnext)
      text += words(std::string_view(set->char_attrib->cs_name, set->char_attrib->cs_namelen));
    for (const auto* record = globals.cmg_locale; record != nullptr; record = record->next)
      text += "record ";
    return text;
  }
  // The companion library says in its own way that it found no memory for a file, which then counts
  // as one that cannot be opened.
  CS_RETCODE judged(const Call& call, CS_RETCODE unopened = CS_INTL_NOFILE) {
    ctxintlerr = 0;
    const CS_RETCODE code = quietly(call);
    return code == unopened && is_out_of_memory(ctxintlerr) ? CS_RETCODE{CS_MEM_ERROR} : code;
  }

  Run& run_;
};

CS_LOCALE locale_with(CsLocCache* entry) {
  return {entry, entry, entry, entry, entry, entry, nullptr};
}

}  // namespace

void set_files_up() {
  static const Home home;
  quietly([] { return CS_SUCCEED; });  // opens what it needs
}

void locales(Run& run) {
  const scratch::Variable all("LC_ALL", "de_DE.CP1252");
  Localized context(run);
  std::array<CS_CHAR, 100> name{};
  run.see("environment", [&] {
    return words(com_intl_envloc(&context, COM_LC_ALL, name.data(), 100), name.data());
  });
  CsLocCache* const german = context.load(name.data());
  CsLocCache* const named = context.load("us_english.named");
  CsLocCache* const given = context.load("cp850", "french", "nocase");
  context.load("japanese");
  for (const CS_INT kind : {COM_LC_NUMERIC, COM_LC_TIME})
    context.step("conventions", [&] {
      return comn__load_locdata(&context, kind, "us_english", named, nullptr, 0);
    });
  CsLocCache* copy = nullptr;
  run.step("copy", {made(copy)}, [&] { return comn__copy_loccache(&context, given, &copy); });
  if (copy != nullptr) {
    copy->locnext = context.globals.cmg_lcache;  // for the drop of the cache
    context.globals.cmg_lcache = copy;
  }
  CS_LOCALE locale = locale_with(german);
  context.ctxlocale = &locale;
  // Where there is a locale a character set takes the sort order along that it is asked for with.
  std::string charset = "cp437", order = "nocase";
  CsLocCache wanted{};
  wanted.charname = charset.data();
  wanted.charnamelen = 5;
  wanted.sortname = order.data();
  context.step("character set", [&] {
    CsOid oid = 0;
    const CS_RETCODE code = comn_globalid(&context, "charset", "cp437", 5, &oid);
    return code != CS_SUCCEED ? code : comn__intl_load_charset(&context, oid, &wanted, nullptr, 0);
  });
  CS_LOCALE* record = nullptr;
  context.step("record", [&] { return comn_loc_alloc(&context, &record); });
  CS_INT length = 0;
  run.step("name", {}, [&] {
    return com_intl_getstr(&locale, 1, COM_LOC_LANGCHARSET, name.data(), 100, &length);
  });
  std::string diagnosis;
  run.step("diagnosis", {}, [&] {
    testing::internal::CaptureStderr();
    com_intl_verify_ctxloc(&context);
    diagnosis = testing::internal::GetCapturedStderr();
    const bool gives_up = diagnosis.find("when trying to get local names") != std::string::npos;
    return gives_up ? CS_RETCODE{CS_MEM_ERROR} : CS_RETCODE{CS_SUCCEED};
  });
  run.see("from the cache", [&] {
    CsLocCache* again = nullptr;
    EXPECT_EQ(CS_SUCCEED, comn_intl_load(&context, "us_english.named", 16, &again, nullptr, 0));
    return words(again == named, wanted.locchardesc->sort_order != nullptr,
                 com_intl_loccmp(1, 1, &locale, record),
                 diagnosis.substr(diagnosis.rfind("Using")));
  });
  context.ctxlocale = nullptr;
}

// Conversion tables are read when a text first needs them. Where one cannot be opened there is no
// route, and a text is no date.
void conversion_tables(Run& run) {
  Localized context(run);
  CS_LOCALE utf8 = locale_with(context.load("utf8", "us_english", "binary"));
  CS_LOCALE koi8 = locale_with(context.load("koi8", "us_english", "binary"));
  CS_LOCALE cp936 = locale_with(context.load("cp936", "us_english", "binary"));
  CS_LOCALE cp850 = locale_with(context.load("cp850", "french", "binary"));
  CS_LOCALE iso15 = locale_with(context.load("iso15", "french", "binary"));
  struct Side {
    CS_INT type;
    CS_LOCALE& locale;
  };
  const auto convert = [&](CS_RETCODE unopened, Side from, std::string_view text, Side to) {
    CS_DATAFMT source{}, target{};
    source.maxlength = static_cast<CS_INT>(text.size());
    target.maxlength = 64;
    std::tie(source.datatype, source.locale) = std::pair(from.type, &from.locale);
    std::tie(target.datatype, target.locale) = std::pair(to.type, &to.locale);
    const CS_CONV_FUNC routine = com_conv_func(&context, from.type, to.type);
    std::array<char, 64> bytes{};
    CS_INT length = 0;
    context.step(
        "convert",
        [&] { return routine(&context, &source, text.data(), &target, bytes.data(), &length); },
        unopened);
    run.see("bytes", [&] { return std::string(bytes.data(), static_cast<std::size_t>(length)); });
  };
  run.step("matrix", {}, [&] { return com_conv_init(&context); });
  if (!run.over()) {
    convert(CS_CVT_NOXLATE, {CS_CHAR_TYPE, utf8}, "\u044f", {CS_CHAR_TYPE, koi8});
    convert(CS_CVT_NOXLATE, {CS_CHAR_TYPE, cp936}, "\xC4\xE3", {CS_UNICHAR_TYPE, utf8});
    convert(CS_CVT_SYNTAX, {CS_UNICHAR_TYPE, cp850},
            "2\0 \0f\0\xE9\0v\0r\0i\0e\0r\0 \0002\0000\0000\0000\0"sv, {CS_DATETIME_TYPE, utf8});
  }
  EXPECT_EQ(CS_SUCCEED, com_conv_free(&context));
  std::array<CS_CHAR, 20> name{};
  CS_INT length = 0;
  const auto get_name = [&] {
    return com_intl_get_locname(&context, &iso15, "\u20ac", CS_NULLTERM, name.data(), 20, &length);
  };
  context.step("name", get_name, CS_FAIL);
}

// The second file has no size of its own, so that the reader has to ask for more and more.
void sectioned_files(Run& run) {
  const scratch::Directory directory;
  for (const auto& path : {directory.write("f", "[s]\n"), std::string("/proc/self/smaps")}) {
    INTL_HANDLE handle = nullptr;
    run.step("open", {made(handle)}, [&] {
      const CS_INT status = intl_open(path.c_str(), &handle);
      return is_out_of_memory(status) ? CS_RETCODE{CS_MEM_ERROR} : CS_SUCCEED + status;
    });
    if (handle == nullptr) return;
    run.see("section", [&] {
      CS_INT status = 0;
      return words(intl_nextsection(handle, &status) != nullptr, status);
    });
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
    std::string entries = words(context.ctxconfig != nullptr);
    for (const auto& [section, entry] : {std::pair{"s", "a"}, {"s", "b"}, {"t", "a"}, {"s", "c"}}) {
      std::array<CS_CHAR, 64> value{};
      CS_INT length = 0;
      entries += words(comn_get_cfg(&context, section, entry, value.data(), 63, &length), length,
                       value.data());
    }
    return entries;
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
  run.see("drop", [&] { return words(comn_drop_cfg(&context), known()); });
  load(path.c_str());
  EXPECT_EQ(CS_SUCCEED, comn_drop_cfg(&context));
}

}  // namespace scenario
