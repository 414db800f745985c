// Conversions from varchar, whose text carries its own length.
#include "conv/text_family.h"

using namespace comnlib::text_family;
using comnlib::Place;

namespace {

// Where the member into CS_LONG stops.
constexpr Place kToLong = Place::current();
constexpr Place kToOther = Place::current();

}  // namespace

COMNLIB_TEXT_FAMILY(varchar, VarcharSource)
COMNLIB_REFUSING_MEMBER(comn_varchartoi8, VarcharSource)
