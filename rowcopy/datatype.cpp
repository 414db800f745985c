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
  Kind kind;
  Arguments arguments;
  CS_INT unit;              // bytes for each unit of length, or of the whole value
  CS_INT text_unit;         // bytes of text for as much
  std::string_view format;  // "#" is the length
};

// Texts of dates carry names of the locale; UTF-8 takes three bytes for a UTF-16 unit at most.
constexpr CS_INT kNumericText = 96;
constexpr CS_INT kDateText = 128;
constexpr auto kNone = Arguments::kNone;
constexpr auto kLength = Arguments::kLength;
constexpr auto kPrecision = Arguments::kPrecision;

constexpr std::array kSpellings = {
    Spelling{"tinyint", CS_TINYINT_TYPE, Kind::kInteger, kNone, 1, 4, "u1"},
    Spelling{"smallint", CS_SMALLINT_TYPE, Kind::kInteger, kNone, 2, 8, "<i2"},
    Spelling{"int", CS_INT_TYPE, Kind::kInteger, kNone, 4, 12, "<i4"},
    Spelling{"bit", CS_BIT_TYPE, Kind::kBit, kNone, 1, 4, "u1"},
    Spelling{"real", CS_REAL_TYPE, Kind::kFloat, kNone, 4, 32, "<f4"},
    Spelling{"float", CS_FLOAT_TYPE, Kind::kFloat, kNone, 8, 32, "<f8"},
    Spelling{"numeric", CS_NUMERIC_TYPE, Kind::kNumeric, kPrecision, sizeof(CS_NUMERIC),
             kNumericText, "u1,u1,(33,)u1"},
    Spelling{"decimal", CS_DECIMAL_TYPE, Kind::kNumeric, kPrecision, sizeof(CS_DECIMAL),
             kNumericText, "u1,u1,(33,)u1"},
    Spelling{"money", CS_MONEY_TYPE, Kind::kMoney, kNone, sizeof(CS_MONEY), 32, "<i4,<u4"},
    Spelling{"smallmoney", CS_MONEY4_TYPE, Kind::kMoney, kNone, sizeof(CS_MONEY4), 32, "<i4"},
    Spelling{"datetime", CS_DATETIME_TYPE, Kind::kDate, kNone, sizeof(CS_DATETIME), kDateText,
             "<i4,<i4"},
    Spelling{"smalldatetime", CS_DATETIME4_TYPE, Kind::kDate, kNone, sizeof(CS_DATETIME4),
             kDateText, "<u2,<u2"},
    Spelling{"char", CS_CHAR_TYPE, Kind::kText, kLength, 1, 1, "S#"},
    Spelling{"longchar", CS_LONGCHAR_TYPE, Kind::kText, kLength, 1, 1, "S#"},
    Spelling{"text", CS_TEXT_TYPE, Kind::kText, kLength, 1, 1, "S#"},
    Spelling{"varchar", CS_VARCHAR_TYPE, Kind::kText, kNone, sizeof(CS_VARCHAR), CS_MAX_CHAR,
             "<i2,S256"},
    Spelling{"sensitivity", CS_SENSITIVITY_TYPE, Kind::kText, kLength, 1, 1, "S#"},
    Spelling{"boundary", CS_BOUNDARY_TYPE, Kind::kText, kLength, 1, 1, "S#"},
    Spelling{"unichar", CS_UNICHAR_TYPE, Kind::kText, kLength, sizeof(CS_UNICHAR), 3, "(#,)<u2"},
    Spelling{"binary", CS_BINARY_TYPE, Kind::kBinary, kLength, 1, 2, "V#"},
    Spelling{"longbinary", CS_LONGBINARY_TYPE, Kind::kBinary, kLength, 1, 2, "V#"},
    Spelling{"image", CS_IMAGE_TYPE, Kind::kBinary, kLength, 1, 2, "V#"},
    Spelling{"varbinary", CS_VARBINARY_TYPE, Kind::kBinary, kNone, sizeof(CS_VARBINARY),
             2 * CS_MAX_CHAR, "<i2,V256"},
};

// Names that other systems have for a type of the table.
struct Synonym {
  std::string_view name;
  std::string_view meaning;
};
constexpr std::array kSynonyms = {
    Synonym{"integer", "int"},           Synonym{"double", "float"},
    Synonym{"doubleprecision", "float"}, Synonym{"number", "numeric"},
    Synonym{"timestamp", "datetime"},    Synonym{"date", "datetime"},
    Synonym{"string", "varchar"},        Synonym{"nchar", "unichar"},
    Synonym{"nvarchar", "unichar"},      Synonym{"blob", "image"},
};

// What to use instead of types that do not exist here.
constexpr std::array kAdvice = {
    Synonym{"bigint", "numeric(19)"},
    Synonym{"long", "numeric(19)"},
    Synonym{"int8", "numeric(19)"},
    Synonym{"bool", "bit for 0 and 1, char(5) for words"},
    Synonym{"boolean", "bit for 0 and 1, char(5) for words"},
    Synonym{"time", "datetime, which adds 1 January 1900, or char(n)"},
    Synonym{"uuid", "char(36)"},
    Synonym{"json", "text(n)"},
};

std::string_view find_in(const auto& table, std::string_view name) {
  const auto* found = std::ranges::find(table, name, &Synonym::name);
  return found == table.end() ? std::string_view() : found->meaning;
}

std::string range(const char* what, CS_INT least, CS_INT most) {
  return std::string(what) + " is " + std::to_string(least) + " to " + std::to_string(most);
}

// Takes a decimal number within the limits off the front of the text; otherwise says what it should
// be.
bool take_number(std::string_view& text, const char* what, CS_INT least, CS_INT most,
                 CS_INT& number, std::string& problem) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  if (error == std::errc{} && number >= least && number <= most) return true;
  problem = range(what, least, most);
  return false;
}

bool take(std::string_view& text, char c) {
  if (!text.starts_with(c)) return false;
  text.remove_prefix(1);
  return true;
}

// "(n)", "(p)", "(p,s)", or nothing, which leaves precision and scale to each value.
bool read_arguments(const Spelling& spelling, std::string_view text, Datatype& type, CS_INT& units,
                    std::string& problem) {
  const std::string name(spelling.name);
  switch (spelling.arguments) {
    case Arguments::kNone:
      if (text.empty()) return true;
      problem = name + " takes no length";
      if (is_varying(spelling.code))
        problem += ": its values have up to 256 bytes; for other lengths take " +
                   std::string(spelling.kind == Kind::kText ? "char(n)" : "binary(n)");
      return false;
    case Arguments::kLength:
      problem = name + " needs a length: " + name + "(n)";
      if (!take(text, '(')) return false;
      if (!take_number(text, "the length", 1, kLongest, units, problem)) return false;
      problem = "the length ends with a bracket: " + name + "(n)";
      return text == ")";
    case Arguments::kPrecision:
      type.precision = type.scale = CS_USE_SRCVALUE;
      if (text.empty()) return true;
      problem = "precision and scale are written " + name + "(p,s)";
      if (!take(text, '(')) return false;
      if (!take_number(text, "precision", 1, CS_MAX_PREC, type.precision, problem)) return false;
      type.scale = 0;
      if (take(text, ',') && !take_number(text, "scale", 0, CS_MAX_SCALE, type.scale, problem))
        return false;
      problem = "precision and scale are written " + name + "(p,s)";
      return text == ")";
  }
  return false;
}

}  // namespace

const Datatype kText{CS_CHAR_TYPE, 0, 0, 0, 0, Kind::kText, "text", ""};

std::optional<Datatype> find_datatype(std::string_view spelling, std::string& problem) {
  const std::size_t bracket = std::min(spelling.find('('), spelling.size());
  std::string_view name = spelling.substr(0, bracket);
  if (const std::string_view meaning = find_in(kSynonyms, name); !meaning.empty()) name = meaning;
  const auto* found = std::ranges::find(kSpellings, name, &Spelling::name);
  if (found == kSpellings.end()) {
    const std::string_view advice = find_in(kAdvice, name);
    problem = advice.empty() ? "unknown type; known are " + datatype_spellings()
                             : "there is no such type; take " + std::string(advice);
    return std::nullopt;
  }

  CS_INT units = 1;
  Datatype type{found->code, 0, 0, 0, 0, found->kind, std::string(spelling), ""};
  if (!read_arguments(*found, spelling.substr(bracket), type, units, problem)) return std::nullopt;
  type.size = found->unit * units;
  type.text_size = found->text_unit * units;
  for (const char c : found->format)
    type.format += c == '#' ? std::to_string(units) : std::string(1, c);
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
