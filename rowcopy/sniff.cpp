#include "sniff.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <limits>
#include <set>

#include "converter.h"
#include "csv_reader.h"
#include "fatal.h"
#include "layout.h"

namespace rowcopy {
namespace {

constexpr std::size_t kRows = 10'000;
constexpr std::size_t kBatchRows = 250;
constexpr std::array<std::string_view, 6> kNullWords = {"NA", "N/A", "NULL", "null", "\\N", "-"};

constexpr bool is_digit(char c) {
  return c >= '0' && c <= '9';
}

std::string_view trim(std::string_view text) {
  const std::size_t first = text.find_first_not_of(' ');
  return first == text.npos ? text : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

// How many digits a number such as "-12.50" has before and after the point. A code such as "007" is
// not a number.
struct DigitCounts {
  std::size_t before = 0;
  std::size_t after = 0;
  bool is_number = false;
};

DigitCounts count_digits(std::string_view text) {
  DigitCounts digits;
  if (text.starts_with('-')) text.remove_prefix(1);
  const std::size_t point = std::min(text.find('.'), text.size());
  const std::string_view whole = text.substr(0, point);
  const std::string_view rest = text.substr(std::min(point + 1, text.size()));
  digits.before = whole.size();
  digits.after = rest.size();
  digits.is_number = std::ranges::all_of(whole, is_digit) && std::ranges::all_of(rest, is_digit) &&
                     digits.before + digits.after > 0 && (whole.size() < 2 || whole[0] != '0') &&
                     (point == text.size() || !rest.empty());
  return digits;
}

// Tries a type on the values of a column, and gives up at the first value that it cannot hold.
class Candidate {
 public:
  Candidate(CS_CONTEXT* context, const char* type, Locales locales)
      : name_(type),
        column_(make_column(type)),
        converter_(context, column_, locales, {}, kBatchRows),
        size_(sizeof(CS_INT) + static_cast<std::size_t>(column_.type.size)),
        room_(size_ * kBatchRows + kSpecialSlack) {}

  const char* name() const { return name_; }
  bool holds() const { return holds_; }

  void try_on(const FieldColumn& fields) {
    if (!holds_) return;
    converter_.to_record(fields, {room_.data() + sizeof(CS_INT), size_});
    holds_ = converter_.faults() == 0;
    for (std::size_t row = 0; row < fields.count; ++row) holds_ &= is_kept(converter_.verdict(row));
  }

 private:
  static Column make_column(const char* name) {
    std::string problem;
    const auto type = find_datatype(name, problem);
    if (!type) throw Fatal(problem);
    return {name, name, *type, *type, "sniff"};
  }

  const char* name_;
  Column column_;
  ColumnConverter converter_;
  std::size_t size_;  // of a value and its length
  std::vector<char> room_;
  bool holds_ = true;
};

// What a column's values have in common.
class Guess {
 public:
  Guess(CS_CONTEXT* context, Locales locales)
      : recode_(context, text_format(CS_CHAR_TYPE, locales.from),
                text_format(CS_CHAR_TYPE, locales.to)),
        recodes_(locales.from != locales.to),
        integer_(context, "int", locales),
        money_(context, "money", locales),
        date_(context, "datetime", locales),
        real_(context, "float", locales) {}

  void add(FieldColumn fields) {
    lengths_.assign(fields.lengths, fields.lengths + fields.count);
    fields.lengths = lengths_.data();
    for (std::size_t row = 0; row < fields.count; ++row)
      if (lengths_[row] != kNull && !add(fields[row])) lengths_[row] = kNull;
    for (Candidate* candidate : {&integer_, &money_, &date_, &real_}) candidate->try_on(fields);
  }
  // `complete`: every row of the file was seen.
  std::string type(bool complete) const {
    if (null_words_.empty())
      if (const std::string name = value_type(complete); !name.empty()) return name;
    const std::size_t room = std::max<std::size_t>(longest_, 1) * (complete ? 1 : 2);
    return "char(" + std::to_string(std::min(room, kLongest)) + ")";
  }

  // The word for null without which the column would have a type; empty: none.
  std::string null_word() const {
    return null_words_.size() == 1 && !value_type(true).empty() ? *null_words_.begin()
                                                                : std::string();
  }

 private:
  static constexpr std::size_t kLongest = 1'000'000;  // bytes of a char(n)

  // False for a word that may mean null.
  bool add(std::string_view field) {
    longest_ = std::max(longest_, size_in_record(field));
    if (std::ranges::find(kNullWords, field) != kNullWords.end()) {
      null_words_.insert(std::string(field));
      return false;
    }
    any_ = true;
    const std::string_view text = trim(field);
    const DigitCounts digits = count_digits(text);
    before_ = std::max(before_, digits.before);
    after_ = std::max(after_, digits.after);
    decimal_ &= digits.is_number;
    // A date has more than digits and more than a time of day.
    dated_ &=
        text.size() >= 6 && std::ranges::count_if(text, is_digit) >= 3 &&
        !std::ranges::all_of(text, [](char c) { return is_digit(c) || c == ':' || c == '.'; });
    scientific_ |= text.find_first_of("eEnN") != text.npos;
    adorned_ |= text.find_first_of("$,") != text.npos;
    return true;
  }

  // In the character set of the records.
  std::size_t size_in_record(std::string_view text) {
    constexpr std::size_t kGrowth = 4;  // bytes of the longest character
    if (!recodes_ || text.empty()) return text.size();
    recoded_.resize(std::max(recoded_.size(), kGrowth * text.size()));
    CS_INT size = 0;
    recode_.into(recoded_.size(), text.data(), text.size(), recoded_.data(), size);
    return static_cast<std::size_t>(size);
  }

  // Empty for text.
  std::string value_type(bool complete) const {
    if (!any_) return {};
    if (decimal_) {
      if (after_ == 0 && integer_.holds()) return integer_.name();
      const std::size_t more = complete ? 0 : 4;
      const std::size_t digits = before_ + after_ + more;
      if (digits <= CS_MAX_PREC)
        return "numeric(" + std::to_string(std::max<std::size_t>(digits, 1)) + ", " +
               std::to_string(after_) + ")";
      return {};
    }
    if (scientific_ && real_.holds()) return real_.name();
    if (adorned_ && money_.holds()) return money_.name();
    if (dated_ && date_.holds()) return date_.name();
    return {};
  }

  Conversion recode_;
  bool recodes_;
  std::vector<char> recoded_;
  std::vector<CS_INT> lengths_;  // of a batch's fields, where those that may mean null do
  Candidate integer_;
  Candidate money_;
  Candidate date_;
  Candidate real_;
  bool any_ = false;
  bool decimal_ = true;
  bool dated_ = true;
  bool scientific_ = false;
  bool adorned_ = false;
  std::size_t before_ = 0;
  std::size_t after_ = 0;
  std::size_t longest_ = 0;
  std::set<std::string> null_words_;
};

// The heading as a layout writes it; empty when the column's name is enough. Headings that a quoted
// string cannot hold, or that occur twice, are written as a number.
std::string heading_of(const std::vector<std::string>& headings, std::size_t at,
                       const std::string& name, bool header) {
  const std::string& heading = headings[at];
  if (!header) return std::to_string(at + 1);
  const bool plain = std::ranges::none_of(
      heading, [](char c) { return c == '"' || c == '\\' || static_cast<unsigned char>(c) < ' '; });
  if (heading.empty() || !plain || std::ranges::count(headings, heading) > 1)
    return "#" + std::to_string(at + 1);
  return heading == name ? std::string() : "\"" + heading + "\"";
}

// A name that no column has yet.
std::string column_name(const std::string& heading, std::size_t at, bool header,
                        std::set<std::string>& names) {
  std::string name =
      header && !heading.empty() ? identifier(heading) : "c" + std::to_string(at + 1);
  std::string lower = name;
  std::ranges::transform(lower, lower.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
  });
  if (lower == "include") name += "_";
  const std::string base = name;
  for (int number = 2; !names.insert(name).second; ++number)
    name = base + "_" + std::to_string(number);
  return name;
}

void suggest_delimiter(const std::vector<std::string>& first_row) {
  if (first_row.size() != 1) return;
  for (const auto& [byte, name] : {std::pair(';', "semicolon"), std::pair('\t', "tab"),
                                   std::pair('|', "pipe"), std::pair(',', "comma")}) {
    if (first_row[0].find(byte) == std::string::npos) continue;
    std::fprintf(stderr, "rowcopy: a single column; another one may come of --delimiter %s\n",
                 name);
    return;
  }
}

}  // namespace

std::string propose_layout(CS_CONTEXT* context, const Job& job, Locales locales, Source& source) {
  CsvReader csv(source, job.dialect);
  const auto first_row = csv.next_row();
  if (first_row.empty()) throw Fatal(source.name() + ": is empty");
  if (job.no_header) csv.unread_row();
  suggest_delimiter(first_row);

  std::vector<Guess> guesses;
  guesses.reserve(first_row.size());
  for (std::size_t at = 0; at < first_row.size(); ++at) guesses.emplace_back(context, locales);
  Batch rows(first_row.size(), kBatchRows);
  std::size_t seen = 0;
  bool complete = false;
  while (seen < kRows) {
    complete = !csv.next(rows);
    if (complete) break;
    seen += rows.size();
    for (std::size_t at = 0; at < guesses.size(); ++at) guesses[at].add(rows.column(at));
  }

  std::string text = "; Proposed from " + std::to_string(seen) + " rows of " + source.name() +
                     ".\n[" + section_name(job.csv_path) + "]\n";
  std::set<std::string> names;
  std::set<std::string> null_words;
  for (std::size_t at = 0; at < guesses.size(); ++at) {
    const std::string name = column_name(first_row[at], at, !job.no_header, names);
    const std::string heading = heading_of(first_row, at, name, !job.no_header);
    text += name + " = " + guesses[at].type(complete);
    if (!heading.empty()) text += " : " + heading;
    text += '\n';
    if (const std::string word = guesses[at].null_word(); !word.empty()) null_words.insert(word);
  }
  for (const std::string& word : null_words)
    std::fprintf(stderr, "rowcopy: with --null '%s' columns that are text now would be values\n",
                 word.c_str());
  return text;
}

}  // namespace rowcopy
