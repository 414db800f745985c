// The conversions from CS_FLOAT.
#include "conv/number_family.h"
#include "conv/to_money.h"
#include "conv/to_numeric.h"

using namespace comnlib;

namespace {

using Source = NumberSource<CS_FLOAT, CS_FLOAT_TYPE>;

// Where the member into CS_LONG stops.
constexpr Place kToLong = Place::current();
constexpr Place kToOther = Place::current();

}  // namespace

COMNLIB_NUMBER_MEMBER(comn_flt8tobit, Source, ToBit)
COMNLIB_NUMBER_MEMBER(comn_flt8toi1, Source, ToI1)
COMNLIB_NUMBER_MEMBER(comn_flt8toi2, Source, ToI2)
COMNLIB_NUMBER_MEMBER(comn_flt8toi4, Source, ToI4)
COMNLIB_NUMBER_MEMBER(comn_flt8toflt4, Source, ToFlt4)
COMNLIB_NUMBER_MEMBER(comn_flt8toflt8, Source, ToFlt8)
COMNLIB_NUMBER_MEMBER(comn_flt8tonum, Source, ToNumeric)
COMNLIB_NUMBER_MEMBER(comn_flt8tomoney, Source, ToMoney)
COMNLIB_NUMBER_MEMBER(comn_flt8tomny4, Source, ToMoney4)
COMNLIB_NUMBER_MEMBER(comn_flt8tochar, Source, ToCharacter)
COMNLIB_NUMBER_MEMBER(comn_flt8tobin, Source, ToBinary)
COMNLIB_NUMBER_MEMBER(comn_flt8tovarchar, Source, ToVarchar)
COMNLIB_NUMBER_MEMBER(comn_flt8tovarbin, Source, ToVarbinary)
COMNLIB_REFUSING_MEMBER(comn_flt8toi8, Source)
