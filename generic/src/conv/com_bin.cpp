// Conversions from the binary family, whose value has the length that its format gives.
#include "conv/binary_family.h"

using namespace comnlib::binary_family;
using namespace comnlib;

COMNLIB_BINARY_FAMILY(bin, BinarySource)
COMNLIB_BINARY_MEMBER(comn_imagetounichar, BinarySource, ToUnichar)
