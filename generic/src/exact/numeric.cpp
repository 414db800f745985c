// Conversions of exact numerics. Text is read and written through limbs, as many digits at a time
// as a limb holds.
#include "exact/numeric.h"

#include <emmintrin.h>

#include <charconv>
#include <limits>
#include <optional>

#include "chars/ascii.h"
#include "chars/short_bytes.h"
#include "exact/digits.h"
#include "exact/kernel.h"
#include "exact/mnymath.h"
#include "exact/word_text.h"

namespace comnlib {
namespace {

// Stores an integer that counts 10^-from_scale.
CS_INT store_integer(std::int64_t value, int from_scale, constant& dest) {
  SignedMagnitude integer;
  integer.negative = value < 0;
  integer.magnitude.assign(money::absolute(value));
  return pack_at_scale(integer, dest.scale - from_scale, dest);
}

// --- from text

// A number in a text: its digits around the point, and its exponent.
struct Literal {
  bool negative = false;
  std::string_view integer;
  std::string_view fraction;
  std::int64_t exponent = 0;
};

class LiteralScanner {
 public:
  explicit LiteralScanner(std::string_view text) : rest_(text) {}

  std::optional<Literal> scan() {
    Literal literal;
    skip<is_blank>();
    literal.negative = accept_sign();
    literal.integer = take_digits();
    if (accept('.')) literal.fraction = take_digits();
    if (literal.integer.empty() && literal.fraction.empty()) return std::nullopt;
    if (accept('e') || accept('E')) {
      const bool negative = accept_sign();
      const std::string_view digits = take_digits();
      if (digits.empty()) return std::nullopt;
      literal.exponent = negative ? -exponent_of(digits) : exponent_of(digits);
    }
    skip<is_white_space>();
    if (!rest_.empty()) return std::nullopt;
    return literal;
  }

 private:
  // So large that no length of text can make up for it.
  static constexpr std::int64_t kMaxExponent = std::int64_t{1} << 40;

  static std::int64_t exponent_of(std::string_view digits) {
    std::int64_t value = 0;
    for (const char c : digits) value = std::min(value * 10 + (c - '0'), kMaxExponent);
    return value;
  }

  bool accept(char c) {
    if (!rest_.starts_with(c)) return false;
    rest_.remove_prefix(1);
    return true;
  }

  bool accept_sign() {
    if (accept('-')) return true;
    accept('+');
    return false;
  }

  // Digits are looked for sixteen at a time.
  std::string_view take_digits() {
    std::size_t count = 0;
    for (; rest_.size() - count >= 16; count += 16) {
      const __m128i characters =
          _mm_loadu_si128(reinterpret_cast<const __m128i*>(rest_.data() + count));
      const __m128i values = _mm_sub_epi8(characters, _mm_set1_epi8('0'));
      const __m128i digits = _mm_cmpeq_epi8(_mm_min_epu8(values, _mm_set1_epi8(9)), values);
      const auto others = ~static_cast<unsigned>(_mm_movemask_epi8(digits)) & 0xFFFFU;
      if (others != 0) return split(count + static_cast<std::size_t>(std::countr_zero(others)));
    }
    while (count < rest_.size() && is_digit(rest_[count])) ++count;
    return split(count);
  }

  template <auto belongs>
  void skip() {
    std::size_t count = 0;
    while (count < rest_.size() && belongs(rest_[count])) ++count;
    rest_.remove_prefix(count);
  }

  std::string_view split(std::size_t count) {
    const std::string_view taken = rest_.substr(0, count);
    rest_.remove_prefix(count);
    return taken;
  }

  std::string_view rest_;
};

// The number that eight digits make: pairs, then fours, then all of them.
std::uint32_t eight_digits(const char* text) {
  const __m128i characters = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(text));
  const __m128i digits =
      _mm_unpacklo_epi8(_mm_sub_epi8(characters, _mm_set1_epi8('0')), _mm_setzero_si128());
  const __m128i pairs = _mm_madd_epi16(digits, _mm_set1_epi32(1 << 16 | 10));
  const __m128i fours =
      _mm_madd_epi16(_mm_packs_epi32(pairs, pairs), _mm_set1_epi32(1 << 16 | 100));
  const auto high = static_cast<std::uint32_t>(_mm_cvtsi128_si32(fours));
  const auto low = static_cast<std::uint32_t>(_mm_cvtsi128_si32(_mm_srli_si128(fours, 4)));
  return high * 10'000 + low;
}

// The digits of a literal in order, on both sides of the point. The literal must outlive the
// object.
class DigitRun {
 public:
  explicit DigitRun(const Literal& literal)
      : integer_(literal.integer), fraction_(literal.fraction) {}

  std::size_t size() const { return integer_.size() + fraction_.size(); }
  char operator[](std::size_t at) const {
    return at < integer_.size() ? integer_[at] : fraction_[at - integer_.size()];
  }

  std::size_t leading_zeros() const {
    std::size_t count = std::min(integer_.find_first_not_of('0'), integer_.size());
    if (count == integer_.size())
      count += std::min(fraction_.find_first_not_of('0'), fraction_.size());
    return count;
  }

  bool all_zero_from(std::size_t at) const {
    return (at >= integer_.size() ||
            integer_.find_first_not_of('0', at) == std::string_view::npos) &&
           fraction_.find_first_not_of('0', at - std::min(at, integer_.size())) ==
               std::string_view::npos;
  }

  // The number that the digits from `first` up to `last` make.
  void accumulate(std::size_t first, std::size_t last, Magnitude& value) const {
    const std::size_t border = integer_.size();
    if (first < border) append(integer_.substr(first, std::min(last, border) - first), value);
    if (last > border) {
      const std::size_t from = std::max(first, border) - border;
      append(fraction_.substr(from, last - border - from), value);
    }
  }

 private:
  static void append(std::string_view digits, Magnitude& value) {
    while (!digits.empty()) {
      const auto count = std::min<std::size_t>(digits.size(), kLimbDigits);
      Limb chunk = 0;
      std::size_t at = 0;
      for (; at + 8 <= count; at += 8)
        chunk = chunk * 100'000'000 + eight_digits(digits.data() + at);
      for (; at < count; ++at) chunk = chunk * 10 + static_cast<Limb>(digits[at] - '0');
      multiply_add(value, power_of_ten(static_cast<int>(count))[0], chunk);
      digits.remove_prefix(count);
    }
  }

  const std::string_view& integer_;
  const std::string_view& fraction_;
};

// Decimal digits of a magnitude; 78 for all larger numbers.
int decimal_digits(Limbs value) {
  int digits = 0;
  while (digits <= CS_MAX_PREC && compare(value, power_of_ten(digits)) >= 0) ++digits;
  return digits;
}

// The value of a literal at a scale, and what was dropped from it.
struct Scaled {
  SignedMagnitude number;
  bool fits = true;
  bool truncated = false;
};

// More digits than any destination can take.
constexpr std::size_t kTooManyDigits = 3 * kMaxRecordLength;

void scale_literal(const Literal& literal, int scale, bool rounding, Scaled& to) {
  const DigitRun run(literal);
  const auto decimals = static_cast<std::int64_t>(literal.fraction.size()) - literal.exponent;
  const std::int64_t surplus = std::max<std::int64_t>(decimals - scale, 0);
  const auto count = static_cast<std::int64_t>(run.size());
  const auto kept = static_cast<std::size_t>(std::max<std::int64_t>(count - surplus, 0));
  const std::size_t first = std::min(run.leading_zeros(), kept);

  to.number.negative = literal.negative;
  to.fits = kept - first < kTooManyDigits;
  if (!to.fits) return;
  Magnitude& value = to.number.magnitude;
  run.accumulate(first, kept, value);
  if (surplus > 0) {
    // When there are more decimals than digits, the first dropped digit is a zero that was not
    // written.
    if (rounding && surplus <= count && rounds_up(static_cast<Limb>(run[kept] - '0'), 10))
      multiply_add(value, 1, 1);
    to.truncated = !rounding && !run.all_zero_from(kept);
  } else if (decimals < scale && !value.is_zero()) {
    to.fits = scale - decimals <= CS_MAX_SCALE;
    if (to.fits) scale_up(value, static_cast<int>(scale - decimals));
  }
}

int scale_of(const Literal& literal) {
  const auto decimals = static_cast<std::int64_t>(literal.fraction.size()) - literal.exponent;
  return static_cast<int>(std::clamp<std::int64_t>(decimals, 0, CS_MAX_SCALE));
}

// Every digit that was written counts, dropped ones included, up to the most that a numeric can
// have. An exponent or the scale may make the value need more.
int precision_of(const Literal& literal, int scale, Limbs value) {
  const DigitRun run(literal);
  const auto written = std::min<std::size_t>(run.size() - run.leading_zeros(), CS_MAX_PREC);
  return std::max({1, scale, static_cast<int>(written), decimal_digits(value)});
}

CS_INT parse(std::string_view text, constant& dest, bool rounding) {
  const std::optional<Literal> literal = LiteralScanner(text).scan();
  if (!literal) return kExactSyntax;
  const int scale = dest.scale == kFromText ? scale_of(*literal) : dest.scale;
  Scaled scaled;
  scale_literal(*literal, scale, rounding, scaled);
  const Magnitude& value = scaled.number.magnitude;
  if (!scaled.fits || !fits(value, dest)) return clear_for_overflow(dest);
  const int precision =
      dest.prec == kFromText ? precision_of(*literal, scale, value) : int{dest.prec};
  if (precision > CS_MAX_PREC || exceeds(value, precision)) return clear_for_overflow(dest);

  dest.prec = static_cast<CS_BYTE>(precision);
  dest.scale = static_cast<CS_BYTE>(scale);
  pack_record(value, scaled.number.negative, dest);
  return scaled.truncated ? kExactTruncated : kExactOk;
}

// --- to doubles

// Powers of ten that a double holds exactly.
constexpr std::array<CS_FLOAT, 23> kExactPowers = [] {
  std::array<CS_FLOAT, 23> powers{1.0};
  for (std::size_t n = 1; n < powers.size(); ++n) powers[n] = powers[n - 1] * 10;
  return powers;
}();
constexpr std::uint64_t kExactIntegers = std::uint64_t{1} << 53;

// With both operands exact, the processor's division rounds correctly.
std::optional<CS_FLOAT> divide_exactly(Limbs magnitude, CS_BYTE scale) {
  const std::optional<std::uint64_t> value = to_unsigned(magnitude);
  if (!value || *value > kExactIntegers || scale >= kExactPowers.size()) return std::nullopt;
  return static_cast<CS_FLOAT>(*value) / kExactPowers[scale];
}

// --- to integers

// The signed 64-bit value of a number; false when it is outside that range.
bool as_signed(const SignedMagnitude& number, std::int64_t& value) {
  const std::optional<std::uint64_t> absolute = to_unsigned(number.magnitude);
  if (!absolute) return false;
  const std::optional<money::Units> checked = money::checked_value(*absolute, number.negative);
  if (checked) value = *checked;
  return checked.has_value();
}

// Room for the text of any record: a sign, "0.", and digits up to the largest scale.
constexpr std::size_t kMaxText = 3 * kMaxRecordLength + 256;

[[gnu::always_inline]] inline char* append(char* to, const char* from, std::size_t count) {
  // What is left is copied without a call.
  for (; count > 32; count -= 16, to += 16, from += 16) std::memcpy(to, from, 16);
  copy_bytes(reinterpret_cast<CS_BYTE*>(to), reinterpret_cast<const CS_BYTE*>(from), count);
  return to + count;
}

// Writes a text that fits and returns its length; writes nothing and returns 0 otherwise.
[[gnu::always_inline]] inline std::size_t write_text(const constant& src, std::span<char> buffer) {
  Magnitude magnitude;
  unpack_record(src, magnitude);
  const DecimalDigits digits(magnitude);
  const std::size_t scale = src.scale;
  const std::size_t decimals = std::min(digits.size(), scale);
  const std::size_t integers = digits.size() - decimals;
  const std::size_t length =
      (is_negative(src) ? 1 : 0) + std::max<std::size_t>(integers, 1) + (scale > 0 ? 1 + scale : 0);
  if (length > buffer.size()) return 0;

  char* to = buffer.data();
  if (is_negative(src)) *to++ = '-';
  if (integers == 0) *to++ = '0';
  to = append(to, digits.begin(), integers);
  if (scale > 0) {
    *to++ = '.';
    if (decimals < scale) to = std::fill_n(to, scale - decimals, '0');
    append(to, digits.begin() + integers, decimals);
  }
  return length;
}

}  // namespace

CS_INT rescale(const constant& src, constant& dest) {
  SignedMagnitude number;
  unpack_record(src, number);
  const CS_INT status = rescale(number.magnitude, dest.scale - src.scale, dest.prec,
                                static_cast<std::size_t>(dest.len));
  if (status == kExactOverflow) return clear_for_overflow(dest);
  pack_record(number.magnitude, number.negative, dest);
  return status;
}

CS_INT to_integer(const constant& src, std::int64_t& value) {
  SignedMagnitude number;
  unpack_record(src, number);
  const bool fraction = scale_down(number.magnitude, src.scale);
  using Limits = std::numeric_limits<std::int64_t>;
  const std::int64_t limit = number.negative ? Limits::min() : Limits::max();
  if (as_signed(number, value) && !(fraction && value == limit)) return kExactOk;
  value = limit;
  return kExactOverflow;
}

CS_INT parse_numeric(std::string_view text, CS_BYTE precision, CS_BYTE scale, bool rounding,
                     CS_NUMERIC& dest) {
  if (precision != kFromText && scale != kFromText) {
    constant record{Com__Nume_Prec_To_Len[precision], precision, scale, dest.array};
    const CS_INT status = parse(text, record, rounding);
    if (status == kExactSyntax) return status;
    dest.precision = precision;
    dest.scale = scale;
    return status;
  }
  std::array<CS_BYTE, CS_MAX_NUMLEN> array;
  const CS_INT length =
      precision <= CS_MAX_PREC ? CS_INT{Com__Nume_Prec_To_Len[precision]} : CS_INT{CS_MAX_NUMLEN};
  constant record{length, precision, scale, array.data()};
  const CS_INT status = parse(text, record, rounding);
  if (status == kExactSyntax || status == kExactOverflow) return status;
  dest.precision = record.prec;
  dest.scale = record.scale;
  constant front = record_of(dest);
  SignedMagnitude number;
  unpack_record(record, number);
  pack_record(number.magnitude, number.negative, front);
  return status;
}

std::string_view long_text(const CS_NUMERIC& value, NumericBuffer& buffer) {
  const std::size_t length = write_text(record_of(value), buffer);
  require(length != 0);
  return {buffer.data(), length};
}

}  // namespace comnlib

using namespace comnlib;

CS_INT com__longtoexctnume(CS_INT value, constant* dest) {
  return store_integer(value, 0, *dest);
}

CS_INT com__longlongtoexctnume(std::int64_t value, constant* dest) {
  return store_integer(value, 0, *dest);
}

CS_INT com__doubletoexctnume(CS_FLOAT value, constant* dest) {
  char text[32];
  const auto end =
      std::to_chars(text, text + sizeof text, value, std::chars_format::general, 17).ptr;
  const CS_INT status = parse({text, end}, *dest, true);
  return status == kExactTruncated ? kExactOk : status;
}

CS_INT com__subexctnumetoflt8(const constant* src, CS_FLOAT* dest) {
  Magnitude magnitude;
  unpack_record(*src, magnitude);
  if (const auto quotient = divide_exactly(magnitude, src->scale)) {
    *dest = is_negative(*src) ? -*quotient : *quotient;
    return kExactOk;
  }
  char text[kMaxText];
  CS_INT length = 0;
  if (com__subexctnumetochar(src, text, sizeof text, &length) != kExactOk) return kExactOverflow;
  const auto result = std::from_chars(text, text + length, *dest);
  return result.ec == std::errc{} ? kExactOk : kExactRange;
}

CS_INT com__exctnumetomny8(const constant* src, CS_MONEY* dest) {
  SignedMagnitude number;
  unpack_record(*src, number);
  if (src->scale <= money::kDecimals) {
    scale_up(number.magnitude, money::kDecimals - src->scale);
  } else {
    static_cast<void>(scale_down(number.magnitude, src->scale - money::kDecimals));
  }
  std::int64_t units = 0;
  if (!as_signed(number, units)) return kExactOverflow;
  *dest = money::record(units);
  return kExactOk;
}

CS_INT com__mny8toexctnume(const CS_MONEY* src, constant* dest) {
  return store_integer(money::units(*src), money::kDecimals, *dest);
}

CS_INT com__subexctnumetochar(const constant* src, CS_CHAR* buf, CS_INT buflen, CS_INT* outlen) {
  *outlen = 0;
  if (buflen < 0) return kExactOverflow;
  const std::size_t length = write_text(*src, {buf, static_cast<std::size_t>(buflen)});
  if (length == 0) return kExactOverflow;
  *outlen = static_cast<CS_INT>(length);
  if (*outlen < buflen) buf[length] = '\0';
  return kExactOk;
}

CS_INT com__subchartoexctnume(const CS_CHAR* text, CS_INT length, constant* dest, CS_INT rounding) {
  require(length >= 0);
  return parse({text, static_cast<std::size_t>(length)}, *dest, rounding == 1);
}
