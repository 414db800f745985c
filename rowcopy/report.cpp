#include "report.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iomanip>
#include <ostream>

namespace rowcopy {
namespace {

struct Reason {
  CS_RETCODE code;
  const char* words;
};

constexpr std::array kReasons = {
    Reason{CS_MEM_ERROR, "memory ran out"},
    Reason{CS_CVT_OVERFLOW, "is outside the type's range"},
    Reason{CS_CVT_UNDERFLOW, "is too near to zero"},
    Reason{CS_CVT_PRECISION, "has a precision that no number has"},
    Reason{CS_CVT_SCALE, "has a scale that no number has"},
    Reason{CS_CVT_SYNTAX, "is no text of the type"},
    Reason{CS_CVT_FORMAT, "asks for two ways of padding"},
    Reason{CS_CVT_DOMAIN, "is no value of the type"},
    Reason{CS_CVT_DIVZERO, "divides by zero"},
    Reason{CS_CVT_TRUNCATED, "does not fit and would be cut"},
    Reason{CS_CVT_STYLE, "has no style to be written in"},
    Reason{CS_CVT_BADXLATE, "has malformed characters"},
    Reason{CS_CVT_NOXLATE, "is in a character set that cannot be converted"},
    Reason{CS_CVT_SUBSTITUTED, "has characters that the character set lacks"},
};

using Cells = std::vector<std::string>;

std::string list_counts(const CodeCounts& codes) {
  std::string list;
  for (const auto& [code, count] : codes.counts()) {
    if (!list.empty()) list += ", ";
    list += code_name(code) + " " + std::to_string(count);
  }
  return list.empty() ? "-" : list;
}

// What happened to values that are no faults.
std::string list_remarks(const ColumnReport& column) {
  std::string list;
  const auto add = [&list](const char* what, std::size_t count) {
    if (count == 0) return;
    if (!list.empty()) list += ", ";
    list += what;
    list += " " + std::to_string(count);
  };
  add("changed", column.changed);
  add("filled in", column.filled_in);
  add("not exact", column.inexact);
  return list;
}

std::size_t values(const CodeCounts& codes) {
  std::size_t sum = 0;
  for (const auto& entry : codes.counts()) sum += entry.second;
  return sum;
}

// Columns are as wide as their widest cell; the last cell of a row is not padded.
void print_table(const std::vector<Cells>& rows, std::ostream& out) {
  std::vector<std::size_t> widths(rows.front().size());
  for (const Cells& row : rows)
    for (std::size_t at = 0; at < row.size(); ++at)
      widths[at] = std::max(widths[at], row[at].size());
  for (const Cells& row : rows) {
    std::size_t last = row.size() - 1;
    while (row[last].empty()) --last;
    for (std::size_t at = 0; at < last; ++at)
      out << std::left << std::setw(static_cast<int>(widths[at]) + 2) << row[at];
    out << row[last] << '\n';
  }
}

void print_faults(const std::string& title, const char* noun, const Faults& faults,
                  std::ostream& out) {
  if (faults.count() == 0) return;
  out << '\n' << title << ": " << faults.count() << ' ' << noun << (faults.count() == 1 ? "" : "s");
  out << '\n';
  for (const std::string& fault : faults.first()) out << "  " << fault << '\n';
  const std::size_t more = faults.count() - faults.first().size();
  if (more != 0) out << "  and " << more << " more\n";
}

// Whole numbers only: streams write them alike in every locale.
void print_speed(const Report& report, std::ostream& out) {
  const auto whole = [](double number) { return std::llround(number); };
  if (report.seconds <= 0) return;
  out << '\n'
      << whole(static_cast<double>(report.rows_read) / report.seconds)
      << " rows per second: " << whole(1000 * report.seconds) << " ms, "
      << whole(100 * report.conversion_seconds / report.seconds / static_cast<double>(report.jobs))
      << " % of them in conversions\n";
}

}  // namespace

void CodeCounts::add(CS_RETCODE code, std::size_t count) {
  if (count == 0) return;
  for (auto& [known, sum] : counts_) {
    if (known != code) continue;
    sum += count;
    return;
  }
  counts_.emplace_back(code, count);
}

void Faults::add(const Faults& next) {
  count_ += next.count_;
  for (const std::string& fault : next.first_)
    if (first_.size() < kKept) first_.push_back(fault);
}

void Report::add(const Report& next) {
  rows_read += next.rows_read;
  rows_copied += next.rows_copied;
  rows.add(next.rows);
  conversion_seconds += next.conversion_seconds;
  for (std::size_t at = 0; at < columns.size(); ++at) {
    ColumnReport& column = columns[at];
    const ColumnReport& more = next.columns[at];
    column.nulls += more.nulls;
    for (const auto& [code, count] : more.to_record.counts()) column.to_record.add(code, count);
    for (const auto& [code, count] : more.to_text.counts()) column.to_text.add(code, count);
    column.changed += more.changed;
    column.filled_in += more.filled_in;
    column.inexact += more.inexact;
    column.faults.add(more.faults);
    column.changes.add(more.changes);
  }
}

void Report::clear_rows() {
  rows_read = rows_copied = 0;
  rows.clear();
  conversion_seconds = 0;
  for (ColumnReport& column : columns) {
    column.nulls = column.changed = column.filled_in = column.inexact = 0;
    column.to_record.clear();
    column.to_text.clear();
    column.faults.clear();
    column.changes.clear();
  }
}

std::size_t Report::faults() const {
  std::size_t count = rows.count();
  for (const ColumnReport& column : columns) count += column.faults.count();
  return count;
}

std::string code_name(CS_RETCODE code) {
  const std::string name = comn_result_name(code);
  return name.empty() ? std::to_string(code) : name;
}

const char* code_reason(CS_RETCODE code) {
  const auto* found = std::ranges::find(kReasons, code, &Reason::code);
  return found == kReasons.end() ? "could not be converted" : found->words;
}

std::string show_value(std::string_view text) {
  constexpr std::size_t kLongest = 40;
  std::size_t kept = std::min(text.size(), kLongest);
  // UTF-8 is cut before a character, not within one.
  while (kept < text.size() && kept > 0 && (text[kept] & 0xC0) == 0x80) --kept;
  std::string shown = "\"";
  for (const char c : text.substr(0, kept))
    shown += static_cast<unsigned char>(c) < 0x20 || c == 0x7F ? '?' : c;
  return shown + (kept < text.size() ? "...\"" : "\"");
}

void print(const Report& report, const Layout& layout, const std::string& csv_path,
           const std::string& record_path, std::ostream& out) {
  out << csv_path << ": " << report.rows_read << " rows read, " << report.rows_copied << " copied, "
      << report.rows_read - report.rows_copied << " rejected";
  if (report.blank_lines != 0) out << ", blank lines: " << report.blank_lines;
  out << '\n';
  if (!report.stopped)
    out << record_path << ": " << report.rows_copied << " records of " << report.record_size
        << " bytes\n";
  out << '\n';

  std::vector<Cells> table = {
      {"column", "type", "values", "nulls", "to record", "to text", "remarks"}};
  for (std::size_t at = 0; at < report.columns.size(); ++at) {
    const Column& column = layout.columns[at];
    const ColumnReport& counts = report.columns[at];
    const std::string type = column.read_as == column.type
                                 ? column.type.name
                                 : column.read_as.name + "/" + column.type.name;
    table.push_back({column.name, type, std::to_string(values(counts.to_record)),
                     std::to_string(counts.nulls), list_counts(counts.to_record),
                     list_counts(counts.to_text), list_remarks(counts)});
  }
  print_table(table, out);

  print_faults("rows", "fault", report.rows, out);
  for (std::size_t at = 0; at < report.columns.size(); ++at) {
    const std::string title = "column " + layout.columns[at].name;
    print_faults(title, "fault", report.columns[at].faults, out);
    print_faults(title, "allowed change", report.columns[at].changes, out);
  }
  print_speed(report, out);
}

}  // namespace rowcopy
