#include "datatype.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace rowcopy {
namespace {

constexpr CS_INT kLongest = 1'000'000;  // units of a value whose length the layout chooses

enum class Arguments { kNone, kLength, kPrecision };

struct Spelling {
  std::string_view name;
  CS_INT code;
  Arguments arguments;
  CS_INT unit;       // bytes for each unit of length, or of the whole value
  CS_INT text_unit;  // bytes of text for as much
};

// Texts of dates carry names of the locale; UTF-8 takes three bytes for a UTF-16 unit at most.
constexpr CS_INT kNumericText = 96;
constexpr CS_INT kDateText = 128;

constexpr std::array kSpellings = {
    Spelling{"tinyint", CS_TINYINT_TYPE, Arguments::kNone, 1, 4},
    Spelling{"smallint", CS_SMALLINT_TYPE, Arguments::kNone, 2, 8},
    Spelling{"int", CS_INT_TYPE, Arguments::kNone, 4, 12},
    Spelling{"bit", CS_BIT_TYPE, Arguments::kNone, 1, 4},
    Spelling{"real", CS_REAL_TYPE, Arguments::kNone, 4, 32},
    Spelling{"float", CS_FLOAT_TYPE, Arguments::kNone, 8, 32},
    Spelling{"numeric", CS_NUMERIC_TYPE, Arguments::kPrecision, sizeof(CS_NUMERIC), kNumericText},
    Spelling{"decimal", CS_DECIMAL_TYPE, Arguments::kPrecision, sizeof(CS_DECIMAL), kNumericText},
    Spelling{"money", CS_MONEY_TYPE, Arguments::kNone, sizeof(CS_MONEY), 32},
    Spelling{"smallmoney", CS_MONEY4_TYPE, Arguments::kNone, sizeof(CS_MONEY4), 32},
    Spelling{"datetime", CS_DATETIME_TYPE, Arguments::kNone, sizeof(CS_DATETIME), kDateText},
    Spelling{"smalldatetime", CS_DATETIME4_TYPE, Arguments::kNone, sizeof(CS_DATETIME4), kDateText},
    Spelling{"char", CS_CHAR_TYPE, Arguments::kLength, 1, 1},
    Spelling{"longchar", CS_LONGCHAR_TYPE, Arguments::kLength, 1, 1},
    Spelling{"text", CS_TEXT_TYPE, Arguments::kLength, 1, 1},
    Spelling{"varchar", CS_VARCHAR_TYPE, Arguments::kNone, sizeof(CS_VARCHAR), CS_MAX_CHAR},
    Spelling{"sensitivity", CS_SENSITIVITY_TYPE, Arguments::kLength, 1, 1},
    Spelling{"boundary", CS_BOUNDARY_TYPE, Arguments::kLength, 1, 1},
    Spelling{"unichar", CS_UNICHAR_TYPE, Arguments::kLength, sizeof(CS_UNICHAR), 3},
    Spelling{"binary", CS_BINARY_TYPE, Arguments::kLength, 1, 2},
    Spelling{"longbinary", CS_LONGBINARY_TYPE, Arguments::kLength, 1, 2},
    Spelling{"image", CS_IMAGE_TYPE, Arguments::kLength, 1, 2},
    Spelling{"varbinary", CS_VARBINARY_TYPE, Arguments::kNone, sizeof(CS_VARBINARY),
             2 * CS_MAX_CHAR},
};

// Takes a decimal number within the limits from the front of the text.
bool take_number(std::string_view& text, CS_INT least, CS_INT most, CS_INT& number) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  return error == std::errc{} && number >= least && number <= most;
}

// "(n)"
bool read_length(std::string_view text, CS_INT& length) {
  if (!text.starts_with('(')) return false;
  text.remove_prefix(1);
  return take_number(text, 1, kLongest, length) && text == ")";
}

// "(p)" or "(p,s)"; nothing leaves both to each value.
bool read_precision(std::string_view text, Datatype& type) {
  type.precision = type.scale = CS_USE_SRCVALUE;
  if (text.empty()) return true;
  if (!text.starts_with('(')) return false;
  text.remove_prefix(1);
  if (!take_number(text, 1, CS_MAX_PREC, type.precision)) return false;
  type.scale = 0;
  if (text.starts_with(',')) {
    text.remove_prefix(1);
    if (!take_number(text, 0, CS_MAX_SCALE, type.scale)) return false;
  }
  return text == ")";
}

}  // namespace

const Datatype kText{CS_CHAR_TYPE, 0, 0, 0, 0, "text"};

std::optional<Datatype> find_datatype(std::string_view spelling) {
  const std::size_t bracket = std::min(spelling.find('('), spelling.size());
  const auto* found = std::ranges::find(kSpellings, spelling.substr(0, bracket), &Spelling::name);
  if (found == kSpellings.end()) return std::nullopt;

  const std::string_view arguments = spelling.substr(bracket);
  CS_INT units = 1;
  Datatype type{found->code, 0, 0, 0, 0, std::string(spelling)};
  bool good = false;
  switch (found->arguments) {
    case Arguments::kNone:
      good = arguments.empty();
      break;
    case Arguments::kLength:
      good = read_length(arguments, units);
      break;
    case Arguments::kPrecision:
      good = read_precision(arguments, type);
      break;
  }
  if (!good) return std::nullopt;
  type.size = found->unit * units;
  type.text_size = found->text_unit * units;
  return type;
}

std::string datatype_spellings() {
  std::string list;
  for (const Spelling& spelling : kSpellings) {
    if (!list.empty()) list += ", ";
    list += spelling.name;
    if (spelling.arguments == Arguments::kLength) list += "(n)";
    if (spelling.arguments == Arguments::kPrecision) list += "(p,s)";
  }
  return list;
}

CS_DATAFMT format_of(const Datatype& type, CS_LOCALE* locale) {
  CS_DATAFMT format{};
  format.datatype = type.code;
  format.maxlength = type.size;
  format.precision = type.precision;
  format.scale = type.scale;
  format.locale = locale;
  return format;
}

}  // namespace rowcopy
