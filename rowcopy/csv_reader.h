// Streams the rows of a CSV file in batches: quoted fields with doubled quotes and line ends
// inside, LF, CRLF or CR between rows, every other byte passed through. A row that cannot be split
// is set aside up to the end of its line, and reading goes on with the next line. Memory stays
// bounded by the longest row.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "dialect.h"
#include "source.h"
#include "special.h"

namespace rowcopy {

struct Field {
  std::string_view text;
  bool null;  // not quoted, and empty or the dialect's word for null
};

// Rows of one width. A row's line is the one of the file on which it begins, from 1.
class Batch {
 public:
  explicit Batch(std::size_t width) : width_(width) {}

  std::size_t size() const { return rows_.size(); }
  std::size_t width() const { return width_; }
  // Of a column: its field in the first row; that of the next row is width() fields further on.
  const Field* column(std::size_t at) const { return &fields_[at]; }
  std::size_t line(std::size_t row) const { return rows_[row].line; }
  // The bytes of a row, without its line end.
  std::string_view raw(std::size_t row) const { return rows_[row].raw; }

  // Rows that are not among the others.
  struct Misfit {
    std::size_t line;
    std::string_view raw;
    std::size_t fields;  // where the row could be split
    const char* fault;   // or null: the number of fields is another one
  };
  const std::vector<Misfit>& misfits() const { return misfits_; }

  // Makes the batch independent of the reader, which may then read on.
  void keep_bytes();

 private:
  friend class CsvReader;
  struct Row {
    std::size_t line;
    std::string_view raw;
  };

  std::size_t width_;
  std::vector<Field> fields_;
  std::vector<Row> rows_;
  std::vector<Misfit> misfits_;
  std::string_view span_;       // of the reader's buffer, all rows and misfits
  std::string_view unescaped_;  // of the reader's room for fields without doubled quotes
  std::vector<char> bytes_;     // what keep_bytes() took
};

class CsvReader {
 public:
  // The source and the dialect outlive the reader.
  CsvReader(Source& source, const Dialect& dialect);

  // The fields of the next row; none at the end of the file. Throws Fatal when it cannot be split.
  std::vector<std::string> next_row();

  // Makes the row that next_row() gave the next one again.
  void unread_row() {
    begin_ = row_.data();
    line_ = row_line_;
  }

  // Replaces the batch by the next rows, at most `limit` of its width; false at the end, with only
  // misfits in it, if anything. Its fields hold until the next call, or as keep_bytes() says.
  // Throws Fatal with file and line for a line of more than 16 MiB.
  bool next(Batch& batch, std::size_t limit);

  const Source& source() const { return source_; }
  // Lines without a byte between rows; they are no rows.
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

  // kNeedsMore, with nothing taken: the buffer ends too early.
  Scan scan_row(std::vector<Field>& fields);
  Scan scan_field(Cursor& cursor, std::vector<Field>& fields);
  Scan scan_quoted_field(Cursor& cursor, std::vector<Field>& fields);
  Scan scan_quoted(Cursor& cursor, Field& field, bool& escaped);
  Scan break_row(const char* at, const char* fault);
  Scan end_row(Cursor& cursor, const char* field);
  bool skip_line_end(const char*& at) const;
  bool skip_blank_lines();

  void unescape(Field& field);
  bool refill();
  std::size_t offset(const char* at) const { return static_cast<std::size_t>(at - buffer_.data()); }

  Source& source_;
  const Dialect& dialect_;
  bool quotes_;
  char quote_;
  Specials specials_;
  std::vector<char> buffer_;
  std::vector<char> unescaped_;  // fields of the batch that held doubled quotes
  std::size_t unescaped_used_ = 0;
  const char* begin_;  // of what is not read yet
  const char* end_;
  bool complete_ = false;      // nothing of the file is left after end_
  bool row_too_long_ = false;  // the row at begin_
  std::size_t line_ = 1;       // at begin_
  std::size_t blank_lines_ = 0;
  std::size_t row_line_ = 1;  // of the row read last, as what follows
  std::string_view row_;
  const char* fault_ = nullptr;
  std::vector<std::size_t> escaped_;  // fields of the row being read that hold doubled quotes
};

}  // namespace rowcopy
