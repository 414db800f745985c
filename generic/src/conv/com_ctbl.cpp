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
  CS_CONV_FUNC text = nullptr;                // 4, where it differs from the other characters
  CS_CONV_FUNC image = nullptr;               // 5, where it differs from the other binaries
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

// clang-format off
constexpr Line kLines[] = {
    {from(CS_CHAR_TYPE, CS_LONGCHAR_TYPE),
     {.character = comn_chartochar, .binary = comn_chartobin,
      .integer = {comn_chartoi1, comn_chartoi2, comn_chartoi4}, .floating = {comn_chartoflt4, comn_chartoflt8}, .bit = comn_chartobit,
      .datetime = {comn_chartodatetime, comn_chartodate4},
      .money = {comn_chartomoney, comn_chartomny4},
      .numeric = comn_chartonum,
      .varchar = comn_chartovarchar, .varbinary = comn_chartovarbin,
      .sensitivity = comn_chartochar, .boundary = comn_chartochar,
      .unichar = comn_chartounichar}},
    {from(CS_TEXT_TYPE),
     {.character = comn_chartochar, .binary = comn_chartobin,
      .integer = {comn_chartoi1, comn_chartoi2, comn_chartoi4}, .floating = {comn_chartoflt4, comn_chartoflt8}, .bit = comn_chartobit,
      .datetime = {comn_chartodatetime, comn_chartodate4},
      .money = {comn_chartomoney, comn_chartomny4},
      .numeric = comn_chartonum,
      .varchar = comn_chartovarchar, .varbinary = comn_chartovarbin,
      .sensitivity = comn_chartochar, .boundary = comn_chartochar,
      .unichar = comn_texttounichar}},
    {from(CS_BINARY_TYPE, CS_LONGBINARY_TYPE),
     {.character = comn_bintochar, .binary = comn_bintobin,
      .integer = {comn_bintoi1, comn_bintoi2, comn_bintoi4}, .floating = {comn_bintoflt4, comn_bintoflt8}, .bit = comn_bintobit,
      .datetime = {comn_bintodatetime, comn_bintodate4},
      .money = {comn_bintomoney, comn_bintomny4},
      .numeric = comn_bintonum,
      .varchar = comn_bintovarchar, .varbinary = comn_bintovarbin,
      .unichar = comn_bintounichar}},
    {from(CS_IMAGE_TYPE),
     {.character = comn_bintochar, .binary = comn_bintobin,
      .integer = {comn_bintoi1, comn_bintoi2, comn_bintoi4}, .floating = {comn_bintoflt4, comn_bintoflt8}, .bit = comn_bintobit,
      .datetime = {comn_bintodatetime, comn_bintodate4},
      .money = {comn_bintomoney, comn_bintomny4},
      .numeric = comn_bintonum,
      .varchar = comn_bintovarchar, .varbinary = comn_bintovarbin,
      .unichar = comn_imagetounichar}},
    {from(CS_TINYINT_TYPE),
     {.character = comn_i1tochar, .binary = comn_i1tobin,
      .integer = {comn_i1toi1, comn_i1toi2, comn_i1toi4}, .floating = {comn_i1toflt4, comn_i1toflt8}, .bit = comn_i1tobit,
      .money = {comn_i1tomoney, comn_i1tomny4},
      .numeric = comn_i1tonum,
      .varchar = comn_i1tovarchar, .varbinary = comn_i1tovarbin,
      .unichar = comn_i1tounichar}},
    {from(CS_SMALLINT_TYPE),
     {.character = comn_i2tochar, .binary = comn_i2tobin,
      .integer = {comn_i2toi1, comn_i2toi2, comn_i2toi4}, .floating = {comn_i2toflt4, comn_i2toflt8}, .bit = comn_i2tobit,
      .money = {comn_i2tomoney, comn_i2tomny4},
      .numeric = comn_i2tonum,
      .varchar = comn_i2tovarchar, .varbinary = comn_i2tovarbin,
      .unichar = comn_i2tounichar}},
    {from(CS_INT_TYPE),
     {.character = comn_i4tochar, .binary = comn_i4tobin,
      .integer = {comn_i4toi1, comn_i4toi2, comn_i4toi4}, .floating = {comn_i4toflt4, comn_i4toflt8}, .bit = comn_i4tobit,
      .money = {comn_i4tomoney, comn_i4tomny4},
      .numeric = comn_i4tonum,
      .varchar = comn_i4tovarchar, .varbinary = comn_i4tovarbin,
      .unichar = comn_i4tounichar}},
    {from(CS_REAL_TYPE),
     {.character = comn_flt4tochar, .binary = comn_flt4tobin,
      .integer = {comn_flt4toi1, comn_flt4toi2, comn_flt4toi4}, .floating = {comn_flt4toflt4, comn_flt4toflt8}, .bit = comn_flt4tobit,
      .money = {comn_flt4tomoney, comn_flt4tomny4},
      .numeric = comn_flt4tonum,
      .varchar = comn_flt4tovarchar, .varbinary = comn_flt4tovarbin,
      .unichar = comn_flt4tounichar}},
    {from(CS_FLOAT_TYPE),
     {.character = comn_flt8tochar, .binary = comn_flt8tobin,
      .integer = {comn_flt8toi1, comn_flt8toi2, comn_flt8toi4}, .floating = {comn_flt8toflt4, comn_flt8toflt8}, .bit = comn_flt8tobit,
      .money = {comn_flt8tomoney, comn_flt8tomny4},
      .numeric = comn_flt8tonum,
      .varchar = comn_flt8tovarchar, .varbinary = comn_flt8tovarbin,
      .unichar = comn_flt8tounichar}},
    {from(CS_BIT_TYPE),
     {.character = comn_bittochar, .binary = comn_bittobin,
      .integer = {comn_bittoi1, comn_bittoi2, comn_bittoi4}, .floating = {comn_bittoflt4, comn_bittoflt8}, .bit = comn_bittobit,
      .numeric = comn_bittonum,
      .varchar = comn_bittovarchar, .varbinary = comn_bittovarbin,
      .unichar = comn_bittounichar}},
    {from(CS_DATETIME_TYPE),
     {.character = comn_datetochar, .datetime = {comn_datetodate, comn_datetodate4},
      .varchar = comn_datetovarchar, .varbinary = comn_datetovarbin,
      .unichar = comn_datetimetounichar}},
    {from(CS_DATETIME4_TYPE),
     {.character = comn_date4tochar, .datetime = {comn_date4todate, comn_date4todate4},
      .varchar = comn_date4tovarchar, .varbinary = comn_date4tovarbin,
      .unichar = comn_date4tounichar}},
    {from(CS_MONEY_TYPE),
     {.character = comn_moneytochar, .binary = comn_moneytobin,
      .integer = {comn_moneytoi1, comn_moneytoi2, comn_moneytoi4}, .floating = {comn_moneytoflt4, comn_moneytoflt8}, .bit = comn_moneytobit,
      .money = {comn_moneytomoney, comn_moneytomny4},
      .numeric = comn_moneytonum,
      .varchar = comn_moneytovarchar, .varbinary = comn_moneytovarbin,
      .unichar = comn_moneytounichar}},
    {from(CS_MONEY4_TYPE),
     {.character = comn_mny4tochar, .binary = comn_mny4tobin,
      .integer = {comn_mny4toi1, comn_mny4toi2, comn_mny4toi4}, .floating = {comn_mny4toflt4, comn_mny4toflt8}, .bit = comn_mny4tobit,
      .money = {comn_mny4tomoney, comn_mny4tomny4},
      .numeric = comn_mny4tonum,
      .varchar = comn_mny4tovarchar, .varbinary = comn_mny4tovarbin,
      .unichar = comn_mny4tounichar}},
    {from(CS_NUMERIC_TYPE, CS_DECIMAL_TYPE),
     {.character = comn_numtochar, .binary = comn_numtobin,
      .integer = {comn_numtoi1, comn_numtoi2, comn_numtoi4}, .floating = {comn_numtoflt4, comn_numtoflt8}, .bit = comn_numtobit,
      .money = {comn_numtomoney, comn_numtomny4},
      .numeric = comn_numtonum,
      .varchar = comn_numtovarchar, .varbinary = comn_numtovarbin,
      .unichar = comn_numtounichar}},
    {from(CS_VARCHAR_TYPE),
     {.character = comn_varchartochar, .binary = comn_varchartobin,
      .integer = {comn_varchartoi1, comn_varchartoi2, comn_varchartoi4}, .floating = {comn_varchartoflt4, comn_varchartoflt8}, .bit = comn_varchartobit,
      .datetime = {comn_varchartodatetime, comn_varchartodate4},
      .money = {comn_varchartomoney, comn_varchartomny4},
      .numeric = comn_varchartonum,
      .varchar = comn_varchartovarchar, .varbinary = comn_varchartovarbin,
      .sensitivity = comn_varchartochar, .boundary = comn_varchartochar,
      .unichar = comn_varchartounichar}},
    {from(CS_VARBINARY_TYPE),
     {.character = comn_varbintochar, .binary = comn_varbintobin,
      .integer = {comn_varbintoi1, comn_varbintoi2, comn_varbintoi4}, .floating = {comn_varbintoflt4, comn_varbintoflt8}, .bit = comn_varbintobit,
      .datetime = {comn_varbintodatetime, comn_varbintodate4},
      .money = {comn_varbintomoney, comn_varbintomny4},
      .numeric = comn_varbintonum,
      .varchar = comn_varbintovarchar, .varbinary = comn_varbintovarbin,
      .unichar = comn_varbintounichar}},
    {from(CS_SENSITIVITY_TYPE),
     {.character = comn_chartochar, .varchar = comn_chartovarchar, .sensitivity = comn_chartochar}},
    {from(CS_BOUNDARY_TYPE),
     {.character = comn_chartochar, .varchar = comn_chartovarchar, .boundary = comn_chartochar}},
    {from(CS_VOID_TYPE),
     {.character = comn_voidtoany, .binary = comn_voidtoany,
      .integer = {comn_voidtoany, comn_voidtoany, comn_voidtoany}, .floating = {comn_voidtoany, comn_voidtoany}, .bit = comn_voidtoany,
      .datetime = {comn_voidtoany, comn_voidtoany},
      .money = {comn_voidtoany, comn_voidtoany},
      .numeric = comn_voidtoany,
      .varchar = comn_voidtoany, .varbinary = comn_voidtoany,
      .long_integer = comn_voidtoany, .sensitivity = comn_voidtoany, .boundary = comn_voidtoany,
      .no_value = comn_voidtovoid, .ushort = comn_voidtoany, .unichar = comn_voidtoany}},
    {from(CS_UNICHAR_TYPE),
     {.character = comn_unichartochar, .binary = comn_unichartobin, .text = comn_unichartotext, .image = comn_unichartoimage,
      .integer = {comn_unichartoi1, comn_unichartoi2, comn_unichartoi4}, .floating = {comn_unichartoflt4, comn_unichartoflt8}, .bit = comn_unichartobit,
      .datetime = {comn_unichartodatetime, comn_unichartodate4},
      .money = {comn_unichartomoney, comn_unichartomny4},
      .numeric = comn_unichartonum,
      .varchar = comn_unichartovarchar, .varbinary = comn_unichartovarbin,
      .long_integer = comn_unichartoi8,
      .unichar = comn_unichartounichar}},
};
// clang-format on

using Matrix = std::array<CS_CONV_FUNC, CS_BUILTIN_TYPES * CS_BUILTIN_TYPES>;

// The destination codes in order, each with the column that serves it.
constexpr std::array<CS_CONV_FUNC, CS_BUILTIN_TYPES> row_of(const Destinations& to) {
  // clang-format off
  return {to.character, to.binary, to.character, to.binary,
          to.text != nullptr ? to.text : to.character, to.image != nullptr ? to.image : to.binary,
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
