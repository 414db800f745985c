// The routines of docs/extending.md.
#include "conv/number_family.h"

namespace comnlib {

// The datatype. FixedSource reads it and every target of a number converts it.
using Ushort = Fixed<Family::ushort, CS_USHORT>;

// A target with a rounding rule of its own: halves away from zero. ToInteger clamps.
template <class Type>
struct ToRoundedInteger : Type {
  static CS_RETCODE convert(std::floating_point auto value, const Conversion& call) {
    return ToInteger<Type>::convert(std::round(value), call);
  }
};

}  // namespace comnlib

using namespace comnlib;

// One routine a line: its name, its source, its target.
COMNLIB_MEMBER(comn_ushorttoi4, FixedSource<Ushort>, ToInteger<Integer>)
COMNLIB_MEMBER(comn_ushorttochar, FixedSource<Ushort>, ToCharacter<NumberText>)
COMNLIB_MEMBER(comn_i4toushort, FixedSource<Integer>, ToInteger<Ushort>)
COMNLIB_MEMBER(comn_flt8toushort, FixedSource<Float>, ToRoundedInteger<Ushort>)
