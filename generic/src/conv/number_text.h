// Numbers as text. Nothing here depends on the process's locale.
#pragma once

#include <array>
#include <string_view>

#include "comnlib/types.h"

namespace comnlib {

// Room for any number's text; one that needs more is an internal error.
using NumberBuffer = std::array<char, 63>;

// Decimal digits, with a "-" before a negative value.
std::string_view text_of(CS_INT value, NumberBuffer& buffer);

// At most 17 significant digits, as %.17g prints them, but without the zero of a leading "0." and
// followed by ".0" where it has neither point nor exponent. Either zero is "0.0".
std::string_view text_of(CS_FLOAT value, NumberBuffer& buffer);

}  // namespace comnlib
