#include "csv_reader.h"

#include <algorithm>
#include <cstring>

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

// Fields are views of two stretches of the reader's, which both move as they are.
void Batch::keep_bytes() {
  if (fields_.empty() && misfits_.empty()) return;
  bytes_.resize(span_.size() + unescaped_.size() + kSpecialSlack);
  span_.copy(bytes_.data(), span_.size());
  unescaped_.copy(bytes_.data() + span_.size(), unescaped_.size());
  const auto move = [this](std::string_view& text) {
    const char* const at = text.data();
    const bool in_span = at >= span_.data() && at <= span_.data() + span_.size();
    const std::size_t offset =
        in_span ? static_cast<std::size_t>(at - span_.data())
                : span_.size() + static_cast<std::size_t>(at - unescaped_.data());
    text = {bytes_.data() + offset, text.size()};
  };
  for (Field& field : fields_) move(field.text);
  for (Row& row : rows_) move(row.raw);
  for (Misfit& row : misfits_) move(row.raw);
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
  std::vector<Field> fields;
  Scan scan = scan_row(fields);
  while (scan == Scan::kNeedsMore && refill()) scan = scan_row(fields);
  if (scan == Scan::kBroken)
    throw Fatal(source_.name() + ":" + std::to_string(row_line_) + ": " + fault_);
  std::vector<std::string> row;
  for (const Field& field : fields) row.emplace_back(field.text);
  return row;
}

bool CsvReader::next(Batch& batch, std::size_t limit) {
  batch.fields_.clear();
  batch.rows_.clear();
  batch.misfits_.clear();
  unescaped_used_ = 0;
  const char* const none = nullptr;
  const char* first = none;
  for (;;) {
    while (batch.size() < limit) {
      const Scan scan = scan_row(batch.fields_);
      if (scan == Scan::kNeedsMore) break;
      if (first == none) first = row_.data();
      const std::size_t complete = batch.size() * batch.width_;
      const std::size_t width = batch.fields_.size() - complete;
      if (scan == Scan::kRow && width == batch.width_) {
        batch.rows_.push_back({row_line_, row_});
      } else {
        batch.misfits_.push_back({row_line_, row_, width, scan == Scan::kRow ? nullptr : fault_});
        batch.fields_.resize(complete);
      }
    }
    // Reading on would move the fields.
    if (first != none) {
      batch.span_ = {first, begin_};
      batch.unescaped_ = {unescaped_.data(), unescaped_used_};
      return true;
    }
    if (!refill()) return false;
  }
}

CsvReader::Scan CsvReader::scan_row(std::vector<Field>& fields) {
  if (!skip_blank_lines()) return Scan::kNeedsMore;
  const std::size_t first = fields.size();
  escaped_.clear();
  Cursor cursor{begin_, line_};
  while (!cursor.row_ended) {
    const Scan scan = scan_field(cursor, fields);
    if (scan == Scan::kRow) continue;
    fields.resize(first);
    return scan;
  }
  for (const std::size_t field : escaped_) unescape(fields[field]);
  row_ = {begin_, cursor.row_end};
  row_line_ = line_;
  begin_ = cursor.at;
  line_ = cursor.line;
  return Scan::kRow;
}

bool CsvReader::skip_blank_lines() {
  while (begin_ < end_ && is_line_end(*begin_)) {
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

// At what follows the row's last field, which began at `field`.
CsvReader::Scan CsvReader::end_row(Cursor& cursor, const char* field) {
  cursor.row_end = cursor.at;
  cursor.row_ended = true;
  if (cursor.at == end_) return Scan::kRow;
  if (!is_line_end(*cursor.at)) return break_row(field, kMisplacedQuote);
  ++cursor.line;
  return skip_line_end(cursor.at) ? Scan::kRow : Scan::kNeedsMore;
}

// At its opening quote. Doubled quotes stay doubled: the row may have to be read again.
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

void CsvReader::unescape(Field& field) {
  // The room holds whatever one buffer can.
  if (unescaped_.size() < buffer_.size()) unescaped_.resize(buffer_.size());
  char* const text = unescaped_.data() + unescaped_used_;
  char* kept = text;
  for (std::size_t at = 0; at < field.text.size(); ++at) {
    *kept++ = field.text[at];
    if (field.text[at] == quote_) ++at;
  }
  field.text = {text, kept};
  unescaped_used_ += field.text.size();
}

// Makes room after what is not read yet and fills it from the file; false at the file's end.
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
