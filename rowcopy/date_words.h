// What the text of a date says, read without the library in order to check the library's result.
#pragma once

#include <optional>
#include <string_view>

#include "comnlib.h"
#include "fidelity.h"
#include "iso_date.h"

namespace rowcopy {

// As compare_date(), for the form of interchange files, which is a leading part of the value's own
// text; nothing for any other text.
std::optional<Verdict> compare_iso_date(std::string_view text, const IsoDate& value);

// Whether every part of a date and time that the text gives is that of the value. The order of the
// parts depends on the locale and is left open here.
Verdict compare_date(std::string_view text, const CS_DATETIME& value);

}  // namespace rowcopy
