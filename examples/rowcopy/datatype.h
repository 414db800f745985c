// The datatypes that a layout can name: how each is spelled, its code in the library, the room that
// a value and its text take. A further type is a further row of the table.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "comnlib.h"

namespace rowcopy {

struct Datatype {
  CS_INT code;
  CS_INT size;       // bytes of a value in a record; the longest one for variable lengths
  CS_INT text_size;  // bytes of the longest text of a value, in any character set
  CS_INT precision;  // of exact numerics
  CS_INT scale;
  std::string name;  // as a layout spells it, without blanks

  bool operator==(const Datatype& other) const {
    return code == other.code && size == other.size && precision == other.precision &&
           scale == other.scale;
  }
};

// Varchar and varbinary values: a count and the bytes, in records of one size.
constexpr bool is_varying(CS_INT code) {
  return code == CS_VARCHAR_TYPE || code == CS_VARBINARY_TYPE;
}

// The type spelled "int", "char(40)", "numeric(10,2)", ..., or nothing when there is no such type
// or its arguments are missing, out of range or not asked for.
std::optional<Datatype> find_datatype(std::string_view spelling);

// All spellings, for help texts.
std::string datatype_spellings();

// How conversions see the values of a type in a locale (null: the context's).
CS_DATAFMT format_of(const Datatype& type, CS_LOCALE* locale);

// Text in a CSV file: a character value of any length.
extern const Datatype kText;

}  // namespace rowcopy
