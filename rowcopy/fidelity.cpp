#include "fidelity.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstring>

#include "date_words.h"
#include "decimal.h"
#include "special.h"

namespace rowcopy {
namespace {

template <class T>
T load(const char* value) {
  T loaded{};
  std::memcpy(&loaded, value, sizeof loaded);
  return loaded;
}

Exact whole(std::int64_t number, int scale) {
  const auto bits = static_cast<std::uint64_t>(number);
  return {number < 0 ? 0 - bits : bits, scale, number < 0, false};
}

Exact numeric(const char* value) {
  const auto* const bytes = reinterpret_cast<const unsigned char*>(value);
  const unsigned char* const array = bytes + offsetof(CS_NUMERIC, array);
  const CS_INT length = comn_num_getlen(bytes[offsetof(CS_NUMERIC, precision)]);
  Exact number{0, bytes[offsetof(CS_NUMERIC, scale)], array[0] != 0, false};
  for (CS_INT at = 1; at < length; ++at) {
    number.wide |= number.magnitude >> 56 != 0;
    number.magnitude = number.magnitude << 8 | array[at];
  }
  return number;
}

// The stored number of an exact type.
template <CS_INT kCode>
Exact stored_number(const char* value) {
  constexpr int kMoneyScale = 4;
  if constexpr (kCode == CS_TINYINT_TYPE) {
    return whole(load<CS_TINYINT>(value), 0);
  } else if constexpr (kCode == CS_SMALLINT_TYPE) {
    return whole(load<CS_SMALLINT>(value), 0);
  } else if constexpr (kCode == CS_INT_TYPE) {
    return whole(load<CS_INT>(value), 0);
  } else if constexpr (kCode == CS_MONEY_TYPE) {
    const auto money = load<CS_MONEY>(value);
    return whole(static_cast<std::int64_t>(money.mnyhigh) * (std::int64_t{1} << 32) + money.mnylow,
                 kMoneyScale);
  } else if constexpr (kCode == CS_MONEY4_TYPE) {
    return whole(load<CS_MONEY4>(value).mny4, kMoneyScale);
  } else {
    return numeric(value);
  }
}

// Calls `call` with the code of an exact type as a constant.
template <class Call>
auto with_exact_code(CS_INT code, Call call) {
  switch (code) {
    case CS_TINYINT_TYPE:
    case CS_BIT_TYPE:
      return call.template operator()<CS_TINYINT_TYPE>();
    case CS_SMALLINT_TYPE:
      return call.template operator()<CS_SMALLINT_TYPE>();
    case CS_INT_TYPE:
      return call.template operator()<CS_INT_TYPE>();
    case CS_MONEY_TYPE:
      return call.template operator()<CS_MONEY_TYPE>();
    case CS_MONEY4_TYPE:
      return call.template operator()<CS_MONEY4_TYPE>();
    default:
      return call.template operator()<CS_NUMERIC_TYPE>();
  }
}

// A double has at most 767 significant digits.
std::string all_digits(double number) {
  std::array<char, 800> text;
  const auto end = std::to_chars(text.data(), text.data() + text.size(), number,
                                 std::chars_format::scientific, 767);
  return {text.data(), end.ptr};
}

// A field's hexadecimal digits without their prefix.
std::string_view bare_digits(std::string_view text) {
  if (text.starts_with("0x") || text.starts_with("0X")) text.remove_prefix(2);
  return text;
}

constexpr int hex_value(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

bool same_bytes(std::string_view digits, std::string_view bytes) {
  const std::size_t odd = digits.size() % 2;
  if ((digits.size() + odd) / 2 != bytes.size()) return false;
  for (std::size_t at = 0; at < digits.size(); ++at) {
    const auto byte = static_cast<unsigned char>(bytes[(at + odd) / 2]);
    if (hex_value(digits[at]) != ((at + odd) % 2 == 0 ? byte >> 4 : byte & 0xF)) return false;
  }
  return odd == 0 || static_cast<unsigned char>(bytes[0]) >> 4 == 0;
}

// The bytes of a character or binary value, without the count of a varying one.
std::string_view data_of(CS_INT code, const char* value, CS_INT length) {
  if (!is_varying(code)) return {value, static_cast<std::size_t>(length)};
  return {value + sizeof(CS_SMALLINT), static_cast<CS_USHORT>(load<CS_SMALLINT>(value))};
}

bool is_ascii(std::string_view text) {
  return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// Full-width forms are those of ASCII, no other character is part of a number.
char plain_character(CS_UNICHAR unit) {
  constexpr CS_UNICHAR kFirstFullWidth = 0xFF01;
  constexpr CS_UNICHAR kLastFullWidth = 0xFF5E;
  if (unit < 0x80) return static_cast<char>(unit);
  if (unit < kFirstFullWidth || unit > kLastFullWidth) return ' ';
  return static_cast<char>(unit - kFirstFullWidth + '!');
}

bool same_charsets(Locales locales) {
  return locales.from == locales.to ||
         (locales.from != nullptr && locales.to != nullptr &&
          com_intl_loccmp(COM_LC_CTYPE, COM_LOCCMP_CHARSET, locales.from, locales.to) == 0);
}

}  // namespace

CS_DATAFMT text_format(CS_INT code, CS_LOCALE* locale) {
  CS_DATAFMT format = format_of(kText, locale);
  format.datatype = code;
  return format;
}

Fidelity::Fidelity(CS_CONTEXT* context, const Datatype& type, Locales locales)
    : type_(type),
      same_charset_(same_charsets(locales)),
      is_plain_text_(same_charset_ && type.kind == Kind::kText && !is_varying(type.code) &&
                     type.code != CS_UNICHAR_TYPE),
      to_unicode_(context, text_format(CS_CHAR_TYPE, locales.from),
                  text_format(CS_UNICHAR_TYPE, locales.from)),
      back_(context, format_of(type, locales.to), text_format(CS_CHAR_TYPE, locales.from)) {}

std::size_t Fidelity::compare(const FieldColumn& fields, Values values, const Results& results,
                              std::vector<Verdict>& verdicts) {
  const auto each = [&](auto compare_one) {
    std::size_t unlike = 0;
    const char* value = values.first;
    for (std::size_t row = 0; row < fields.count; ++row, value += values.stride) {
      const CS_INT length = fields.lengths[row];
      Verdict verdict = Verdict::kSame;
      if (length >= 0 && results.codes[row] == CS_SUCCEED)
        verdict = compare_one(
            std::string_view(fields.text + fields.offsets[row], static_cast<std::size_t>(length)),
            value, results.lengths[row], row);
      verdicts[row] = verdict;
      unlike += verdict == Verdict::kSame ? 0 : 1;
    }
    return unlike;
  };
  if (is_plain_text_)
    return each([this](std::string_view field, const char* value, CS_INT length, std::size_t) {
      return compare_plain_text(field, value, length);
    });
  switch (type_.kind) {
    case Kind::kInteger:
    case Kind::kBit:
    case Kind::kNumeric:
    case Kind::kMoney:
      return with_exact_code(type_.code, [&]<CS_INT kCode>() {
        return each([this](std::string_view field, const char* value, CS_INT length, std::size_t) {
          return compare_exact<kCode>(field, value, length);
        });
      });
    case Kind::kDate:
      iso_dates_.resize(verdicts.size());
      return each([this](std::string_view field, const char* value, CS_INT, std::size_t row) {
        return compare_dates(field, value, iso_dates_[row]);
      });
    default:
      return each([this](std::string_view field, const char* value, CS_INT length, std::size_t) {
        return compare(field, value, length);
      });
  }
}

Verdict Fidelity::compare(std::string_view field, const char* value, CS_INT length) {
  IsoDate date;
  switch (type_.kind) {
    case Kind::kText:
      return compare_text(field, value, length);
    case Kind::kBinary:
      return same_bytes(bare_digits(plain(field)), data_of(type_.code, value, length))
                 ? Verdict::kSame
                 : Verdict::kChanged;
    case Kind::kDate:
      return compare_dates(field, value, date);
    case Kind::kFloat:
      return compare_float(field, value);
    default:
      return with_exact_code(
          type_.code, [&]<CS_INT kCode>() { return compare_exact<kCode>(field, value, length); });
  }
}

// Compares the bytes of the field with those of the value.
[[gnu::always_inline]] inline Verdict Fidelity::compare_plain_text(std::string_view field,
                                                                   const char* value,
                                                                   CS_INT length) const {
  const bool same = static_cast<std::size_t>(length) == field.size() &&
                    same_bytes(value, field.data(), field.size());
  return same ? Verdict::kSame : Verdict::kChanged;
}

Verdict Fidelity::compare_dates(std::string_view field, const char* value, IsoDate& text) {
  const CS_DATETIME date = widen_date(type_.code, value);
  text = iso_date(date);
  const auto verdict = compare_iso_date(field, text);
  return verdict ? *verdict : compare_date(plain(field), date);
}

// The number that a text says. A text with other characters than ASCII is replaced by its plain
// form.
Decimal Fidelity::read_number(std::string_view& text) {
  const Decimal said = read_decimal(text);
  if (!said.foreign) return said;
  text = plain(text);
  return read_decimal(text);
}

Verdict Fidelity::compare_float(std::string_view text, const char* value) {
  const Decimal said = read_number(text);
  const bool narrow = type_.code == CS_REAL_TYPE;
  const double stored = narrow ? load<CS_REAL>(value) : load<CS_FLOAT>(value);
  if (!std::isfinite(stored))
    return text.find('\0') == text.npos ? Verdict::kSame : Verdict::kChanged;
  if (said.foreign || !is_near(said, text, stored, narrow ? 1e-6 : 1e-14)) return Verdict::kChanged;
  const bool exact =
      said.wide ? same_digits(text, all_digits(stored)) : is_binary(said, narrow ? 24 : 53);
  return exact ? Verdict::kSame : Verdict::kInexact;
}

template <CS_INT kCode>
Verdict Fidelity::compare_exact(std::string_view text, const char* value, CS_INT length) {
  const Exact stored = stored_number<kCode>(value);
  if (is_plain_text_of(stored, text)) return Verdict::kSame;
  const Decimal said = read_number(text);
  if (!said.has_digits) return Verdict::kNoValue;
  if (said.foreign) return Verdict::kChanged;
  const bool same = said.wide || stored.wide ? same_digits(text, text_of(value, length))
                                             : same_number(said, stored);
  return same ? Verdict::kSame : Verdict::kChanged;
}

Verdict Fidelity::compare_text(std::string_view text, const char* value, CS_INT length) {
  const bool as_it_is = same_charset_ && type_.code != CS_UNICHAR_TYPE;
  const bool same =
      as_it_is ? data_of(type_.code, value, length) == text : text_of(value, length) == text;
  return same ? Verdict::kSame : Verdict::kChanged;
}

// The text of a value in the character set of the fields; empty where it has none.
std::string Fidelity::text_of(const char* value, CS_INT length) {
  constexpr std::size_t kGrowth = 4;  // bytes of the longest character
  text_.resize(kGrowth * static_cast<std::size_t>(type_.text_size));
  CS_INT size = 0;
  if (!back_ || length == 0 ||
      back_.into(text_.size(), value, static_cast<std::size_t>(length), text_.data(), size) !=
          CS_SUCCEED)
    return {};
  return {text_.data(), static_cast<std::size_t>(size)};
}

std::string_view Fidelity::plain(std::string_view text) {
  if (is_ascii(text)) return text;
  units_.resize(text.size());
  CS_INT size = 0;
  to_unicode_.into(units_.size() * sizeof(CS_UNICHAR), text.data(), text.size(), units_.data(),
                   size);
  plain_.clear();
  for (std::size_t at = 0; at < static_cast<std::size_t>(size) / sizeof(CS_UNICHAR); ++at)
    plain_ += plain_character(units_[at]);
  return plain_;
}

}  // namespace rowcopy
