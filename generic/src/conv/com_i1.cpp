// The conversions from CS_TINYINT.
#include "conv/number_family.h"

using namespace comnlib;
using Source = FixedSource<Tinyint>;

COMNLIB_MEMBER(comn_i1tobit, Source, ToBit)
COMNLIB_MEMBER(comn_i1toi1, Source, ToInteger<Tinyint>)
COMNLIB_MEMBER(comn_i1toi2, Source, ToInteger<Smallint>)
COMNLIB_MEMBER(comn_i1toi4, Source, ToInteger<Integer>)
COMNLIB_MEMBER(comn_i1toflt4, Source, ToFloat<Real>)
COMNLIB_MEMBER(comn_i1toflt8, Source, ToFloat<Float>)
COMNLIB_MEMBER(comn_i1tonum, Source, ToNumeric)
COMNLIB_MEMBER(comn_i1tomoney, Source, ToMoney)
COMNLIB_MEMBER(comn_i1tomny4, Source, ToMoney4)
COMNLIB_MEMBER(comn_i1tochar, Source, ToCharacter<NumberText>)
COMNLIB_MEMBER(comn_i1tobin, Source, ToBinary)
COMNLIB_MEMBER(comn_i1tovarchar, Source, ToVarchar<NumberText>)
COMNLIB_MEMBER(comn_i1tovarbin, Source, ToVarbinary)

CS_RETCODE comn_i1toi8(COMNLIB_CONVERSION_PARAMETERS) {
  check_source<Source>({context, srcfmt, src, destfmt, dest, destlen});
  if (destfmt->datatype == CS_LONG_TYPE) stop();
  stop();
}
