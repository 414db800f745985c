// Conversions from varchar, whose text carries its own length.
#include "conv/text_family.h"

using namespace comnlib::text_family;

COMNLIB_TEXT_FAMILY(varchar, VarcharSource)
COMNLIB_TEXT_STOPS_AT_LONG(comn_varchartoi8, VarcharSource)
