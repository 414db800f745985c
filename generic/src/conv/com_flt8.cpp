// The conversions from CS_FLOAT.
#include "conv/number_family.h"

using namespace comnlib;
using Source = FixedSource<Float>;

COMNLIB_MEMBER(comn_flt8tobit, Source, ToBit)
COMNLIB_MEMBER(comn_flt8toi1, Source, ToInteger<Tinyint>)
COMNLIB_MEMBER(comn_flt8toi2, Source, ToInteger<Smallint>)
COMNLIB_MEMBER(comn_flt8toi4, Source, ToInteger<Integer>)
COMNLIB_MEMBER(comn_flt8toflt4, Source, ToFloat<Real>)
COMNLIB_MEMBER(comn_flt8toflt8, Source, FloatToItself<Float>)
COMNLIB_MEMBER(comn_flt8tonum, Source, ToNumeric)
COMNLIB_MEMBER(comn_flt8tomoney, Source, ToMoney)
COMNLIB_MEMBER(comn_flt8tomny4, Source, ToMoney4)
COMNLIB_MEMBER(comn_flt8tochar, Source, ToCharacter<NumberText>)
COMNLIB_MEMBER(comn_flt8tobin, Source, ToBinary)
COMNLIB_MEMBER(comn_flt8tovarchar, Source, ToVarchar<NumberText>)
COMNLIB_MEMBER(comn_flt8tovarbin, Source, ToVarbinary)

CS_RETCODE comn_flt8toi8(COMNLIB_CONVERSION_PARAMETERS) {
  check_source<Source>({context, srcfmt, src, destfmt, dest, destlen});
  if (destfmt->datatype == CS_LONG_TYPE) stop();
  stop();
}
