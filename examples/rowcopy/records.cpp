#include "records.h"

#include <cstdio>
#include <filesystem>

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
    places_.push_back({size_, column.type.size});
    size_ = round_up(size_ + sizeof(CS_INT) + static_cast<std::size_t>(column.type.size));
  }
}

void Records::keep(const std::vector<char>& marks) {
  const std::size_t size = layout_.size();
  std::size_t kept = 0;
  for (std::size_t row = 0; row < size_; ++row) {
    if (marks[row] == 0) continue;
    if (kept != row) std::memcpy(&bytes_[kept * size], &bytes_[row * size], size);
    ++kept;
  }
  size_ = kept;
}

RecordWriter::RecordWriter(const std::string& path)
    : file_(require_regular(path), File::Mode::kWrite) {}

RecordWriter::~RecordWriter() {
  if (!complete_) std::remove(file_.path().c_str());
}

void RecordWriter::write(const Records& records) {
  file_.write(std::span(records.bytes_).first(records.size() * records.layout_.size()));
}

void RecordWriter::close() {
  file_.close();
  complete_ = true;
}

bool RecordReader::next(Records& records) {
  const std::size_t count = file_.read(records.bytes_);
  if (count % records.layout_.size() != 0) throw Fatal(file_.path() + ": ends within a record");
  records.size_ = count / records.layout_.size();
  return count != 0;
}

}  // namespace rowcopy
