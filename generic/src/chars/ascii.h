// The ASCII classes by which literals, dates and files are scanned, whatever character set the text
// came from. Function objects, so that a scan that is given one takes it in.
#pragma once

namespace comnlib {

inline constexpr auto is_digit = [](int c) { return c >= '0' && c <= '9'; };

// What separates words within a line.
inline constexpr auto is_blank = [](int c) { return c == ' ' || c == '\t'; };

// Blanks, line ends and what moves a carriage: HT, LF, VT, FF and CR.
inline constexpr auto is_white_space = [](int c) { return c == ' ' || (c >= '\t' && c <= '\r'); };

}  // namespace comnlib
