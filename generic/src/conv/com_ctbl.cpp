// The default conversion matrix, computed from a table with one line for each source type. A pair
// without a routine is unsupported; the gaps in the table are part of the contract.
#include "conv/com_ctbl.h"

#include <algorithm>
#include <array>

#include "comnlib/convert.h"
#include "comnlib/datetime.h"
#include "diag/diag.h"

namespace comnlib {
namespace {

// The columns of a line, in the order of the destination codes.
struct Destinations {
  CS_CONV_FUNC character = nullptr;           // 0, 2, 4
  CS_CONV_FUNC binary = nullptr;              // 1, 3, 5
  CS_CONV_FUNC text = character;              // 4, where it differs from the other characters
  CS_CONV_FUNC image = binary;                // 5, where it differs from the other binaries
  std::array<CS_CONV_FUNC, 3> integer = {};   // 6, 7, 8
  std::array<CS_CONV_FUNC, 2> floating = {};  // 9, 10
  CS_CONV_FUNC bit = nullptr;                 // 11
  std::array<CS_CONV_FUNC, 2> datetime = {};  // 12, 13
  std::array<CS_CONV_FUNC, 2> money = {};     // 14, 15
  CS_CONV_FUNC numeric = nullptr;             // 16, 17
  CS_CONV_FUNC varchar = nullptr;             // 18
  CS_CONV_FUNC varbinary = nullptr;           // 19
  CS_CONV_FUNC long_integer = nullptr;        // 20
  CS_CONV_FUNC sensitivity = nullptr;         // 21
  CS_CONV_FUNC boundary = nullptr;            // 22
  CS_CONV_FUNC no_value = nullptr;            // 23
  CS_CONV_FUNC ushort = nullptr;              // 24
  CS_CONV_FUNC unichar = nullptr;             // 25
};

struct Line {
  CS_UINT sources;  // bit n: source code n
  Destinations to;
};

consteval CS_UINT from(auto... codes) {
  return ((CS_UINT{1} << codes) | ...);
}

// Columns that one family fills under one name.
#define TO_DATA(name) .character = comn_##name##tochar, .binary = comn_##name##tobin
#define TO_NUMBERS(name)                                                \
  .integer = {comn_##name##toi1, comn_##name##toi2, comn_##name##toi4}, \
  .floating = {comn_##name##toflt4, comn_##name##toflt8}, .bit = comn_##name##tobit
#define TO_DATES(name) .datetime = {comn_##name##todatetime, comn_##name##todate4}
#define TO_MONEY(name) .money = {comn_##name##tomoney, comn_##name##tomny4}
#define TO_RECORDS(name) .varchar = comn_##name##tovarchar, .varbinary = comn_##name##tovarbin
#define TO_LABELS(name) .sensitivity = comn_##name##tochar, .boundary = comn_##name##tochar

// clang-format off
constexpr Line kLines[] = {
    {from(CS_CHAR_TYPE, CS_LONGCHAR_TYPE),
     {TO_DATA(char), TO_NUMBERS(char), TO_DATES(char), TO_MONEY(char), .numeric = comn_chartonum,
      TO_RECORDS(char), TO_LABELS(char), .unichar = comn_chartounichar}},
    {from(CS_TEXT_TYPE),
     {TO_DATA(char), TO_NUMBERS(char), TO_DATES(char), TO_MONEY(char), .numeric = comn_chartonum,
      TO_RECORDS(char), TO_LABELS(char), .unichar = comn_texttounichar}},
    {from(CS_BINARY_TYPE, CS_LONGBINARY_TYPE),
     {TO_DATA(bin), TO_NUMBERS(bin), TO_DATES(bin), TO_MONEY(bin), .numeric = comn_bintonum,
      TO_RECORDS(bin), .unichar = comn_bintounichar}},
    {from(CS_IMAGE_TYPE),
     {TO_DATA(bin), TO_NUMBERS(bin), TO_DATES(bin), TO_MONEY(bin), .numeric = comn_bintonum,
      TO_RECORDS(bin), .unichar = comn_imagetounichar}},
    {from(CS_TINYINT_TYPE),
     {TO_DATA(i1), TO_NUMBERS(i1), TO_MONEY(i1), .numeric = comn_i1tonum,
      TO_RECORDS(i1), .unichar = comn_i1tounichar}},
    {from(CS_SMALLINT_TYPE),
     {TO_DATA(i2), TO_NUMBERS(i2), TO_MONEY(i2), .numeric = comn_i2tonum,
      TO_RECORDS(i2), .unichar = comn_i2tounichar}},
    {from(CS_INT_TYPE),
     {TO_DATA(i4), TO_NUMBERS(i4), TO_MONEY(i4), .numeric = comn_i4tonum,
      TO_RECORDS(i4), .unichar = comn_i4tounichar}},
    {from(CS_REAL_TYPE),
     {TO_DATA(flt4), TO_NUMBERS(flt4), TO_MONEY(flt4), .numeric = comn_flt4tonum,
      TO_RECORDS(flt4), .unichar = comn_flt4tounichar}},
    {from(CS_FLOAT_TYPE),
     {TO_DATA(flt8), TO_NUMBERS(flt8), TO_MONEY(flt8), .numeric = comn_flt8tonum,
      TO_RECORDS(flt8), .unichar = comn_flt8tounichar}},
    {from(CS_BIT_TYPE),
     {TO_DATA(bit), TO_NUMBERS(bit), .numeric = comn_bittonum,
      TO_RECORDS(bit), .unichar = comn_bittounichar}},
    {from(CS_DATETIME_TYPE),
     {.character = comn_datetochar, .datetime = {comn_datetodate, comn_datetodate4},
      TO_RECORDS(date), .unichar = comn_datetimetounichar}},
    {from(CS_DATETIME4_TYPE),
     {.character = comn_date4tochar, .datetime = {comn_date4todate, comn_date4todate4},
      TO_RECORDS(date4), .unichar = comn_date4tounichar}},
    {from(CS_MONEY_TYPE),
     {TO_DATA(money), TO_NUMBERS(money), TO_MONEY(money), .numeric = comn_moneytonum,
      TO_RECORDS(money), .unichar = comn_moneytounichar}},
    {from(CS_MONEY4_TYPE),
     {TO_DATA(mny4), TO_NUMBERS(mny4), TO_MONEY(mny4), .numeric = comn_mny4tonum,
      TO_RECORDS(mny4), .unichar = comn_mny4tounichar}},
    {from(CS_NUMERIC_TYPE, CS_DECIMAL_TYPE),
     {TO_DATA(num), TO_NUMBERS(num), TO_MONEY(num), .numeric = comn_numtonum,
      TO_RECORDS(num), .unichar = comn_numtounichar}},
    {from(CS_VARCHAR_TYPE),
     {TO_DATA(varchar), TO_NUMBERS(varchar), TO_DATES(varchar), TO_MONEY(varchar),
      .numeric = comn_varchartonum, TO_RECORDS(varchar), TO_LABELS(varchar),
      .unichar = comn_varchartounichar}},
    {from(CS_VARBINARY_TYPE),
     {TO_DATA(varbin), TO_NUMBERS(varbin), TO_DATES(varbin), TO_MONEY(varbin),
      .numeric = comn_varbintonum, TO_RECORDS(varbin), .unichar = comn_varbintounichar}},
    {from(CS_SENSITIVITY_TYPE),
     {.character = comn_chartochar, .varchar = comn_chartovarchar, .sensitivity = comn_chartochar}},
    {from(CS_BOUNDARY_TYPE),
     {.character = comn_chartochar, .varchar = comn_chartovarchar, .boundary = comn_chartochar}},
    {from(CS_VOID_TYPE),
     {.character = comn_voidtoany, .binary = comn_voidtoany,
      .integer = {comn_voidtoany, comn_voidtoany, comn_voidtoany},
      .floating = {comn_voidtoany, comn_voidtoany}, .bit = comn_voidtoany,
      .datetime = {comn_voidtoany, comn_voidtoany}, .money = {comn_voidtoany, comn_voidtoany},
      .numeric = comn_voidtoany,
      .varchar = comn_voidtoany, .varbinary = comn_voidtoany,
      .long_integer = comn_voidtoany, .sensitivity = comn_voidtoany, .boundary = comn_voidtoany,
      .no_value = comn_voidtovoid, .ushort = comn_voidtoany, .unichar = comn_voidtoany}},
    {from(CS_UNICHAR_TYPE),
     {TO_DATA(unichar), .text = comn_unichartotext, .image = comn_unichartoimage,
      TO_NUMBERS(unichar), TO_DATES(unichar), TO_MONEY(unichar), .numeric = comn_unichartonum,
      TO_RECORDS(unichar), .long_integer = comn_unichartoi8, .unichar = comn_unichartounichar}},
};
// clang-format on

#undef TO_DATA
#undef TO_NUMBERS
#undef TO_DATES
#undef TO_MONEY
#undef TO_RECORDS
#undef TO_LABELS

using Matrix = std::array<CS_CONV_FUNC, CS_BUILTIN_TYPES * CS_BUILTIN_TYPES>;

// The destination codes in order, each with the column that serves it.
constexpr std::array<CS_CONV_FUNC, CS_BUILTIN_TYPES> row_of(const Destinations& to) {
  // clang-format off
  return {to.character, to.binary, to.character, to.binary, to.text, to.image,
          to.integer[0], to.integer[1], to.integer[2], to.floating[0], to.floating[1], to.bit,
          to.datetime[0], to.datetime[1], to.money[0], to.money[1], to.numeric, to.numeric,
          to.varchar, to.varbinary, to.long_integer, to.sensitivity, to.boundary,
          to.no_value, to.ushort, to.unichar};
  // clang-format on
}

consteval Matrix matrix_of_lines() {
  Matrix matrix{};
  for (const Line& line : kLines) {
    for (std::size_t source = 0; source < CS_BUILTIN_TYPES; ++source) {
      if ((line.sources >> source & 1) == 0) continue;
      std::ranges::copy(row_of(line.to), matrix.begin() + source * CS_BUILTIN_TYPES);
    }
  }
  return matrix;
}

constexpr Matrix kMatrix = matrix_of_lines();

}  // namespace
}  // namespace comnlib

using namespace comnlib;

CS_VOID com__get_ctbl(const CS_CONV_FUNC** table, int* dimension) {
  check_pointer(table);
  check_pointer(dimension);
  *table = kMatrix.data();
  *dimension = CS_BUILTIN_TYPES;
}
