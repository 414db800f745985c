// Powers of ten to 96 significant bits, for the conversion of doubles to decimal digits.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace comnlib {

// A significand of 96 bits, the highest of which is set.
struct Significand {
  std::uint32_t high;
  std::uint32_t middle;
  std::uint32_t low;
};

// The binary logarithm of 10^n and the decimal one of 2^n, rounded down, for every exponent of a
// double.
constexpr int floor_log2_of_power_of_ten(int n) {
  return (n * 1741647) >> 19;
}
constexpr int floor_log10_of_power_of_two(int n) {
  return (n * 1262611) >> 22;
}

class PowersOfTen {
 public:
  static constexpr int kFirst = -324;
  static constexpr int kLast = 340;

  // The first 96 bits of ten to the power n, the rest cut off.
  constexpr const Significand& operator[](int n) const {
    return all_[static_cast<std::size_t>(n - kFirst)];
  }

  // 10^n has the bits of 5^n. The positive powers are exact products. The negative ones are exact
  // quotients, rounded down: to divide by 5 and round down n times is to divide by 5^n once.
  constexpr PowersOfTen() {
    PowerLimbs power{};
    power[0] = 1;
    for (int n = 0; n <= kLast; ++n) {
      store_significand(n, power);
      multiply_by_5(power);
    }
    power = {};
    power.back() = 1;
    for (int n = -1; n >= kFirst; --n) {
      divide_by_5(power);
      store_significand(n, power);
    }
  }

 private:
  // 5^340 has 790 bits; 5^324 has 753, and its quotient needs 96 more.
  static constexpr std::size_t kLimbs = 28;
  using PowerLimbs = std::array<std::uint32_t, kLimbs>;  // least significant first

  static constexpr void multiply_by_5(PowerLimbs& number) {
    std::uint64_t carry = 0;
    for (std::uint32_t& limb : number) {
      carry += std::uint64_t{limb} * 5;
      limb = static_cast<std::uint32_t>(carry);
      carry >>= 32;
    }
  }

  static constexpr void divide_by_5(PowerLimbs& number) {
    std::uint64_t rest = 0;
    for (std::size_t at = kLimbs; at-- > 0;) {
      rest = rest << 32 | number[at];
      number[at] = static_cast<std::uint32_t>(rest / 5);
      rest %= 5;
    }
  }

  constexpr void store_significand(int n, const PowerLimbs& number) {
    std::size_t top = kLimbs - 1;
    while (number[top] == 0) --top;
    const int shift = std::countl_zero(number[top]);
    const auto limb = [&](std::size_t below) -> std::uint64_t {
      return below <= top ? number[top - below] : 0;
    };
    const auto bits = [&](std::size_t below) {
      return static_cast<std::uint32_t>((limb(below) << 32 | limb(below + 1)) << shift >> 32);
    };
    all_[static_cast<std::size_t>(n - kFirst)] = {bits(0), bits(1), bits(2)};
  }

  std::array<Significand, kLast - kFirst + 1> all_{};
};

}  // namespace comnlib
