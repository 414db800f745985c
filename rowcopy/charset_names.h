// Names of character sets as other programs spell them.
#pragma once

#include <string>
#include <string_view>

namespace rowcopy {

// A name in capitals without "-", "_" and blanks: "utf-8" is "UTF8".
std::string squeeze(std::string_view name);

// The home's name of a character set that is usually called that, or the name itself.
std::string home_charset(const std::string& name);

}  // namespace rowcopy
