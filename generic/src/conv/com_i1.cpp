// The conversions from CS_TINYINT.
#include "conv/number_family.h"
#include "conv/to_money.h"
#include "conv/to_numeric.h"

using namespace comnlib;

namespace {

using Source = NumberSource<CS_TINYINT, CS_TINYINT_TYPE>;

// Where the member into CS_LONG stops.
constexpr Place kToLong = Place::current();
constexpr Place kToOther = Place::current();

}  // namespace

COMNLIB_NUMBER_MEMBER(comn_i1tobit, Source, ToBit)
COMNLIB_NUMBER_MEMBER(comn_i1toi1, Source, ToI1)
COMNLIB_NUMBER_MEMBER(comn_i1toi2, Source, ToI2)
COMNLIB_NUMBER_MEMBER(comn_i1toi4, Source, ToI4)
COMNLIB_NUMBER_MEMBER(comn_i1toflt4, Source, ToFlt4)
COMNLIB_NUMBER_MEMBER(comn_i1toflt8, Source, ToFlt8)
COMNLIB_NUMBER_MEMBER(comn_i1tonum, Source, ToNumeric)
COMNLIB_NUMBER_MEMBER(comn_i1tomoney, Source, ToMoney)
COMNLIB_NUMBER_MEMBER(comn_i1tomny4, Source, ToMoney4)
COMNLIB_NUMBER_MEMBER(comn_i1tochar, Source, ToCharacter)
COMNLIB_NUMBER_MEMBER(comn_i1tobin, Source, ToBinary)
COMNLIB_NUMBER_MEMBER(comn_i1tovarchar, Source, ToVarchar)
COMNLIB_NUMBER_MEMBER(comn_i1tovarbin, Source, ToVarbinary)
COMNLIB_REFUSING_MEMBER(comn_i1toi8, Source)
