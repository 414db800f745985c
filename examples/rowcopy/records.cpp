#include "records.h"

#include <cstdio>
#include <cstring>
#include <filesystem>

#include "converter.h"
#include "fatal.h"

namespace rowcopy {
namespace {

constexpr std::size_t round_up(std::size_t size) {
  constexpr std::size_t kAlignment = sizeof(CS_INT);
  return (size + kAlignment - 1) / kAlignment * kAlignment;
}

// The records are read back, which only a regular file allows.
const std::string& require_regular(const std::string& path) {
  const auto status = std::filesystem::status(path);
  if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status))
    throw Fatal("cannot write records to " + path + ": not a regular file");
  return path;
}

}  // namespace

RecordLayout::RecordLayout(const std::vector<Column>& columns) {
  for (const Column& column : columns) {
    const auto room = static_cast<std::size_t>(column.type.size);
    places_.push_back({size_, room});
    size_ = round_up(size_ + sizeof(CS_INT) + room);
  }
}

std::span<char> Record::room(std::size_t column) {
  const auto& place = layout_->places_[column];
  return std::span(bytes_).subspan(place.offset + sizeof(CS_INT), place.room);
}

void Record::set_length(std::size_t column, CS_INT length) {
  std::memcpy(&bytes_[layout_->places_[column].offset], &length, sizeof length);
}

CS_INT Record::length(std::size_t column) const {
  CS_INT length = 0;
  std::memcpy(&length, &bytes_[layout_->places_[column].offset], sizeof length);
  return length;
}

std::span<const char> Record::value(std::size_t column) const {
  const auto length = static_cast<std::size_t>(this->length(column));
  return bytes().subspan(layout_->places_[column].offset + sizeof(CS_INT), length);
}

bool Record::valid(std::size_t column) const {
  const CS_INT length = this->length(column);
  return length == ColumnConverter::kNull ||
         (length >= 0 && static_cast<std::size_t>(length) <= layout_->places_[column].room);
}

RecordWriter::RecordWriter(const std::string& path)
    : file_(require_regular(path), File::Mode::kWrite) {}

RecordWriter::~RecordWriter() {
  if (!complete_) std::remove(file_.path().c_str());
}

void RecordWriter::close() {
  file_.close();
  complete_ = true;
}

bool RecordReader::next(Record& record) {
  const std::size_t count = file_.read(record.bytes());
  if (count == 0) return false;
  if (count < record.bytes().size()) throw Fatal(file_.path() + ": ends within a record");
  return true;
}

}  // namespace rowcopy
