// The parts of the kernel that work on magnitudes already read, for the routines of this room that
// would otherwise pass through bytes.
#pragma once

#include "exact/record.h"

namespace comnlib {

// result := a + b (opn 0) or a - b; see com__exctnume_addorsub. Uses up both operands.
CS_INT combine(Number& a, int scale_a, Number& b, int scale_b, CS_INT opn, constant& result);

// value := value * 10^change, to be held in `length` bytes, sign included, at `precision`. The
// unscaled value must fit that length too; truncation comes before the precision is checked.
CS_INT rescale(Magnitude& value, int change, int precision, std::size_t length);

}  // namespace comnlib
