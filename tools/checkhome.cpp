// checkhome HOME: verifies a whole localization home with the library's own readers, each file by
// itself, and prints every fault as "file: what is wrong". What the readers skip without a word is
// a fault as well. Ends with 0 when there is none.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "chars/com_attr.h"
#include "chars/hex.h"
#include "chars/utf.h"
#include "comnlib/charset.h"
#include "comnlib/config.h"
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
#include "intl/parse_number.h"
#include "intl/sortorder.h"
#include "intl/xlate.h"

using namespace comnlib;

namespace {

using Names = std::vector<std::string>;

// Which sections of a file are read, which of its keys may be repeated, and how many values of a
// key are read, where that is not one.
struct Rules {
  std::set<std::string> sections;
  std::set<std::string> repeated;
  std::map<std::string, std::size_t> values;
};

constexpr std::size_t kAnyNumber = 1'000'000;

const std::map<std::string, std::size_t> kConventionValues{
    {"months", 12}, {"shortmonths", 12}, {"days", 7}};
const Rules kObjectIds{{"charset", "natlang", "collate", "datetime", "numeric", "money"}, {}, {}},
    kLocales{{"linux"}, {"locale"}, {{"locale", 7}}},
    kCommon{{"datetime", "numeric", "money"}, {}, kConventionValues},
    kDates{{"datetime"}, {}, kConventionValues}, kNumbers{{"numeric"}, {}, {}},
    kMoney{{"money"}, {}, {}}, kMessages{{"messages"}, {}, {}},
    kCharset{{"charset"}, {"definition"}, {}},
    kConversions{{"conversion"}, {"to"}, {{"to", kAnyNumber}}},
    kTable{{"table"},
           {"single", "double", "triple", "range"},
           {{"single", 2}, {"double", 3}, {"triple", 4}, {"range", 3}}},
    kSortOrder{{"sortorder"}, {"fold"}, {{"fold", 4}}};

// The rules of a file by its path below the home.
const Rules& rules_of(const std::filesystem::path& path) {
  const std::map<std::string, const Rules*> by_suffix{{".dat", &kObjectIds}, {".dt", &kDates},
                                                      {".num", &kNumbers},   {".mon", &kMoney},
                                                      {".ctb", &kTable},     {".srt", &kSortOrder}};
  if (path == "locales/locales.dat") return kLocales;
  if (path.filename() == "charset.loc") return kCharset;
  if (path.string().starts_with("locales/message/")) return kMessages;
  if (path.filename() == "common.loc") return kCommon;
  const auto found = by_suffix.find(path.extension().string());
  return found == by_suffix.end() ? kConversions : *found->second;
}

// The byte sequences that an entry of a table gives, each as a number after its length.
std::vector<std::uint64_t> sequences(const Names& values) {
  std::uint64_t first = values.size();  // after the length: the bytes
  for (std::size_t i = 0; i + 1 < values.size(); ++i)
    first = first << 8 | std::strtoul(values[i].c_str(), nullptr, 16);
  std::vector<std::uint64_t> found;
  for (std::size_t i = 0; i < values.back().size() / 4; ++i)
    if (values.back().compare(4 * i, 4, "FFFF") != 0) found.push_back(first + i);
  return found;
}

// Whether the header of a multibyte image, which the loader reads in part, is true of all of it.
bool is_true_header(const std::string& digits, CS_INT status, CS_INT image_size) {
  std::vector<CS_BYTE> image(digits.size() / 2);
  if (image.size() < COMN_CS_IMAGE2_HEADER || !decode_hex(digits, image)) return false;
  const ImageHeader header = read_image_header(image.data());
  CS_UINT offset = COMN_CS_IMAGE2_HEADER;
  for (const ImageMap& map : {header.width, header.norm, header.type, header.soundex}) {
    if (map.size != 0 && map.offset != offset) return false;
    offset += map.size;
  }
  return header.status == status && header.charset_class == COMN_CS_MULTIBYTE &&
         offset == image.size() && offset == static_cast<CS_UINT>(image_size);
}

bool is_utf8(std::string_view text) {
  std::span left(reinterpret_cast<const CS_BYTE*>(text.data()), text.size());
  while (!left.empty()) {
    const std::size_t bytes = decode_utf8(left).bytes;
    if (bytes == 0) return false;
    left = left.subspan(bytes);
  }
  return true;
}

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
    object_ids();
    const CsConvConfig* utf8 = configuration("utf8");
    for (const std::string& charset : charsets()) character_set(charset, utf8);
    for (const std::string& language : names("natlang")) {
      messages(language);
      for (const std::string& charset : charsets())
        if (exists("locales/" + language + '/' + charset)) common(language, charset);
    }
    named_conventions();
    const bool is_set_up = comn_intl_init(&context_, error_, sizeof error_) == CS_SUCCEED;
    if (is_set_up) {
      for (const std::string& charset : charsets()) texts_of_set(charset);
      locales();
    }
    for (const std::string& path : std::set(files_)) syntax(path);
    if (is_set_up)
      unread_files();
    else
      fault(home_, "no context can be set up, so that its locales were not looked at");
    if (faults_ == 0) std::printf("checkhome: %zu files, no fault\n", files_.size());
    return faults_ == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
  }

 private:
  // The names of a class of identifiers, in their order.
  Names names(const std::string& oidclass) const {
    const auto found = classes_.find(oidclass);
    return found == classes_.end() ? Names() : found->second;
  }
  bool is_name(const std::string& oidclass, const std::string& name) const {
    const Names known = names(oidclass);
    return std::ranges::find(known, name) != known.end();
  }
  // Those with files: ucs2 is the library's own.
  Names charsets() const {
    Names found = names("charset");
    std::erase(found, "ucs2");
    return found;
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
    if (is_new) fault(error_, words_of(result));
    refused_.insert(error_);
    return false;
  }
  std::string words_of(CS_RETCODE result) const {
    char words[200] = "what it holds is not valid";
    if (result == CS_INTL_LIBERR || result == CS_INTL_NOFILE)
      intl_errstr(context_.ctxintlerr, words, sizeof words);
    return words;
  }
  ErrorBuffer error() { return {error_, sizeof error_}; }

  void object_ids() {
    CsOid oid = 0;
    const CS_RETCODE result = global_id(context_, "charset", "utf8", oid, error());
    const std::string path = error_;
    if (!took(result) && result != CS_FAIL) return;
    INTL_HANDLE handle = nullptr;
    if (intl_open(path.c_str(), &handle) < 0) return;
    IntlFile file(context_, handle);
    while (const char* section = file.next_section()) {
      const std::string oidclass = section;
      std::set<CsOid> numbers;
      while (const char* name = file.next_entry()) {
        const std::string known = name;
        classes_[oidclass].push_back(known);
        const auto number = parse_number(file.next_text(), 1, INT32_MAX);
        if (number && !numbers.insert(*number).second)
          fault(path, "[" + oidclass + "] gives the number of " + known + " twice");
      }
    }
    const std::pair<const char*, const char*> needed[] = {
        {"charset", "utf8"}, {"charset", "ucs2"}, {"collate", "binary"}};
    for (const auto& [oidclass, name] : needed)
      if (!is_name(oidclass, name))
        fault(path, "every context needs " + std::string(name) + " of [" + oidclass + "]");
  }

  const CsConvConfig* configuration(const std::string& charset) {
    CsConvConfig* config = nullptr;
    if (!took(load_conv_config(context_, charset.c_str(), config, error()))) return nullptr;
    for (const std::size_t name : config->targets.view())
      if (!is_name("charset", config->names.at(name)))
        fault(error_, "\"" + std::string(config->names.at(name)) + "\" is no known charset");
    return configurations_.emplace_back(config);
  }

  void character_set(std::string charset, const CsConvConfig* utf8) {
    auto* desc = static_cast<CsCharDesc*>(comn_calloc(1, sizeof(CsCharDesc)));
    CsLocCache entry{};
    entry.charname = charset.data();
    entry.charnamelen = static_cast<CS_INT>(charset.size());
    entry.locchardesc = desc;
    const bool has_attributes = took(comn__get_charset(&context_, &entry, error_, sizeof error_));
    if (has_attributes) attributes(charset, *desc->char_attrib);
    const CsConvConfig* config = charset == "utf8" ? utf8 : configuration(charset);
    const bool leads_to_utf8 =
        config != nullptr && (charset == "utf8" || converts_to(*config, "utf8"));
    if (config != nullptr && !leads_to_utf8) fault(error_, "no conversion to utf8");
    // Without a configuration the table is the one that has the name of the set.
    const ConvTable* table = nullptr;
    const std::string name = config == nullptr ? charset : config->table.data();
    const bool needs_table = config == nullptr ? exists("charsets/" + charset + '/' + name + ".ctb")
                                               : config->algorithm == nullptr;
    const bool has_table =
        !needs_table || took(load_table(context_, charset.c_str(), name.c_str(), table, error()));
    if (has_attributes && leads_to_utf8 && has_table) usable_.insert(charset);
    if (has_attributes && table != nullptr && !widths_agree(*desc->char_attrib, *table))
      fault(error_, "charset.loc gives characters other widths");
    comn__chardesc_drop(desc);
    if (charset != "utf8" && utf8 != nullptr && !converts_to(*utf8, charset))
      fault(home_ + "/charsets/utf8/utf8.cfg", "no conversion to " + charset);
    for (const std::string& order : names("collate"))
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
    if (global_id(context_, "collate", name, oid, error()) == CS_SUCCEED &&
        took(comn__intl_load_sortorder(&context_, oid, &entry, error_, sizeof error_)) &&
        entry.locsortorder->kind == SortKind::kFolded && charset != "utf8")
      fault(error_, "only UTF-8 text can be folded");
  }

  void messages(std::string language) {
    CsLocCache entry{};
    entry.langname = language.data();
    entry.langnamelen = static_cast<CS_INT>(language.size());
    CsOid oid = 0;
    if (global_id(context_, "natlang", language, oid, error()) != CS_SUCCEED) return;
    const bool good = took(comn__intl_load_message(&context_, oid, &entry, error_, sizeof error_));
    const std::string directory = home_ + "/locales/message/" + language + '/';
    const char* const files[] = {"common.loc", "cslib.loc", "comnlib.loc"};  // in their order
    for (const char* file : files) files_.insert(directory + file);
    if (!good) return;
    for (const MessageText& message : entry.locmessage->messages.view())
      if (!is_utf8(entry.locmessage->texts.at(message.text)))
        fault(directory + files[static_cast<std::size_t>(message.file)],
              "message " + std::to_string(message.number) + " is not UTF-8");
  }

  void common(std::string language, std::string charset) {
    CsLocCache entry{};
    entry.langname = language.data();
    entry.charname = charset.data();
    took(comn__read_common(&context_, &entry, error_, sizeof error_));
  }

  void named_conventions() {
    const std::pair<const char*, CS_INT> kinds[] = {
        {"datetime", COM_LC_TIME}, {"numeric", COM_LC_NUMERIC}, {"money", COM_LC_MONETARY}};
    for (const auto& [oidclass, kind] : kinds)
      for (const std::string& name : names(oidclass)) {
        CsLocCache entry{};
        took(comn__load_locdata(&context_, kind, name.c_str(), &entry, error_, sizeof error_));
      }
  }

  // The replacement of a set, and the conventions of each language in it: whether they are text of
  // the set.
  void texts_of_set(const std::string& charset) {
    if (!usable_.contains(charset)) return;
    CsLocCache* entry = nullptr;
    for (const std::string& language : names("natlang")) {
      if (!exists("locales/" + language + '/' + charset)) continue;
      const std::string name = language + '/' + charset;
      if (took(comn_intl_load_tlvtypes(&context_, name.c_str(), CS_NULLTERM, charset.c_str(),
                                       CS_NULLTERM, language.c_str(), CS_NULLTERM, "binary",
                                       CS_NULLTERM, &entry, error_, sizeof error_)))
        texts(home_ + "/locales/" + name + "/common.loc", *entry);
    }
    if (entry == nullptr) return;
    const CsConvConfig& config = *entry->locchardesc->conv_config;
    const std::string_view replacement(reinterpret_cast<const char*>(config.replacement.data()),
                                       static_cast<std::size_t>(config.replacement_length));
    if (!is_text(*entry->locchardesc, replacement))
      fault(home_ + "/charsets/" + charset + '/' + charset + ".cfg",
            "the replacement is no text of the set");
  }

  void locales() {
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
      if (file.failed()) return;
      values.resize(7);
      if (!locale_names_.insert(values[0]).second)
        fault(path, "locale " + values[0] + " is there twice");
      locale(path, values);
    }
  }

  // values: name, language, character set, sort order, date/time, number, money.
  void locale(const std::string& path, Names& values) {
    const std::string start = "locale " + values[0] + ": ";
    if (values[3].empty()) values[3] = "binary";
    const char* oidclasses[] = {"natlang", "charset", "collate", "datetime", "numeric", "money"};
    bool known = true;
    for (std::size_t i = 0; i < std::size(oidclasses); ++i) {
      const std::string& value = values[i + 1];
      if ((i >= 3 && value.empty()) || is_name(oidclasses[i], value)) continue;
      known = false;
      fault(path, start + '"' + value + "\" is no known " + oidclasses[i]);
    }
    for (const std::string& value : values)
      if (value.size() >= COM_LOC_NAMESIZE) return fault(path, start + "a value is too long");
    if (values[4].empty() && !values[5].empty())
      fault(path, start + "without a date/time name the number name is not used");
    if (!known || !usable_.contains(values[2])) return;
    CsLocCache* entry = nullptr;
    if (!took(comn_intl_load(&context_, values[0].c_str(), CS_NULLTERM, &entry, error_,
                             sizeof error_)))
      return;
    CsLocCache with{};  // the named conventions alone
    with.locchardesc = entry->locchardesc;
    with.charname = entry->charname;
    if (!values[6].empty()) with.locmoninfo = entry->locmoninfo;
    const std::pair<CS_INT, const std::string&> named[] = {{COM_LC_TIME, values[4]},
                                                           {COM_LC_NUMERIC, values[5]}};
    for (const auto& [kind, name] : named)
      if (!name.empty() && !values[4].empty() &&
          !took(comn__load_locdata(&context_, kind, name.c_str(), &with, error_, sizeof error_)))
        return;
    texts(path + ": locale " + values[0], with);
  }

  bool is_text(const CsCharDesc& charset, std::string_view text) {
    const std::span bytes(reinterpret_cast<const CS_BYTE*>(text.data()), text.size());
    std::vector<CS_BYTE> room(4 * text.size());
    return translate(&context_, {&charset, false}, {nullptr, true}, bytes, room).code == CS_SUCCEED;
  }

  // Whether the texts of conventions are text of the character set.
  void texts(const std::string& place, const CsLocCache& with) {
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
    for (const std::string_view text : texts)
      if (!is_text(*with.locchardesc, text))
        return fault(place, '"' + std::string(text) + "\" is no text of " + with.charname);
  }

  // What the readers skip without a word: lines before the first section, sections that are not
  // read, keys that are there twice, and values that are not read.
  void syntax(const std::string& path) {
    INTL_HANDLE handle = nullptr;
    if (intl_open(path.c_str(), &handle) < 0) return;  // reported already
    const Rules& rules = rules_of(std::filesystem::path(path).lexically_relative(home_));
    IntlFile file(context_, handle);
    if (has_lines_before_sections(path)) fault(path, "lines before the first section are not read");
    std::set<std::string> sections;
    while (const char* name = file.next_section()) {
      const std::string section = name;
      if (!rules.sections.contains(section)) fault(path, '[' + section + "] is not read");
      if (!sections.insert(section).second) fault(path, '[' + section + "] is there twice");
      entries(path, section, rules, file);
    }
    if (file.failed() && !refused_.contains(path)) fault(path, words_of(CS_INTL_LIBERR));
  }

  static bool has_lines_before_sections(const std::string& path) {
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
      const std::size_t first = line.find_first_not_of(" \t\r");
      if (first != line.npos && line[first] != ';') return line[first] != '[';
    }
    return false;
  }

  void entries(const std::string& path, const std::string& section, const Rules& rules,
               IntlFile& file) {
    std::set<std::string> keys;
    std::set<std::uint64_t> given;
    std::string image;
    std::map<std::string, std::string> first_values;
    while (const char* name = file.next_entry()) {
      const std::string key = name;
      if (!keys.insert(key).second && !rules.repeated.contains(key))
        fault(path, '[' + section + "] has " + key + " twice");
      Names values;
      while (const char* value = file.next_value()) values.emplace_back(value);
      const auto most = rules.values.find(key);
      if (values.size() > (most == rules.values.end() ? 1 : most->second))
        fault(path, '[' + section + "] has values of " + key + " that are not read");
      if (values.empty()) continue;
      first_values[key] = values[0];
      if (key == "definition") image += values[0];
      if (&rules == &kCharset && key != "definition" && !image.empty())
        fault(path, key + " comes after the image and is not read");
      if (&rules != &kTable || key == "range") continue;
      for (const std::uint64_t sequence : sequences(values))
        if (!given.insert(sequence).second) return fault(path, "a sequence is there twice: " + key);
    }
    const auto number = [&](const char* key) {
      return parse_number(first_values[key], INT32_MIN, INT32_MAX).value_or(0);
    };
    if (&rules == &kCharset && number("class") == COMN_CS_MULTIBYTE && !file.failed() &&
        !is_true_header(image, number("status"), number("image_size")))
      fault(path, "the header is not true of the image");
  }

  // What lies about in the home and no name leads to. Configuration files have a syntax of their
  // own, and interfaces is the network layer's.
  void unread_files() {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(home_)) {
      const std::filesystem::path& path = entry.path();
      if (!entry.is_regular_file() || path == home_ + "/interfaces") continue;
      if (path.extension() == ".cfg" && path.parent_path().filename() == "config")
        host_configuration(path.string());
      else if (!files_.contains(path.string()))
        fault(path.string(), "no name leads to it");
    }
  }

  void host_configuration(const std::string& path) {
    CfgParseInfo* parse = nullptr;
    const bool opened = cfg__open_parse(&context_, path.c_str(), &parse) == CS_SUCCEED;
    if (!opened || cfg__parse(parse) != CS_SUCCEED) fault(path, "it is no configuration file");
    if (opened) static_cast<void>(cfg__clean_parse(parse));
  }

  std::string home_;
  CS_CONTEXT context_{};
  CsCtxGlobals globals_{};
  char error_[1100] = "";
  std::map<std::string, Names> classes_;
  std::set<std::string> files_, refused_, locale_names_;
  std::set<std::string> usable_;  // character sets whose characters can be checked
  std::vector<CsConvConfig*> configurations_;
  int faults_ = 0;
};

}  // namespace

int main(int count, char** arguments) {
  if (count != 2) {
    std::fprintf(stderr, "usage: checkhome HOME\n");
    return 2;
  }
  std::string home = arguments[1];
  while (home.size() > 1 && home.ends_with('/')) home.pop_back();
  setenv("TALVEN", home.c_str(), 1);
  return Check(home).run();
}
