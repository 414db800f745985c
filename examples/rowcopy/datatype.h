// The datatypes that a layout can name: how each is spelled, its code in the library, its size in a
// record, and what its text looks like. A further type is a further row of the table.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "comnlib.h"

namespace rowcopy {

// How the text of a type is written in a CSV file.
enum class TextForm { kInteger, kFloat, kCharacters, kHexadecimal };

struct Datatype {
  CS_INT code;
  CS_INT size;  // bytes of a value in a record; the longest one for character and binary types
  TextForm form;
  std::string name;  // as a layout spells it

  bool operator==(const Datatype& other) const { return code == other.code && size == other.size; }
};

// The type spelled "int", "char(40)", ..., or nothing when there is no such type or its length is
// missing, out of range or not asked for.
std::optional<Datatype> find_datatype(std::string_view spelling);

// All spellings, for help texts.
std::string datatype_spellings();

// How conversions see a value of `length` bytes, or a destination with that room.
CS_DATAFMT format_of(CS_INT code, CS_INT length);

}  // namespace rowcopy
