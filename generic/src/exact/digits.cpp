// Digits come in groups, nine at a time or eighteen, without a division. The value is divided by
// the power of ten of all its groups, by multiplying with the reciprocal; multiplying the fraction
// by the power of one group then moves the next group in front of the point.
//
// With n groups the fraction has n limbs. It must not fall below the exact quotient, and it may
// exceed it by less than one unit of the value's last digit. So each limb that is dropped, for
// which one unit of the next limb is added, costs little: a limb has two to four bits more than a
// group.
#include "exact/digits.h"

#include <emmintrin.h>

#include <utility>

#include "chars/decimal.h"
#include "exact/word_text.h"

namespace comnlib {
namespace {

constexpr Limb kNine = 1'000'000'000;
constexpr int kGroupDigits = kLimbDigits / 9 * 9;
constexpr Limb kGroup = kGroupDigits == 9 ? kNine : static_cast<Limb>(Wide{kNine} * kNine);

// The most groups of a value that is split this way: 32 bytes have 78 digits.
constexpr std::size_t kMostGroups = (CS_MAX_PREC + 1 + kGroupDigits - 1) / kGroupDigits;

// 1 / kGroup^n in units of 2^(-2n limbs), rounded up: n + 1 limbs.
struct Reciprocal {
  std::array<Limb, kMostGroups + 1> limb;
};

consteval std::array<Reciprocal, kMostGroups + 1> reciprocals() {
  std::array<Reciprocal, kMostGroups + 1> table{};
  for (std::size_t n = 1; n <= kMostGroups; ++n) {
    // The quotient of 2^(2n limbs) - 1, plus one.
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

constexpr std::uint32_t kEightDigits = 100'000'000;

// Writes two numbers of nine digits and returns their end.
char* put_nines(std::uint32_t first, std::uint32_t second, char* to) {
  const std::uint32_t leading = first / kEightDigits;
  const std::uint32_t middle = second / kEightDigits;
  const __m128i rest =
      sixteen_digits(first - leading * kEightDigits, second - middle * kEightDigits);
  to[0] = static_cast<char>('0' + leading);
  _mm_storel_epi64(reinterpret_cast<__m128i*>(to + 1), rest);
  to[9] = static_cast<char>('0' + middle);
  _mm_storel_epi64(reinterpret_cast<__m128i*>(to + 10), _mm_srli_si128(rest, 8));
  return to + 18;
}

// Writes the digits of groups and returns their end.
char* put_groups(const Limb* group, std::size_t count, char* to) {
  const Limb* const end = group + count;
  if constexpr (kGroupDigits == 9) {
    if (count % 2 != 0) {
      const auto nine = static_cast<std::uint32_t>(*group++);
      *to++ = static_cast<char>('0' + nine / kEightDigits);
      put_eight_digits(nine % kEightDigits, to);
      to += 8;
    }
    for (; group != end; group += 2)
      to =
          put_nines(static_cast<std::uint32_t>(group[0]), static_cast<std::uint32_t>(group[1]), to);
  } else {
    for (; group != end; ++group)
      to = put_nines(static_cast<std::uint32_t>(*group / kNine),
                     static_cast<std::uint32_t>(*group % kNine), to);
  }
  return to;
}

// Adds the reciprocal's limbs from `kFrom` on, times `factor`, to the quotient, and stores the
// carry after them.
template <std::size_t kGroups, std::size_t kFrom>
[[gnu::always_inline]] inline void add_product(Limb factor, Limb* quotient) {
  Limb carry = 0;
#pragma GCC unroll 16
  for (std::size_t at = kFrom; at <= kGroups; ++at)
    multiply_add_step(kReciprocals[kGroups].limb[at], factor, *quotient++, carry);
  *quotient = carry;
}

// Multiplies `kCount` limbs by the power of ten of a group and adds `carry`. Returns the carry out,
// which is the next group.
template <std::size_t kCount>
[[gnu::always_inline]] inline Limb next_group(Limb* limb, Limb carry) {
#pragma GCC unroll 16
  for (std::size_t at = 0; at < kCount; ++at) limb[at] = multiply_step(limb[at], kGroup, carry);
  return carry;
}

// The groups of a value of as many limbs or one less, from two on. Without loops, since the steps
// are few and short.
template <std::size_t kGroups>
[[gnu::noinline]] void split_groups(Limbs value, Limb* group) {
  // An integer limb of 0, the fraction, and one limb more below it, which is dropped. What the
  // product's lower columns would carry, and that limb, are less than a unit for each group.
  std::array<Limb, kGroups + 2> quotient;
  quotient[0] = quotient[1] = 0;
  [&]<std::size_t... row>(std::index_sequence<row...>) {
    (add_product<kGroups, kGroups - 1 - row>(value[row], quotient.data()), ...);
  }
  (std::make_index_sequence<kGroups - 1>());
  if (value.size() == kGroups) add_product<kGroups, 0>(value[kGroups - 1], quotient.data());

  Limb* const fraction = &quotient[1];
  // The units that make up for what the product left out, and then for each dropped limb.
  const auto carry = static_cast<Limb>((Wide{*fraction} + kGroups) * kGroup >> kLimbBits);
  group[0] = next_group<kGroups - 1>(fraction + 1, carry);
  [&]<std::size_t... at>(std::index_sequence<at...>) {
    ((group[at + 1] = next_group<kGroups - 1 - at>(fraction + 1 + at, kGroup)), ...);
  }
  (std::make_index_sequence<kGroups - 1>());
}

void split_groups(Limbs value, std::size_t count, Limb* group) {
  [&]<std::size_t... at>(std::index_sequence<at...>) {
    ((count == at + 2 && (split_groups<at + 2>(value, group), true)) || ...);
  }
  (std::make_index_sequence<kMostGroups - 1>());
}

// Writes values of longer records, which no host has, from the last digit on.
char* put_long(Limbs value, char* end) {
  Magnitude rest;
  rest.assign(value);
  while (!rest.is_zero()) {
    end = put_digits(static_cast<std::uint32_t>(divide_by(rest, 100)), 2, end);
  }
  return end;
}

// Where the first digit is that is not zero, of more than sixteen.
const char* first_digit(const char* digits) {
  const __m128i zeros =
      _mm_cmpeq_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(digits)), _mm_set1_epi8('0'));
  // The bit after those of the digits ends the search.
  digits += std::countr_zero(~static_cast<unsigned>(_mm_movemask_epi8(zeros)) | 0x10000U);
  while (*digits == '0') ++digits;
  return digits;
}

}  // namespace

DecimalDigits::DecimalDigits(Limbs value) : first_(buffer_), end_(buffer_) {
  if (value.empty()) return;
  if (const auto word = to_unsigned(value)) {
    first_ = buffer_ + put_word(*word, buffer_);
    end_ = buffer_ + kWordDigits;
    return;
  }
  if (value.size() > kPowerLimbs) {
    end_ = buffer_ + kRoom;
    first_ = put_long(value, buffer_ + kRoom);
    while (*first_ == '0') ++first_;
  } else {
    const int digits = kGroupDigits * static_cast<int>(value.size());
    const std::size_t count = value.size() + exceeds(value, digits);
    std::array<Limb, kMostGroups> groups;
    split_groups(value, count, groups.data());
    end_ = put_groups(groups.data(), count, buffer_);
    first_ = first_digit(buffer_);
  }
}

}  // namespace comnlib
