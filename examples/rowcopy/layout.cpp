#include "layout.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <string_view>
#include <utility>

#include "fatal.h"
#include "file.h"

namespace rowcopy {
namespace {

constexpr std::string_view kBlanks = " \t\f\r";

std::string_view trim(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == text.npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

constexpr bool is_letter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool is_identifier(std::string_view text) {
  return !text.empty() && is_letter(text.front()) && std::ranges::all_of(text, [](char c) {
    return is_letter(c) || (c >= '0' && c <= '9') ||
           std::string_view("#./_").find(c) != std::string_view::npos;
  });
}

std::string quote(std::string_view text) {
  return '"' + std::string(text) + '"';
}

// Collects the sections of one file, line by line.
class LayoutParser {
 public:
  explicit LayoutParser(std::string path) : path_(std::move(path)) {}

  std::vector<Layout> parse(std::string_view text) {
    while (!text.empty()) {
      ++line_;
      const std::size_t end = std::min(text.find('\n'), text.size());
      parse_line(trim(text.substr(0, end)));
      text.remove_prefix(std::min(end + 1, text.size()));
    }
    return std::move(sections_);
  }

 private:
  [[noreturn]] void fail(const std::string& what) const {
    throw Fatal(path_ + ":" + std::to_string(line_) + ": " + what);
  }

  void parse_line(std::string_view line) {
    if (line.empty() || line.front() == ';') return;
    if (line.front() == '[') {
      parse_header(line);
    } else {
      parse_entry(line);
    }
  }

  void parse_header(std::string_view line) {
    const std::string_view name = line.back() == ']' ? trim(line.substr(1, line.size() - 2)) : "";
    if (!is_identifier(name)) fail("a section header is [name]");
    if (std::ranges::find(sections_, name, &Layout::section) != sections_.end())
      fail("section " + quote(name) + " stands here a second time");
    sections_.push_back({path_, std::string(name), {}});
  }

  void parse_entry(std::string_view line) {
    const std::size_t equals = line.find('=');
    if (equals == line.npos) fail("a line is a [section], a column = type or a ; comment");
    const std::string_view name = trim(line.substr(0, equals));
    if (!is_identifier(name)) fail("column name " + quote(name) + " is not an identifier");
    if (sections_.empty()) fail("column " + quote(name) + " stands before the first [section]");
    auto& columns = sections_.back().columns;
    if (std::ranges::find(columns, name, &Column::name) != columns.end())
      fail("column " + quote(name) + " stands here a second time");
    columns.push_back(parse_column(std::string(name), join_value(line.substr(equals + 1))));
  }

  // A value is made of pieces, bare or quoted; blanks between them carry no meaning.
  std::string join_value(std::string_view text) const {
    std::string value;
    bool in_quotes = false;
    for (std::size_t at = 0; at < text.size(); ++at) {
      const char c = text[at];
      if (c == '"' && in_quotes && text.substr(at + 1).starts_with('"')) {
        value += c;
        ++at;
      } else if (c == '"') {
        in_quotes = !in_quotes;
      } else if (in_quotes || kBlanks.find(c) == kBlanks.npos) {
        value += c;
      }
    }
    if (in_quotes) fail("a quote is left open");
    return value;
  }

  // value: type, optionally "/" type, optionally ":" heading
  Column parse_column(std::string name, std::string_view value) const {
    const std::size_t colon = value.find(':');
    std::string heading(colon == value.npos ? std::string_view(name) : value.substr(colon + 1));
    if (heading.empty()) fail("column " + quote(name) + " has an empty heading");
    const std::string_view types = value.substr(0, colon);
    const std::size_t slash = types.find('/');
    Datatype read_as = parse_type(name, types.substr(0, slash));
    Datatype type = slash == types.npos ? read_as : parse_type(name, types.substr(slash + 1));
    return {std::move(name), std::move(heading), std::move(read_as), std::move(type), line_};
  }

  Datatype parse_type(const std::string& column, std::string_view spelling) const {
    auto type = find_datatype(spelling);
    if (!type)
      fail("column " + quote(column) + ": unknown type " + quote(spelling) + "; known are " +
           datatype_spellings());
    return *type;
  }

  std::string path_;
  std::size_t line_ = 0;
  std::vector<Layout> sections_;
};

std::string read_whole(const std::string& path) {
  File file(path, File::Mode::kRead);
  std::string text;
  std::array<char, 4096> block;
  while (const std::size_t count = file.read(block)) text.append(block.data(), count);
  return text;
}

}  // namespace

Layout read_layout(const std::string& path, const std::string& wanted,
                   const std::string& csv_path) {
  auto sections = LayoutParser(path).parse(read_whole(path));
  const std::string name =
      wanted.empty() ? std::filesystem::path(csv_path).stem().string() : wanted;
  auto found = std::ranges::find(sections, name, &Layout::section);
  if (found == sections.end() && wanted.empty() && sections.size() == 1) found = sections.begin();
  if (found == sections.end()) throw Fatal(path + ": has no section [" + name + "]");
  if (found->columns.empty())
    throw Fatal(path + ": section [" + found->section + "] has no columns");
  return std::move(*found);
}

}  // namespace rowcopy
