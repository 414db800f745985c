// Conversions from varchar, whose text carries its own length.
#include "conv/text_family.h"

using namespace comnlib;

COMNLIB_MEMBER(comn_varchartochar, VarcharSource, TextToCharacter)
COMNLIB_MEMBER(comn_varchartobin, VarcharSource, TextToBinary)
COMNLIB_MEMBER(comn_varchartoi1, VarcharSource, TextToInteger<Tinyint>)
COMNLIB_MEMBER(comn_varchartoi2, VarcharSource, TextToInteger<Smallint>)
COMNLIB_MEMBER(comn_varchartoi4, VarcharSource, TextToInteger<Integer>)
COMNLIB_MEMBER(comn_varchartoflt4, VarcharSource, TextToReal)
COMNLIB_MEMBER(comn_varchartoflt8, VarcharSource, TextToFloat)
COMNLIB_MEMBER(comn_varchartobit, VarcharSource, TextToBit)
COMNLIB_MEMBER(comn_varchartodatetime, VarcharSource, TextToDatetime)
COMNLIB_MEMBER(comn_varchartodate4, VarcharSource, TextToDatetime4)
COMNLIB_MEMBER(comn_varchartomoney, VarcharSource, TextToMoney)
COMNLIB_MEMBER(comn_varchartomny4, VarcharSource, TextToMoney4)
COMNLIB_MEMBER(comn_varchartonum, VarcharSource, TextToNumeric)
COMNLIB_MEMBER(comn_varchartovarchar, VarcharSource, TextToVarchar)
COMNLIB_MEMBER(comn_varchartovarbin, VarcharSource, TextToVarbinary)
COMNLIB_MEMBER(comn_varchartounichar, VarcharSource, TextToUnichar)

CS_RETCODE comn_varchartoi8(COMNLIB_CONVERSION_PARAMETERS) {
  check_source<VarcharSource>({context, srcfmt, src, destfmt, dest, destlen});
  if (destfmt->datatype == CS_LONG_TYPE) stop();
  stop();
}
