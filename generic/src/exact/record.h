// Working records and magnitudes: the boundary between the byte layout and the arithmetic.
#pragma once

#include "diag/diag.h"
#include "exact/limbs.h"
#include "exact/numeaux.h"

namespace comnlib {

struct SignedMagnitude {
  Magnitude magnitude;
  bool negative;
};

inline std::span<CS_BYTE> magnitude_bytes(const constant& record) {
  require(record.len >= 1 && record.len <= kMaxRecordLength);
  return {record.value + 1, static_cast<std::size_t>(record.len) - 1};
}

inline bool is_negative(const constant& record) {
  return record.value[0] != 0;
}

inline void unpack_record(const constant& record, Magnitude& to) {
  const auto bytes = magnitude_bytes(record);
  unpack(bytes.data(), bytes.size(), to);
}

inline void unpack_record(const constant& record, SignedMagnitude& to) {
  unpack_record(record, to.magnitude);
  to.negative = is_negative(record);
}

inline bool fits(Limbs value, const constant& record) {
  return byte_length(value) < static_cast<std::size_t>(record.len);
}

// Stores the low bytes that the record has room for, with sign.
inline void pack_record(Limbs value, bool negative, constant& record) {
  const auto bytes = magnitude_bytes(record);
  pack(value, bytes.data(), bytes.size());
  record.value[0] = negative ? 1 : 0;
}

// Stores a value that fits; otherwise leaves the record alone.
inline CS_INT pack_if_it_fits(Limbs value, bool negative, constant& record) {
  if (!fits(value, record)) return kExactOverflow;
  pack_record(value, negative, record);
  return kExactOk;
}

// A positive zero.
inline void clear_record(constant& record) {
  std::memset(record.value, 0, static_cast<std::size_t>(record.len));
}

inline CS_INT clear_for_overflow(constant& record) {
  clear_record(record);
  return kExactOverflow;
}

}  // namespace comnlib
