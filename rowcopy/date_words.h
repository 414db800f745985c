// What a date's text says, read without the library to check what it made of it.
#pragma once

#include <optional>
#include <string_view>

#include "comnlib.h"
#include "fidelity.h"
#include "iso_date.h"

namespace rowcopy {

// The same as compare_date() for the form of interchange files, of which the value's own text is an
// extension; nothing for any other text.
std::optional<Verdict> compare_iso_date(std::string_view text, const IsoDate& value);

// Whether every part of a date and time that the text gives is that of the value. The order of the
// parts is the locale's affair and left open here.
Verdict compare_date(std::string_view text, const CS_DATETIME& value);

}  // namespace rowcopy
