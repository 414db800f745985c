// Digits come in groups, nine at a time or eighteen, without a division. The value is divided by
// the power of ten of all its groups, by multiplying with the reciprocal; multiplying the fraction
// by the power of one group then moves the next group in front of the point.
//
// With n groups the fraction has n limbs. It must not fall below the exact quotient, and it may
// exceed it by less than one unit of the value's last digit. So each limb that is dropped, for
// which one unit of the next limb is added, costs little: a limb has two to four bits more than a
// group.
#include "exact/digits.h"

#include "chars/decimal.h"

namespace comnlib {
namespace {

constexpr Limb kNine = 1'000'000'000;
constexpr int kGroupDigits = kLimbDigits / 9 * 9;
constexpr Limb kGroup = kGroupDigits == 9 ? kNine : static_cast<Limb>(Wide{kNine} * kNine);

// Groups of the values that are taken apart this way: those of 32 bytes, which have 78 digits.
constexpr std::size_t kMostGroups = (CS_MAX_PREC + 1 + kGroupDigits - 1) / kGroupDigits;

// 1 / kGroup^n in units of 2^(-2n limbs), rounded up: n + 1 limbs.
struct Reciprocal {
  std::array<Limb, kMostGroups + 1> limb;
};

consteval std::array<Reciprocal, kMostGroups + 1> reciprocals() {
  std::array<Reciprocal, kMostGroups + 1> table{};
  for (std::size_t n = 1; n <= kMostGroups; ++n) {
    // The quotient of 2^(2n limbs) - 1, and one more.
    std::array<Limb, 2 * kMostGroups> quotient{};
    for (std::size_t at = 0; at < 2 * n; ++at) quotient[at] = ~Limb{0};
    for (std::size_t division = 0; division < n; ++division) {
      Wide rest = 0;
      for (std::size_t at = 2 * n; at-- > 0;) {
        rest = rest << kLimbBits | quotient[at];
        quotient[at] = static_cast<Limb>(rest / kGroup);
        rest %= kGroup;
      }
    }
    for (std::size_t at = 0; ++quotient[at] == 0;) ++at;
    for (std::size_t at = 0; at <= n; ++at) table[n].limb[at] = quotient[at];
  }
  return table;
}

constexpr std::array<Reciprocal, kMostGroups + 1> kReciprocals = reciprocals();

// Returns the end of what was written.
char* put_group(Limb group, char* to) {
  for (Limb unit = kGroup; unit > 1; to += 9) {
    unit /= kNine;
    const auto nine = static_cast<std::uint32_t>(group / unit % kNine);
    to[0] = static_cast<char>('0' + nine / 100'000'000);
    put_eight_digits(nine % 100'000'000, to + 1);
  }
  return to;
}

// The limbs from `at` up to `end` times `factor`, plus `carry`; returns the carry out.
Limb multiply_limbs(Limb* at, Limb* end, Limb factor, Limb carry) {
  for (; at != end; ++at) *at = multiply_step(*at, factor, carry);
  return carry;
}

// Adds the limbs from `by` up to `end` times `factor` to those at `sum`, and stores the carry after
// them.
void add_product(const Limb* by, const Limb* end, Limb factor, Limb* sum) {
  Limb carry = 0;
  for (; by != end; ++by, ++sum) {
    const Limb low = multiply_step(*by, factor, carry);
    carry += __builtin_add_overflow(low, *sum, sum);
  }
  *sum = carry;
}

// A value of n groups divided by their power of ten: an integer limb of 0, n limbs of fraction, and
// one limb more below them, which is dropped. What the product's lower columns would carry, and
// that limb, are less than n units of the fraction.
void multiply_high(Limbs value, std::size_t n, Limb* quotient) {
  const Limb* const by = kReciprocals[n].limb.data();
  quotient[0] = quotient[1] = 0;
  for (std::size_t row = 0; row < value.size(); ++row)
    add_product(by + n - 1 - row, by + n + 1, value[row], quotient);
}

// The digits of a value of n groups, from two on; returns their end.
char* put_groups(Limbs value, std::size_t n, char* to) {
  std::array<Limb, kMostGroups + 2> quotient;
  multiply_high(value, n, quotient.data());
  Limb* fraction = &quotient[1];
  Limb* const end = fraction + n;
  // Units that make up for what was dropped, times the group.
  Wide added = Wide{n} * kGroup;
  for (; fraction != end; added = kGroup) {
    const auto carry = static_cast<Limb>((Wide{*fraction++} * kGroup + added) >> kLimbBits);
    to = put_group(multiply_limbs(fraction, end, kGroup, carry), to);
  }
  return to;
}

// Values of longer records, which no host has, from the last digit on.
char* put_long(Limbs value, char* end) {
  Magnitude rest;
  rest.assign(value);
  while (!rest.is_zero()) {
    end = put_digits(static_cast<std::uint32_t>(divide_by(rest, 100)), 2, end);
  }
  return end;
}

}  // namespace

DecimalDigits::DecimalDigits(Limbs value) : first_(buffer_), end_(buffer_) {
  if (value.size() > kPowerLimbs) {
    end_ = buffer_ + kRoom;
    first_ = put_long(value, buffer_ + kRoom);
  } else if (value.size() == 1 && value[0] < kGroup) {
    end_ = put_group(value[0], buffer_);
  } else if (!value.empty()) {
    const int digits = kGroupDigits * static_cast<int>(value.size());
    end_ = put_groups(value, value.size() + exceeds(value, digits), buffer_);
  }
  while (first_ != end_ && *first_ == '0') ++first_;
}

}  // namespace comnlib
