#include "copy.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <system_error>

#include "converter.h"
#include "csv_reader.h"
#include "csv_writer.h"
#include "fatal.h"
#include "progress.h"
#include "records.h"

namespace rowcopy {
namespace {

std::uint64_t size_of(const std::string& path) {
  std::error_code error;
  const auto size = std::filesystem::file_size(path, error);
  return error ? 0 : size;
}

// An output that is one of the other files would destroy it before it is read.
void require_distinct(const std::string& output, const std::string& other) {
  std::error_code error;
  if (output == other || std::filesystem::equivalent(output, other, error))
    throw Fatal(output + " is also " + other + "; it would be overwritten");
}

// Where each column of the layout stands in a row of the file.
std::vector<std::size_t> locate_columns(const Layout& layout, const Row& headings,
                                        const std::string& csv_path) {
  std::vector<std::size_t> positions;
  for (const Column& column : layout.columns) {
    std::optional<std::size_t> position;
    for (std::size_t at = 0; at < headings.size(); ++at) {
      if (headings[at].text != column.heading) continue;
      if (position) throw Fatal(csv_path + ":1: two columns are headed \"" + column.heading + "\"");
      position = at;
    }
    if (!position) {
      throw Fatal(layout.path + ":" + std::to_string(column.line) + ": column \"" + column.name +
                  "\": " + csv_path + " has no column headed \"" + column.heading + "\"");
    }
    positions.push_back(*position);
  }
  return positions;
}

std::string describe(const std::string& path, const char* unit, std::size_t number,
                     std::string_view text, const std::string& fault) {
  return path + unit + std::to_string(number) + ": " + show_value(text) + ": " + fault;
}

class Copy {
 public:
  Copy(const Job& job, const Layout& layout)
      : job_(job), layout_(layout), record_layout_(layout.columns), record_(record_layout_) {
    for (const Column& column : layout.columns) {
      converters_.emplace_back(context_, column, layout.path);
      Column stored = column;
      stored.read_as = stored.type;
      readers_.emplace_back(context_, stored, layout.path);
    }
    report_.columns.resize(layout.columns.size());
    report_.record_size = record_layout_.size();
  }

  Report run() {
    records_from_text();
    text_from_records();
    return std::move(report_);
  }

 private:
  void records_from_text() {
    CsvReader csv(job_.csv_path);
    Row row;
    if (!csv.next(row)) throw Fatal(job_.csv_path + ": is empty; its first row names the columns");
    const std::size_t width = row.size();
    const auto positions = locate_columns(layout_, row, job_.csv_path);

    RecordWriter records(job_.record_path);
    Progress progress("reading", size_of(job_.csv_path));
    while (csv.next(row)) {
      progress.update(++report_.rows_read, csv.bytes_read());
      if (!has_width(row, width) || !fill_record(row, positions)) continue;
      records.write(record_);
      ++report_.rows_copied;
    }
    records.close();
    report_.blank_lines = csv.blank_lines();
  }

  bool has_width(const Row& row, std::size_t width) {
    if (row.size() == width) return true;
    report_.rows.add([&] {
      return job_.csv_path + ":" + std::to_string(row.line()) + ": " + std::to_string(row.size()) +
             " fields where the heading has " + std::to_string(width);
    });
    return false;
  }

  // Converts every column, whatever became of those before it, so that all faults are counted.
  bool fill_record(const Row& row, const std::vector<std::size_t>& positions) {
    bool good = true;
    for (std::size_t at = 0; at < positions.size(); ++at) {
      const Field field = row[positions[at]];
      ColumnReport& report = report_.columns[at];
      CS_INT length = 0;
      const CS_RETCODE code = converters_[at].to_record(field, record_.room(at), length);
      record_.set_length(at, length);
      report.to_record.add(code);
      if (field.null) ++report.nulls;
      if (code == CS_SUCCEED) continue;
      good = false;
      report.faults.add(
          [&] { return describe(job_.csv_path, ":", row.line(), field.text, code_name(code)); });
    }
    return good;
  }

  void text_from_records() {
    RecordReader records(job_.record_path);
    std::optional<CsvWriter> out;
    if (!job_.text_path.empty()) {
      out.emplace(job_.text_path);
      for (const Column& column : layout_.columns) out->add({column.heading, false});
      out->end_row();
    }
    Progress progress("reading back", size_of(job_.record_path));
    for (std::size_t number = 1; records.next(record_); ++number) {
      progress.update(number, number * std::uint64_t{record_layout_.size()});
      for (std::size_t at = 0; at < layout_.columns.size(); ++at) {
        const Field field = text_of(at, number);
        if (out) out->add(field);
      }
      if (out) out->end_row();
    }
    if (out) out->close();
  }

  // The text of a column of record_, checked by reading it again; it holds until the next call.
  Field text_of(std::size_t at, std::size_t number) {
    if (!record_.valid(at)) {
      throw Fatal(job_.record_path + ": record " + std::to_string(number) + ", column \"" +
                  layout_.columns[at].name + "\": the length lies outside the value's room");
    }
    if (record_.length(at) == ColumnConverter::kNull) return {{}, true};

    const std::span<const char> value = record_.value(at);
    ColumnReport& report = report_.columns[at];
    const CS_RETCODE code = converters_[at].to_text(value, text_);
    report.to_text.add(code);
    const Field field{text_, false};
    if (code != CS_SUCCEED) {
      report.faults.add(
          [&] { return describe(job_.record_path, ": record ", number, text_, code_name(code)); });
    } else if (!reads_as(at, field, value)) {
      report.faults.add([&] {
        return describe(job_.record_path, ": record ", number, text_, "reads as another value");
      });
    }
    return field;
  }

  bool reads_as(std::size_t at, Field field, std::span<const char> value) {
    again_.resize(static_cast<std::size_t>(layout_.columns[at].type.size));
    CS_INT length = 0;
    return readers_[at].to_record(field, again_, length) == CS_SUCCEED &&
           std::ranges::equal(std::span(again_).first(static_cast<std::size_t>(length)), value);
  }

  const Job& job_;
  const Layout& layout_;
  Context context_;
  RecordLayout record_layout_;
  Record record_;
  std::vector<ColumnConverter> converters_;
  std::vector<ColumnConverter> readers_;  // read the text of a stored value as the stored type
  Report report_;
  std::string text_;
  std::vector<char> again_;
};

}  // namespace

Report copy_rows(const Job& job, const Layout& layout) {
  for (const std::string& output : {job.record_path, job.text_path}) {
    if (output.empty()) continue;
    require_distinct(output, job.csv_path);
    require_distinct(output, job.layout_path);
  }
  if (!job.text_path.empty()) require_distinct(job.text_path, job.record_path);
  return Copy(job, layout).run();
}

}  // namespace rowcopy
