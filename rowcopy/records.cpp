#include "records.h"

namespace rowcopy {
namespace {

constexpr std::size_t round_up(std::size_t size) {
  constexpr std::size_t kAlignment = sizeof(CS_INT);
  return (size + kAlignment - 1) / kAlignment * kAlignment;
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

}  // namespace rowcopy
