// Conversions from Unicode-character data, UTF-16 in host byte order, and into it from the types of
// fixed length.
#include "conv/com_date.h"
#include "conv/money_family.h"
#include "conv/numeric_family.h"
#include "conv/text_family.h"

using namespace comnlib;

COMNLIB_MEMBER(comn_unichartochar, UnicharSource, TextToCharacter)
COMNLIB_MEMBER(comn_unichartobin, UnicharLiteral, TextToBinary)
COMNLIB_MEMBER(comn_unichartoi1, UnicharLiteral, TextToInteger<Tinyint>)
COMNLIB_MEMBER(comn_unichartoi2, UnicharLiteral, TextToInteger<Smallint>)
COMNLIB_MEMBER(comn_unichartoi4, UnicharLiteral, TextToInteger<Integer>)
COMNLIB_MEMBER(comn_unichartoflt4, UnicharLiteral, TextToReal)
COMNLIB_MEMBER(comn_unichartoflt8, UnicharLiteral, TextToFloat)
COMNLIB_MEMBER(comn_unichartobit, UnicharLiteral, TextToBit)
COMNLIB_MEMBER(comn_unichartodatetime, UnicharLiteral, TextToDatetime)
COMNLIB_MEMBER(comn_unichartodate4, UnicharLiteral, TextToDatetime4)
COMNLIB_MEMBER(comn_unichartomoney, UnicharLiteral, TextToMoney)
COMNLIB_MEMBER(comn_unichartomny4, UnicharLiteral, TextToMoney4)
COMNLIB_MEMBER(comn_unichartonum, UnicharLiteral, TextToNumeric)
COMNLIB_MEMBER(comn_unichartovarchar, UnicharSource, TextToVarchar)
COMNLIB_MEMBER(comn_unichartovarbin, UnicharLiteral, TextToVarbinary)
COMNLIB_MEMBER(comn_unichartounichar, UnicharSource, TextToUnichar)
COMNLIB_MEMBER(comn_unichartotext, UnicharSource, TextToCharacter)
COMNLIB_MEMBER(comn_unichartoimage, UnicharLiteral, TextToBinary)
COMNLIB_MEMBER(comn_unichartoi8, UnicharLiteral, TextToInteger<Long>)

COMNLIB_MEMBER(comn_i1tounichar, FixedSource<Tinyint>, ToUnichar<NumberText>)
COMNLIB_MEMBER(comn_i2tounichar, FixedSource<Smallint>, ToUnichar<NumberText>)
COMNLIB_MEMBER(comn_i4tounichar, FixedSource<Integer>, ToUnichar<NumberText>)
COMNLIB_MEMBER(comn_flt4tounichar, FixedSource<Real>, ToUnichar<NumberText>)
COMNLIB_MEMBER(comn_flt8tounichar, FixedSource<Float>, ToUnichar<NumberText>)
COMNLIB_MEMBER(comn_bittounichar, FixedSource<Bit>, ToUnichar<NumberText>)
COMNLIB_MEMBER(comn_moneytounichar, FixedSource<Money>, ToUnichar<MoneyText>)
COMNLIB_MEMBER(comn_mny4tounichar, FixedSource<Money4>, ToUnichar<MoneyText>)
COMNLIB_MEMBER(comn_numtounichar, NumericInPlace, ToUnichar<NumericText>)
COMNLIB_MEMBER(comn_datetimetounichar, FixedSource<Datetime>, DateToUnichar)
COMNLIB_MEMBER(comn_date4tounichar, FixedSource<Datetime4>, DateToUnichar)
