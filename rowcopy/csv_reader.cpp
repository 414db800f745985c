#include "csv_reader.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "fatal.h"

namespace rowcopy {
namespace {

constexpr std::size_t kBlock = 65536;
constexpr std::size_t kLongestRow = 16 << 20;
constexpr const char* kRowTooLong = "more than 16 MiB in one row; is a quote left open?";
constexpr const char* kOpenQuote = "a quote is left open";
constexpr const char* kMisplacedQuote =
    "a quote is where none may be (quote the field and double the quotes in it)";

bool is_line_end(char c) {
  return c == '\n' || c == '\r';
}

// LF, CRLF and lone CR each end a line.
std::size_t count_lines(std::string_view text) {
  std::size_t lines = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const bool pair = text[at] == '\r' && at + 1 < text.size() && text[at + 1] == '\n';
    if (is_line_end(text[at]) && !pair) ++lines;
  }
  return lines;
}

}  // namespace

// The state of reading simple rows, in locals that no store of a field can change.
class CsvReader::PlainRows {
 public:
  PlainRows(const CsvReader& reader, Batch& batch)
      : walk_(reader.specials_, reader.begin_, reader.end_),
        end_(reader.end_),
        base_(batch.base_),
        places_(batch.places_.data()),
        width_(batch.width_),
        capacity_(batch.capacity_),
        null_word_(reader.dialect_.null_word),
        delimiter_(reader.dialect_.delimiter),
        quotes_(reader.quotes_),
        quote_(reader.quote_) {}

  // Stores the fields of a row and its place; what follows it, or null when it is not simple.
  [[gnu::always_inline]] const char* scan(const char* row, Batch::Row& found, std::size_t number) {
    CS_INT* place = places_ + number;
    const char* field = row;
    for (std::size_t left = width_;;) {
      const char* const stop = walk_.next();
      if (stop >= end_ || left-- == 0) return nullptr;
      const char mark = *stop;
      if (mark == quote_ && quotes_) return nullptr;
      const auto size = static_cast<CS_INT>(stop - field);
      place[0] = static_cast<CS_INT>(field - base_);
      place[capacity_ + 1] = is_null(field, size) ? kNull : size;
      place += 2 * capacity_ + 1;
      field = stop + 1;
      if (mark == delimiter_) continue;
      if (left != 0) return nullptr;
      if (mark == '\r') {
        if (field == end_) return nullptr;
        if (*field == '\n') field = walk_.next() + 1;
      }
      found.begin = static_cast<std::size_t>(row - base_);
      found.size = static_cast<std::size_t>(stop - row);
      found.altered = nullptr;
      return field;
    }
  }

 private:
  bool is_null(const char* field, CS_INT size) const {
    return size == 0 || (static_cast<std::size_t>(size) == null_word_.size() &&
                         null_word_ == std::string_view(field, null_word_.size()));
  }

  SpecialWalk walk_;
  const char* const end_;
  const char* const base_;
  CS_INT* const places_;
  const std::size_t width_;
  const std::size_t capacity_;
  const std::string_view null_word_;
  const char delimiter_;
  const bool quotes_;
  const char quote_;
};

Batch::Batch(std::size_t width, std::size_t capacity)
    : width_(width), capacity_(capacity), places_(width * column_places()), rows_(capacity) {}

void Batch::clear() {
  size_ = 0;
  misfits_.clear();
  altered_.clear();
}

// A column has one offset more than fields: the end of its last field.
void Batch::close(const char* end) {
  span_ = static_cast<std::size_t>(end - base_);
  for (std::size_t at = 0; at < places_.size(); at += column_places())
    places_[at + size_] = static_cast<CS_INT>(span_);
}

void Batch::keep_bytes() {
  bytes_.resize(span_ + kSpecialSlack);
  if (span_ != 0) std::memcpy(bytes_.data(), base_, span_);
  for (Misfit& row : misfits_) row.raw = {bytes_.data() + (row.raw.data() - base_), row.raw.size()};
  base_ = bytes_.data();
}

CsvReader::CsvReader(Source& source, const Dialect& dialect)
    : source_(source),
      dialect_(dialect),
      quotes_(dialect.quote.has_value()),
      quote_(dialect.quote.value_or('\0')),
      specials_(dialect),
      buffer_(kBlock + kSpecialSlack) {
  begin_ = end_ = buffer_.data();
}

std::vector<std::string> CsvReader::next_row() {
  Scan scan = scan_row(fields_);
  while (scan == Scan::kNeedsMore && refill()) scan = scan_row(fields_);
  if (scan == Scan::kBroken)
    throw Fatal(source_.name() + ":" + std::to_string(row_line_) + ": " + fault_);
  std::vector<std::string> row;
  row.reserve(fields_.size());
  for (const Field& field : fields_) row.emplace_back(field.text);
  for (const std::size_t at : escaped_) row[at].resize(unescape(row[at], row[at].data()).size());
  return row;
}

void CsvReader::unread_row() {
  begin_ = row_.data();
  line_ = row_line_;
  // The lines skipped as blank were rows.
  if (fields_.size() == 1) leading_blanks_ = std::exchange(blank_lines_, 0);
}

bool CsvReader::next(Batch& batch) {
  batch.clear();
  blank_is_row_ = batch.width_ == 1;
  for (;;) {
    batch.base_ = begin_;
    take_leading_blanks(batch);
    while (batch.size_ < batch.capacity_) {
      scan_plain_rows(batch);
      if (batch.size_ < batch.capacity_ && scan_other_row(batch) == Scan::kNeedsMore) break;
    }
    batch.close(begin_);
    // Reading on would move the fields.
    if (batch.size_ != 0 || !batch.misfits_.empty()) return true;
    if (!refill()) return false;
  }
}

void CsvReader::take_leading_blanks(Batch& batch) {
  for (; leading_blanks_ != 0 && batch.size_ < batch.capacity_; --leading_blanks_) {
    batch.places_[batch.size_] = 0;
    batch.places_[batch.size_ + batch.capacity_ + 1] = kNull;
    batch.rows_[batch.size_++] = {line_ - leading_blanks_, 0, 0, nullptr};
  }
}

void CsvReader::scan_plain_rows(Batch& batch) {
  PlainRows rows(*this, batch);
  while (batch.size_ < batch.capacity_) {
    const char* const next = rows.scan(begin_, batch.rows_[batch.size_], batch.size_);
    if (next == nullptr) return;
    batch.rows_[batch.size_++].line = line_++;
    begin_ = next;
  }
}

CsvReader::Scan CsvReader::scan_other_row(Batch& batch) {
  const Scan scan = scan_row(fields_);
  if (scan == Scan::kNeedsMore) return scan;
  if (scan == Scan::kBroken || fields_.size() != batch.width_) {
    batch.misfits_.push_back(
        {row_line_, row_, fields_.size(), scan == Scan::kRow ? nullptr : fault_});
    return Scan::kBroken;
  }
  const std::string* altered = nullptr;
  if (!escaped_.empty()) altered = &batch.altered_.emplace_back(row_);
  for (const std::size_t at : escaped_) {
    std::string_view& text = fields_[at].text;
    text = unescape(text, buffer_.data() + (text.data() - buffer_.data()));
  }
  CS_INT* place = batch.places_.data() + batch.size_;
  for (const Field& field : fields_) {
    place[0] = static_cast<CS_INT>(field.text.data() - batch.base_);
    place[batch.capacity_ + 1] = field.null ? kNull : static_cast<CS_INT>(field.text.size());
    place += batch.column_places();
  }
  batch.rows_[batch.size_++] = {row_line_, static_cast<std::size_t>(row_.data() - batch.base_),
                                row_.size(), altered};
  return scan;
}

CsvReader::Scan CsvReader::scan_row(std::vector<Field>& fields) {
  if (!skip_blank_lines()) return Scan::kNeedsMore;
  fields.clear();
  escaped_.clear();
  Cursor cursor{begin_, line_};
  while (!cursor.row_ended) {
    const Scan scan = scan_field(cursor, fields);
    if (scan != Scan::kRow) return scan;
  }
  row_ = {begin_, cursor.row_end};
  row_line_ = line_;
  begin_ = cursor.at;
  line_ = cursor.line;
  return Scan::kRow;
}

bool CsvReader::skip_blank_lines() {
  while (!blank_is_row_ && begin_ < end_ && is_line_end(*begin_)) {
    if (!skip_line_end(begin_)) return false;
    ++line_;
    ++blank_lines_;
  }
  return begin_ < end_;
}

bool CsvReader::skip_line_end(const char*& at) const {
  if (*at == '\r') {
    if (at + 1 == end_ && !complete_) return false;
    if (at + 1 < end_ && at[1] == '\n') ++at;
  }
  ++at;
  return true;
}

CsvReader::Scan CsvReader::scan_field(Cursor& cursor, std::vector<Field>& fields) {
  const char* const begin = cursor.at;
  if (begin < end_ && *begin == quote_ && quotes_) return scan_quoted_field(cursor, fields);
  const char* const stop = specials_.find(begin, end_);
  if (stop == end_ && !complete_) return Scan::kNeedsMore;
  const std::string_view text(begin, stop);
  cursor.at = stop;
  if (stop < end_ && *stop == dialect_.delimiter) {
    ++cursor.at;
  } else if (const Scan scan = end_row(cursor, begin); scan != Scan::kRow) {
    return scan;
  }
  fields.push_back({text, text.empty() || text == dialect_.null_word});
  return Scan::kRow;
}

CsvReader::Scan CsvReader::scan_quoted_field(Cursor& cursor, std::vector<Field>& fields) {
  Field field{{}, false};
  bool escaped = false;
  const char* const begin = cursor.at;
  if (const Scan scan = scan_quoted(cursor, field, escaped); scan != Scan::kRow) return scan;
  if (cursor.at < end_ && *cursor.at == dialect_.delimiter) {
    ++cursor.at;
  } else if (const Scan scan = end_row(cursor, begin); scan != Scan::kRow) {
    return scan;
  }
  if (escaped) escaped_.push_back(fields.size());
  fields.push_back(field);
  return Scan::kRow;
}

// Continues after the row's last field, which began at `field`.
CsvReader::Scan CsvReader::end_row(Cursor& cursor, const char* field) {
  cursor.row_end = cursor.at;
  cursor.row_ended = true;
  if (cursor.at == end_) return Scan::kRow;
  if (!is_line_end(*cursor.at)) return break_row(field, kMisplacedQuote);
  ++cursor.line;
  return skip_line_end(cursor.at) ? Scan::kRow : Scan::kNeedsMore;
}

// Scans a field from its opening quote on. Doubled quotes stay doubled, since the row may have to
// be read again.
CsvReader::Scan CsvReader::scan_quoted(Cursor& cursor, Field& field, bool& escaped) {
  const char* const text = cursor.at + 1;
  const char* quote = text;
  for (;;) {
    const auto left = static_cast<std::size_t>(end_ - quote);
    quote = static_cast<const char*>(std::memchr(quote, quote_, left));
    if (quote == nullptr && (complete_ || row_too_long_))
      return break_row(cursor.at, row_too_long_ ? kRowTooLong : kOpenQuote);
    if (quote == nullptr || (quote + 1 == end_ && !complete_)) return Scan::kNeedsMore;
    if (quote + 1 == end_ || quote[1] != quote_) break;
    escaped = true;
    quote += 2;
  }
  field = {{text, quote}, false};
  cursor.line += count_lines(field.text);
  cursor.at = quote + 1;
  return Scan::kRow;
}

// Sets the row aside up to the first line end after `at`: a quote that is left open would swallow
// the rows that follow.
CsvReader::Scan CsvReader::break_row(const char* at, const char* fault) {
  const char* stop = std::find_if(at, end_, is_line_end);
  if (stop == end_ && !complete_) return Scan::kNeedsMore;
  const std::string_view row(begin_, stop);
  std::size_t lines = count_lines(row);
  if (stop != end_) {
    if (!skip_line_end(stop)) return Scan::kNeedsMore;
    ++lines;
  }
  row_ = row;
  fault_ = fault;
  row_line_ = line_;
  begin_ = stop;
  line_ += lines;
  row_too_long_ = false;
  return Scan::kBroken;
}

// The text with each doubled quote once, at `room`, which may be where it is.
std::string_view CsvReader::unescape(std::string_view text, char* room) const {
  char* kept = room;
  for (std::size_t at = 0; at < text.size(); ++at) {
    *kept++ = text[at];
    if (text[at] == quote_) ++at;
  }
  return {room, kept};
}

// Makes room after the bytes that are not read yet and fills it from the file; false at the end of
// the file.
bool CsvReader::refill() {
  if (complete_) return false;
  const auto kept = static_cast<std::size_t>(end_ - begin_);
  if (row_too_long_) throw Fatal(source_.name() + ":" + std::to_string(line_) + ": " + kRowTooLong);
  row_too_long_ = kept > kLongestRow;
  if (row_too_long_) return true;
  std::memmove(buffer_.data(), begin_, kept);
  if (kept > buffer_.size() / 2) buffer_.resize(2 * buffer_.size());
  const std::size_t room = buffer_.size() - kSpecialSlack - kept;
  const std::size_t count = source_.read(std::span(buffer_).subspan(kept, room));
  begin_ = buffer_.data();
  end_ = begin_ + kept + count;
  complete_ = count < room;
  return true;
}

}  // namespace rowcopy
