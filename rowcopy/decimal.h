// Decimal numbers in text, read without the library in order to check the library's results.
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

// magnitude / 10^scale, as it is stored
struct Exact {
  std::uint64_t magnitude = 0;
  int scale = 0;
  bool negative = false;
  bool wide = false;  // the magnitude does not fit
};

// Whether a text is the number in plain digits, with a sign and a point at most. False does not
// mean that it is another number.
bool is_plain_text_of(const Exact& number, std::string_view text);

// Blanks, currency and grouping signs do not matter.
Decimal read_decimal(std::string_view text);

bool same_number(const Decimal& a, const Exact& b);

// Whether two texts are the same number, however many digits they have.
bool same_digits(std::string_view a, std::string_view b);

// Whether `number` differs from what `text` says, already read as `said`, by at most that share.
bool is_near(const Decimal& said, std::string_view text, double number, double tolerance);

// Whether a number has at most that many binary digits from its first 1 to its last. A wide number
// has not, whatever it is.
bool is_binary(const Decimal& number, int digits);

}  // namespace rowcopy
