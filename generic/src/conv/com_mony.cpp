// The conversions from CS_MONEY.
#include "conv/money_family.h"

using namespace comnlib;

namespace {

using Source = NumberSource<CS_MONEY, CS_MONEY_TYPE>;

}  // namespace

COMNLIB_NUMBER_MEMBER(comn_moneytobit, Source, MoneyToBit)
COMNLIB_NUMBER_MEMBER(comn_moneytoi1, Source, MoneyToI1)
COMNLIB_NUMBER_MEMBER(comn_moneytoi2, Source, MoneyToI2)
COMNLIB_NUMBER_MEMBER(comn_moneytoi4, Source, MoneyToI4)
COMNLIB_NUMBER_MEMBER(comn_moneytoi8, Source, MoneyToI8)
COMNLIB_NUMBER_MEMBER(comn_moneytoflt4, Source, MoneyToFlt4)
COMNLIB_NUMBER_MEMBER(comn_moneytoflt8, Source, MoneyToFlt8)
COMNLIB_NUMBER_MEMBER(comn_moneytonum, Source, MoneyToNumeric)
COMNLIB_NUMBER_MEMBER(comn_moneytomoney, Source, ToMoney)
COMNLIB_NUMBER_MEMBER(comn_moneytomny4, Source, ToMoney4)
COMNLIB_NUMBER_MEMBER(comn_moneytochar, Source, MoneyToCharacter)
COMNLIB_NUMBER_MEMBER(comn_moneytobin, Source, ToBinary)
COMNLIB_NUMBER_MEMBER(comn_moneytovarchar, Source, MoneyToVarchar)
COMNLIB_NUMBER_MEMBER(comn_moneytovarbin, Source, ToVarbinary)
