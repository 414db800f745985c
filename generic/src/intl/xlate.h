// Conversion of text between character sets, by way of Unicode.
#pragma once

#include <cstddef>
#include <span>

#include "comnlib/locale.h"

namespace comnlib {

using Bytes = std::span<const CS_BYTE>;

// What a text is encoded in: a loaded character set, or UTF-16 in host byte order. A null
// descriptor says that none is known: plain bytes, which translate as ISO 8859-1.
struct Encoding {
  const CsCharDesc* charset;
  bool utf16;
};

struct Translated {
  CS_RETCODE code;
  std::size_t written;  // bytes in `room`, always whole characters; later bytes are undefined
};

// Translates `text` into `room`. CS_SUCCEED; CS_CVT_SUBSTITUTED when characters that the
// target lacks were replaced; CS_CVT_TRUNCATED when `room` ended first;
// CS_CVT_BADXLATE at malformed text, what comes before it is translated; CS_CVT_NOXLATE when no
// route leads from one set to the other; CS_MEM_ERROR when a table cannot be loaded for lack of
// memory. A set's table is loaded under the context's mutex when it is first needed.
Translated translate(CS_CONTEXT* context, const Encoding& from, const Encoding& to, Bytes text,
                     std::span<CS_BYTE> room);

}  // namespace comnlib
