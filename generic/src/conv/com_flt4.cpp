// The conversions from CS_REAL.
#include "conv/number_family.h"

using namespace comnlib;
using Source = FixedSource<Real>;

COMNLIB_MEMBER(comn_flt4tobit, Source, ToBit)
COMNLIB_MEMBER(comn_flt4toi1, Source, ToInteger<Tinyint>)
COMNLIB_MEMBER(comn_flt4toi2, Source, ToInteger<Smallint>)
COMNLIB_MEMBER(comn_flt4toi4, Source, ToInteger<Integer>)
COMNLIB_MEMBER(comn_flt4toflt4, Source, FloatToItself<Real>)
COMNLIB_MEMBER(comn_flt4toflt8, Source, ToFloat<Float>)
COMNLIB_MEMBER(comn_flt4tonum, Source, ToNumeric)
COMNLIB_MEMBER(comn_flt4tomoney, Source, ToMoney)
COMNLIB_MEMBER(comn_flt4tomny4, Source, ToMoney4)
COMNLIB_MEMBER(comn_flt4tochar, Source, ToCharacter<NumberText>)
COMNLIB_MEMBER(comn_flt4tobin, Source, ToBinary)
COMNLIB_MEMBER(comn_flt4tovarchar, Source, ToVarchar<NumberText>)
COMNLIB_MEMBER(comn_flt4tovarbin, Source, ToVarbinary)

CS_RETCODE comn_flt4toi8(COMNLIB_CONVERSION_PARAMETERS) {
  check_source<Source>({context, srcfmt, src, destfmt, dest, destlen});
  if (destfmt->datatype == CS_LONG_TYPE) stop();
  stop();
}
