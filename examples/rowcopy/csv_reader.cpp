#include "csv_reader.h"

#include <cstring>

#include "fatal.h"
#include "special.h"

namespace rowcopy {
namespace {

constexpr std::size_t kBlock = 65536;
constexpr std::size_t kLongestRow = 16 << 20;
constexpr const char* kRowTooLong = "a row of more than 16 MiB begins here; is a quote left open?";
constexpr const char* kOpenQuote = "a quote is left open in the row that begins here";
constexpr const char* kMisplacedQuote =
    "a quote stands where none may (quote the field and double the quotes in it)";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// LF, CRLF and lone CR each end a line.
std::size_t count_lines(std::string_view text) {
  std::size_t lines = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const bool pair = text[at] == '\r' && at + 1 < text.size() && text[at + 1] == '\n';
    if (text[at] == '\n' || (text[at] == '\r' && !pair)) ++lines;
  }
  return lines;
}

}  // namespace

CsvReader::CsvReader(const std::string& path)
    : file_(path, File::Mode::kRead), buffer_(kBlock + kSpecialSlack) {
  begin_ = end_ = buffer_.data();
  refill();
  if (std::string_view(begin_, end_).starts_with(kByteOrderMark)) begin_ += kByteOrderMark.size();
}

std::vector<std::string> CsvReader::next_row() {
  std::vector<Field> fields;
  while (!scan_row(fields) && refill()) {
  }
  std::vector<std::string> row;
  for (const Field& field : fields) row.emplace_back(field.text);
  return row;
}

bool CsvReader::next(Batch& batch, std::size_t limit) {
  batch.fields_.clear();
  batch.lines_.clear();
  batch.misfits_.clear();
  for (;;) {
    while (batch.size() < limit && scan_row(batch.fields_)) {
      const std::size_t complete = batch.size() * batch.width_;
      const std::size_t width = batch.fields_.size() - complete;
      if (width == batch.width_) {
        batch.lines_.push_back(row_line_);
      } else {
        batch.misfits_.push_back({row_line_, width});
        batch.fields_.resize(complete);
      }
    }
    // Reading on would move the fields.
    if (batch.size() > 0) return true;
    if (!refill()) return false;
  }
}

bool CsvReader::scan_row(std::vector<Field>& fields) {
  if (!skip_blank_lines()) return false;
  const std::size_t first = fields.size();
  escaped_.clear();
  Cursor cursor{begin_, line_};
  while (!cursor.row_ended) {
    if (scan_field(cursor, fields)) continue;
    fields.resize(first);
    return false;
  }
  for (const std::size_t field : escaped_) unescape(fields[field]);
  begin_ = cursor.at;
  row_line_ = line_;
  line_ = cursor.line;
  return true;
}

bool CsvReader::skip_blank_lines() {
  while (begin_ < end_ && (*begin_ == '\n' || *begin_ == '\r')) {
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

bool CsvReader::scan_field(Cursor& cursor, std::vector<Field>& fields) {
  Field field{{}, false};
  if (cursor.at < end_ && *cursor.at == '"') {
    bool escaped = false;
    if (!scan_quoted(cursor, field, escaped)) return false;
    if (escaped) escaped_.push_back(fields.size());
  } else {
    const char* stop = find_special(cursor.at, end_);
    if (stop == end_ && !complete_) return false;
    field = {{cursor.at, stop}, stop == cursor.at};
    cursor.at = stop;
  }
  if (cursor.at == end_) {
    cursor.row_ended = true;
  } else if (*cursor.at == ',') {
    ++cursor.at;
  } else if (*cursor.at == '\n' || *cursor.at == '\r') {
    if (!skip_line_end(cursor.at)) return false;
    cursor.row_ended = true;
    ++cursor.line;
  } else {
    fail_at(cursor.line, kMisplacedQuote);
  }
  fields.push_back(field);
  return true;
}

// At its opening quote. Doubled quotes stay doubled: the row may have to be read again.
bool CsvReader::scan_quoted(Cursor& cursor, Field& field, bool& escaped) {
  const char* const text = cursor.at + 1;
  const char* quote = text;
  for (;;) {
    const auto left = static_cast<std::size_t>(end_ - quote);
    quote = static_cast<const char*>(std::memchr(quote, '"', left));
    if (quote == nullptr && complete_) fail_at(line_, kOpenQuote);
    if (quote == nullptr || (quote + 1 == end_ && !complete_)) return false;
    if (quote + 1 == end_ || quote[1] != '"') break;
    escaped = true;
    quote += 2;
  }
  field = {{text, quote}, false};
  cursor.line += count_lines(field.text);
  cursor.at = quote + 1;
  return true;
}

void CsvReader::unescape(Field& field) {
  char* const text = buffer_.data() + offset(field.text.data());
  char* kept = text;
  for (std::size_t at = 0; at < field.text.size(); ++at) {
    *kept++ = text[at];
    if (text[at] == '"') ++at;
  }
  field.text = {text, kept};
}

// Makes room behind what is not read yet and fills it from the file; false at the file's end.
bool CsvReader::refill() {
  if (complete_) return false;
  const auto kept = static_cast<std::size_t>(end_ - begin_);
  if (kept > kLongestRow) fail_at(line_, kRowTooLong);
  std::memmove(buffer_.data(), begin_, kept);
  if (kept > buffer_.size() / 2) buffer_.resize(2 * buffer_.size());
  const std::size_t room = buffer_.size() - kSpecialSlack - kept;
  const std::size_t count = file_.read(std::span(buffer_).subspan(kept, room));
  begin_ = buffer_.data();
  end_ = begin_ + kept + count;
  bytes_read_ += count;
  complete_ = count < room;
  return true;
}

void CsvReader::fail_at(std::size_t line, const char* what) const {
  throw Fatal(file_.path() + ":" + std::to_string(line) + ": " + what);
}

}  // namespace rowcopy
