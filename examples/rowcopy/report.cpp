#include "report.h"

#include <algorithm>
#include <array>
#include <iomanip>
#include <ostream>

namespace rowcopy {
namespace {

struct NamedCode {
  CS_RETCODE code;
  const char* name;
};

constexpr std::array kNamedCodes = {
    NamedCode{CS_SUCCEED, "CS_SUCCEED"},
    NamedCode{CS_FAIL, "CS_FAIL"},
    NamedCode{CS_MEM_ERROR, "CS_MEM_ERROR"},
    NamedCode{CS_CVT_OVERFLOW, "CS_CVT_OVERFLOW"},
    NamedCode{CS_CVT_UNDERFLOW, "CS_CVT_UNDERFLOW"},
    NamedCode{CS_CVT_PRECISION, "CS_CVT_PRECISION"},
    NamedCode{CS_CVT_SCALE, "CS_CVT_SCALE"},
    NamedCode{CS_CVT_SYNTAX, "CS_CVT_SYNTAX"},
    NamedCode{CS_CVT_FORMAT, "CS_CVT_FORMAT"},
    NamedCode{CS_CVT_DOMAIN, "CS_CVT_DOMAIN"},
    NamedCode{CS_CVT_DIVZERO, "CS_CVT_DIVZERO"},
    NamedCode{CS_CVT_TRUNCATED, "CS_CVT_TRUNCATED"},
    NamedCode{CS_CVT_STYLE, "CS_CVT_STYLE"},
    NamedCode{CS_CVT_BADXLATE, "CS_CVT_BADXLATE"},
    NamedCode{CS_CVT_NOXLATE, "CS_CVT_NOXLATE"},
    NamedCode{CS_CVT_SUBSTITUTED, "CS_CVT_SUBSTITUTED"},
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

std::size_t values(const CodeCounts& codes) {
  std::size_t sum = 0;
  for (const auto& entry : codes.counts()) sum += entry.second;
  return sum;
}

// Columns as wide as their widest cell; the last one is left ragged.
void print_table(const std::vector<Cells>& rows, std::ostream& out) {
  std::vector<std::size_t> widths(rows.front().size());
  for (const Cells& row : rows)
    for (std::size_t at = 0; at < row.size(); ++at)
      widths[at] = std::max(widths[at], row[at].size());
  for (const Cells& row : rows) {
    for (std::size_t at = 0; at + 1 < row.size(); ++at)
      out << std::left << std::setw(static_cast<int>(widths[at]) + 2) << row[at];
    out << row.back() << '\n';
  }
}

void print_faults(const std::string& title, const Faults& faults, std::ostream& out) {
  if (faults.count() == 0) return;
  out << '\n' << title << ": " << faults.count() << (faults.count() == 1 ? " fault" : " faults");
  if (faults.count() > faults.first().size()) out << ", the first " << faults.first().size();
  out << '\n';
  for (const std::string& fault : faults.first()) out << "  " << fault << '\n';
}

// Whole numbers only: streams write them alike in every locale.
void print_speed(const Report& report, std::ostream& out) {
  const auto whole = [](double number) { return static_cast<long long>(number + 0.5); };
  if (report.seconds <= 0) return;
  out << '\n'
      << whole(static_cast<double>(report.rows_read) / report.seconds)
      << " rows per second: " << whole(1000 * report.seconds) << " ms, "
      << whole(100 * report.conversion_seconds / report.seconds) << " % of them in conversions\n";
}

}  // namespace

void CodeCounts::add_other(CS_RETCODE code) {
  for (auto& [known, count] : counts_) {
    if (known != code) continue;
    ++count;
    return;
  }
  counts_.emplace_back(code, 1);
}

bool Report::clean() const {
  return rows.count() == 0 && std::ranges::all_of(columns, [](const auto& column) {
           return column.faults.count() == 0;
         });
}

std::string code_name(CS_RETCODE code) {
  const auto* found = std::ranges::find(kNamedCodes, code, &NamedCode::code);
  return found == kNamedCodes.end() ? std::to_string(code) : found->name;
}

std::string show_value(std::string_view text) {
  constexpr std::size_t kLongest = 40;
  std::size_t kept = std::min(text.size(), kLongest);
  // UTF-8 is cut in front of a character, not within one.
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
  out << '\n'
      << record_path << ": " << report.rows_copied << " records of " << report.record_size
      << " bytes\n\n";

  std::vector<Cells> table = {{"column", "type", "values", "nulls", "to record", "to text"}};
  for (std::size_t at = 0; at < report.columns.size(); ++at) {
    const Column& column = layout.columns[at];
    const ColumnReport& counts = report.columns[at];
    const std::string type = column.read_as == column.type
                                 ? column.type.name
                                 : column.read_as.name + "/" + column.type.name;
    table.push_back({column.name, type, std::to_string(values(counts.to_record)),
                     std::to_string(counts.nulls), list_counts(counts.to_record),
                     list_counts(counts.to_text)});
  }
  print_table(table, out);

  print_faults("rows", report.rows, out);
  for (std::size_t at = 0; at < report.columns.size(); ++at)
    print_faults("column " + layout.columns[at].name, report.columns[at].faults, out);
  print_speed(report, out);
}

}  // namespace rowcopy
