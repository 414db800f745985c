// Proposes a layout for a CSV file.
#pragma once

#include <string>

#include "conversion.h"
#include "job.h"
#include "source.h"

namespace rowcopy {

// The text of a layout with a column for each of the file's, of the type that holds all values of
// the first 10,000 rows as they are there. What the file suggests beyond that, such as another
// delimiter, is named on standard error.
std::string propose_layout(CS_CONTEXT* context, const Job& job, Locales locales, Source& source);

}  // namespace rowcopy
