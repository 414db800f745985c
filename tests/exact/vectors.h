// Reading of the vectors that tools/mkvectors_numeric.py writes, and records built from their text
// byte by byte, with guard bytes behind the value that no routine may touch.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "comnlib/types.h"
#include "exact/numeaux.h"

namespace vectors {

constexpr CS_BYTE kGuard = 0xEE;

using Fields = std::vector<std::string>;

inline Fields split(std::string_view text, char at) {
  Fields fields;
  for (;;) {
    const std::size_t end = text.find(at);
    fields.emplace_back(text.substr(0, end));
    if (end == std::string_view::npos) return fields;
    text.remove_prefix(end + 1);
  }
}

inline int number(std::string_view text) {
  int value = 0;
  std::from_chars(text.data(), text.data() + text.size(), value);
  return value;
}

// Calls `check` for each line of a file; a failure names the line.
template <class Check>
void for_each_line(const std::string& name, Check check) {
  std::ifstream file(std::string(COMNLIB_VECTORS) + "/numeric_" + name + ".tsv");
  ASSERT_TRUE(file) << name;
  std::string line;
  for (int at = 1; std::getline(file, line); ++at) {
    SCOPED_TRACE(name + ":" + std::to_string(at) + ": " + line);
    check(split(line, '\t'));
  }
}

// Sign byte and big-endian magnitude of a decimal integer, in all of `bytes`.
inline void put(std::string_view decimal, CS_BYTE* bytes, std::size_t length) {
  std::fill_n(bytes, length, CS_BYTE{0});
  if (decimal.starts_with('-')) {
    bytes[0] = 1;
    decimal.remove_prefix(1);
  }
  for (const char digit : decimal) {
    unsigned carry = static_cast<unsigned>(digit - '0');
    for (std::size_t at = length; at-- > 1;) {
      carry += bytes[at] * 10u;
      bytes[at] = static_cast<CS_BYTE>(carry);
      carry >>= 8;
    }
    ASSERT_EQ(carry, 0u) << decimal;
  }
}

inline std::size_t length_of(int precision) {
  return precision <= CS_MAX_PREC ? Com__Nume_Prec_To_Len[static_cast<std::size_t>(precision)]
                                  : std::size_t{CS_MAX_NUMLEN};
}

inline CS_NUMERIC untouched() {
  CS_NUMERIC numeric;
  std::memset(&numeric, kGuard, sizeof numeric);
  return numeric;
}

// "precision,scale" or "precision,scale,value"; without a value the array holds guard bytes.
inline CS_NUMERIC numeric(std::string_view text) {
  const Fields fields = split(text, ',');
  CS_NUMERIC record = untouched();
  record.precision = static_cast<CS_BYTE>(number(fields.at(0)));
  record.scale = static_cast<CS_BYTE>(number(fields.at(1)));
  if (fields.size() > 2) put(fields[2], record.array, length_of(record.precision));
  return record;
}

// A result "code[,precision,scale[,value]]".
struct Expected {
  explicit Expected(std::string_view text) : code(number(text)), record(untouched()) {
    const std::size_t comma = text.find(',');
    if (comma != std::string_view::npos) record = numeric(text.substr(comma + 1));
  }
  int code;
  CS_NUMERIC record;
};

inline std::string hex(const void* from, std::size_t count) {
  constexpr char kDigits[] = "0123456789abcdef";
  const auto* bytes = static_cast<const CS_BYTE*>(from);
  std::string text;
  for (std::size_t at = 0; at < count; ++at)
    text += {kDigits[bytes[at] >> 4], kDigits[bytes[at] & 15]};
  return text;
}

inline std::string hex(const CS_NUMERIC& record) {
  return hex(&record, sizeof record);
}

// A working record "length,precision,scale,value" in a buffer of its own.
class Record {
 public:
  explicit Record(std::string_view text) {
    bytes_.fill(kGuard);
    const Fields fields = split(text, ',');
    record = {number(fields.at(0)), static_cast<CS_BYTE>(number(fields.at(1))),
              static_cast<CS_BYTE>(number(fields.at(2))), bytes_.data() + kMargin};
    put(fields.at(3), record.value, static_cast<std::size_t>(record.len));
  }
  Record(const Record&) = delete;
  Record& operator=(const Record&) = delete;

  std::string value() const { return hex(record.value, static_cast<std::size_t>(record.len)); }
  bool guarded() const {
    const auto* end = record.value + record.len;
    const auto guard = [](CS_BYTE byte) { return byte == kGuard; };
    return std::all_of(bytes_.data(), bytes_.data() + kMargin, guard) &&
           std::all_of(end, bytes_.data() + bytes_.size(), guard);
  }

  constant record;

 private:
  static constexpr std::size_t kMargin = 4;
  std::array<CS_BYTE, 160> bytes_;
};

// The bytes of a value at a length.
inline std::string bytes_of(std::string_view decimal, CS_INT length) {
  std::vector<CS_BYTE> bytes(static_cast<std::size_t>(length));
  put(decimal, bytes.data(), bytes.size());
  return hex(bytes.data(), bytes.size());
}

}  // namespace vectors
