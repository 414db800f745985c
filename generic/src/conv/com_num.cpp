// The conversions from CS_NUMERIC and CS_DECIMAL.
#include "conv/numeric_family.h"

using namespace comnlib;
using Source = FixedSource<Numeric>;

COMNLIB_MEMBER(comn_numtobit, Source, NumericToBit)
COMNLIB_MEMBER(comn_numtoi1, Source, NumericToInteger<Tinyint>)
COMNLIB_MEMBER(comn_numtoi2, Source, NumericToInteger<Smallint>)
COMNLIB_MEMBER(comn_numtoi4, Source, NumericToInteger<Integer>)
COMNLIB_MEMBER(comn_numtoi8, Source, NumericToLong)
COMNLIB_MEMBER(comn_numtoflt4, Source, NumericToFloat<Real>)
COMNLIB_MEMBER(comn_numtoflt8, Source, NumericToFloat<Float>)
COMNLIB_MEMBER(comn_numtonum, Source, NumericToNumeric)
COMNLIB_MEMBER(comn_numtomoney, Source, NumericToMoney)
COMNLIB_MEMBER(comn_numtomny4, Source, NumericToMoney4)
COMNLIB_MEMBER(comn_numtochar, NumericInPlace, NumericToCharacter)
COMNLIB_MEMBER(comn_numtovarchar, NumericInPlace, NumericToVarchar)
COMNLIB_MEMBER(comn_numtobin, Source, ToBinary)
COMNLIB_MEMBER(comn_numtovarbin, Source, ToVarbinary)
