// The conversions from CS_MONEY4.
#include "conv/money_family.h"

using namespace comnlib;
using Source = FixedSource<Money4>;

COMNLIB_MEMBER(comn_mny4tobit, Source, MoneyToBit)
COMNLIB_MEMBER(comn_mny4toi1, Source, MoneyToInteger<Tinyint>)
COMNLIB_MEMBER(comn_mny4toi2, Source, MoneyToInteger<Smallint>)
COMNLIB_MEMBER(comn_mny4toi4, Source, MoneyToInteger<Integer>)
COMNLIB_MEMBER(comn_mny4toi8, Source, MoneyToInteger<Long>)
COMNLIB_MEMBER(comn_mny4toflt4, Source, MoneyToFloat<Real>)
COMNLIB_MEMBER(comn_mny4toflt8, Source, MoneyToFloat<Float>)
COMNLIB_MEMBER(comn_mny4tonum, Source, MoneyToNumeric)
COMNLIB_MEMBER(comn_mny4tomoney, Source, ToMoney)
COMNLIB_MEMBER(comn_mny4tomny4, Source, ToMoney4)
COMNLIB_MEMBER(comn_mny4tochar, Source, ToCharacter<MoneyText>)
COMNLIB_MEMBER(comn_mny4tobin, Source, ToBinary)
COMNLIB_MEMBER(comn_mny4tovarchar, Source, ToVarchar<MoneyText>)
COMNLIB_MEMBER(comn_mny4tovarbin, Source, ToVarbinary)
