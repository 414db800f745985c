// The conversions from CS_MONEY4.
#include "conv/money_family.h"

using namespace comnlib;

namespace {

using Source = NumberSource<CS_MONEY4, CS_MONEY4_TYPE>;

}  // namespace

COMNLIB_NUMBER_MEMBER(comn_mny4tobit, Source, MoneyToBit)
COMNLIB_NUMBER_MEMBER(comn_mny4toi1, Source, MoneyToI1)
COMNLIB_NUMBER_MEMBER(comn_mny4toi2, Source, MoneyToI2)
COMNLIB_NUMBER_MEMBER(comn_mny4toi4, Source, MoneyToI4)
COMNLIB_NUMBER_MEMBER(comn_mny4toi8, Source, MoneyToI8)
COMNLIB_NUMBER_MEMBER(comn_mny4toflt4, Source, MoneyToFlt4)
COMNLIB_NUMBER_MEMBER(comn_mny4toflt8, Source, MoneyToFlt8)
COMNLIB_NUMBER_MEMBER(comn_mny4tonum, Source, MoneyToNumeric)
COMNLIB_NUMBER_MEMBER(comn_mny4tomoney, Source, ToMoney)
COMNLIB_NUMBER_MEMBER(comn_mny4tomny4, Source, ToMoney4)
COMNLIB_NUMBER_MEMBER(comn_mny4tochar, Source, MoneyToCharacter)
COMNLIB_NUMBER_MEMBER(comn_mny4tobin, Source, ToBinary)
COMNLIB_NUMBER_MEMBER(comn_mny4tovarchar, Source, MoneyToVarchar)
COMNLIB_NUMBER_MEMBER(comn_mny4tovarbin, Source, ToVarbinary)
