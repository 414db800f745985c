#include "layout.h"

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string_view>
#include <utility>

#include "fatal.h"

namespace rowcopy {
namespace {

struct Entry {
  std::string name;
  std::string place;
};

struct Section {
  std::string name;
  std::vector<Entry> entries;
};

// A loaded configuration. Look-ups go by name; what names there are the file itself tells.
class Store {
 public:
  Store(CS_CONTEXT* context, const std::string& path) : context_(context) {
    if (comn_init_cfg(context, path.c_str()) != CS_SUCCEED)
      throw Fatal(path + ": is no layout, as told above");
  }
  ~Store() { comn_drop_cfg(context_); }
  Store(const Store&) = delete;
  Store& operator=(const Store&) = delete;

  std::string get(const std::string& section, const std::string& entry) const {
    CS_INT length = 0;
    comn_get_cfg(context_, section.c_str(), entry.c_str(), nullptr, 0, &length);
    std::string value(static_cast<std::size_t>(length), '\0');
    comn_get_cfg(context_, section.c_str(), entry.c_str(), value.data(), length, &length);
    return value;
  }

 private:
  CS_CONTEXT* context_;
};

// Lists the sections and entries of a file that the store has loaded, and so is known to be good.
class Names {
 public:
  explicit Names(CS_CONTEXT* context) : context_(context) {}

  std::vector<Section> list(const std::string& path) && {
    walk(path);
    return std::move(sections_);
  }

 private:
  // One pass over one file, which the scanner splits into tokens.
  struct Scan {
    Scan(CS_CONTEXT* context, const std::string& file) : path(file) {
      if (cfg__open_parse(context, path.c_str(), &parse) != CS_SUCCEED)
        throw Fatal("cannot open " + path);
    }
    ~Scan() { cfg__clean_parse(parse); }
    Scan(const Scan&) = delete;
    Scan& operator=(const Scan&) = delete;

    CS_INT next() {
      const CS_INT token = cfg__lex(parse);
      line += static_cast<std::size_t>(std::ranges::count(text(), '\n'));
      return token;
    }
    CS_INT next_but_space() {
      CS_INT token = next();
      while (token == CFG_SPACE) token = next();
      return token;
    }
    std::string_view text() const {
      CS_INT length = 0;
      const CS_CHAR* bytes = cfg__toktext(parse, &length);
      return {bytes, static_cast<std::size_t>(length)};
    }

    std::string path;
    std::size_t line = 1;
    CfgParseInfo* parse = nullptr;
  };

  void walk(const std::string& path) {
    Scan scan(context_, path);
    std::size_t section = 0;  // of sections_, which grows
    for (CS_INT token = scan.next_but_space(); token != CFG_END; token = scan.next_but_space()) {
      if (token == CFG_OPEN) {
        scan.next_but_space();
        section = find_section(scan.text());
      } else if (token == CFG_IDENT && !sections_.empty()) {
        add_entry(sections_[section], scan);
      } else if (token == CFG_INCLUDE) {
        walk((std::filesystem::path(path).parent_path() / included_path(scan)).string());
        continue;
      }
      while (token != CFG_NEWLINE && token != CFG_END) token = scan.next();
    }
  }

  std::size_t find_section(std::string_view name) {
    const auto found = std::ranges::find(sections_, name, &Section::name);
    const auto index = static_cast<std::size_t>(found - sections_.begin());
    if (found == sections_.end()) sections_.push_back({std::string(name), {}});
    return index;
  }

  static void add_entry(Section& section, const Scan& scan) {
    const Entry entry{std::string(scan.text()), scan.path + ":" + std::to_string(scan.line)};
    const auto known = std::ranges::find(section.entries, entry.name, &Entry::name);
    if (known == section.entries.end()) {
      section.entries.push_back(entry);
    } else {
      *known = entry;
    }
  }

  // The value behind an include, up to the line's end.
  static std::string included_path(Scan& scan) {
    std::string path;
    bool blank = false;
    for (CS_INT token = scan.next_but_space(); token != CFG_NEWLINE && token != CFG_END;
         token = scan.next()) {
      if (token == CFG_SPACE) blank = true;
      if (token == CFG_SPACE || token == CFG_STRING_END || token == CFG_CONTINUATION) continue;
      if (std::exchange(blank, false)) path += ' ';
      if (token == CFG_STRING_START) continue;
      path += token == CFG_ESCAPED_QUOTE ? "\"" : scan.text();
    }
    return path;
  }

  CS_CONTEXT* context_;
  std::vector<Section> sections_;
};

std::string_view trim(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == text.npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

Datatype parse_type(const Entry& entry, std::string_view text) {
  std::string spelling(text);
  std::erase(spelling, ' ');
  auto type = find_datatype(spelling);
  if (!type)
    throw Fatal(entry.place + ": column \"" + entry.name + "\": unknown type \"" + spelling +
                "\"; known are " + datatype_spellings());
  return *type;
}

// value: type, optionally "/" type, optionally ":" heading
Column parse_column(const Entry& entry, std::string_view value) {
  const std::size_t colon = std::min(value.find(':'), value.size());
  const std::string_view heading =
      colon == value.size() ? std::string_view(entry.name) : trim(value.substr(colon + 1));
  if (heading.empty())
    throw Fatal(entry.place + ": column \"" + entry.name + "\" has an empty heading");
  const std::string_view types = value.substr(0, colon);
  const std::size_t slash = types.find('/');
  Datatype read_as = parse_type(entry, types.substr(0, slash));
  Datatype type = slash == types.npos ? read_as : parse_type(entry, types.substr(slash + 1));
  return {entry.name, std::string(heading), std::move(read_as), std::move(type), entry.place};
}

const Section& choose_section(const std::vector<Section>& sections, const std::string& path,
                              const std::string& wanted, const std::string& csv_path) {
  const std::string name =
      wanted.empty() ? std::filesystem::path(csv_path).stem().string() : wanted;
  auto found = std::ranges::find(sections, name, &Section::name);
  if (found == sections.end() && wanted.empty() && sections.size() == 1) found = sections.begin();
  if (found == sections.end()) throw Fatal(path + ": has no section [" + name + "]");
  if (found->entries.empty()) throw Fatal(path + ": section [" + found->name + "] has no columns");
  return *found;
}

}  // namespace

Layout read_layout(CS_CONTEXT* context, const std::string& path, const std::string& wanted,
                   const std::string& csv_path) {
  const Store store(context, path);
  const auto sections = Names(context).list(path);
  const Section& section = choose_section(sections, path, wanted, csv_path);
  Layout layout{path, section.name, {}};
  for (const Entry& entry : section.entries)
    layout.columns.push_back(parse_column(entry, store.get(section.name, entry.name)));
  return layout;
}

}  // namespace rowcopy
