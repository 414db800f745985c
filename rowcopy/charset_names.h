// Names of character sets as other programs spell them.
#pragma once

#include <string>
#include <string_view>

namespace rowcopy {

// A name in capitals without "-", "_" and blanks: "utf-8" is "UTF8".
std::string squeeze(std::string_view name);

// The home's name for a character set of that name, if it has the set: "latin1", "ISO-8859-1" and
// "ISO8859-1" are "iso_1".
std::string home_charset(const std::string& name);

}  // namespace rowcopy
