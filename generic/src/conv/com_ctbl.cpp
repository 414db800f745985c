// The default conversion matrix. A pair without a routine is not supported; hosts rely on the gaps.
#include "conv/com_ctbl.h"

#include <initializer_list>

#include "comnlib/datetime.h"
#include "conv/datatypes.h"
#include "diag/diag.h"

namespace comnlib {
namespace {

using enum MatrixLine;

constexpr std::size_t kLines = static_cast<std::size_t>(unichar) + 1;

struct Cell {
  MatrixLine column;
  CS_CONV_FUNC routine;
};

// The routines by line of source and destination.
class Lines {
 public:
  consteval void row(MatrixLine source, std::initializer_list<Cell> cells) {
    for (const Cell& cell : cells) at(source, cell.column) = cell.routine;
  }
  consteval void fill(MatrixLine source, CS_CONV_FUNC routine) {
    for (std::size_t column = 0; column < kLines; ++column)
      at(source, static_cast<MatrixLine>(column)) = routine;
  }
  constexpr CS_CONV_FUNC& at(MatrixLine source, MatrixLine destination) {
    return routines_[static_cast<std::size_t>(source)][static_cast<std::size_t>(destination)];
  }

 private:
  CS_CONV_FUNC routines_[kLines][kLines] = {};
};

// Columns that a family fills under one name.
#define TO_CHARACTER(name)            \
  {character, comn_##name##tochar}, { \
    text, comn_##name##tochar         \
  }
#define TO_BINARY(name)           \
  {binary, comn_##name##tobin}, { \
    image, comn_##name##tobin     \
  }
#define TO_NUMBERS(name)                                                                         \
  {tinyint, comn_##name##toi1}, {smallint, comn_##name##toi2}, {integer, comn_##name##toi4},     \
      {real, comn_##name##toflt4}, {floating, comn_##name##toflt8}, {bit, comn_##name##tobit}, { \
    numeric, comn_##name##tonum                                                                  \
  }
#define TO_DATES(name)                   \
  {datetime, comn_##name##todatetime}, { \
    datetime4, comn_##name##todate4      \
  }
#define TO_MONEY(name)             \
  {money, comn_##name##tomoney}, { \
    money4, comn_##name##tomny4    \
  }
#define TO_RECORDS(name)               \
  {varchar, comn_##name##tovarchar}, { \
    varbinary, comn_##name##tovarbin   \
  }
#define TO_LABELS(name)                 \
  {sensitivity, comn_##name##tochar}, { \
    boundary, comn_##name##tochar       \
  }
#define TO_UNICHAR(name) \
  { unichar, comn_##name##tounichar }
// Every column that numbers and amounts fill.
#define TO_VALUES(name) \
  TO_CHARACTER(name), TO_BINARY(name), TO_NUMBERS(name), TO_MONEY(name), TO_RECORDS(name)

consteval Lines default_lines() {
  Lines to;
  to.row(character, {TO_VALUES(char), TO_DATES(char), TO_LABELS(char), TO_UNICHAR(char)});
  to.row(text, {TO_VALUES(char), TO_DATES(char), TO_LABELS(char), TO_UNICHAR(text)});
  to.row(varchar, {TO_VALUES(varchar), TO_DATES(varchar), TO_LABELS(varchar), TO_UNICHAR(varchar)});
  to.row(unichar, {TO_VALUES(unichar),
                   TO_DATES(unichar),
                   TO_UNICHAR(unichar),
                   {text, comn_unichartotext},
                   {image, comn_unichartoimage},
                   {long_integer, comn_unichartoi8}});
  to.row(sensitivity,
         {TO_CHARACTER(char), {varchar, comn_chartovarchar}, {sensitivity, comn_chartochar}});
  to.row(boundary,
         {TO_CHARACTER(char), {varchar, comn_chartovarchar}, {boundary, comn_chartochar}});
  to.row(binary, {TO_VALUES(bin), TO_DATES(bin), TO_UNICHAR(bin)});
  to.row(image, {TO_VALUES(bin), TO_DATES(bin), TO_UNICHAR(image)});
  to.row(varbinary, {TO_VALUES(varbin), TO_DATES(varbin), TO_UNICHAR(varbin)});
  to.row(tinyint, {TO_VALUES(i1), TO_UNICHAR(i1)});
  to.row(smallint, {TO_VALUES(i2), TO_UNICHAR(i2)});
  to.row(integer, {TO_VALUES(i4), TO_UNICHAR(i4)});
  to.row(real, {TO_VALUES(flt4), TO_UNICHAR(flt4)});
  to.row(floating, {TO_VALUES(flt8), TO_UNICHAR(flt8)});
  to.row(bit,
         {TO_CHARACTER(bit), TO_BINARY(bit), TO_NUMBERS(bit), TO_RECORDS(bit), TO_UNICHAR(bit)});
  to.row(money, {TO_VALUES(money), TO_UNICHAR(money)});
  to.row(money4, {TO_VALUES(mny4), TO_UNICHAR(mny4)});
  to.row(numeric, {TO_VALUES(num), TO_UNICHAR(num)});
  to.row(datetime, {TO_CHARACTER(date),
                    TO_RECORDS(date),
                    {datetime, comn_datetodate},
                    {datetime4, comn_datetodate4},
                    {unichar, comn_datetimetounichar}});
  to.row(datetime4, {TO_CHARACTER(date4),
                     TO_RECORDS(date4),
                     {datetime, comn_date4todate},
                     {datetime4, comn_date4todate4},
                     {unichar, comn_date4tounichar}});
  to.fill(no_value, comn_voidtoany);
  to.row(no_value, {{no_value, comn_voidtovoid}});
  return to;
}

using Matrix = std::array<CS_CONV_FUNC, CS_BUILTIN_TYPES * CS_BUILTIN_TYPES>;

constexpr Matrix kMatrix = [] {
  Lines lines = default_lines();
  Matrix matrix{};
  for (const Datatype& source : kDatatypes)
    for (const Datatype& destination : kDatatypes)
      matrix[static_cast<std::size_t>(source.code * CS_BUILTIN_TYPES + destination.code)] =
          lines.at(source.line, destination.line);
  return matrix;
}();

}  // namespace
}  // namespace comnlib

using namespace comnlib;

CS_VOID com__get_ctbl(const CS_CONV_FUNC** table, int* dimension) {
  check_pointer(table);
  check_pointer(dimension);
  *table = kMatrix.data();
  *dimension = CS_BUILTIN_TYPES;
}
