// How a file's rows are split into fields.
#pragma once

#include <optional>
#include <string>

namespace rowcopy {

struct Dialect {
  char delimiter = ',';
  std::optional<char> quote = '"';
  std::string null_word;  // an unquoted field of this text is null, as an empty one is
};

}  // namespace rowcopy
