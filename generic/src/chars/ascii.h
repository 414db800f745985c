// The ASCII classes by which literals, dates and files are scanned, whatever character set the text
// came from. They are function objects, so that a scan inlines the one that it is given.
#pragma once

namespace comnlib {

inline constexpr auto is_digit = [](int c) { return c >= '0' && c <= '9'; };

// What separates words within a line.
inline constexpr auto is_blank = [](int c) { return c == ' ' || c == '\t'; };

// Blanks, and the controls HT, LF, VT, FF and CR.
inline constexpr auto is_white_space = [](int c) { return c == ' ' || (c >= '\t' && c <= '\r'); };

}  // namespace comnlib
