// The conversions from CS_REAL.
#include "conv/number_family.h"
#include "conv/to_money.h"
#include "conv/to_numeric.h"

using namespace comnlib;

namespace {

using Source = NumberSource<CS_REAL, CS_REAL_TYPE>;

// Where the member into CS_LONG stops.
constexpr Place kToLong = Place::current();
constexpr Place kToOther = Place::current();

}  // namespace

COMNLIB_NUMBER_MEMBER(comn_flt4tobit, Source, ToBit)
COMNLIB_NUMBER_MEMBER(comn_flt4toi1, Source, ToI1)
COMNLIB_NUMBER_MEMBER(comn_flt4toi2, Source, ToI2)
COMNLIB_NUMBER_MEMBER(comn_flt4toi4, Source, ToI4)
COMNLIB_NUMBER_MEMBER(comn_flt4toflt4, Source, ToFlt4)
COMNLIB_NUMBER_MEMBER(comn_flt4toflt8, Source, ToFlt8)
COMNLIB_NUMBER_MEMBER(comn_flt4tonum, Source, ToNumeric)
COMNLIB_NUMBER_MEMBER(comn_flt4tomoney, Source, ToMoney)
COMNLIB_NUMBER_MEMBER(comn_flt4tomny4, Source, ToMoney4)
COMNLIB_NUMBER_MEMBER(comn_flt4tochar, Source, ToCharacter)
COMNLIB_NUMBER_MEMBER(comn_flt4tobin, Source, ToBinary)
COMNLIB_NUMBER_MEMBER(comn_flt4tovarchar, Source, ToVarchar)
COMNLIB_NUMBER_MEMBER(comn_flt4tovarbin, Source, ToVarbinary)
COMNLIB_REFUSING_MEMBER(comn_flt4toi8, Source)
