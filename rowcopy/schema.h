// A description of a record file for programs that read it: JSON, with the formats of NumPy.
#pragma once

#include <string>

#include "layout.h"
#include "records.h"

namespace rowcopy {

std::string describe_records(const Layout& layout, const RecordLayout& records,
                             const std::string& charset, std::size_t rows);

}  // namespace rowcopy
