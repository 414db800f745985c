// Streams the rows of a CSV file: quoted fields with doubled quotes and line ends inside, LF, CRLF
// or CR between rows, every other byte passed through. Memory stays bounded by the longest row.
#pragma once

#include <csv.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <string>
#include <string_view>
#include <vector>

#include "file.h"

namespace rowcopy {

struct Field {
  std::string_view text;
  bool null;  // empty and not quoted
};

class Row {
 public:
  std::size_t size() const { return cells_.size(); }
  Field operator[](std::size_t at) const {
    const Cell& cell = cells_[at];
    return {std::string_view(bytes_).substr(cell.offset, cell.length), cell.null};
  }
  // The line of the file on which the row begins, from 1.
  std::size_t line() const { return line_; }

 private:
  friend class CsvReader;
  struct Cell {
    std::size_t offset;
    std::size_t length;
    bool null;
  };

  std::size_t line_ = 0;
  std::string bytes_;
  std::vector<Cell> cells_;
};

class CsvReader {
 public:
  explicit CsvReader(const std::string& path);
  ~CsvReader() { csv_free(&parser_); }
  CsvReader(const CsvReader&) = delete;
  CsvReader& operator=(const CsvReader&) = delete;

  // Replaces `row` by the next one; false at the end. Throws Fatal with file and line for a quote
  // that is misplaced or left open, and for a row of more than 16 MiB.
  bool next(Row& row);

  std::uint64_t bytes_read() const { return bytes_read_; }
  // Lines without a byte between rows; they are no rows.
  std::size_t blank_lines() const { return blank_lines_; }
  const std::string& path() const { return file_.path(); }

 private:
  static void on_field(void* text, std::size_t length, void* self);
  static void on_row(int terminator, void* self);

  bool refill();
  void feed(std::string_view piece);
  void finish();
  std::string_view take_piece();
  [[noreturn]] void fail();
  [[noreturn]] void fail_at(std::size_t line, const char* what) const;

  File file_;
  csv_parser parser_{};
  std::array<char, 65536> block_;
  std::string_view unread_;  // of block_
  std::uint64_t bytes_read_ = 0;
  std::size_t line_ = 1;
  std::size_t blank_lines_ = 0;
  char last_byte_ = '\n';
  Row* row_ = nullptr;  // being filled
  bool row_open_ = false;
  bool row_complete_ = false;
  bool finished_ = false;
  std::exception_ptr failure_;  // thrown in a callback, which C code must not see
};

}  // namespace rowcopy
