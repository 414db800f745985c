// The record file: rows of one fixed size, one after the other, without a header. A record holds
// its columns in the layout's order, each as a CS_INT with the value's length (-1 for null) and
// then the room of its datatype, in the host's byte order; every column begins at a multiple of
// four bytes, and what no value fills is zero.
#pragma once

#include <cstddef>
#include <cstring>
#include <span>
#include <vector>

#include "layout.h"
#include "special.h"

namespace rowcopy {

class RecordLayout {
 public:
  explicit RecordLayout(const std::vector<Column>& columns);

  std::size_t size() const { return size_; }
  std::size_t columns() const { return places_.size(); }
  // Of a column: where its length is, and how many bytes its value may have.
  std::size_t offset(std::size_t column) const { return places_[column].offset; }
  CS_INT room(std::size_t column) const { return places_[column].room; }

 private:
  struct ColumnPlace {
    std::size_t offset;
    CS_INT room;
  };

  std::vector<ColumnPlace> places_;
  std::size_t size_ = 0;
};

// Some records in memory.
class Records {
 public:
  Records(const RecordLayout& layout, std::size_t capacity)
      : layout_(layout), bytes_(layout.size() * capacity + kSpecialSlack) {}

  std::size_t size() const { return size_; }

  // Makes this `size` zero-filled records.
  void clear(std::size_t size) {
    size_ = size;
    std::memset(bytes_.data(), 0, size * layout_.size());
  }
  // Drops the records whose mark is 0, one mark for each.
  void keep(const std::vector<char>& marks);
  std::span<const char> bytes() const { return std::span(bytes_).first(size_ * layout_.size()); }

  // Of a column: its value in the first record; that of the next record is layout.size() bytes
  // further on. The value's length precedes it.
  char* column(std::size_t at) { return &bytes_[layout_.offset(at)] + sizeof(CS_INT); }

 private:
  const RecordLayout& layout_;
  std::vector<char> bytes_;
  std::size_t size_ = 0;
};

}  // namespace rowcopy
