#include "layout.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

#include "fatal.h"
#include "source.h"

namespace rowcopy {
namespace {

namespace fs = std::filesystem;

// The library writes its diagnoses to standard error and to a log in the current directory. This
// keeps the log as it was, since a typing error in a layout should not leave a file behind.
class QuietLog {
 public:
  QuietLog() : size_(fs::file_size(kLog, error_)), was_there_(!error_) {}
  ~QuietLog() {
    if (was_there_) {
      fs::resize_file(kLog, size_, error_);
    } else {
      fs::remove(kLog, error_);
    }
  }
  QuietLog(const QuietLog&) = delete;
  QuietLog& operator=(const QuietLog&) = delete;

 private:
  static constexpr const char* kLog = "tlvinit.err";

  std::error_code error_;
  std::uintmax_t size_;
  bool was_there_;
};

// A loaded configuration.
class LoadedLayout {
 public:
  LoadedLayout(CS_CONTEXT* context, const std::string& path) : context_(context) {
    const QuietLog quiet;
    if (comn_init_cfg(context, path.c_str()) != CS_SUCCEED)
      throw Fatal(path + ": is not a valid layout; see the messages above");
  }
  ~LoadedLayout() { comn_drop_cfg(context_); }
  LoadedLayout(const LoadedLayout&) = delete;
  LoadedLayout& operator=(const LoadedLayout&) = delete;

  std::vector<std::string> sections() const {
    std::vector<std::string> names;
    const CS_CHAR* name = nullptr;
    for (CS_INT at = 0; comn_next_cfg_section(context_, &at, &name) == CS_SUCCEED;)
      names.emplace_back(name);
    return names;
  }

  std::vector<CS_CFGENTRY> entries(const std::string& section) const {
    std::vector<CS_CFGENTRY> found;
    CS_CFGENTRY entry{};
    for (CS_INT at = 0; comn_next_cfg_entry(context_, section.c_str(), &at, &entry) == CS_SUCCEED;)
      found.push_back(entry);
    return found;
  }

 private:
  CS_CONTEXT* context_;
};

// Where an entry is, for what is wrong with it.
std::string place_of(const CS_CFGENTRY& entry) {
  return std::string(entry.file) + ":" + std::to_string(entry.line);
}

std::string place_and_name(const CS_CFGENTRY& entry) {
  return place_of(entry) + ": column \"" + entry.name + "\"";
}

Datatype parse_type(const CS_CFGENTRY& entry, std::string_view text) {
  std::string spelling(text);
  std::erase(spelling, ' ');
  std::string problem;
  auto type = find_datatype(spelling, problem);
  if (!type) throw Fatal(place_and_name(entry) + ": " + spelling + ": " + problem);
  return *type;
}

// value: type, optionally "/" type, optionally ":" heading. One blank parts the colon from the
// heading; further ones belong to it, and must have been quoted to be here.
Column parse_column(const CS_CFGENTRY& entry) {
  const std::string_view value(entry.value, static_cast<std::size_t>(entry.valuelen));
  const std::size_t colon = std::min(value.find(':'), value.size());
  std::string_view heading = entry.name;
  if (colon != value.size()) {
    heading = value.substr(colon + 1);
    if (heading.starts_with(' ')) heading.remove_prefix(1);
  }
  if (heading.empty())
    throw Fatal(place_and_name(entry) + " has an empty heading; \": #3\" is the third column");
  const std::string_view types = value.substr(0, colon);
  const std::size_t slash = types.find('/');
  Datatype read_as = parse_type(entry, types.substr(0, slash));
  Datatype type = slash == types.npos ? read_as : parse_type(entry, types.substr(slash + 1));
  return {entry.name, std::string(heading), std::move(read_as), std::move(type), place_of(entry)};
}

std::string stem_of(const std::string& csv_path) {
  fs::path name = csv_path;
  if (is_packed(csv_path)) name = name.stem();
  return name.stem().string();
}

std::string choose_section(const std::vector<std::string>& sections, const std::string& path,
                           const std::string& wanted, const std::string& csv_path) {
  std::vector<std::string> names = {wanted};
  if (wanted.empty()) names = {stem_of(csv_path), section_name(csv_path)};
  const auto found = std::ranges::find_first_of(sections, names);
  if (found != sections.end()) return *found;
  if (wanted.empty() && sections.size() == 1) return sections.front();
  std::string known;
  for (const std::string& section : sections) known += (known.empty() ? "" : ", ") + section;
  throw Fatal(path + ": has no section [" + names.back() + "]" +
              (wanted.empty() ? " for " + csv_path : "") + "; --section names one of " + known);
}

}  // namespace

std::string identifier(std::string_view text) {
  constexpr auto is_letter = [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
  };
  std::string name;
  for (const char c : text) name += is_letter(c) || (c >= '0' && c <= '9') ? c : '_';
  if (name.empty() || !is_letter(name[0])) name.insert(0, "x");
  return name;
}

std::string section_name(const std::string& csv_path) {
  return identifier(stem_of(csv_path));
}

Layout read_layout(CS_CONTEXT* context, const std::string& path, const std::string& wanted,
                   const std::string& csv_path) {
  const LoadedLayout store(context, path);
  Layout layout{path, choose_section(store.sections(), path, wanted, csv_path), {}};
  for (const CS_CFGENTRY& entry : store.entries(layout.section))
    layout.columns.push_back(parse_column(entry));
  if (layout.columns.empty())
    throw Fatal(path + ": section [" + layout.section + "] has no columns");
  return layout;
}

}  // namespace rowcopy
