#include "rejects.h"

#include <algorithm>
#include <initializer_list>

namespace rowcopy {
namespace {

void write_row(std::initializer_list<std::string_view> fields, CsvWriter& writer) {
  std::string text;
  for (const std::string_view field : fields) {
    text.assign(field);
    text.resize(field.size() + kSpecialSlack);
    writer.add({std::string_view(text).substr(0, field.size()), field.empty()});
  }
  writer.end_row();
}

}  // namespace

void write_rejects(std::vector<Reject>& rejects, CsvWriter& writer) {
  std::ranges::stable_sort(rejects, {}, &Reject::line);
  for (std::size_t at = 0; at < rejects.size();) {
    const Reject& first = rejects[at];
    std::string reason = first.reason;
    for (++at; at < rejects.size() && rejects[at].line == first.line; ++at)
      reason += "; " + rejects[at].column + ": " + rejects[at].reason;
    write_row({std::to_string(first.line), first.column, first.code, reason, first.row}, writer);
  }
}

void write_reject_heading(CsvWriter& writer) {
  write_row({"line", "column", "code", "reason", "row"}, writer);
}

}  // namespace rowcopy
