// Conversions from varbinary, whose value carries its own length.
#include "conv/binary_family.h"

using namespace comnlib::binary_family;

COMNLIB_BINARY_FAMILY(varbin, VarbinarySource)
