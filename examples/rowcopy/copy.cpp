#include "copy.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <system_error>

#include "csv_reader.h"
#include "csv_writer.h"
#include "fatal.h"
#include "progress.h"
#include "records.h"
#include "special.h"

namespace rowcopy {
namespace {

// Rows go through in batches, column by column: what a batch takes fits the processor's cache.
constexpr std::size_t kBatchBytes = 1 << 17;
constexpr std::size_t kBatchRows = 256;

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
std::vector<std::size_t> locate_columns(const Layout& layout,
                                        const std::vector<std::string>& headings,
                                        const std::string& csv_path) {
  std::vector<std::size_t> positions;
  for (const Column& column : layout.columns) {
    const auto found = std::ranges::find(headings, column.heading);
    if (found == headings.end()) {
      throw Fatal(column.place + ": column \"" + column.name + "\": " + csv_path +
                  " has no column headed \"" + column.heading + "\"");
    }
    if (std::find(found + 1, headings.end(), column.heading) != headings.end())
      throw Fatal(csv_path + ":1: two columns are headed \"" + column.heading + "\"");
    positions.push_back(static_cast<std::size_t>(found - headings.begin()));
  }
  return positions;
}

std::string describe(const std::string& path, const char* unit, std::size_t number,
                     std::string_view text, const std::string& fault) {
  return path + unit + std::to_string(number) + ": " + show_value(text) + ": " + fault;
}

std::size_t text_size(const Layout& layout) {
  std::size_t size = 0;
  for (const Column& column : layout.columns)
    size += static_cast<std::size_t>(column.type.text_size);
  return size;
}

// Room for the texts of a batch of records: every column's text at a fixed place of its row.
class TextBatch {
 public:
  TextBatch(const Layout& layout, std::size_t rows)
      : row_size_(text_size(layout)),
        bytes_(rows * row_size_ + kSpecialSlack),
        fields_(rows * layout.columns.size()) {
    std::size_t offset = 0;
    for (const Column& column : layout.columns) {
      offsets_.push_back(offset);
      offset += static_cast<std::size_t>(column.type.text_size);
    }
  }

  std::size_t row_size() const { return row_size_; }
  // Of a column, in the first row: the room for its text, and the field of it. Those of the next
  // row stand row_size() bytes and a row of fields behind.
  char* room(std::size_t column) { return &bytes_[offsets_[column]]; }
  Field* column(std::size_t at) { return &fields_[at]; }
  const std::vector<Field>& fields() const { return fields_; }

 private:
  std::size_t row_size_;
  std::vector<std::size_t> offsets_;
  std::vector<char> bytes_;
  std::vector<Field> fields_;
};

std::size_t batch_rows(const Layout& layout, const RecordLayout& records) {
  const std::size_t row = std::max(records.size(), text_size(layout));
  return std::clamp<std::size_t>(kBatchBytes / row, 1, kBatchRows);
}

class Copy {
 public:
  Copy(CS_CONTEXT* context, const Job& job, const Layout& layout, Locales locales)
      : context_(context),
        job_(job),
        layout_(layout),
        locales_(locales),
        record_layout_(layout.columns),
        records_(record_layout_, batch_rows(layout, record_layout_)) {
    for (const Column& column : layout.columns) converters_.emplace_back(context, column, locales);
    report_.columns.resize(layout.columns.size());
    report_.record_size = record_layout_.size();
  }

  Report run() {
    const auto begin = Clock::now();
    records_from_text();
    text_from_records();
    report_.seconds = std::chrono::duration<double>(Clock::now() - begin).count();
    report_.conversion_seconds = std::chrono::duration<double>(converting_).count();
    return std::move(report_);
  }

 private:
  using Clock = std::chrono::steady_clock;

  // Calls `convert` for each column, and counts the time as that of the conversions.
  template <class Convert>
  void for_each_column(Convert convert) {
    const auto begin = Clock::now();
    for (std::size_t column = 0; column < layout_.columns.size(); ++column) convert(column);
    converting_ += Clock::now() - begin;
  }

  void records_from_text() {
    CsvReader csv(job_.csv_path);
    const auto headings = csv.next_row();
    if (headings.empty())
      throw Fatal(job_.csv_path + ": is empty; its first row names the columns");
    positions_ = locate_columns(layout_, headings, job_.csv_path);

    RecordWriter out(job_.record_path);
    Progress progress("reading", size_of(job_.csv_path));
    Batch rows(headings.size());
    while (csv.next(rows, records_.capacity())) {
      report_misfits(rows, headings.size());
      convert_rows(rows);
      out.write(records_);
      report_.rows_read += rows.size();
      report_.rows_copied += records_.size();
      progress.update(report_.rows_read, csv.bytes_read());
    }
    report_misfits(rows, headings.size());
    out.close();
    report_.blank_lines = csv.blank_lines();
  }

  void report_misfits(const Batch& rows, std::size_t width) {
    report_.rows_read += rows.misfits().size();
    for (const Batch::Misfit& row : rows.misfits()) {
      report_.rows.add([&] {
        return job_.csv_path + ":" + std::to_string(row.line) + ": " + std::to_string(row.fields) +
               " fields where the heading has " + std::to_string(width);
      });
    }
  }

  // Converts every column of every row, whatever became of the others, so that all faults are
  // counted; the rows without one become the records.
  void convert_rows(const Batch& rows) {
    records_.clear(rows.size());
    good_.assign(rows.size(), 1);
    for_each_column([&](std::size_t column) { convert_column(rows, column); });
    records_.keep(good_);
  }

  void convert_column(const Batch& rows, std::size_t column) {
    ColumnReport& report = report_.columns[column];
    ColumnConverter& converter = converters_[column];
    const Field* field = rows.column(positions_[column]);
    char* value = records_.column(column);
    for (std::size_t row = 0; row < rows.size(); ++row) {
      CS_INT length = 0;
      const CS_RETCODE code = converter.to_record(*field, value, length);
      Records::set_length(value, length);
      report.to_record.add(code);
      report.nulls += field->null ? 1 : 0;
      if (code != CS_SUCCEED) {
        good_[row] = 0;
        report.faults.add([&] {
          return describe(job_.csv_path, ":", rows.line(row), field->text, code_name(code));
        });
      }
      field += rows.width();
      value += record_layout_.size();
    }
  }

  void text_from_records() {
    RecordReader in(job_.record_path);
    std::optional<CsvWriter> out = open_text();
    TextBatch texts(layout_, records_.capacity());
    Progress progress("reading back", size_of(job_.record_path));
    std::size_t done = 0;
    while (in.next(records_)) {
      for_each_column([&](std::size_t column) { text_of_column(texts, column, done + 1); });
      if (out) write(texts, *out);
      done += records_.size();
      progress.update(done, done * std::uint64_t{record_layout_.size()});
    }
    if (out) out->close();
  }

  std::optional<CsvWriter> open_text() {
    if (job_.text_path.empty()) return std::nullopt;
    std::optional<CsvWriter> out(job_.text_path);
    for (const Column& column : layout_.columns) {
      std::string heading = translate(context_, column.heading, locales_);
      const std::size_t size = heading.size();
      heading.resize(size + kSpecialSlack);
      out->add({std::string_view(heading).substr(0, size), false});
    }
    out->end_row();
    return out;
  }

  void write(const TextBatch& texts, CsvWriter& out) {
    const Field* field = texts.fields().data();
    for (std::size_t row = 0; row < records_.size(); ++row) {
      for (std::size_t column = 0; column < layout_.columns.size(); ++column) out.add(*field++);
      out.end_row();
    }
  }

  // The texts of a column of the records, each checked by reading it again. The first record has
  // that number in the file.
  void text_of_column(TextBatch& texts, std::size_t column, std::size_t number) {
    const char* value = records_.column(column);
    char* room = texts.room(column);
    Field* field = texts.column(column);
    for (std::size_t row = 0; row < records_.size(); ++row, ++number) {
      const CS_INT length = Records::length(value);
      if (length < kNull || length > record_layout_.room(column)) {
        throw Fatal(job_.record_path + ": record " + std::to_string(number) + ", column \"" +
                    layout_.columns[column].name + "\": the length lies outside the value's room");
      }
      *field = length == kNull ? Field{{}, true} : text_of(value, length, room, column, number);
      value += record_layout_.size();
      room += texts.row_size();
      field += layout_.columns.size();
    }
  }

  Field text_of(const char* value, CS_INT length, char* room, std::size_t column,
                std::size_t number) {
    ColumnReport& report = report_.columns[column];
    CS_INT text_length = 0;
    const CS_RETCODE code = converters_[column].to_text(value, length, room, text_length);
    report.to_text.add(code);
    const Field field{{room, static_cast<std::size_t>(text_length)}, false};
    if (code == CS_SUCCEED && converters_[column].reads_as(field, value, length)) return field;
    report.faults.add([&] {
      return describe(job_.record_path, ": record ", number, field.text,
                      code == CS_SUCCEED ? "reads as another value" : code_name(code));
    });
    return field;
  }

  CS_CONTEXT* context_;
  const Job& job_;
  const Layout& layout_;
  Locales locales_;
  RecordLayout record_layout_;
  Records records_;
  std::vector<ColumnConverter> converters_;
  std::vector<std::size_t> positions_;
  std::vector<char> good_;  // for each row of a batch, whether every column converted
  Report report_;
  Clock::duration converting_{};
};

}  // namespace

void require_distinct_files(const Job& job) {
  for (const std::string& output : {job.record_path, job.text_path}) {
    if (output.empty()) continue;
    require_distinct(output, job.csv_path);
    require_distinct(output, job.layout_path);
  }
  if (!job.text_path.empty()) require_distinct(job.text_path, job.record_path);
}

Report copy_rows(CS_CONTEXT* context, const Job& job, const Layout& layout, Locales locales) {
  return Copy(context, job, layout, locales).run();
}

}  // namespace rowcopy
