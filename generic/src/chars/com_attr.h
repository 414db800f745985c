// The built-in attributes, and the header of a multibyte image, as com_build_char_attrib and the
// loader of character sets read it.
#pragma once

#include <cstddef>

#include "comnlib/charset.h"

namespace comnlib {

// What com_get_charattrib returns, for code in which the call would cost more than the look-up.
extern const char_attrib kIso1;

// Where a map lies in the image and how many bytes it has; 0 bytes: there is no such map.
struct ImageMap {
  CS_UINT offset;
  CS_UINT size;
};

struct ImageHeader {
  CS_USHORT status;
  CS_BYTE charset_class, maxcharlen, ncharsize, ntype, nnorm, nsoundex;
  ImageMap width, norm, type, soundex;
};

// Reads a header from the COMN_CS_IMAGE2_HEADER bytes at `image`.
ImageHeader read_image_header(const CS_BYTE* image);

// Whether the first 128 bytes are characters that read like plain bytes: with the same ASCII forms
// (in either case), the same blanks and the same currency sign.
bool is_ascii_based(const char_attrib& attrib);

// Stores the lengths and counts of a header in `attrib`, or those of every single-byte set.
void set_counts(char_attrib& attrib, const ImageHeader& header);
void set_single_byte_counts(char_attrib& attrib);

}  // namespace comnlib
