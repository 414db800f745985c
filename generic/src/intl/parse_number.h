// Numbers in localization files.
#pragma once

#include <optional>
#include <string_view>

#include "comnlib/types.h"

namespace comnlib {

// A number written in decimal, or in hexadecimal after "0x", from `least` to `most`.
std::optional<CS_INT> parse_number(std::string_view text, CS_INT least, CS_INT most);

}  // namespace comnlib
