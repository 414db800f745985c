// Placement of formatted text in character, Unicode-character and varchar destinations.
#pragma once

#include <span>
#include <string_view>

#include "conv/frame.h"

namespace comnlib {

using CodeUnits = std::span<const CS_UNICHAR>;

// Places the text of a number in a destination of units of its kind, and pads it. Text that does
// not fit, with its terminator where one is asked for, becomes "*" when there is room for two
// units, and CS_CVT_OVERFLOW is returned.
CS_RETCODE place_text(std::string_view text, const Conversion& call);
CS_RETCODE place_text(CodeUnits text, const Conversion& call);

// The same for money: text that does not fit is cut.
CS_RETCODE place_cut(std::string_view text, const Conversion& call);
CS_RETCODE place_cut(CodeUnits text, const Conversion& call);

// Places the text of a number in a CS_VARCHAR, with a NUL after it where one fits in `str`; text of
// more than 256 characters becomes "*" with CS_CVT_OVERFLOW. The destination length is 258.
CS_RETCODE place_varchar(std::string_view text, const Conversion& call);

}  // namespace comnlib
