// The default conversion matrix. A pair without a routine is not supported; hosts rely on the gaps.
#include "conv/com_ctbl.h"

#include <algorithm>
#include <initializer_list>

#include "comnlib/datetime.h"
#include "conv/column.h"
#include "conv/datatypes.h"
#include "diag/diag.h"

namespace comnlib {
namespace {

using enum Family;

constexpr std::size_t kFamilies =
    static_cast<std::size_t>(std::ranges::max(kDatatypes, {}, &Datatype::family).family) + 1;

struct Entry {
  CS_CONV_FUNC routine = nullptr;
  const ColumnRoutine* column = nullptr;
};

struct Cell {
  Family column;
  Entry entry;
};

template <CS_CONV_FUNC kRoutine>
consteval Cell to(Family column) {
  return {column, {kRoutine, &ColumnForm<kRoutine>::routine}};
}

// The entries by family of source and destination.
class Lines {
 public:
  consteval void row(Family source, std::initializer_list<Cell> cells) {
    for (const Cell& cell : cells) at(source, cell.column) = cell.entry;
  }
  consteval void fill(Family source, CS_CONV_FUNC routine) {
    for (std::size_t column = 0; column < kFamilies; ++column)
      at(source, static_cast<Family>(column)) = {routine};
  }
  constexpr Entry& at(Family source, Family destination) {
    return entries_[static_cast<std::size_t>(source)][static_cast<std::size_t>(destination)];
  }

 private:
  Entry entries_[kFamilies][kFamilies] = {};
};

// Columns that a family fills under one name.
#define TO_CHARACTER(name) to<comn_##name##tochar>(character), to<comn_##name##tochar>(text)
#define TO_BINARY(name) to<comn_##name##tobin>(binary), to<comn_##name##tobin>(image)
#define TO_NUMBERS(name)                                                                           \
  to<comn_##name##toi1>(tinyint), to<comn_##name##toi2>(smallint), to<comn_##name##toi4>(integer), \
      to<comn_##name##toflt4>(real), to<comn_##name##toflt8>(floating),                            \
      to<comn_##name##tobit>(bit), to<comn_##name##tonum>(numeric)
#define TO_DATES(name) to<comn_##name##todatetime>(datetime), to<comn_##name##todate4>(datetime4)
#define TO_MONEY(name) to<comn_##name##tomoney>(money), to<comn_##name##tomny4>(money4)
#define TO_RECORDS(name) to<comn_##name##tovarchar>(varchar), to<comn_##name##tovarbin>(varbinary)
#define TO_LABELS(name) to<comn_##name##tochar>(sensitivity), to<comn_##name##tochar>(boundary)
#define TO_UNICHAR(name) to<comn_##name##tounichar>(unichar)
// Every column that numbers and amounts fill.
#define TO_VALUES(name) \
  TO_CHARACTER(name), TO_BINARY(name), TO_NUMBERS(name), TO_MONEY(name), TO_RECORDS(name)

consteval Lines default_lines() {
  Lines lines;
  lines.row(character, {TO_VALUES(char), TO_DATES(char), TO_LABELS(char), TO_UNICHAR(char)});
  lines.row(text, {TO_VALUES(char), TO_DATES(char), TO_LABELS(char), TO_UNICHAR(text)});
  lines.row(varchar,
            {TO_VALUES(varchar), TO_DATES(varchar), TO_LABELS(varchar), TO_UNICHAR(varchar)});
  lines.row(unichar, {TO_VALUES(unichar), TO_DATES(unichar), TO_UNICHAR(unichar),
                      to<comn_unichartotext>(text), to<comn_unichartoimage>(image),
                      to<comn_unichartoi8>(long_integer)});
  lines.row(sensitivity, {TO_CHARACTER(char), to<comn_chartovarchar>(varchar),
                          to<comn_chartochar>(sensitivity)});
  lines.row(boundary,
            {TO_CHARACTER(char), to<comn_chartovarchar>(varchar), to<comn_chartochar>(boundary)});
  lines.row(binary, {TO_VALUES(bin), TO_DATES(bin), TO_UNICHAR(bin)});
  lines.row(image, {TO_VALUES(bin), TO_DATES(bin), TO_UNICHAR(image)});
  lines.row(varbinary, {TO_VALUES(varbin), TO_DATES(varbin), TO_UNICHAR(varbin)});
  lines.row(tinyint, {TO_VALUES(i1), TO_UNICHAR(i1)});
  lines.row(smallint, {TO_VALUES(i2), TO_UNICHAR(i2)});
  lines.row(integer, {TO_VALUES(i4), TO_UNICHAR(i4)});
  lines.row(real, {TO_VALUES(flt4), TO_UNICHAR(flt4)});
  lines.row(floating, {TO_VALUES(flt8), TO_UNICHAR(flt8)});
  lines.row(bit,
            {TO_CHARACTER(bit), TO_BINARY(bit), TO_NUMBERS(bit), TO_RECORDS(bit), TO_UNICHAR(bit)});
  lines.row(money, {TO_VALUES(money), TO_UNICHAR(money)});
  lines.row(money4, {TO_VALUES(mny4), TO_UNICHAR(mny4)});
  lines.row(numeric, {TO_VALUES(num), TO_UNICHAR(num)});
  lines.row(datetime, {TO_CHARACTER(date), TO_RECORDS(date), to<comn_datetodate>(datetime),
                       to<comn_datetodate4>(datetime4), to<comn_datetimetounichar>(unichar)});
  lines.row(datetime4, {TO_CHARACTER(date4), TO_RECORDS(date4), to<comn_date4todate>(datetime),
                        to<comn_date4todate4>(datetime4), to<comn_date4tounichar>(unichar)});
  lines.fill(no_value, comn_voidtoany);
  lines.row(no_value, {{no_value, {comn_voidtovoid}}});
  return lines;
}

template <class T>
using Matrix = std::array<T, CS_BUILTIN_TYPES * CS_BUILTIN_TYPES>;

constexpr std::size_t index_of(CS_INT srctype, CS_INT desttype) {
  return static_cast<std::size_t>(srctype * CS_BUILTIN_TYPES + desttype);
}

template <class T, T Entry::*kMember>
constexpr Matrix<T> matrix_of() {
  Lines lines = default_lines();
  Matrix<T> matrix{};
  for (const Datatype& source : kDatatypes)
    for (const Datatype& destination : kDatatypes)
      matrix[index_of(source.code, destination.code)] =
          lines.at(source.family, destination.family).*kMember;
  return matrix;
}

constexpr Matrix<CS_CONV_FUNC> kMatrix = matrix_of<CS_CONV_FUNC, &Entry::routine>();
constexpr auto kColumns = matrix_of<const ColumnRoutine*, &Entry::column>();

}  // namespace

const ColumnRoutine* column_routine(CS_INT srctype, CS_INT desttype, CS_CONV_FUNC routine) {
  if (!is_builtin(srctype) || !is_builtin(desttype)) return nullptr;
  const std::size_t at = index_of(srctype, desttype);
  return kMatrix[at] == routine ? kColumns[at] : nullptr;
}

}  // namespace comnlib

using namespace comnlib;

CS_VOID com__get_ctbl(const CS_CONV_FUNC** table, int* dimension) {
  check_pointer(table);
  check_pointer(dimension);
  *table = kMatrix.data();
  *dimension = CS_BUILTIN_TYPES;
}
