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
  void add(CS_RETCODE code, std::size_t count);
  void clear() { counts_.clear(); }
  // In the order in which the codes came up first.
  const std::vector<std::pair<CS_RETCODE, std::size_t>>& counts() const { return counts_; }

 private:
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
  void add(const Faults& next);
  bool is_full() const { return first_.size() == kKept; }
  void clear() {
    count_ = 0;
    first_.clear();
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
  std::size_t changed = 0;    // values that their type does not hold as they are in the file
  std::size_t filled_in = 0;  // dates and times of which the file gives a part
  std::size_t inexact = 0;    // decimal fractions that binary floating point only comes near to
  Faults faults;
  Faults changes;  // that are allowed
};

struct Report {
  std::size_t rows_read = 0;
  std::size_t rows_copied = 0;
  std::size_t blank_lines = 0;
  std::size_t record_size = 0;
  bool stopped = false;  // there were more faults than allowed
  Faults rows;           // those that cannot be split into as many fields as the heading has
  std::vector<ColumnReport> columns;
  double seconds = 0;             // of the copy
  double conversion_seconds = 0;  // of all threads, in the columns' conversions
  std::size_t jobs = 1;

  // Adds what became of the rows that follow.
  void add(const Report& next);
  // Clears the counts of rows, but not the facts about the copy.
  void clear_rows();
  std::size_t faults() const;
  // Whether every value went both ways and came back the same.
  bool clean() const { return faults() == 0; }
};

// "CS_CVT_SYNTAX", or the number of a code without a name.
std::string code_name(CS_RETCODE code);

// What a conversion code says of a field.
const char* code_reason(CS_RETCODE code);

// A value as a report shows it: quoted, cut to a readable length, control characters replaced.
std::string show_value(std::string_view text);

void print(const Report& report, const Layout& layout, const std::string& csv_path,
           const std::string& record_path, std::ostream& out);

}  // namespace rowcopy
