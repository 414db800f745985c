// The command line.
#pragma once

#include <iosfwd>
#include <optional>

#include "job.h"

namespace rowcopy {

// Nothing when the arguments asked for help or the version, which are printed then. Throws
// UsageError.
std::optional<Job> parse_arguments(int argc, char** argv, std::ostream& out);

}  // namespace rowcopy
