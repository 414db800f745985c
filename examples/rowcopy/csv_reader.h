// Streams the rows of a CSV file in batches: quoted fields with doubled quotes and line ends
// inside, LF, CRLF or CR between rows, every other byte passed through. Fields are views of the
// reader's buffer; its memory stays bounded by the longest row.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "file.h"

namespace rowcopy {

struct Field {
  std::string_view text;
  bool null;  // empty and not quoted
};

// Rows of one width. A row's line is the one of the file on which it begins, from 1.
class Batch {
 public:
  explicit Batch(std::size_t width) : width_(width) {}

  std::size_t size() const { return lines_.size(); }
  std::size_t width() const { return width_; }
  // Of a column: its field in the first row; that of the next row stands width() fields behind.
  const Field* column(std::size_t at) const { return &fields_[at]; }
  std::size_t line(std::size_t row) const { return lines_[row]; }

  // Rows of another width, which hold no place among the others.
  struct Misfit {
    std::size_t line;
    std::size_t fields;
  };
  const std::vector<Misfit>& misfits() const { return misfits_; }

 private:
  friend class CsvReader;
  std::size_t width_;
  std::vector<Field> fields_;
  std::vector<std::size_t> lines_;
  std::vector<Misfit> misfits_;
};

class CsvReader {
 public:
  explicit CsvReader(const std::string& path);

  // The fields of the next row; none at the end of the file.
  std::vector<std::string> next_row();

  // Replaces the batch by the next rows, at most `limit` of its width; false at the end, with only
  // misfits in it, if anything. Its fields hold until the next call. Throws Fatal with file and
  // line for a quote that is misplaced or left open, and for a row of more than 16 MiB.
  bool next(Batch& batch, std::size_t limit);

  std::uint64_t bytes_read() const { return bytes_read_; }
  // Lines without a byte between rows; they are no rows.
  std::size_t blank_lines() const { return blank_lines_; }

 private:
  // Where a row is being read.
  struct Cursor {
    const char* at;
    std::size_t line;
    bool row_ended = false;
  };

  // Each returns false, with nothing taken, where the buffer ends too early.
  bool scan_row(std::vector<Field>& fields);
  bool scan_field(Cursor& cursor, std::vector<Field>& fields);
  bool scan_quoted(Cursor& cursor, Field& field, bool& escaped);
  bool skip_line_end(const char*& at) const;
  bool skip_blank_lines();

  void unescape(Field& field);
  bool refill();
  std::size_t offset(const char* at) const { return static_cast<std::size_t>(at - buffer_.data()); }
  [[noreturn]] void fail_at(std::size_t line, const char* what) const;

  File file_;
  std::vector<char> buffer_;
  const char* begin_;  // of what is not read yet
  const char* end_;
  bool complete_ = false;  // nothing of the file is left behind end_
  std::uint64_t bytes_read_ = 0;
  std::size_t line_ = 1;      // at begin_
  std::size_t row_line_ = 1;  // of the row read last
  std::size_t blank_lines_ = 0;
  std::vector<std::size_t> escaped_;  // fields of the row being read that hold doubled quotes
};

}  // namespace rowcopy
