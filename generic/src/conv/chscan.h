// Scanners of integers in text, on the attribute tables of its character set.
#pragma once

#include <cstdint>

#include "chars/text.h"

extern "C" {

// Reads the whole `length` bytes of `text`, which has no terminator, as blanks, an optional sign,
// decimal digits and blanks. Returns 0 and stores the value; 1 when the value is outside the type's
// range, with the limit that it passed stored; 2 when the text is not an integer, and
// nothing is stored. Null attributes take each byte as a character. `value` may be unaligned.
CS_INT com__chtoi1_mb(const char_attrib* attrib, const CS_CHAR* text, CS_INT length,
                      CS_TINYINT* value);
CS_INT com__chtoi2_mb(const char_attrib* attrib, const CS_CHAR* text, CS_INT length,
                      CS_SMALLINT* value);
CS_INT com__chtoi4_mb(const char_attrib* attrib, const CS_CHAR* text, CS_INT length, CS_INT* value);
}

namespace comnlib {

enum ScanStatus : CS_INT { kScanned = 0, kOutOfRange = 1, kNoInteger = 2 };

// The same of text in any encoding.
template <class Int>
ScanStatus scan_integer(const Text& text, Int& value);

extern template ScanStatus scan_integer(const Text&, CS_TINYINT&);
extern template ScanStatus scan_integer(const Text&, CS_SMALLINT&);
extern template ScanStatus scan_integer(const Text&, CS_INT&);
extern template ScanStatus scan_integer(const Text&, std::int64_t&);

}  // namespace comnlib
