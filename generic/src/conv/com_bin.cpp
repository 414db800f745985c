// Conversions from the binary family, whose value has the length that its format gives.
#include "conv/binary_family.h"

using namespace comnlib;

COMNLIB_MEMBER(comn_bintochar, BinarySource, BytesToCharacter)
COMNLIB_MEMBER(comn_bintobin, BinarySource, BytesToBinary)
COMNLIB_MEMBER(comn_bintoi1, BinarySource, BytesToFixed<Tinyint>)
COMNLIB_MEMBER(comn_bintoi2, BinarySource, BytesToFixed<Smallint>)
COMNLIB_MEMBER(comn_bintoi4, BinarySource, BytesToFixed<Integer>)
COMNLIB_MEMBER(comn_bintoflt4, BinarySource, BytesToFixed<Real>)
COMNLIB_MEMBER(comn_bintoflt8, BinarySource, BytesToFixed<Float>)
COMNLIB_MEMBER(comn_bintobit, BinarySource, BytesToFixed<Bit>)
COMNLIB_MEMBER(comn_bintodatetime, BinarySource, BytesToFixed<Datetime>)
COMNLIB_MEMBER(comn_bintodate4, BinarySource, BytesToFixed<Datetime4>)
COMNLIB_MEMBER(comn_bintomoney, BinarySource, BytesToFixed<Money>)
COMNLIB_MEMBER(comn_bintomny4, BinarySource, BytesToFixed<Money4>)
COMNLIB_MEMBER(comn_bintonum, BinarySource, BytesToFixed<Numeric>)
COMNLIB_MEMBER(comn_bintovarchar, BinarySource, BytesToVarchar)
COMNLIB_MEMBER(comn_bintovarbin, BinarySource, BytesToVarbinary)
COMNLIB_MEMBER(comn_bintounichar, BinarySource, BytesToUnichar)
COMNLIB_MEMBER(comn_imagetounichar, BinarySource, BytesToUnichar)
