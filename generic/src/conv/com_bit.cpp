// The conversions from CS_BIT.
#include "conv/newutils.h"
#include "conv/number_family.h"
#include "conv/to_numeric.h"

using namespace comnlib;

namespace {

using Source = NumberSource<CS_BIT, CS_BIT_TYPE>;

// A digit alone has no "*" to stand for it: it is counted whether or not there is room for it.
struct BitToCharacter : ToCharacter {
  static CS_RETCODE convert(CS_BIT value, const Conversion& call) {
    *call.destlen = 1;
    if (call.destfmt->maxlength >= 1) store(call.dest, value == 0 ? '0' : '1');
    return comn__padchar(1, call.destfmt, call.dest, call.destlen);
  }
};

// Where the member into CS_LONG stops.
constexpr Place kToLong = Place::current();
constexpr Place kToOther = Place::current();

}  // namespace

COMNLIB_NUMBER_MEMBER(comn_bittobit, Source, ToBit)
COMNLIB_NUMBER_MEMBER(comn_bittoi1, Source, ToI1)
COMNLIB_NUMBER_MEMBER(comn_bittoi2, Source, ToI2)
COMNLIB_NUMBER_MEMBER(comn_bittoi4, Source, ToI4)
COMNLIB_NUMBER_MEMBER(comn_bittoflt4, Source, ToFlt4)
COMNLIB_NUMBER_MEMBER(comn_bittoflt8, Source, ToFlt8)
COMNLIB_NUMBER_MEMBER(comn_bittonum, Source, ToNumeric)
COMNLIB_NUMBER_MEMBER(comn_bittochar, Source, BitToCharacter)
COMNLIB_NUMBER_MEMBER(comn_bittobin, Source, ToBinary)
COMNLIB_NUMBER_MEMBER(comn_bittovarchar, Source, ToVarchar)
COMNLIB_NUMBER_MEMBER(comn_bittovarbin, Source, ToVarbinary)
COMNLIB_REFUSING_MEMBER(comn_bittoi8, Source)
