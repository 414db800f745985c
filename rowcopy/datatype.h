// The datatypes that a layout can name: how each is spelled, its code in the library, the room that
// a value and its text take. A further type is a further row of the table.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "comnlib.h"

namespace rowcopy {

// What a value is, whatever its size.
enum class Kind { kInteger, kBit, kFloat, kNumeric, kMoney, kDate, kText, kBinary };

struct Datatype {
  CS_INT code;
  CS_INT size;       // bytes of a value in a record; the longest one for variable lengths
  CS_INT text_size;  // bytes of the longest text of a value, in any character set
  CS_INT precision;  // of exact numerics
  CS_INT scale;
  Kind kind;
  std::string name;    // as a layout spells it, without blanks
  std::string format;  // of a stored value, as NumPy spells it

  bool operator==(const Datatype& other) const {
    return code == other.code && size == other.size && precision == other.precision &&
           scale == other.scale;
  }
};

// Varchar and varbinary values: a count and the bytes, in records of one size.
constexpr bool is_varying(CS_INT code) {
  return code == CS_VARCHAR_TYPE || code == CS_VARBINARY_TYPE;
}

// Whether empty text is a value of the kind.
constexpr bool has_empty_value(Kind kind) {
  return kind == Kind::kText || kind == Kind::kBinary;
}

// The type spelled "int", "char(40)", "numeric(10,2)" and so on, or as other systems spell it
// ("integer", "double"). Nothing for any other spelling; `problem` then says what is wrong with it.
std::optional<Datatype> find_datatype(std::string_view spelling, std::string& problem);

// All spellings, for help texts.
std::string datatype_spellings();

// The data format of values of a type in a locale (null: the context's).
CS_DATAFMT format_of(const Datatype& type, CS_LOCALE* locale);

// Text in a CSV file: a character value of any length.
extern const Datatype kText;

}  // namespace rowcopy
