// The conversions of binary data, for the binary family and for varbinary.
#pragma once

#include <algorithm>
#include <cstring>
#include <span>
#include <string_view>

#include "chars/hex.h"
#include "conv/newutils.h"
#include "conv/placement.h"
#include "conv/textcopy.h"
#include "exact/numeric.h"

namespace comnlib {

struct BinarySource : Binary {
  using Value = Bytes;
  static CS_RETCODE read(const Conversion& call, Bytes& bytes) {
    bytes = {static_cast<const CS_BYTE*>(call.src),
             static_cast<std::size_t>(call.srcfmt->maxlength)};
    return CS_SUCCEED;
  }
};

struct VarbinarySource : Varbinary {
  using Value = Bytes;
  static CS_RETCODE read(const Conversion& call, Bytes& bytes) {
    const CS_SMALLINT length = record_length(call.src);
    if (!is_record_length(length)) return CS_CVT_DOMAIN;
    bytes = {record_bytes(call.src), static_cast<std::size_t>(length)};
    return CS_SUCCEED;
  }
};

// Writes as many whole bytes' digits as fit in `room` units; returns the number of units written.
// From the last byte to the first, so that the digits may replace the bytes themselves.
template <class Unit>
std::size_t write_hex(Bytes bytes, CS_BYTE* dest, std::size_t room) {
  const std::size_t whole = std::min(bytes.size(), room / 2);
  for (std::size_t at = whole; at-- > 0;) {
    const HexPair digits = hex_of(bytes[at]);
    store(dest + 2 * at * sizeof(Unit), static_cast<Unit>(digits.high));
    store(dest + (2 * at + 1) * sizeof(Unit), static_cast<Unit>(digits.low));
  }
  return 2 * whole;
}

// Hexadecimal text into a padded destination of `Unit`s: cut to whole bytes where it does not fit,
// with its terminator, where one is asked for, directly after the last digit.
template <class Unit>
CS_RETCODE to_padded_text(Bytes bytes, const Conversion& call) {
  auto* dest = static_cast<CS_BYTE*>(call.dest);
  const auto room = static_cast<std::size_t>(call.destfmt->maxlength) / sizeof(Unit);
  const bool terminate = terminates(*call.destfmt);
  const std::size_t reserved = terminate && room > 0 ? 1 : 0;
  // Of a record that its text replaces, the bytes begin after its length.
  Bytes read = bytes.first(std::min(bytes.size(), room / 2));
  if (call.dest == call.src) {
    std::memmove(dest, read.data(), read.size());
    read = {dest, read.size()};
  }
  const std::size_t written = write_hex<Unit>(read, dest, room - reserved);
  *call.destlen = static_cast<CS_INT>(written * sizeof(Unit));
  if (written == 2 * bytes.size() && (!terminate || reserved == 1)) {
    if constexpr (sizeof(Unit) == 1)
      return comn__padchar(*call.destlen, call.destfmt, dest, call.destlen);
    else
      return comn__padunichar(*call.destlen, call.destfmt, dest, call.destlen);
  }
  if (reserved == 1) {
    store(dest + *call.destlen, Unit{0});
    *call.destlen += static_cast<CS_INT>(sizeof(Unit));
  }
  return CS_CVT_TRUNCATED;
}

struct BytesToCharacter : Character {
  static CS_RETCODE convert(Bytes bytes, const Conversion& call) {
    return to_padded_text<CS_CHAR>(bytes, call);
  }
};

struct BytesToUnichar : Unichar {
  static CS_RETCODE convert(Bytes bytes, const Conversion& call) {
    return to_padded_text<CS_UNICHAR>(bytes, call);
  }
};

struct BytesToVarchar : Varchar {
  static constexpr CS_INT kLength = 0;
  static CS_RETCODE convert(Bytes bytes, const Conversion& call) {
    std::array<CS_BYTE, CS_MAX_CHAR> text;
    const std::size_t length = write_hex<CS_CHAR>(bytes, text.data(), text.size());
    const std::string_view view(reinterpret_cast<const CS_CHAR*>(text.data()), length);
    const CS_RETCODE placed = place_varchar(view, call.dest, call.destlen);
    return length < 2 * bytes.size() ? CS_CVT_TRUNCATED : placed;
  }
};

struct BytesToBinary : Binary {
  static CS_RETCODE convert(Bytes bytes, const Conversion& call) {
    const auto length = static_cast<CS_INT>(bytes.size());
    *call.destlen = std::min(length, call.destfmt->maxlength);
    std::memmove(call.dest, bytes.data(), static_cast<std::size_t>(*call.destlen));
    if (length > call.destfmt->maxlength) return CS_CVT_TRUNCATED;
    return comn__padbin(length, call.destfmt, call.dest, call.destlen);
  }
};

struct BytesToVarbinary : Varbinary {
  static constexpr CS_INT kLength = 0;
  static CS_RETCODE convert(Bytes bytes, const Conversion& call) {
    const std::size_t kept = std::min<std::size_t>(bytes.size(), CS_MAX_CHAR);
    std::memmove(record_bytes(call.dest), bytes.data(), kept);
    store(call.dest, static_cast<CS_SMALLINT>(kept));
    *call.destlen = sizeof(CS_VARBINARY);
    return kept < bytes.size() ? CS_CVT_TRUNCATED : CS_SUCCEED;
  }
};

// A sign and a magnitude that fits the precision.
inline bool is_valid(const CS_NUMERIC& numeric) {
  const constant value = record_of(numeric);
  return numeric.array[0] <= 1 && com__exctnume_checkprecision(&value) == 0;
}

// The bytes are the stored bytes of a value. Missing bytes are zero; surplus bytes that are not
// zero do not fit; a value outside its type's domain is not written.
template <class Type>
struct BytesToFixed : Type {
  static constexpr CS_INT kLength = 0;
  static CS_RETCODE convert(Bytes bytes, const Conversion& call) {
    typename Type::Value value{};
    const std::size_t kept = std::min(bytes.size(), sizeof value);
    if (kept > 0) std::memcpy(&value, bytes.data(), kept);
    if (!Type::contains(value)) return CS_CVT_DOMAIN;
    if constexpr (std::is_same_v<Type, Numeric>)
      if (!is_valid(value)) return CS_CVT_DOMAIN;
    const bool fits =
        std::ranges::all_of(bytes.subspan(kept), [](CS_BYTE byte) { return byte == 0; });
    return store_result(call, value, fits ? CS_SUCCEED : CS_CVT_OVERFLOW);
  }
};

}  // namespace comnlib
