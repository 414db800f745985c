// What a copy did: for each column the values, the result codes of both directions and the first
// faults.
#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "layout.h"

namespace rowcopy {

class CodeCounts {
 public:
  void add(CS_RETCODE code) {
    // Nearly always the code that came up first.
    if (!counts_.empty() && counts_.front().first == code) {
      ++counts_.front().second;
    } else {
      add_other(code);
    }
  }
  // In the order in which the codes came up first.
  const std::vector<std::pair<CS_RETCODE, std::size_t>>& counts() const { return counts_; }

 private:
  void add_other(CS_RETCODE code);

  std::vector<std::pair<CS_RETCODE, std::size_t>> counts_;
};

// Counts every fault and keeps the text of the first few.
class Faults {
 public:
  std::size_t count() const { return count_; }
  const std::vector<std::string>& first() const { return first_; }

  // `describe` is called for those that are kept.
  template <class Describe>
  void add(Describe describe) {
    if (++count_ <= kKept) first_.push_back(describe());
  }

 private:
  static constexpr std::size_t kKept = 3;

  std::size_t count_ = 0;
  std::vector<std::string> first_;
};

struct ColumnReport {
  std::size_t nulls = 0;
  CodeCounts to_record;
  CodeCounts to_text;
  Faults faults;
};

struct Report {
  std::size_t rows_read = 0;
  std::size_t rows_copied = 0;
  std::size_t blank_lines = 0;
  std::size_t record_size = 0;
  Faults rows;  // those with too few or too many fields
  std::vector<ColumnReport> columns;
  double seconds = 0;             // of both passes
  double conversion_seconds = 0;  // of these, in the columns' conversions

  // Whether every value went both ways and came back the same.
  bool clean() const;
};

// "CS_CVT_SYNTAX", or the number of a code without a name.
std::string code_name(CS_RETCODE code);

// A value as a report shows it: quoted, cut to a readable length, control characters replaced.
std::string show_value(std::string_view text);

void print(const Report& report, const Layout& layout, const std::string& csv_path,
           const std::string& record_path, std::ostream& out);

}  // namespace rowcopy
