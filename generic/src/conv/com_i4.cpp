// The conversions from CS_INT.
#include "conv/number_family.h"

using namespace comnlib;
using Source = FixedSource<Integer>;

COMNLIB_MEMBER(comn_i4tobit, Source, ToBit)
COMNLIB_MEMBER(comn_i4toi1, Source, ToInteger<Tinyint>)
COMNLIB_MEMBER(comn_i4toi2, Source, ToInteger<Smallint>)
COMNLIB_MEMBER(comn_i4toi4, Source, ToInteger<Integer>)
COMNLIB_MEMBER(comn_i4toflt4, Source, ToFloat<Real>)
COMNLIB_MEMBER(comn_i4toflt8, Source, ToFloat<Float>)
COMNLIB_MEMBER(comn_i4tonum, Source, ToNumeric)
COMNLIB_MEMBER(comn_i4tomoney, Source, ToMoney)
COMNLIB_MEMBER(comn_i4tomny4, Source, ToMoney4)
COMNLIB_MEMBER(comn_i4tochar, Source, ToCharacter<NumberText>)
COMNLIB_MEMBER(comn_i4tobin, Source, ToBinary)
COMNLIB_MEMBER(comn_i4tovarchar, Source, ToVarchar<NumberText>)
COMNLIB_MEMBER(comn_i4tovarbin, Source, ToVarbinary)

CS_RETCODE comn_i4toi8(COMNLIB_CONVERSION_PARAMETERS) {
  check_source<Source>({context, srcfmt, src, destfmt, dest, destlen});
  if (destfmt->datatype == CS_LONG_TYPE) stop();
  stop();
}
