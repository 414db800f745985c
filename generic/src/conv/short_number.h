// Short numbers in text, stored in each type of number. False, with nothing stored, when the value
// is out of range or has decimals that the type would drop: then the type's own reader decides.
#pragma once

#include <array>
#include <cstdint>
#include <limits>

#include "chars/short_decimal.h"
#include "conv/frame.h"
#include "exact/mnymath.h"
#include "exact/short.h"

namespace comnlib {

template <class Type>
struct ShortInteger {
  static constexpr bool kWithPoint = false;
  [[gnu::always_inline]] static bool store(const ShortDecimal& number, const Conversion& call) {
    using T = typename Type::Value;
    using Signed = std::conditional_t<(sizeof(T) < sizeof(std::int64_t)), CS_INT, std::int64_t>;
    // The lowest value is left to the reader.
    constexpr std::uint64_t kHighest = std::numeric_limits<T>::max();
    const bool below_zero = number.negative && number.digits != 0;
    if (number.digits > kHighest || (below_zero && !std::numeric_limits<T>::is_signed))
      return false;
    const auto magnitude = static_cast<Signed>(number.digits);
    store_result(call, static_cast<T>(number.negative ? -magnitude : magnitude));
    return true;
  }
};

template <class Type>
struct ShortFloat {
  static constexpr bool kWithPoint = true;
  [[gnu::always_inline]] static bool store(const ShortDecimal& number, const Conversion& call) {
    constexpr auto kScales = [] {
      std::array<double, 17> powers{1};
      for (std::size_t n = 1; n < powers.size(); ++n) powers[n] = powers[n - 1] * 10;
      return powers;
    }();
    // Integers up to here are exact in a double, and so are the powers: the processor rounds their
    // quotient correctly.
    constexpr std::uint64_t kExact = std::uint64_t{1} << 53;
    if (number.digits > kExact) return false;
    const double value = static_cast<double>(static_cast<std::int64_t>(number.digits)) /
                         kScales[static_cast<std::size_t>(number.decimals)];
    store_result(call, static_cast<typename Type::Value>(number.negative ? -value : value));
    return true;
  }
};

// The units of an amount with no more than four decimals that is far from the limits.
[[gnu::always_inline]] inline bool short_units(const ShortDecimal& number, money::Units& units) {
  constexpr std::array<std::uint32_t, money::kDecimals + 1> kFactors{1, 10, 100, 1000, 10000};
  constexpr std::uint64_t kFarFromLimits = 100'000'000'000'000;
  const int missing = money::kDecimals - number.decimals;
  if (missing < 0 || number.digits >= kFarFromLimits) return false;
  units = money::signed_value(number.digits * kFactors[static_cast<std::size_t>(missing)],
                              number.negative);
  return true;
}

struct ShortMoney {
  static constexpr bool kWithPoint = true;
  [[gnu::always_inline]] static bool store(const ShortDecimal& number, const Conversion& call) {
    money::Units units;
    if (!short_units(number, units)) return false;
    store_result(call, money::record(units));
    return true;
  }
};

struct ShortMoney4 {
  static constexpr bool kWithPoint = true;
  [[gnu::always_inline]] static bool store(const ShortDecimal& number, const Conversion& call) {
    money::Units units;
    if (!short_units(number, units) || units != static_cast<CS_INT>(units)) return false;
    store_result(call, CS_MONEY4{static_cast<CS_INT>(units)});
    return true;
  }
};

// For up to 38 digits, which take no more bytes than a short value is stored in at once.
struct ShortNumeric {
  static constexpr bool kWithPoint = true;
  [[gnu::always_inline]] static bool store(const ShortDecimal& number, const Conversion& call) {
    constexpr CS_INT kMostPrecision = 38;
    const CS_INT precision = call.destfmt->precision;
    const CS_INT scale = call.destfmt->scale;
    if (precision < 1 || precision > kMostPrecision) return false;
    const CS_INT missing = scale - number.decimals;
    const CS_INT room = std::min(precision, kShortPrecision) - missing;
    if (scale > kShortPrecision || missing < 0 || room < 0 ||
        number.digits >= kShortPowers[static_cast<std::size_t>(room)])
      return false;
    std::uint64_t value = number.digits;
    if (missing > 0) value *= kShortPowers[static_cast<std::size_t>(missing)];
    const CS_INT length = Com__Nume_Prec_To_Len[static_cast<std::size_t>(precision)];
    auto& numeric = *static_cast<CS_NUMERIC*>(call.dest);
    store_short({0, value}, numeric, static_cast<std::size_t>(length) - 1);
    numeric.precision = static_cast<CS_BYTE>(precision);
    numeric.scale = static_cast<CS_BYTE>(scale);
    numeric.array[0] = number.negative ? 1 : 0;
    *call.destlen = static_cast<CS_INT>(offsetof(CS_NUMERIC, array)) + length;
    return true;
  }
};

}  // namespace comnlib
