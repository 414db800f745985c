// The conversions of the number families: one routine template over the source and the target of a
// conversion. A module lists its members with COMNLIB_NUMBER_MEMBER, one line each, so that the
// line of a failed precondition names the member.
#pragma once

#include <emmintrin.h>

#include <cmath>
#include <concepts>
#include <cstring>
#include <limits>
#include <type_traits>
#include <utility>

#include "conv/frame.h"
#include "conv/number_text.h"

namespace comnlib {

// What a family converts from. CS_BIT and CS_TINYINT share a representation and differ in domain.
template <class T, CS_INT Datatype>
struct NumberSource {
  using Value = T;
  static constexpr bool serves(CS_INT datatype) { return datatype == Datatype; }
  static constexpr bool in_domain([[maybe_unused]] Value value) {
    if constexpr (Datatype == CS_BIT_TYPE) return value <= 1;
    return true;
  }
};

// A target of fixed length. Targets have three members:
//   serves(datatype)      whether a destination datatype is theirs
//   kLength               the destination length; 0 where convert tells it
//   convert(value, call)  writes the value's conversion and returns its result code
template <CS_INT Datatype, std::size_t Length>
struct FixedTarget {
  static constexpr CS_INT kLength = Length;
  static constexpr bool serves(CS_INT datatype) { return datatype == Datatype; }
};

// The processor's truncation towards zero: the integer indefinite value for a NaN.
inline CS_INT truncate(CS_FLOAT value) {
  return _mm_cvttsd_si32(_mm_set_sd(value));
}

template <std::integral T, CS_INT Datatype>
struct ToInteger : FixedTarget<Datatype, sizeof(T)> {
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

template <std::floating_point T, CS_INT Datatype>
struct ToFloat : FixedTarget<Datatype, sizeof(T)> {
  static CS_RETCODE convert(std::integral auto value, const Conversion& call) {
    store(call.dest, static_cast<T>(value));
    return CS_SUCCEED;
  }

  static CS_RETCODE convert(std::floating_point auto value, const Conversion& call) {
    if constexpr (std::same_as<decltype(value), T>) {
      // As bytes: a signaling NaN would not survive a register.
      std::memmove(call.dest, call.src, sizeof(T));
    } else {
      if constexpr (sizeof(T) < sizeof value) {
        // Every double beyond the largest single, those that would round down to it included.
        constexpr T highest = std::numeric_limits<T>::max();
        if (std::fabs(value) > CS_FLOAT{highest}) {
          store(call.dest, value < 0 ? -highest : highest);
          return CS_CVT_OVERFLOW;
        }
      }
      store(call.dest, static_cast<T>(value));
    }
    return CS_SUCCEED;
  }
};

struct ToBit : FixedTarget<CS_BIT_TYPE, sizeof(CS_BIT)> {
  static CS_RETCODE convert(auto value, const Conversion& call) {
    store(call.dest, static_cast<CS_BIT>(value != 0));  // true for a NaN
    return CS_SUCCEED;
  }
};

template <class Value>
using Widened = std::conditional_t<std::floating_point<Value>, CS_FLOAT, CS_INT>;

struct ToCharacter {
  static constexpr CS_INT kLength = 0;
  static constexpr bool serves(CS_INT datatype) { return is_character(datatype); }

  template <class Value>
  static CS_RETCODE convert(Value value, const Conversion& call) {
    NumberBuffer buffer;
    return place_text(text_of(Widened<Value>{value}, buffer), call);
  }
};

struct ToVarchar : FixedTarget<CS_VARCHAR_TYPE, sizeof(CS_VARCHAR)> {
  template <class Value>
  static CS_RETCODE convert(Value value, const Conversion& call) {
    NumberBuffer buffer;
    return place_varchar(text_of(Widened<Value>{value}, buffer), call);
  }
};

struct ToBinary {
  static constexpr CS_INT kLength = 0;
  static constexpr bool serves(CS_INT datatype) { return is_binary(datatype); }

  static CS_RETCODE convert(auto value, const Conversion& call) {
    return comn_fixedtobin(call.context, call.srcfmt, call.src, call.destfmt, call.dest,
                           call.destlen, sizeof value);
  }
};

struct ToVarbinary : FixedTarget<CS_VARBINARY_TYPE, sizeof(CS_VARBINARY)> {
  static CS_RETCODE convert(auto value, const Conversion& call) {
    return comn_fixedtovarbin(call.context, call.srcfmt, call.src, call.destfmt, call.dest,
                              call.destlen, sizeof value);
  }
};

using ToI1 = ToInteger<CS_TINYINT, CS_TINYINT_TYPE>;
using ToI2 = ToInteger<CS_SMALLINT, CS_SMALLINT_TYPE>;
using ToI4 = ToInteger<CS_INT, CS_INT_TYPE>;
using ToFlt4 = ToFloat<CS_REAL, CS_REAL_TYPE>;
using ToFlt8 = ToFloat<CS_FLOAT, CS_FLOAT_TYPE>;

// The body of every member. The length is set before the value is looked at: it holds for failing
// conversions too.
template <class Source, class Target>
CS_RETCODE convert_number(const Conversion& call, Place place = Place::current()) {
  check_pointers(call, place);
  require(Source::serves(call.srcfmt->datatype), place);
  require(Target::serves(call.destfmt->datatype), place);
  *call.destlen = Target::kLength;
  const auto value = load<typename Source::Value>(call.src);
  if (!Source::in_domain(value)) return trace(CS_CVT_DOMAIN, place);
  return trace(Target::convert(value, call), place);
}

}  // namespace comnlib

#define COMNLIB_NUMBER_MEMBER(routine, source, target)   \
  CS_RETCODE routine(COMNLIB_CONVERSION_PARAMETERS) {    \
    return comnlib::convert_number<source, target>(      \
        {context, srcfmt, src, destfmt, dest, destlen}); \
  }
