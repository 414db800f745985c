#include "copy.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

#include "context.h"
#include "converter.h"
#include "csv_reader.h"
#include "csv_writer.h"
#include "fatal.h"
#include "output.h"
#include "progress.h"
#include "records.h"
#include "rejects.h"
#include "schema.h"

namespace rowcopy {
namespace {

using Clock = std::chrono::steady_clock;

// Rows are copied in batches, column by column; a batch fits the processor's cache.
constexpr std::size_t kBatchBytes = 1 << 17;
constexpr std::size_t kBatchRows = 256;

// An output that is one of the other files would destroy it before it is read.
void require_distinct(const std::string& output, const std::string& other) {
  std::error_code error;
  const bool same = output == "-" || other == "-" || !std::filesystem::exists(output, error)
                        ? output == other
                        : output == other || std::filesystem::equivalent(output, other, error);
  if (same) throw Fatal(output + " is also " + other + "; it would be overwritten");
}

// "#3": the position of a column; nothing for any other text, or for a column that does not exist.
std::optional<std::size_t> numbered_column(std::string_view heading, std::size_t width) {
  if (heading.starts_with('#')) heading.remove_prefix(1);
  std::size_t number = 0;
  const auto [end, error] =
      std::from_chars(heading.data(), heading.data() + heading.size(), number);
  if (error != std::errc{} || end != heading.data() + heading.size()) return std::nullopt;
  if (number < 1 || number > width) return std::nullopt;
  return number - 1;
}

// Where a column of the layout is in a row of the file.
std::size_t locate_column(const Column& column, const std::vector<std::string>& first_row,
                          const Job& job, const std::string& csv_name) {
  const auto fail = [&](const std::string& what) -> std::size_t {
    throw Fatal(column.place + ": column \"" + column.name + "\": " + csv_name + what);
  };
  const bool is_numbered = job.no_header || column.heading.starts_with('#');
  const auto numbered =
      is_numbered ? numbered_column(column.heading, first_row.size()) : std::nullopt;
  const auto begin = job.no_header ? first_row.end() : first_row.begin();
  const auto found = std::find(begin, first_row.end(), column.heading);
  if (found == first_row.end()) {
    if (numbered) return *numbered;
    const std::string count = std::to_string(first_row.size());
    return is_numbered ? fail(" has no column \"" + column.heading + "\"; a row has " + count +
                              " columns, which \": 1\" to \": " + count + "\" name")
                       : fail(" has no column headed \"" + column.heading + "\"");
  }
  if (std::find(found + 1, first_row.end(), column.heading) != first_row.end())
    fail(" has two columns headed \"" + column.heading + "\"; \": #" +
         std::to_string(found - first_row.begin() + 1) + "\" names the first of them");
  return static_cast<std::size_t>(found - first_row.begin());
}

std::size_t text_size(const Layout& layout) {
  std::size_t size = 0;
  for (const Column& column : layout.columns)
    size += static_cast<std::size_t>(column.type.text_size);
  return size;
}

// Room for the texts of a batch of rows: every column's text at a fixed place of its row.
class TextBatch {
 public:
  TextBatch(const Layout& layout, std::size_t rows)
      : row_size_(text_size(layout)), bytes_(rows * row_size_ + kSpecialSlack) {
    std::size_t offset = 0;
    for (const Column& column : layout.columns) {
      offsets_.push_back(offset);
      offset += static_cast<std::size_t>(column.type.text_size);
    }
  }

  Values column(std::size_t at) { return {&bytes_[offsets_[at]], row_size_}; }

 private:
  std::size_t row_size_;
  std::vector<std::size_t> offsets_;
  std::vector<char> bytes_;
};

// What all threads of a copy share and only read.
struct Plan {
  CS_CONTEXT* context;
  const Job& job;
  const Layout& layout;
  Locales locales;
  std::string csv_name;
  std::size_t width = 0;                    // fields of a row
  std::vector<std::size_t> positions = {};  // of the layout's columns among them
  std::vector<std::string> headings = {};   // of these columns
  RecordLayout records{layout.columns};

  std::size_t batch_rows() const {
    std::size_t between = 0;  // bytes of the values on the way to another type
    for (const Column& column : layout.columns)
      between += static_cast<std::size_t>(column.read_as.size);
    const std::size_t row = std::max({records.size(), text_size(layout), between, width});
    return std::clamp<std::size_t>(kBatchBytes / row, 1, kBatchRows);
  }
};

// Converts batches of rows into records and texts. Each thread has its own.
class Worker {
 public:
  explicit Worker(const Plan& plan)
      : rows(plan.width, plan.batch_rows()),
        plan_(plan),
        layout_(plan.layout),
        records_(plan.records, plan.batch_rows()),
        texts_(layout_, plan.batch_rows()),
        text_writer_(plan.job.dialect),
        reject_writer_(Dialect{}) {
    const TextStyle style{plan.job.locale_dates, plan.job.short_floats};
    for (const Column& column : layout_.columns)
      converters_.emplace_back(plan.context, column, plan.locales, style, plan.batch_rows());
    report_.columns.resize(layout_.columns.size());
  }

  // Makes the records and texts of `rows`, and the report of these rows only.
  void convert() {
    report_.clear_rows();
    rejects_.clear();
    text_writer_.clear();
    reject_writer_.clear();
    report_misfits();
    make_records();
    make_texts();
    records_.keep(good_);
    report_.rows_read = rows.size() + rows.misfits().size();
    report_.rows_copied = records_.size();
    write_rejects(rejects_, reject_writer_);
  }

  const Report& report() const { return report_; }
  std::span<const char> records() const { return records_.bytes(); }
  const std::string& texts() const { return text_writer_.text(); }
  const std::string& rejects() const { return reject_writer_.text(); }

  Batch rows;
  std::uint64_t bytes_taken = 0;  // of the file, when the rows had been read

 private:
  // Calls `convert` for each column, and counts the time as that of the conversions.
  template <class Convert>
  void for_each_column(Convert convert) {
    const auto begin = Clock::now();
    for (std::size_t column = 0; column < layout_.columns.size(); ++column) convert(column);
    report_.conversion_seconds += std::chrono::duration<double>(Clock::now() - begin).count();
  }

  std::string place(std::size_t line) const {
    return plan_.csv_name + ":" + std::to_string(line) + ": ";
  }

  void reject(std::size_t line, const std::string& column, const std::string& code,
              const std::string& reason, std::string_view row) {
    if (plan_.job.rejects_path.empty()) return;
    rejects_.push_back({line, column, code, reason, row});
  }

  void report_misfits() {
    for (const Batch::Misfit& row : rows.misfits()) {
      const std::string reason = row.fault != nullptr
                                     ? row.fault
                                     : std::to_string(row.fields) + " fields where the " +
                                           (plan_.job.no_header ? "first row" : "heading") +
                                           " has " + std::to_string(plan_.width);
      report_.rows.add([&] { return place(row.line) + reason; });
      reject(row.line, "", row.fault != nullptr ? "quotes" : "fields", reason, row.raw);
    }
  }

  // Converts every column of every row, so that all faults are counted; the rows without a fault
  // become the records.
  void make_records() {
    records_.clear(rows.size());
    good_.assign(rows.size(), 1);
    for_each_column([&](std::size_t column) { convert_column(column); });
  }

  FieldColumn fields_of(std::size_t column) const { return rows.column(plan_.positions[column]); }
  Values values_of(std::size_t column) { return {records_.column(column), plan_.records.size()}; }

  void convert_column(std::size_t column) {
    ColumnReport& report = report_.columns[column];
    ColumnConverter& converter = converters_[column];
    converter.to_record(fields_of(column), values_of(column));
    report.nulls += converter.nulls();
    report.to_record.add(CS_SUCCEED, rows.size() - converter.faults());
    if (converter.oddities() == 0) return;
    for (std::size_t row = 0; row < rows.size(); ++row) {
      const CS_RETCODE code = converter.code(row);
      if (code != CS_SUCCEED) report.to_record.add(code, 1);
      if (code != CS_SUCCEED || converter.verdict(row) != Verdict::kSame) judge(column, row);
    }
  }

  // Judges a value that is not simply the same as its field.
  void judge(std::size_t column, std::size_t row) {
    ColumnReport& report = report_.columns[column];
    ColumnConverter& converter = converters_[column];
    const std::string_view field = fields_of(column)[row];
    const CS_RETCODE code = converter.code(row);
    const Verdict verdict = converter.verdict(row);
    std::string name = "changed";
    std::string reason;
    if (code != CS_SUCCEED) {
      name = code_name(code);
      reason = field.empty() && code == CS_CVT_SYNTAX ? "the type has no empty value"
                                                      : code_reason(code);
    } else if (verdict == Verdict::kFilledIn) {
      ++report.filled_in;
      return;
    } else if (verdict == Verdict::kInexact) {
      ++report.inexact;
      return;
    } else if (verdict == Verdict::kNoValue) {
      reason = "gives no value";
      name = "no value";
    } else {
      ++report.changed;
      if (report.faults.is_full() && plan_.job.rejects_path.empty()) {
        reason.clear();
      } else {
        reason = "stored as " +
                 show_value(converter.text_of(values_of(column)[row], converter.length(row)));
      }
      if (plan_.job.allow_changes) {
        report.changes.add([&] { return describe(row, field, reason); });
        return;
      }
    }
    good_[row] = 0;
    report.faults.add([&] {
      return describe(row, field, code == CS_SUCCEED ? reason : name + " (" + reason + ")");
    });
    reject(rows.line(row), layout_.columns[column].name, name, reason, rows.raw(row));
  }

  std::string describe(std::size_t row, std::string_view field, const std::string& fault) const {
    return place(rows.line(row)) + show_value(field) + ": " + fault;
  }

  void make_texts() {
    for_each_column([&](std::size_t column) { text_of_column(column); });
    if (plan_.job.text_path.empty()) return;
    for (std::size_t row = 0; row < rows.size(); ++row) {
      if (good_[row] == 0) continue;
      for (std::size_t column = 0; column < layout_.columns.size(); ++column)
        text_writer_.add(text_field(column, row));
      text_writer_.end_row();
    }
  }

  Field text_field(std::size_t column, std::size_t row) {
    const CS_INT length = converters_[column].text_length(row);
    if (length == kNull) return {{}, true};
    return {{texts_.column(column)[row], static_cast<std::size_t>(length)}, false};
  }

  // The texts of the records' values, each checked by reading it again.
  void text_of_column(std::size_t column) {
    ColumnReport& report = report_.columns[column];
    ColumnConverter& converter = converters_[column];
    const FieldColumn fields = fields_of(column);
    converter.to_text(fields, values_of(column), good_, texts_.column(column));
    report.to_text.add(CS_SUCCEED, converter.texts() - converter.text_faults());
    if (converter.text_oddities() == 0) return;
    for (std::size_t row = 0; row < rows.size(); ++row) {
      const CS_RETCODE code = converter.text_code(row);
      if (code != CS_SUCCEED) report.to_text.add(code, 1);
      if (code == CS_SUCCEED && converter.comes_back(row)) continue;
      report.faults.add([&] {
        return describe(
            row, fields[row],
            code == CS_SUCCEED
                ? "its text " + show_value(text_field(column, row).text) + " reads as another value"
                : "no text, " + code_name(code));
      });
    }
  }

  const Plan& plan_;
  const Layout& layout_;
  Records records_;
  TextBatch texts_;
  CsvWriter text_writer_;
  CsvWriter reject_writer_;
  std::vector<ColumnConverter> converters_;
  std::vector<char> good_;  // for each row of a batch, whether every column converted
  std::vector<Reject> rejects_;
  Report report_;
};

// What a copy writes.
class Outputs {
 public:
  explicit Outputs(const Job& job) : records_(job.record_path) {
    if (!job.text_path.empty()) texts_.emplace(job.text_path);
    if (!job.rejects_path.empty()) rejects_.emplace(job.rejects_path);
    if (!job.schema_path.empty()) schema_.emplace(job.schema_path);
  }

  void write_heading(const Plan& plan) {
    if (texts_ && !plan.job.no_header) {
      CsvWriter writer(plan.job.dialect);
      for (const std::string& original : plan.headings) {
        std::string heading = translate(plan.context, original, plan.locales);
        const std::size_t size = heading.size();
        heading.resize(size + kSpecialSlack);
        writer.add({std::string_view(heading).substr(0, size), false});
      }
      writer.end_row();
      texts_->write(writer.text());
    }
    if (rejects_) {
      CsvWriter writer{Dialect{}};
      write_reject_heading(writer);
      rejects_->write(writer.text());
    }
  }

  void write(const Worker& worker) {
    records_.write(worker.records());
    if (texts_) texts_->write(worker.texts());
    if (rejects_) rejects_->write(worker.rejects());
  }

  // Closes all outputs when the copy is whole, else only the rejects.
  void close(const Plan& plan, const Report& report) {
    std::vector<Output*> outputs;
    if (rejects_) outputs.push_back(&*rejects_);
    if (!report.stopped) {
      if (schema_) {
        schema_->write(describe_records(plan.layout, plan.records, charset_of(plan.locales.to),
                                        report.rows_copied));
        outputs.push_back(&*schema_);
      }
      if (texts_) outputs.push_back(&*texts_);
      outputs.push_back(&records_);
    }
    for (Output* const output : outputs) output->flush_to_disk();
    publish(outputs);
  }

 private:
  Output records_;
  std::optional<Output> texts_;
  std::optional<Output> rejects_;
  std::optional<Output> schema_;
};

// Batches are read in order by whichever thread is free, converted side by side, and written in
// order again. There are more workers than threads, so that no thread waits for an earlier batch of
// another one.
class Copy {
 public:
  Copy(const Plan& plan, CsvReader& csv, Outputs& outputs)
      : csv_(csv),
        outputs_(outputs),
        progress_(csv.source().size(), !plan.job.quiet),
        jobs_(plan.job.jobs),
        max_errors_(plan.job.max_errors) {
    report_.columns.resize(plan.layout.columns.size());
    report_.record_size = plan.records.size();
    report_.jobs = jobs_;
    const std::size_t workers = jobs_ == 1 ? 1 : kWorkersPerThread * jobs_;
    for (std::size_t at = 0; at < workers; ++at) {
      workers_.push_back(std::make_unique<Worker>(plan));
      free_.push_back(workers_.back().get());
    }
    converted_.resize(workers);
  }

  Report run() {
    const auto begin = Clock::now();
    {
      std::vector<std::jthread> helpers;
      for (std::size_t job = 1; job < jobs_; ++job) helpers.emplace_back([this] { work(); });
      work();
    }
    if (failure_) std::rethrow_exception(failure_);
    report_.blank_lines = csv_.blank_lines();
    report_.seconds = std::chrono::duration<double>(Clock::now() - begin).count();
    return std::move(report_);
  }

 private:
  static constexpr std::size_t kWorkersPerThread = 3;

  void work() {
    try {
      while (Worker* const worker = take_worker()) {
        const auto turn = read(*worker);
        if (!turn) return;
        worker->convert();
        hand_in(*worker, *turn);
      }
    } catch (...) {
      const std::scoped_lock lock(writing_);
      if (!failure_) failure_ = std::current_exception();
      worker_came_.notify_all();
    }
  }

  // Returns null when the copy is not to go on.
  Worker* take_worker() {
    std::unique_lock lock(writing_);
    worker_came_.wait(lock, [&] { return !free_.empty() || failure_ || report_.stopped; });
    if (failure_ || report_.stopped) return nullptr;
    Worker* const worker = free_.back();
    free_.pop_back();
    return worker;
  }

  // The number of the batch that was read; nothing at the end of the file.
  std::optional<std::size_t> read(Worker& worker) {
    const std::scoped_lock lock(reading_);
    if (ended_) return std::nullopt;
    ended_ = !csv_.next(worker.rows);
    if (jobs_ > 1) worker.rows.keep_bytes();
    worker.bytes_taken = csv_.source().bytes_taken();
    return turns_++;
  }

  // Writes the batches whose turn it is, unless another thread is doing so.
  void hand_in(Worker& worker, std::size_t turn) {
    std::unique_lock lock(writing_);
    converted_[turn % converted_.size()] = &worker;
    if (writer_is_busy_) return;
    writer_is_busy_ = true;
    while (Worker* const next =
               std::exchange(converted_[next_turn_ % converted_.size()], nullptr)) {
      const bool wanted = !report_.stopped;
      lock.unlock();
      if (wanted) outputs_.write(*next);
      lock.lock();
      if (wanted) count(*next);
      ++next_turn_;
      free_.push_back(next);
      worker_came_.notify_all();
    }
    writer_is_busy_ = false;
  }

  void count(const Worker& worker) {
    report_.add(worker.report());
    report_.stopped = report_.faults() > max_errors_;
    progress_.update(report_.rows_read, worker.bytes_taken);
  }

  CsvReader& csv_;
  Outputs& outputs_;
  Progress progress_;
  const std::size_t jobs_;
  const std::size_t max_errors_;
  std::vector<std::unique_ptr<Worker>> workers_;

  std::mutex reading_;  // the file, and the next two
  bool ended_ = false;
  std::size_t turns_ = 0;  // batches that were read

  std::mutex writing_;  // the report, and what follows
  std::condition_variable worker_came_;
  std::vector<Worker*> free_;
  std::vector<Worker*> converted_;  // by turn; those that have not been written yet
  std::size_t next_turn_ = 0;       // batches that were written
  bool writer_is_busy_ = false;
  std::exception_ptr failure_;
  Report report_;
};

}  // namespace

void require_distinct_files(const Job& job) {
  std::vector<std::string> others = {job.csv_path, job.layout_path};
  for (const std::string& output :
       {job.record_path, job.text_path, job.rejects_path, job.schema_path}) {
    if (output.empty()) continue;
    for (const std::string& other : others)
      if (output != "-" || &other != &others.front()) require_distinct(output, other);
    others.push_back(output);
  }
}

Report copy_rows(CS_CONTEXT* context, const Job& job, const Layout& layout, Locales locales,
                 Source& source) {
  CsvReader csv(source, job.dialect);
  const auto first_row = csv.next_row();
  if (first_row.empty())
    throw Fatal(source.name() + ": is empty" +
                (job.no_header ? "" : "; its first row names the columns"));
  if (job.no_header) csv.unread_row();
  Plan plan{context, job, layout, locales, source.name(), first_row.size()};
  for (const Column& column : layout.columns) {
    const std::size_t position = locate_column(column, first_row, job, source.name());
    plan.positions.push_back(position);
    plan.headings.push_back(first_row[position]);
  }

  Outputs outputs(job);
  outputs.write_heading(plan);
  const Report report = Copy(plan, csv, outputs).run();
  outputs.close(plan, report);
  return report;
}

}  // namespace rowcopy
