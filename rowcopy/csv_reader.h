// Streams the rows of a CSV file in batches: quoted fields with doubled quotes and line ends
// inside, LF, CRLF or CR between rows, every other byte passed through. A row that cannot be split
// is set aside up to the end of its line, and reading goes on with the next line. Memory stays
// bounded by the longest row.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "comnlib.h"
#include "dialect.h"
#include "source.h"
#include "special.h"

namespace rowcopy {

// The length of a null.
constexpr CS_INT kNull = -1;

struct Field {
  std::string_view text;
  bool null;  // not quoted, and empty or the dialect's word for null
};

// Texts of a column, as a column of conversions takes them.
struct FieldColumn {
  const char* text;       // the first one, or what the offsets belong to
  const CS_INT* offsets;  // where each begins; null: `stride` bytes after the one before it
  const CS_INT* lengths;  // of each, kNull for a null
  std::size_t count;
  std::size_t stride = 0;

  const char* begin(std::size_t row) const {
    return text + (offsets == nullptr ? row * stride : static_cast<std::size_t>(offsets[row]));
  }
  std::string_view operator[](std::size_t row) const {
    return {begin(row), static_cast<std::size_t>(std::max(lengths[row], 0))};
  }
};

// Rows of one width. A row's line is the one of the file on which it begins, from 1.
class Batch {
 public:
  Batch(std::size_t width, std::size_t capacity);

  std::size_t size() const { return size_; }
  std::size_t width() const { return width_; }
  FieldColumn column(std::size_t at) const {
    const CS_INT* const offsets = places_.data() + at * column_places();
    return {base_, offsets, offsets + capacity_ + 1, size_};
  }
  std::size_t line(std::size_t row) const { return rows_[row].line; }
  // The bytes of a row, without its line end.
  std::string_view raw(std::size_t row) const {
    const Row& found = rows_[row];
    if (found.altered != nullptr) return *found.altered;
    return {base_ + found.begin, found.size};
  }

  // Rows that are not among the others.
  struct Misfit {
    std::size_t line;
    std::string_view raw;
    std::size_t fields;  // where the row could be split
    const char* fault;   // or null: the number of fields differs
  };
  const std::vector<Misfit>& misfits() const { return misfits_; }

  // Makes the batch independent of the reader, which may then read on.
  void keep_bytes();

 private:
  friend class CsvReader;
  struct Row {
    std::size_t line;
    std::size_t begin;  // after base_
    std::size_t size;
    const std::string*
        altered;  // the row as it was, where fields have lost doubled quotes; or null
  };

  std::size_t column_places() const { return 2 * capacity_ + 1; }
  void clear();
  void close(const char* end);

  std::size_t width_;
  std::size_t capacity_;
  std::size_t size_ = 0;
  const char* base_ = nullptr;  // of all rows and misfits
  std::size_t span_ = 0;        // their bytes
  std::vector<CS_INT> places_;  // for each column its offsets, one more than rows, and its lengths
  std::vector<Row> rows_;
  std::deque<std::string> altered_;
  std::vector<Misfit> misfits_;
  std::vector<char> bytes_;  // what keep_bytes() took
};

class CsvReader {
 public:
  // The source and the dialect outlive the reader.
  CsvReader(Source& source, const Dialect& dialect);

  // The fields of the next row; no fields at the end of the file. Throws Fatal when it cannot be
  // split.
  std::vector<std::string> next_row();

  // Makes the row that next_row() returned the next one again.
  void unread_row();

  // Replaces the batch by the next rows, as many as it has room for; false at the end, with only
  // misfits in it, if anything. Its fields hold until the next call, or as keep_bytes() says.
  // Throws Fatal with file and line for a line of more than 16 MiB.
  bool next(Batch& batch);

  const Source& source() const { return source_; }
  // Lines without a byte between rows of several fields; they are no rows. In a file of one column
  // they are rows whose field is null.
  std::size_t blank_lines() const { return blank_lines_; }

 private:
  enum class Scan { kRow, kBroken, kNeedsMore };

  // Where a row is being read.
  struct Cursor {
    const char* at;
    std::size_t line;
    bool row_ended = false;
    const char* row_end = nullptr;  // before the line end
  };

  // Takes rows as long as they are simple: whole, without quotes, and of the batch's width.
  class PlainRows;
  void scan_plain_rows(Batch& batch);
  Scan scan_other_row(Batch& batch);
  void take_leading_blanks(Batch& batch);

  // kNeedsMore, with nothing taken: the buffer ends too early.
  Scan scan_row(std::vector<Field>& fields);
  Scan scan_field(Cursor& cursor, std::vector<Field>& fields);
  Scan scan_quoted_field(Cursor& cursor, std::vector<Field>& fields);
  Scan scan_quoted(Cursor& cursor, Field& field, bool& escaped);
  Scan break_row(const char* at, const char* fault);
  Scan end_row(Cursor& cursor, const char* field);
  bool skip_line_end(const char*& at) const;
  bool skip_blank_lines();

  std::string_view unescape(std::string_view text, char* room) const;
  bool refill();

  Source& source_;
  const Dialect& dialect_;
  bool quotes_;
  char quote_;
  Specials specials_;
  std::vector<char> buffer_;
  const char* begin_;  // of what is not read yet
  const char* end_;
  bool complete_ = false;      // nothing of the file is left after end_
  bool row_too_long_ = false;  // the row at begin_
  std::size_t line_ = 1;       // at begin_
  bool blank_is_row_ = false;  // rows have one field
  std::size_t blank_lines_ = 0;
  std::size_t leading_blanks_ = 0;  // rows that came before the first one that has a byte
  std::size_t row_line_ = 1;        // of the row read last, as what follows
  std::string_view row_;
  const char* fault_ = nullptr;
  std::vector<Field> fields_;         // of a row that is not simple
  std::vector<std::size_t> escaped_;  // those of them that hold doubled quotes
};

}  // namespace rowcopy
