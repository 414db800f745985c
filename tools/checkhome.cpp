// checkhome HOME: verifies a whole localization home with the library's own readers, each file by
// itself, and prints every fault as "file: what is wrong". Ends with 0 when there is none.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "comnlib/charset.h"
#include "comnlib/memory.h"
#include "comnlib/thread.h"
#include "intl.h"
#include "intl/charset.h"
#include "intl/com_intl.h"
#include "intl/com_loc.h"
#include "intl/convcfg.h"
#include "intl/convtable.h"
#include "intl/intlfile.h"
#include "intl/locdata.h"
#include "intl/message.h"
#include "intl/objectid.h"
#include "intl/sortorder.h"
#include "intl/xlate.h"

using namespace comnlib;

namespace {

using Names = std::vector<std::string>;

// Whether the set has every table that its first bytes name. The loader takes what is not there as
// empty.
bool has_named_tables(const char_attrib& set) {
  for (std::size_t byte = 0; byte < COMN_CS_MAPSIZE; ++byte) {
    const char_map& entry = set.cs_type_map[byte];
    if ((entry.char_type & COMN_CT_LEAD) != 0 && entry.char_upper >= set.cs_ntype) return false;
    const bool is_longer = set.cs_width_map != nullptr && (set.cs_width_map[byte] & 0x0F) > 1;
    if (is_longer && set.cs_norm_map != nullptr && set.cs_norm_map[byte] >= set.cs_nnorm)
      return false;
  }
  return true;
}

// Whether text steps from character to character as its table reads it. The halves of a character
// of four bytes step as two bytes each.
bool widths_agree(const char_attrib& set, const ConvTable& table) {
  for (CS_UINT byte = 0; byte < COMN_CS_MAPSIZE; ++byte) {
    const auto first = static_cast<CS_BYTE>(byte);
    const CS_INT width = comn_char_width(&set, &first);
    if (table.single[byte] != kNoCharacter && width != 1) return false;
    if (table.triple_lead == byte && byte != 0 && width != 3) return false;
    bool is_lead = false;
    for (CS_UINT pair = byte << 8; pair < (byte + 1) << 8; ++pair)
      is_lead = is_lead || table.pairs.at(static_cast<CS_USHORT>(pair)) != kNoCharacter;
    if (is_lead && width != 2) return false;
  }
  return true;
}

class Check {
 public:
  explicit Check(std::string home) : home_(std::move(home)) {
    context_.ctxglobals = &globals_;
    comn_create_mutex(&globals_.cmg_mtx);
  }

  ~Check() {
    for (CsConvConfig* config : configurations_) drop_conv_config(config);
    com_intl_loccache_drop(&context_);
    com_intl_chardesc_drop(&context_);
    if (globals_.lm != nullptr) comn_lm_exit(globals_.lm);
    comn_delete_mutex(globals_.cmg_mtx);
  }
  Check(const Check&) = delete;
  Check& operator=(const Check&) = delete;

  int run() {
    const auto classes = object_ids();
    const CsConvConfig* utf8 = configuration("utf8");
    for (const std::string& charset : at(classes, "charset"))
      if (charset != "ucs2") character_set(charset, utf8, at(classes, "collate"));
    for (const std::string& language : at(classes, "natlang")) {
      messages(language);
      for (const std::string& charset : at(classes, "charset"))
        if (exists("locales/" + language + '/' + charset)) common(language, charset);
    }
    named_conventions(classes);
    if (comn_intl_init(&context_, error_, sizeof error_) == CS_SUCCEED) locales(classes);
    unread_files();
    if (faults_ == 0) std::printf("checkhome: %zu files, no fault\n", files_.size());
    return faults_ == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
  }

 private:
  static Names at(const std::map<std::string, Names>& classes, const std::string& name) {
    const auto found = classes.find(name);
    return found == classes.end() ? Names() : found->second;
  }

  void fault(const std::string& file, const std::string& words) {
    ++faults_;
    std::printf("%s: %s\n", file.c_str(), words.c_str());
  }

  // Takes the result of a reader that has left its file's path in error_. False on failure; a file
  // is named once, however many locales ask for it.
  bool took(CS_RETCODE result) {
    const bool is_new = files_.insert(error_).second;
    if (result == CS_SUCCEED) return true;
    char words[200] = "what it holds is not valid";
    if (result == CS_INTL_LIBERR || result == CS_INTL_NOFILE)
      intl_errstr(context_.ctxintlerr, words, sizeof words);
    if (is_new) fault(error_, words);
    return false;
  }
  ErrorBuffer error() { return {error_, sizeof error_}; }

  // The names of each class, in their order.
  std::map<std::string, Names> object_ids() {
    std::map<std::string, Names> classes;
    CsOid oid = 0;
    const CS_RETCODE result = global_id(context_, "charset", "utf8", oid, error());
    const std::string path = error_;
    if (!took(result)) return classes;
    INTL_HANDLE handle = nullptr;
    if (intl_open(path.c_str(), &handle) < 0) return classes;
    IntlFile file(context_, handle);
    while (const char* oidclass = file.next_section()) {
      std::set<std::string> numbers;
      Names& names = classes[oidclass];
      while (const char* name = file.next_entry()) {
        names.emplace_back(name);
        if (!numbers.insert(file.next_value()).second)
          fault(path, "[" + std::string(oidclass) + "] gives the number of " + name + " twice");
      }
    }
    return classes;
  }

  const CsConvConfig* configuration(const std::string& charset) {
    CsConvConfig* config = nullptr;
    if (!took(load_conv_config(context_, charset.c_str(), config, error()))) return nullptr;
    return configurations_.emplace_back(config);
  }

  void character_set(std::string charset, const CsConvConfig* utf8, const Names& orders) {
    auto* desc = static_cast<CsCharDesc*>(comn_calloc(1, sizeof(CsCharDesc)));
    CsLocCache entry{};
    entry.charname = charset.data();
    entry.charnamelen = static_cast<CS_INT>(charset.size());
    entry.locchardesc = desc;
    const bool has_attributes = took(comn__get_charset(&context_, &entry, error_, sizeof error_));
    if (has_attributes) attributes(charset, *desc->char_attrib);
    const CsConvConfig* config = charset == "utf8" ? utf8 : configuration(charset);
    const ConvTable* table = nullptr;
    if (config != nullptr && config->algorithm == nullptr)
      took(load_table(context_, charset.c_str(), config->table.data(), table, error()));
    if (has_attributes && table != nullptr && !widths_agree(*desc->char_attrib, *table))
      fault(error_, "charset.loc gives characters other widths");
    comn__chardesc_drop(desc);
    if (charset != "utf8" && utf8 != nullptr && !converts_to(*utf8, charset))
      fault(home_ + "/charsets/utf8/utf8.cfg", "no conversion to " + charset);
    for (const std::string& order : orders)
      if (order == "binary" || exists("charsets/" + charset + '/' + order + ".srt"))
        sort_order(charset, order);
  }

  void attributes(const std::string& charset, const char_attrib& set) {
    if (charset != std::string(set.cs_name, set.cs_namelen))
      fault(error_, "the name is not that of its directory");
    if (!has_named_tables(set)) fault(error_, "a first byte names a table that is not there");
  }

  bool exists(const std::string& name) const { return std::filesystem::exists(home_ + '/' + name); }

  void sort_order(std::string charset, std::string name) {
    CsLocCache entry{};
    entry.charname = charset.data();
    entry.sortname = name.data();
    CsOid oid = 0;
    if (global_id(context_, "collate", name, oid, error()) == CS_SUCCEED)
      took(comn__intl_load_sortorder(&context_, oid, &entry, error_, sizeof error_));
  }

  void messages(std::string language) {
    CsLocCache entry{};
    entry.langname = language.data();
    entry.langnamelen = static_cast<CS_INT>(language.size());
    CsOid oid = 0;
    if (global_id(context_, "natlang", language, oid, error()) == CS_SUCCEED &&
        took(comn__intl_load_message(&context_, oid, &entry, error_, sizeof error_)))
      for (const char* file : {"common.loc", "cslib.loc"})  // read before the last one
        files_.insert(home_ + "/locales/message/" + language + '/' + file);
  }

  void common(std::string language, std::string charset) {
    CsLocCache entry{};
    entry.langname = language.data();
    entry.charname = charset.data();
    took(comn__read_common(&context_, &entry, error_, sizeof error_));
  }

  void named_conventions(const std::map<std::string, Names>& classes) {
    const std::pair<const char*, CS_INT> kinds[] = {
        {"datetime", COM_LC_TIME}, {"numeric", COM_LC_NUMERIC}, {"money", COM_LC_MONETARY}};
    for (const auto& [oidclass, kind] : kinds)
      for (const std::string& name : at(classes, oidclass)) {
        CsLocCache entry{};
        took(comn__load_locdata(&context_, kind, name.c_str(), &entry, error_, sizeof error_));
      }
  }

  // What lies about in the home and no name leads to. Configuration files and the network layer's
  // are not of a locale.
  void unread_files() {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(home_)) {
      const std::string path = entry.path().string();
      const bool of_others = path == home_ + "/interfaces" || path.ends_with("/config/nuv.cfg");
      if (entry.is_regular_file() && !of_others && !files_.contains(path))
        fault(path, "no name leads to it");
    }
  }

  void locales(const std::map<std::string, Names>& classes) {
    INTL_HANDLE handle = nullptr;
    if (!took(com__open_locfile(&context_, nullptr, nullptr, "locales.dat", &handle, error_,
                                sizeof error_)))
      return;
    const std::string path = error_;
    IntlFile file(context_, handle);
    if (!file.find_section("linux")) fault(path, "no section linux");
    while (const char* key = file.next_entry()) {
      if (std::string_view(key) != "locale") {
        fault(path, "the key " + std::string(key) + " ends every search");
        return;
      }
      Names values;
      while (const char* value = file.next_value()) values.emplace_back(value);
      if (file.failed()) break;
      values.resize(7);
      if (!locale_names_.insert(values[0]).second)
        fault(path, "locale " + values[0] + " stands twice");
      locale(path, classes, values);
    }
    if (!file.failed()) return;
    char words[200];
    intl_errstr(context_.ctxintlerr, words, sizeof words);
    fault(path, words);
  }

  // values: name, language, character set, sort order, date/time, number, money.
  void locale(const std::string& path, const std::map<std::string, Names>& classes, Names& values) {
    if (values[3].empty()) values[3] = "binary";
    const char* names[] = {"natlang", "charset", "collate", "datetime", "numeric", "money"};
    bool known = true;
    for (std::size_t i = 0; i < std::size(names); ++i) {
      const std::string& value = values[i + 1];
      if (i >= 3 && value.empty()) continue;
      const Names listed = at(classes, names[i]);
      if (std::find(listed.begin(), listed.end(), value) != listed.end()) continue;
      known = false;
      fault(path, "locale " + values[0] + ": \"" + value + "\" is no known " + names[i]);
    }
    if (!known) return;
    sort_order(values[2], values[3]);
    texts(path, values);
  }

  // Whether the texts of a locale's conventions are text of its character set.
  void texts(const std::string& path, Names& values) {
    CsLocCache* entry = nullptr;
    if (!took(comn_intl_load(&context_, values[0].c_str(), CS_NULLTERM, &entry, error_,
                             sizeof error_)))
      return;
    CsLocCache with = *entry;
    const std::pair<CS_INT, const std::string&> named[] = {{COM_LC_TIME, values[4]},
                                                           {COM_LC_NUMERIC, values[5]}};
    for (const auto& [kind, name] : named)
      if (!name.empty() &&
          !took(comn__load_locdata(&context_, kind, name.c_str(), &with, error_, sizeof error_)))
        return;
    std::vector<std::string_view> texts;
    const auto add = [&texts](auto... more) { (texts.push_back(more), ...); };
    if (with.locdateinfo != nullptr) {
      const DateConventions& dates = with.locdateinfo->conventions;
      for (const std::string_view name : dates.months) add(name);
      for (const std::string_view name : dates.short_months) add(name);
      for (const std::string_view name : dates.days) add(name);
      add(dates.am, dates.pm);
    }
    if (with.locnuminfo != nullptr)
      add(with.locnuminfo->digits.decimal_point, with.locnuminfo->digits.group_separator);
    if (with.locmoninfo != nullptr)
      add(with.locmoninfo->digits.decimal_point, with.locmoninfo->digits.group_separator,
          with.locmoninfo->symbol);
    for (const std::string_view text : texts) {
      const std::span bytes(reinterpret_cast<const CS_BYTE*>(text.data()), text.size());
      std::vector<CS_BYTE> room(4 * text.size());
      const Encoding unicode{nullptr, true};
      if (translate(&context_, {entry->locchardesc, false}, unicode, bytes, room).code ==
          CS_SUCCEED)
        continue;
      fault(path,
            "locale " + values[0] + ": \"" + std::string(text) + "\" is no text of " + values[2]);
    }
  }

  std::string home_;
  CS_CONTEXT context_{};
  CsCtxGlobals globals_{};
  char error_[1100] = "";
  std::set<std::string> files_, locale_names_;
  std::vector<CsConvConfig*> configurations_;
  int faults_ = 0;
};

}  // namespace

int main(int count, char** arguments) {
  if (count != 2) {
    std::fprintf(stderr, "usage: checkhome HOME\n");
    return 2;
  }
  setenv("TALVEN", arguments[1], 1);
  return Check(arguments[1]).run();
}
