// The record file: rows of one fixed size, one behind the other, without a header. A record holds
// its columns in the layout's order, each as a CS_INT with the value's length (-1 for null) and
// then the room of its datatype, in the host's byte order; every column begins at a multiple of
// four bytes, and what no value fills is zero.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "file.h"
#include "layout.h"

namespace rowcopy {

class RecordLayout {
 public:
  explicit RecordLayout(const std::vector<Column>& columns);

  std::size_t size() const { return size_; }

 private:
  friend class Record;
  struct Place {
    std::size_t offset;  // of the length; the value follows it
    std::size_t room;
  };

  std::vector<Place> places_;
  std::size_t size_ = 0;
};

class Record {
 public:
  explicit Record(const RecordLayout& layout) : layout_(&layout), bytes_(layout.size()) {}

  std::span<char> bytes() { return bytes_; }
  std::span<const char> bytes() const { return bytes_; }

  std::span<char> room(std::size_t column);
  void set_length(std::size_t column, CS_INT length);
  CS_INT length(std::size_t column) const;
  // The bytes of a value that is not null.
  std::span<const char> value(std::size_t column) const;
  // Whether the length is null's or within the room, as it is in every record that was written.
  bool valid(std::size_t column) const;

 private:
  const RecordLayout* layout_;
  std::vector<char> bytes_;
};

// Removes the file again unless close() was reached: half a copy must not pass for a whole one.
class RecordWriter {
 public:
  // `path` may name a regular file, which is replaced, or none.
  explicit RecordWriter(const std::string& path);
  ~RecordWriter();
  RecordWriter(const RecordWriter&) = delete;
  RecordWriter& operator=(const RecordWriter&) = delete;

  void write(const Record& record) { file_.write(record.bytes()); }
  void close();

 private:
  File file_;
  bool complete_ = false;
};

class RecordReader {
 public:
  explicit RecordReader(const std::string& path) : file_(path, File::Mode::kRead) {}

  // False at the end; a file that ends within a record is a Fatal.
  bool next(Record& record);

 private:
  File file_;
};

}  // namespace rowcopy
