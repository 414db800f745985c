// The conversions from CS_SMALLINT.
#include "conv/number_family.h"

using namespace comnlib;
using Source = FixedSource<Smallint>;

COMNLIB_MEMBER(comn_i2tobit, Source, ToBit)
COMNLIB_MEMBER(comn_i2toi1, Source, ToInteger<Tinyint>)
COMNLIB_MEMBER(comn_i2toi2, Source, ToInteger<Smallint>)
COMNLIB_MEMBER(comn_i2toi4, Source, ToInteger<Integer>)
COMNLIB_MEMBER(comn_i2toflt4, Source, ToFloat<Real>)
COMNLIB_MEMBER(comn_i2toflt8, Source, ToFloat<Float>)
COMNLIB_MEMBER(comn_i2tonum, Source, ToNumeric)
COMNLIB_MEMBER(comn_i2tomoney, Source, ToMoney)
COMNLIB_MEMBER(comn_i2tomny4, Source, ToMoney4)
COMNLIB_MEMBER(comn_i2tochar, Source, ToCharacter<NumberText>)
COMNLIB_MEMBER(comn_i2tobin, Source, ToBinary)
COMNLIB_MEMBER(comn_i2tovarchar, Source, ToVarchar<NumberText>)
COMNLIB_MEMBER(comn_i2tovarbin, Source, ToVarbinary)

CS_RETCODE comn_i2toi8(COMNLIB_CONVERSION_PARAMETERS) {
  check_source<Source>({context, srcfmt, src, destfmt, dest, destlen});
  if (destfmt->datatype == CS_LONG_TYPE) stop();
  stop();
}
