// The conversions from CS_BIT.
#include "conv/newutils.h"
#include "conv/number_family.h"

using namespace comnlib;
using Source = FixedSource<Bit>;

namespace {

// A bit is never replaced by "*"; its digit counts even where it does not fit.
struct BitToCharacter : Character {
  static CS_RETCODE convert(CS_BIT value, const Conversion& call) {
    *call.destlen = 1;
    if (call.destfmt->maxlength >= 1) store(call.dest, value == 0 ? '0' : '1');
    return comn__padchar(1, call.destfmt, call.dest, call.destlen);
  }
};

}  // namespace

COMNLIB_MEMBER(comn_bittobit, Source, ToBit)
COMNLIB_MEMBER(comn_bittoi1, Source, ToInteger<Tinyint>)
COMNLIB_MEMBER(comn_bittoi2, Source, ToInteger<Smallint>)
COMNLIB_MEMBER(comn_bittoi4, Source, ToInteger<Integer>)
COMNLIB_MEMBER(comn_bittoflt4, Source, ToFloat<Real>)
COMNLIB_MEMBER(comn_bittoflt8, Source, ToFloat<Float>)
COMNLIB_MEMBER(comn_bittonum, Source, ToNumeric)
COMNLIB_MEMBER(comn_bittochar, Source, BitToCharacter)
COMNLIB_MEMBER(comn_bittobin, Source, ToBinary)
COMNLIB_MEMBER(comn_bittovarchar, Source, ToVarchar<NumberText>)
COMNLIB_MEMBER(comn_bittovarbin, Source, ToVarbinary)

CS_RETCODE comn_bittoi8(COMNLIB_CONVERSION_PARAMETERS) {
  check_source<Source>({context, srcfmt, src, destfmt, dest, destlen});
  if (destfmt->datatype == CS_LONG_TYPE) stop();
  stop();
}

CS_RETCODE comn_bittomoney(COMNLIB_CONVERSION_PARAMETERS) {
  check_source<Source>({context, srcfmt, src, destfmt, dest, destlen});
  if (destfmt->datatype == CS_MONEY_TYPE) stop();
  stop();
}

CS_RETCODE comn_bittomny4(COMNLIB_CONVERSION_PARAMETERS) {
  check_source<Source>({context, srcfmt, src, destfmt, dest, destlen});
  if (destfmt->datatype == CS_MONEY4_TYPE) stop();
  stop();
}
