// Conversions from the character family, whose text has the length that its format gives.
#include "conv/text_family.h"

using namespace comnlib;

COMNLIB_MEMBER(comn_chartochar, CharacterBytes, TextToCharacter)
COMNLIB_MEMBER(comn_chartobin, CharacterSource, TextToBinary)
COMNLIB_MEMBER(comn_chartoi1, CharacterSource, TextToInteger<Tinyint>)
COMNLIB_MEMBER(comn_chartoi2, CharacterSource, TextToInteger<Smallint>)
COMNLIB_MEMBER(comn_chartoi4, CharacterSource, TextToInteger<Integer>)
COMNLIB_MEMBER(comn_chartoflt4, CharacterSource, TextToReal)
COMNLIB_MEMBER(comn_chartoflt8, CharacterSource, TextToFloat)
COMNLIB_MEMBER(comn_chartobit, CharacterSource, TextToBit)
COMNLIB_MEMBER(comn_chartodatetime, CharacterSource, TextToDatetime)
COMNLIB_MEMBER(comn_chartodate4, CharacterSource, TextToDatetime4)
COMNLIB_MEMBER(comn_chartomoney, CharacterSource, TextToMoney)
COMNLIB_MEMBER(comn_chartomny4, CharacterSource, TextToMoney4)
COMNLIB_MEMBER(comn_chartonum, CharacterSource, TextToNumeric)
COMNLIB_MEMBER(comn_chartovarchar, CharacterBytes, TextToVarchar)
COMNLIB_MEMBER(comn_chartovarbin, CharacterSource, TextToVarbinary)
COMNLIB_MEMBER(comn_chartounichar, CharacterSource, TextToUnichar)
COMNLIB_MEMBER(comn_texttounichar, CharacterSource, TextToUnichar)

CS_RETCODE comn_chartoi8(COMNLIB_CONVERSION_PARAMETERS) {
  check_source<CharacterSource>({context, srcfmt, src, destfmt, dest, destlen});
  if (destfmt->datatype == CS_LONG_TYPE) stop();
  stop();
}
