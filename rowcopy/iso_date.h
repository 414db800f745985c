// Dates and times as ISO 8601 writes them.
#pragma once

#include <array>
#include <cstddef>

#include "comnlib.h"

namespace rowcopy {

// "2026-07-04T15:05:09.250"
using IsoDate = std::array<char, 23>;
constexpr std::size_t kIsoDay = 10;      // characters of "2026-07-04"
constexpr std::size_t kIsoSeconds = 19;  // characters before the fraction

// The value of either size of datetime as the larger one.
CS_DATETIME widen_date(CS_INT code, const char* value);

IsoDate iso_date(const CS_DATETIME& value);

}  // namespace rowcopy
