// The decimal digits of a magnitude.
#pragma once

#include "exact/limbs.h"

namespace comnlib {

// The digits without leading zeros; zero has no digits.
class DecimalDigits {
 public:
  explicit DecimalDigits(Limbs value);
  DecimalDigits(const DecimalDigits&) = delete;
  DecimalDigits& operator=(const DecimalDigits&) = delete;

  const char* begin() const { return first_; }
  const char* end() const { return end_; }
  std::size_t size() const { return static_cast<std::size_t>(end_ - first_); }

 private:
  // Three digits a byte are more than any record's magnitude has; they are written in groups.
  static constexpr std::size_t kRoom = 3 * kMaxRecordLength + kLimbDigits;

  char buffer_[kRoom];
  const char* first_;
  const char* end_;
};

}  // namespace comnlib
