// Texts in another character set.
#pragma once

#include <gtest/gtest.h>

#include <span>
#include <string>
#include <string_view>

#include "intl/xlate.h"

namespace translated {

constexpr comnlib::Encoding kUnicode{nullptr, true};

// A character in UTF-16, by its bits.
inline std::string utf16(char32_t code) {
  std::u16string units(1, static_cast<char16_t>(code));
  if (code >= 0x10000) {
    units = {static_cast<char16_t>(0xD7C0 + (code >> 10)),
             static_cast<char16_t>(0xDC00 | (code & 0x3FF))};
  }
  return {reinterpret_cast<const char*>(units.data()), 2 * units.size()};
}

struct Output {
  CS_RETCODE code;
  std::string bytes;
};

inline Output translate(CS_CONTEXT* context, comnlib::Encoding from, comnlib::Encoding to,
                        std::string_view text, std::size_t room) {
  std::string out(room + 1, '\xA5');
  const auto [code, written] = comnlib::translate(
      context, from, to, {reinterpret_cast<const CS_BYTE*>(text.data()), text.size()},
      {reinterpret_cast<CS_BYTE*>(out.data()), room});
  EXPECT_LE(written, room);
  EXPECT_EQ('\xA5', out[room]);
  return {code, out.substr(0, written)};
}

}  // namespace translated
