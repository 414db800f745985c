#include "csv_reader.h"

#include <cstdlib>
#include <new>

#include "fatal.h"

namespace rowcopy {
namespace {

constexpr std::size_t kLongestRow = 16 << 20;
constexpr const char* kRowTooLong = "a row of more than 16 MiB begins here; is a quote left open?";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

void* bounded_realloc(void* block, std::size_t size) {
  return size > kLongestRow ? nullptr : std::realloc(block, size);
}

}  // namespace

CsvReader::CsvReader(const std::string& path) : file_(path, File::Mode::kRead) {
  if (csv_init(&parser_, CSV_STRICT | CSV_STRICT_FINI | CSV_EMPTY_IS_NULL) != 0)
    throw std::bad_alloc();
  // Blanks around a field belong to it.
  csv_set_space_func(&parser_, [](unsigned char) { return 0; });
  csv_set_realloc_func(&parser_, bounded_realloc);
  csv_set_blk_size(&parser_, 65536);
  if (refill() && unread_.starts_with(kByteOrderMark)) unread_.remove_prefix(kByteOrderMark.size());
}

bool CsvReader::next(Row& row) {
  row_ = &row;
  row.bytes_.clear();
  row.cells_.clear();
  row_complete_ = false;
  while (!row_complete_ && !finished_) {
    if (!unread_.empty() || refill()) {
      feed(take_piece());
    } else {
      finish();
    }
  }
  return row_complete_;
}

bool CsvReader::refill() {
  unread_ = {block_.data(), file_.read(block_)};
  bytes_read_ += unread_.size();
  return !unread_.empty();
}

// A piece reaches up to the first CR or LF, so that it ends at most one row.
std::string_view CsvReader::take_piece() {
  std::string_view piece = unread_.substr(0, unread_.find('\n'));
  piece = piece.substr(0, piece.find('\r'));
  piece = unread_.substr(0, piece.size() + 1);
  unread_.remove_prefix(piece.size());
  return piece;
}

void CsvReader::feed(std::string_view piece) {
  const char last = piece.back();
  const bool ends_line = last == '\r' || (last == '\n' && last_byte_ != '\r');
  const bool terminator_alone = piece.size() == 1 && (last == '\r' || last == '\n');
  if (!row_open_ && !terminator_alone) {
    row_->line_ = line_;
    row_open_ = true;
  }
  if (!row_open_ && ends_line) ++blank_lines_;

  const std::size_t parsed =
      csv_parse(&parser_, piece.data(), piece.size(), on_field, on_row, this);
  if (failure_) std::rethrow_exception(failure_);
  if (parsed != piece.size()) fail();
  last_byte_ = last;
  if (ends_line) ++line_;
}

void CsvReader::finish() {
  finished_ = true;
  const int result = csv_fini(&parser_, on_field, on_row, this);
  if (failure_) std::rethrow_exception(failure_);
  if (result != 0) fail();
}

void CsvReader::on_field(void* text, std::size_t length, void* self) {
  auto& reader = *static_cast<CsvReader*>(self);
  if (reader.failure_) return;
  try {
    Row& row = *reader.row_;
    const std::size_t size = row.bytes_.size() + (row.cells_.size() + 1) * sizeof(Row::Cell);
    if (size + length > kLongestRow) reader.fail_at(row.line_, kRowTooLong);
    row.cells_.push_back({row.bytes_.size(), length, text == nullptr});
    if (text != nullptr) row.bytes_.append(static_cast<const char*>(text), length);
  } catch (...) {
    reader.failure_ = std::current_exception();
  }
}

void CsvReader::on_row(int, void* self) {
  auto& reader = *static_cast<CsvReader*>(self);
  reader.row_complete_ = true;
  reader.row_open_ = false;
}

void CsvReader::fail() {
  if (csv_error(&parser_) != CSV_EPARSE) fail_at(row_->line_, kRowTooLong);
  if (finished_) fail_at(row_->line_, "a quote is left open in the row that begins here");
  fail_at(line_, "a quote stands where none may (quote the field and double the quotes in it)");
}

void CsvReader::fail_at(std::size_t line, const char* what) const {
  throw Fatal(path() + ":" + std::to_string(line) + ": " + what);
}

}  // namespace rowcopy
