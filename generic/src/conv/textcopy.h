// Text to text: copies between character destinations with whole-character truncation, quote
// doubling and the conversion between character sets. Shared by the character, varchar and
// Unicode-character families.
#pragma once

#include <span>

#include "conv/frame.h"
#include "intl/com_intl.h"
#include "intl/xlate.h"

extern "C" {

// How many of the `srclen` bytes of `src` go into `destlen` bytes: all of them where they fit, a
// character that the source itself cuts included, else as many whole characters as do.
CS_INT comnb_truncate_chars(const char_attrib* attrib, const CS_CHAR* src, CS_INT srclen,
                            CS_INT destlen);

// Copies the srcfmt->maxlength bytes of `src` with every single quote written twice, as far as
// whole characters fit in destfmt->maxlength; *destlen is what was written. CS_SUCCEED, or
// CS_CVT_TRUNCATED when not all fit. With CS_DFMT_NULLTERM a NUL in the text ends it and is
// counted. `dest` may be `src`.
CS_RETCODE comn__escchar(const char_attrib* attrib, const CS_DATAFMT* srcfmt, const CS_VOID* src,
                         const CS_DATAFMT* destfmt, CS_VOID* dest, CS_INT* destlen);
}

namespace comnlib {

using Bytes = std::span<const CS_BYTE>;

// The encoding of the character data that a format describes: its locale's or else the context's.
inline Encoding encoding_of(const CS_CONTEXT& context, const CS_DATAFMT& format) {
  const CS_LOCALE* locale = locale_of(context, format);
  if (locale == nullptr || locale->ctypeptr == nullptr) return {nullptr, false};
  return {locale->ctypeptr->locchardesc, false};
}
inline constexpr Encoding kUtf16 = {nullptr, true};

inline const char_attrib* attributes_of(const Encoding& encoding) {
  return encoding.charset == nullptr ? nullptr : encoding.charset->char_attrib;
}

// Text into a padded character destination (comn__padchar), a padded Unicode-character destination
// (comn__padunichar), or a CS_VARCHAR, from the encoding `from`. Codes as in convert.h.
CS_RETCODE copy_to_character(Bytes text, const Encoding& from, const Conversion& call);
CS_RETCODE copy_to_unichar(Bytes text, const Encoding& from, const Conversion& call);
CS_RETCODE copy_to_varchar(Bytes text, const Encoding& from, const Conversion& call);

}  // namespace comnlib
