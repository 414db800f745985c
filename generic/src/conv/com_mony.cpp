// The conversions from CS_MONEY.
#include "conv/money_family.h"

using namespace comnlib;
using Source = FixedSource<Money>;

COMNLIB_MEMBER(comn_moneytobit, Source, MoneyToBit)
COMNLIB_MEMBER(comn_moneytoi1, Source, MoneyToInteger<Tinyint>)
COMNLIB_MEMBER(comn_moneytoi2, Source, MoneyToInteger<Smallint>)
COMNLIB_MEMBER(comn_moneytoi4, Source, MoneyToInteger<Integer>)
COMNLIB_MEMBER(comn_moneytoi8, Source, MoneyToInteger<Long>)
COMNLIB_MEMBER(comn_moneytoflt4, Source, MoneyToFloat<Real>)
COMNLIB_MEMBER(comn_moneytoflt8, Source, MoneyToFloat<Float>)
COMNLIB_MEMBER(comn_moneytonum, Source, MoneyToNumeric)
COMNLIB_MEMBER(comn_moneytomoney, Source, ToMoney)
COMNLIB_MEMBER(comn_moneytomny4, Source, ToMoney4)
COMNLIB_MEMBER(comn_moneytochar, Source, ToCharacter<MoneyText>)
COMNLIB_MEMBER(comn_moneytobin, Source, ToBinary)
COMNLIB_MEMBER(comn_moneytovarchar, Source, ToVarchar<MoneyText>)
COMNLIB_MEMBER(comn_moneytovarbin, Source, ToVarbinary)
