// Conversions from the character family, whose text has the length that its format gives.
#include "conv/text_family.h"

using namespace comnlib::text_family;
using comnlib::Place;

namespace {

// Where the member into CS_LONG stops.
constexpr Place kToLong = Place::current();
constexpr Place kToOther = Place::current();

}  // namespace

COMNLIB_TEXT_FAMILY(char, CharacterSource)
COMNLIB_TEXT_MEMBER(comn_texttounichar, CharacterSource, ToUnichar)
COMNLIB_REFUSING_MEMBER(comn_chartoi8, CharacterSource)
