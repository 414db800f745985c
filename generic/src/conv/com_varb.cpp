// Conversions from varbinary, whose value carries its own length.
#include "conv/binary_family.h"

using namespace comnlib;

COMNLIB_MEMBER(comn_varbintochar, VarbinarySource, BytesToCharacter)
COMNLIB_MEMBER(comn_varbintobin, VarbinarySource, BytesToBinary)
COMNLIB_MEMBER(comn_varbintoi1, VarbinarySource, BytesToFixed<Tinyint>)
COMNLIB_MEMBER(comn_varbintoi2, VarbinarySource, BytesToFixed<Smallint>)
COMNLIB_MEMBER(comn_varbintoi4, VarbinarySource, BytesToFixed<Integer>)
COMNLIB_MEMBER(comn_varbintoflt4, VarbinarySource, BytesToFixed<Real>)
COMNLIB_MEMBER(comn_varbintoflt8, VarbinarySource, BytesToFixed<Float>)
COMNLIB_MEMBER(comn_varbintobit, VarbinarySource, BytesToFixed<Bit>)
COMNLIB_MEMBER(comn_varbintodatetime, VarbinarySource, BytesToFixed<Datetime>)
COMNLIB_MEMBER(comn_varbintodate4, VarbinarySource, BytesToFixed<Datetime4>)
COMNLIB_MEMBER(comn_varbintomoney, VarbinarySource, BytesToFixed<Money>)
COMNLIB_MEMBER(comn_varbintomny4, VarbinarySource, BytesToFixed<Money4>)
COMNLIB_MEMBER(comn_varbintonum, VarbinarySource, BytesToFixed<Numeric>)
COMNLIB_MEMBER(comn_varbintovarchar, VarbinarySource, BytesToVarchar)
COMNLIB_MEMBER(comn_varbintovarbin, VarbinarySource, BytesToVarbinary)
COMNLIB_MEMBER(comn_varbintounichar, VarbinarySource, BytesToUnichar)
