// Text to text: copies between character destinations with whole-character truncation, quote
// doubling and the conversion between character sets. Shared by the character, varchar and
// Unicode-character families.
#pragma once

#include <span>

#include "chars/text.h"
#include "conv/placement.h"
#include "intl/com_intl.h"
#include "intl/convcfg.h"
#include "intl/xlate.h"

extern "C" {

// How many of the `srclen` bytes of `src` go into `destlen` bytes: all of them where they fit,
// even if the last character is cut off by the end of the source; else as many whole characters as
// do.
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

// The encoding of the character data that a format describes: its locale's or else the context's.
inline Encoding encoding_of(const CS_CONTEXT& context, const CS_DATAFMT& format) {
  const CS_LOCALE* locale = locale_of(context, format);
  if (locale == nullptr || locale->ctypeptr == nullptr) return {nullptr, false};
  return {locale->ctypeptr->locchardesc, false};
}
inline constexpr Encoding kUtf16 = {nullptr, true};

// Bytes as text in an encoding.
inline Text text_in(const Encoding& encoding, Bytes bytes) {
  if (encoding.charset == nullptr) return {bytes, nullptr, encoding.utf16};
  return {bytes, encoding.charset->char_attrib, false, is_ascii_based(encoding.charset)};
}

// Descriptors of one character set differ where they belong to different contexts.
inline bool same_encoding(const Encoding& a, const Encoding& b) {
  if (a.utf16 != b.utf16) return false;
  if (a.charset == b.charset) return true;
  return a.charset != nullptr && b.charset != nullptr && a.charset->oid != 0 &&
         a.charset->oid == b.charset->oid;
}

// The encoding of the source text of a call.
inline Encoding source_encoding(bool utf16, const Conversion& call) {
  return utf16 ? kUtf16 : encoding_of(*call.context, *call.srcfmt);
}

// Whether text of the call's source format is surely in the encoding of its character destination.
// Descriptors of one character set in different contexts are left to the general case, so that a
// text between character sets has little to look at before it gets there.
inline bool keeps_encoding(const Conversion& call) {
  return call.srcfmt->locale == call.destfmt->locale ||
         source_encoding(false, call).charset == encoding_of(*call.context, *call.destfmt).charset;
}

namespace internal {
// The general case: text that does not fit, has quotes to double or may change its encoding.
// The call's members are arguments, so that the caller keeps them in registers.
CS_RETCODE copy_any_to_character(const CS_BYTE* bytes, std::size_t size, bool utf16,
                                 COMNLIB_CONVERSION_PARAMETERS);
CS_RETCODE copy_any_to_varchar(const CS_BYTE* bytes, std::size_t size, bool utf16,
                               COMNLIB_CONVERSION_PARAMETERS);

template <auto kCopy>
[[gnu::always_inline]] inline CS_RETCODE copy_in_general(const Text& text, const Conversion& call) {
  return kCopy(text.bytes.data(), text.bytes.size(), text.utf16, call.context, call.srcfmt,
               call.src, call.destfmt, call.dest, call.destlen);
}
}  // namespace internal

// Text into a padded character destination (comn__padchar), a padded Unicode-character destination
// (comn__padunichar), or a CS_VARCHAR. Codes as in convert.h.
CS_RETCODE copy_to_unichar(const Text& text, const Conversion& call);

// A text that fits, in the encoding of the destination, is copied and padded here.
struct TextToCharacter : Character {
  struct Setup {
    [[gnu::always_inline]] explicit Setup(const Conversion& call) {
      const bool kept = keeps_encoding(call);
      room = CharacterRoom::of<CS_DFMT_ESCQUOTE>(*call.destfmt);
      if (!kept) room.refuse_all();
    }
    CharacterRoom room;
  };

  static constexpr bool kStoresLength = true;
  [[gnu::always_inline]] static CS_RETCODE convert(const Text& text, const Conversion& call,
                                                   const Setup& setup) {
    if (text.utf16 || !setup.room.takes(static_cast<CS_INT>(text.bytes.size()))) [[unlikely]]
      return internal::copy_in_general<internal::copy_any_to_character>(text, call);
    return setup.room.place(text.bytes, call);
  }
};

struct TextToVarchar : Varchar {
  static constexpr CS_INT kLength = 0;

  struct Setup {
    [[gnu::always_inline]] explicit Setup(const Conversion& call)
        : most(keeps_encoding(call) ? CS_MAX_CHAR : -1) {}
    CS_INT most;
  };

  [[gnu::always_inline]] static CS_RETCODE convert(const Text& text, const Conversion& call,
                                                   const Setup& setup) {
    const auto length = static_cast<CS_INT>(text.bytes.size());
    if (text.utf16 || length > setup.most) [[unlikely]]
      return internal::copy_in_general<internal::copy_any_to_varchar>(text, call);
    copy_bytes(record_bytes(call.dest), text.bytes.data(), text.bytes.size());
    store(call.dest, static_cast<CS_SMALLINT>(length));
    *call.destlen = sizeof(CS_VARCHAR);
    return CS_SUCCEED;
  }
};

}  // namespace comnlib
