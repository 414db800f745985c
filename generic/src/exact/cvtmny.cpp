// Text of money values, both ways. Formatting rounds once, on the magnitude. Reading accumulates
// the magnitude and applies the sign at the end. Only where the magnitude is that of the smallest
// value, which no positive value has, does it look at the sign before.
#include "exact/cvtmny.h"

#include <algorithm>
#include <array>
#include <limits>

#include "chars/ascii.h"
#include "chars/decimal.h"
#include "chars/iso_1.h"
#include "comnlib/money.h"
#include "diag/diag.h"
#include "exact/numeaux.h"

namespace comnlib::money {
namespace {

constexpr int kMostDigits = 19;  // of 2^63
constexpr CS_INT kDefaultDecimals = 2;

// 10^n for n from 0 to 4.
constexpr std::array<Limb, kDecimals + 1> kPowers{1, 10, 100, 1000, 10000};
static_assert(kPowers[kDecimals] == kUnitsOfOne);

CS_CHAR* put_units(Absolute value, CS_CHAR* end) {
  constexpr Limb kBillion = 1'000'000'000;
  while (value >= kBillion)
    end = put_digits(static_cast<std::uint32_t>(divide_small(value, kBillion)), 9, end);
  return put_number(static_cast<std::uint32_t>(value), end);
}

struct Layout {
  CS_INT decimals;  // 1 to 4
  bool grouped;
};

Layout layout_of(CS_INT flags) {
  const auto bits = static_cast<CS_UINT>(flags);
  const CS_UINT decimals = bits >> 8 == 0 ? kDefaultDecimals : bits >> 8;
  return {static_cast<CS_INT>(std::min<CS_UINT>(decimals, kDecimals)), (bits & 0xFF) == 1};
}

}  // namespace

CS_INT decimal_flags(CS_INT decimals) {
  return std::clamp(decimals, 0, kDecimals) << 8;
}

CS_CHAR* format_backwards(Units value, CS_CHAR* buf, CS_INT buflen, CS_INT flags) {
  const Layout layout = layout_of(flags);
  Absolute rounded = absolute(value);
  if (const int dropped = kDecimals - layout.decimals; dropped > 0) {
    const Limb power = kPowers[static_cast<std::size_t>(dropped)];
    if (rounds_up(divide_small(rounded, power), power)) ++rounded;
  }
  const Limb fraction = divide_small(rounded, kPowers[static_cast<std::size_t>(layout.decimals)]);

  CS_CHAR digits[kMostDigits];
  CS_CHAR* const digits_end = digits + kMostDigits;
  const CS_CHAR* const integer = put_units(rounded, digits_end);
  const auto count = static_cast<CS_INT>(digits_end - integer);
  const CS_INT commas = layout.grouped ? (count - 1) / 3 : 0;
  const CS_INT length = (value < 0) + count + commas + 1 + layout.decimals;
  if (length >= buflen) return nullptr;

  CS_CHAR* to = buf + buflen - 1;
  *to = '\0';
  to = put_digits(static_cast<std::uint32_t>(fraction), layout.decimals, to);
  *--to = '.';
  for (CS_INT done = 0; done < count; ++done) {
    if (layout.grouped && done != 0 && done % 3 == 0) *--to = ',';
    *--to = integer[count - 1 - done];
  }
  if (value < 0) *--to = '-';
  return to;
}

namespace {

// Reads a text character by character.
class Characters {
 public:
  Characters(std::basic_string_view<CS_CHAR> text, const char_attrib& charset)
      : at_(reinterpret_cast<const CS_BYTE*>(text.data())),
        end_(at_ + text.size()),
        charset_(charset) {}

  bool done() const { return at_ == end_; }
  bool is_space() const { return has(&comn_isspace, ~0); }
  // The built-in table has no lexical class for currency signs.
  bool is_currency() const {
    if (charset_.cs_type_map == ISO_1_type_map) return !done() && latin1::is_currency(*at_);
    return has(&comn_get_lex, COMN_LEX_CURRENCY);
  }

 protected:
  using Query = CS_INT (*)(const char_attrib*, const CS_BYTE*);

  // The tables may take the last byte for the first of two, whatever its width.
  bool has(Query query, CS_INT mask) const {
    if (done()) return false;
    const CS_BYTE pair[] = {*at_, end_ - at_ > 1 ? at_[1] : CS_BYTE{0}};
    return (query(&charset_, pair) & mask) != 0;
  }

  const CS_BYTE* at_;
  const CS_BYTE* end_;
  const char_attrib& charset_;
};

// For sets without widths: each byte is a character.
class SingleByteText : public Characters {
 public:
  using Characters::Characters;

  int ascii() const { return done() ? 0 : *at_; }
  void advance() { ++at_; }
};

// For multibyte sets. A character cut off by the end of the text is neither space nor currency
// sign.
class MultibyteText : public Characters {
 public:
  MultibyteText(std::basic_string_view<CS_CHAR> text, const char_attrib& charset)
      : Characters(text, charset) {
    measure();
  }

  // A single byte as it is, a longer character as ASCII, 0 when it has no such form.
  int ascii() const { return ascii_; }
  bool is_space() const { return !cut_ && Characters::is_space(); }
  bool is_currency() const { return !cut_ && Characters::is_currency(); }
  void advance() {
    at_ += width_;
    measure();
  }

 private:
  void measure() {
    ascii_ = 0;
    width_ = 0;
    if (done()) return;
    const auto left = static_cast<CS_INT>(end_ - at_);
    width_ = std::max(comn_char_width(&charset_, at_), CS_INT{1});
    if (width_ == 1) {
      ascii_ = *at_;
    } else if (width_ <= left) {
      ascii_ = comn_to_ascii(&charset_, at_);
    } else {
      width_ = left;
      cut_ = true;
    }
  }

  CS_INT width_;
  int ascii_;
  bool cut_ = false;
};

template <class Text>
class AmountReader {
 public:
  AmountReader(std::basic_string_view<CS_CHAR> text, const char_attrib& charset)
      : text_(text, charset) {}

  Parsed run() {
    CS_INT status = read_prefix();
    if (status == kExactOk) status = read_integer();
    if (status == kExactOk) status = read_fraction();
    if (status == kExactOk) status = read_tail();
    if (status == kExactOk) return amount();
    return {signed_value(value_, false), status};
  }

 private:
  CS_INT read_prefix() {
    bool sign = false;
    bool currency = false;
    for (; !text_.done() && !at_digit() && text_.ascii() != '.'; text_.advance()) {
      if (text_.ascii() == ' ') continue;
      bool& seen = text_.ascii() == '+' || text_.ascii() == '-' ? sign : currency;
      if (&seen == &currency && !text_.is_currency()) break;
      if (seen) return kExactSyntax;
      seen = true;
      if (text_.ascii() == '-') negative_ = true;
    }
    return kExactOk;
  }

  CS_INT read_integer() {
    constexpr int kGroup = 3;
    bool grouped = false;
    int group = 0;
    bool digits = false;
    for (; !text_.done(); text_.advance()) {
      if (at_digit()) {
        if (!take_digit()) return kExactOverflow;
        digits = true;
        ++group;
      } else if (text_.ascii() == ',' && digits && (!grouped || group == kGroup)) {
        grouped = true;
        group = 0;
      } else {
        break;
      }
    }
    return kExactOk;
  }

  CS_INT read_fraction() {
    if (text_.ascii() != '.') return kExactOk;
    for (text_.advance(); at_digit(); text_.advance(), ++decimals_) {
      if (decimals_ < kDecimals) {
        if (!take_digit()) return kExactOverflow;
      } else if (decimals_ == kDecimals) {
        if (value_ == kSmallestAbsolute && digit() != 0) return kExactOverflow;
        value_ += rounds_up(digit(), 10);
      }
    }
    return kExactOk;
  }

  CS_INT read_tail() {
    for (; !text_.done(); text_.advance()) {
      if (!text_.is_space()) return kExactSyntax;
    }
    return kExactOk;
  }

  Parsed amount() {
    if (decimals_ < kDecimals && !scale(kPowers[static_cast<std::size_t>(kDecimals - decimals_)])) {
      return {signed_value(value_, false), kExactOverflow};
    }
    const std::optional<Units> value = checked_value(value_, negative_);
    if (!value) return {signed_value(value_, false), kExactOverflow};
    return {*value, kExactOk};
  }

  bool at_digit() const { return text_.ascii() >= '0' && text_.ascii() <= '9'; }
  Limb digit() const { return static_cast<Limb>(text_.ascii() - '0'); }

  // A negative value may reach 2^63 this way.
  bool take_digit() {
    constexpr Absolute kTenth = kSmallestAbsolute / 10;
    if (value_ > kTenth) return false;
    const Absolute next = value_ * 10 + digit();
    if (next > kSmallestAbsolute - (negative_ ? 0 : 1)) return false;
    value_ = next;
    return true;
  }

  // No product reaches bit 63, negative or not.
  bool scale(Limb factor) {
    Absolute scaled;
    if (__builtin_mul_overflow(value_, factor, &scaled) || scaled >= kSmallestAbsolute)
      return false;
    value_ = scaled;
    return true;
  }

  Text text_;
  Absolute value_ = 0;
  bool negative_ = false;
  int decimals_ = 0;
};

// The amount of a text of the usual form: a sign, digits, a point and decimals, any of which may be
// missing. Nothing for other texts, and for those that need a check for overflow.
std::optional<Units> read_plain(std::basic_string_view<CS_CHAR> text) {
  constexpr std::ptrdiff_t kSafeDigits = std::numeric_limits<Units>::digits10 - kDecimals;
  const CS_CHAR* at = text.data();
  const CS_CHAR* const end = at + text.size();
  Absolute value = 0;
  const auto take_digits = [&] {
    const CS_CHAR* const first = at;
    for (; at != end && is_digit(*at); ++at) value = value * 10 + static_cast<Absolute>(*at - '0');
    return at - first;
  };

  bool negative = false;
  if (at != end && (*at == '-' || *at == '+')) negative = *at++ == '-';
  if (take_digits() > kSafeDigits) return std::nullopt;
  std::ptrdiff_t decimals = 0;
  if (at != end && *at == '.') {
    ++at;
    decimals = take_digits();
  }
  if (at != end || decimals > kDecimals) return std::nullopt;
  value *= kPowers[static_cast<std::size_t>(kDecimals - decimals)];
  return signed_value(value, negative);
}

}  // namespace

Parsed parse(std::basic_string_view<CS_CHAR> text, const char_attrib* charset) {
  const char_attrib& set = charset == nullptr ? *com_get_charattrib() : *charset;
  if (set.cs_width_map != nullptr) return AmountReader<MultibyteText>(text, set).run();
  if (const auto amount = read_plain(text)) return {*amount, kExactOk};
  return AmountReader<SingleByteText>(text, set).run();
}

}  // namespace comnlib::money

using namespace comnlib;
using namespace comnlib::money;

CS_CHAR* com_cvtmnytochar(const CS_MONEY* m, CS_CHAR* buf, CS_INT buflen, CS_INT flags) {
  check_pointer(m);
  check_pointer(buf);
  require(buflen >= 0);
  return format_backwards(units(*m), buf, buflen, flags);
}

CS_CHAR* com_cvtmny4tochar(const CS_MONEY4* m4, CS_CHAR* buf, CS_INT buflen, CS_INT flags) {
  check_pointer(m4);
  check_pointer(buf);
  require(buflen >= 0);
  return format_backwards(units(*m4), buf, buflen, flags);
}

CS_CHAR* com_precmnytochar(const CS_MONEY* m, CS_CHAR* buf, CS_INT buflen, CS_INT flags,
                           CS_INT decimals) {
  return com_cvtmnytochar(m, buf, buflen, (flags & 0xFF) | decimal_flags(decimals));
}
