// Conversions from the character family, whose text has the length that its format gives.
#include "conv/text_family.h"

using namespace comnlib::text_family;

COMNLIB_TEXT_FAMILY(char, CharacterSource)
COMNLIB_TEXT_MEMBER(comn_texttounichar, CharacterSource, ToUnichar)
COMNLIB_TEXT_STOPS_AT_LONG(comn_chartoi8, CharacterSource)
