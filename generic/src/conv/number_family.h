// The targets of the number families: integers, floats and bits.
#pragma once

#include <emmintrin.h>

#include <cmath>
#include <concepts>
#include <cstring>
#include <limits>
#include <type_traits>
#include <utility>

#include "conv/number_text.h"
#include "conv/to_binary.h"
#include "conv/to_money.h"
#include "conv/to_numeric.h"
#include "conv/to_text.h"

namespace comnlib {

// The processor's truncation towards zero: the integer indefinite value for a NaN.
inline CS_INT truncate(CS_FLOAT value) {
  return _mm_cvttsd_si32(_mm_set_sd(value));
}

template <class Type>
struct ToInteger : Type {
  using T = typename Type::Value;
  static constexpr T kLowest = std::numeric_limits<T>::min();
  static constexpr T kHighest = std::numeric_limits<T>::max();

  static CS_RETCODE convert(std::integral auto value, const Conversion& call) {
    if (std::cmp_less(value, kLowest)) return clamp(kLowest, call);
    if (std::cmp_greater(value, kHighest)) return clamp(kHighest, call);
    store(call.dest, static_cast<T>(value));
    return CS_SUCCEED;
  }

  // The limits are compared before truncation: -0.5 is below an unsigned range.
  static CS_RETCODE convert(std::floating_point auto value, const Conversion& call) {
    const CS_FLOAT wide = value;
    if (wide < CS_FLOAT{kLowest}) return clamp(kLowest, call);
    if (wide > CS_FLOAT{kHighest}) return clamp(kHighest, call);
    store(call.dest, static_cast<T>(truncate(wide)));
    return CS_SUCCEED;
  }

 private:
  static CS_RETCODE clamp(T limit, const Conversion& call) {
    store(call.dest, limit);
    return CS_CVT_OVERFLOW;
  }
};

template <class Type>
struct ToFloat : Type {
  using T = typename Type::Value;

  static CS_RETCODE convert(std::integral auto value, const Conversion& call) {
    store(call.dest, static_cast<T>(value));
    return CS_SUCCEED;
  }

  static CS_RETCODE convert(std::floating_point auto value, const Conversion& call) {
    if constexpr (sizeof(T) < sizeof value) {
      // Doubles beyond the largest single, including those that would round down to it.
      constexpr T kHighest = std::numeric_limits<T>::max();
      if (std::fabs(value) > CS_FLOAT{kHighest}) {
        store(call.dest, value < 0 ? -kHighest : kHighest);
        return CS_CVT_OVERFLOW;
      }
    }
    store(call.dest, static_cast<T>(value));
    return CS_SUCCEED;
  }
};

// To the same type the bytes are copied: a signaling NaN would not survive a register.
template <class Type>
struct FloatToItself : Type {
  static CS_RETCODE convert(const typename Type::Value&, const Conversion& call) {
    std::memmove(call.dest, call.src, sizeof(typename Type::Value));
    return CS_SUCCEED;
  }
};

struct ToBit : Bit {
  static CS_RETCODE convert(auto value, const Conversion& call) {
    store(call.dest, static_cast<CS_BIT>(value != 0));  // true for a NaN
    return CS_SUCCEED;
  }
};

struct NumberText {
  static constexpr bool kCut = false;
  using Buffer = NumberBuffer;
  static std::string_view of(std::integral auto value, const CS_DATAFMT&, Buffer& buffer) {
    return text_of(CS_INT{value}, buffer);
  }
  static std::string_view of(std::floating_point auto value, const CS_DATAFMT&, Buffer& buffer) {
    return text_of(CS_FLOAT{value}, buffer);
  }
};

}  // namespace comnlib
