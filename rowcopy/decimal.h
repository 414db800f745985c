// Decimal numbers as texts say them, read without the library to check what it made of them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace rowcopy {

// magnitude * 10^exponent
struct Decimal {
  std::uint64_t magnitude = 0;
  int exponent = 0;
  bool negative = false;
  bool has_digits = false;
  bool wide = false;     // the magnitude does not fit
  bool foreign = false;  // characters that belong to no decimal number
};

// The number of a text of a sign, digits and a point, at most 18 characters; false, with `number`
// unspecified, for every other text.
bool read_plain_decimal(std::string_view text, Decimal& number);

// Blanks, currency and grouping signs do not matter.
Decimal read_decimal(std::string_view text);

bool same_number(const Decimal& a, const Decimal& b);

// Whether two texts say the same number, with any number of digits.
bool same_digits(std::string_view a, std::string_view b);

// Whether `number` is what `text` says, which was read as `said`, but for that share of it.
bool is_near(const Decimal& said, std::string_view text, double number, double tolerance);

// Whether a number has at most that many binary digits from its first 1 to its last. A wide number
// has not, whatever it is.
bool is_binary(const Decimal& number, int digits);

}  // namespace rowcopy
