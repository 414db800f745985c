// The conversions from CS_SMALLINT.
#include "conv/number_family.h"
#include "conv/to_money.h"
#include "conv/to_numeric.h"

using namespace comnlib;

namespace {

using Source = NumberSource<CS_SMALLINT, CS_SMALLINT_TYPE>;

// Where the member into CS_LONG stops.
constexpr Place kToLong = Place::current();
constexpr Place kToOther = Place::current();

}  // namespace

COMNLIB_NUMBER_MEMBER(comn_i2tobit, Source, ToBit)
COMNLIB_NUMBER_MEMBER(comn_i2toi1, Source, ToI1)
COMNLIB_NUMBER_MEMBER(comn_i2toi2, Source, ToI2)
COMNLIB_NUMBER_MEMBER(comn_i2toi4, Source, ToI4)
COMNLIB_NUMBER_MEMBER(comn_i2toflt4, Source, ToFlt4)
COMNLIB_NUMBER_MEMBER(comn_i2toflt8, Source, ToFlt8)
COMNLIB_NUMBER_MEMBER(comn_i2tonum, Source, ToNumeric)
COMNLIB_NUMBER_MEMBER(comn_i2tomoney, Source, ToMoney)
COMNLIB_NUMBER_MEMBER(comn_i2tomny4, Source, ToMoney4)
COMNLIB_NUMBER_MEMBER(comn_i2tochar, Source, ToCharacter)
COMNLIB_NUMBER_MEMBER(comn_i2tobin, Source, ToBinary)
COMNLIB_NUMBER_MEMBER(comn_i2tovarchar, Source, ToVarchar)
COMNLIB_NUMBER_MEMBER(comn_i2tovarbin, Source, ToVarbinary)
COMNLIB_REFUSING_MEMBER(comn_i2toi8, Source)
