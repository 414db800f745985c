// The conversions of text to every type, for character data, varchar and Unicode-character data.
// Targets that read a number or a date go by the ASCII forms of characters, so that all three
// share one body.
#pragma once

#include "chars/text.h"
#include "chars/utf.h"
#include "conv/chscan.h"
#include "conv/short_number.h"
#include "conv/textcopy.h"

namespace comnlib {

inline Text text_from(const Conversion& call, const CS_BYTE* bytes, CS_INT length) {
  return text_in(source_encoding(false, call), {bytes, static_cast<std::size_t>(length)});
}

struct CharacterSource : Sized<Family::character, 1> {
  using Value = Text;
  static CS_RETCODE read(const Conversion& call, Text& value) {
    value = text_from(call, static_cast<const CS_BYTE*>(call.src), call.srcfmt->maxlength);
    return CS_SUCCEED;
  }
};

struct VarcharSource : Varchar {
  using Value = Text;
  static CS_RETCODE read(const Conversion& call, Text& value) {
    const CS_SMALLINT length = record_length(call.src);
    if (!is_record_length(length)) return CS_CVT_DOMAIN;
    value = text_from(call, record_bytes(call.src), length);
    return CS_SUCCEED;
  }
};

struct UnicharSource : Unichar {
  using Value = Text;
  static CS_RETCODE read(const Conversion& call, Text& value) {
    const auto length = static_cast<std::size_t>(call.srcfmt->maxlength);
    value = {{static_cast<const CS_BYTE*>(call.src), length}, nullptr, true};
    return CS_SUCCEED;
  }
};

// For targets that read a literal: no literal contains half a unit or an unpaired surrogate.
struct UnicharLiteral : UnicharSource {
  static CS_RETCODE read(const Conversion& call, Text& value) {
    static_cast<void>(UnicharSource::read(call, value));
    return is_utf16(value.bytes) ? CS_SUCCEED : CS_CVT_BADXLATE;
  }
};

// A target that serves what `Type` does, by a function. A text that is not valid gives length 0.
template <class Type, auto kConvert>
struct TextTarget : Type {
  static constexpr CS_INT kLength = 0;
  [[gnu::always_inline]] static CS_RETCODE convert(const Text& text, const Conversion& call) {
    return kConvert(text, call);
  }
};

// Calls it with the members of text and call as arguments, so that their caller keeps these in
// registers.
template <auto kConvert>
[[gnu::noinline]] CS_RETCODE convert_apart(const CS_BYTE* bytes, std::size_t size,
                                           const char_attrib* attrib, bool utf16, bool ascii_based,
                                           COMNLIB_CONVERSION_PARAMETERS) {
  return kConvert(Text{{bytes, size}, attrib, utf16, ascii_based},
                  Conversion{context, srcfmt, src, destfmt, dest, destlen});
}

// The same of numbers, whose short texts, those of most columns, do without the function.
template <class Type, class Short, auto kConvert>
struct NumberTarget : Type {
  static constexpr CS_INT kLength = 0;
  [[gnu::always_inline]] static CS_RETCODE convert(const Text& text, const Conversion& call) {
    ShortDecimal number;
    if (read_short_decimal<Short::kWithPoint>(text, number) && Short::store(number, call))
        [[likely]]
      return CS_SUCCEED;
    return convert_apart<kConvert>(text.bytes.data(), text.bytes.size(), text.attrib, text.utf16,
                                   text.ascii_based, call.context, call.srcfmt, call.src,
                                   call.destfmt, call.dest, call.destlen);
  }
};

template <class Value>
CS_RETCODE text_to_integer(const Text& text, const Conversion& call) {
  Value value{};
  const ScanStatus status = scan_integer(text, value);
  if (status == kNoInteger) return CS_CVT_SYNTAX;
  return store_result(call, value, status == kOutOfRange ? CS_CVT_OVERFLOW : CS_SUCCEED);
}

CS_RETCODE text_to_bit(const Text& text, const Conversion& call);
CS_RETCODE text_to_real(const Text& text, const Conversion& call);
CS_RETCODE text_to_float(const Text& text, const Conversion& call);
CS_RETCODE text_to_numeric(const Text& text, const Conversion& call);
CS_RETCODE text_to_money(const Text& text, const Conversion& call);
CS_RETCODE text_to_money4(const Text& text, const Conversion& call);
CS_RETCODE text_to_datetime(const Text& text, const Conversion& call);
CS_RETCODE text_to_datetime4(const Text& text, const Conversion& call);
CS_RETCODE text_to_binary(const Text& text, const Conversion& call);
CS_RETCODE text_to_varbinary(const Text& text, const Conversion& call);

template <class Type>
using TextToInteger = NumberTarget<Type, ShortInteger<Type>, text_to_integer<typename Type::Value>>;
using TextToBit = TextTarget<Bit, text_to_bit>;
using TextToReal = NumberTarget<Real, ShortFloat<Real>, text_to_real>;
using TextToFloat = NumberTarget<Float, ShortFloat<Float>, text_to_float>;
using TextToNumeric = NumberTarget<Numeric, ShortNumeric, text_to_numeric>;
using TextToMoney = NumberTarget<Money, ShortMoney, text_to_money>;
using TextToMoney4 = NumberTarget<Money4, ShortMoney4, text_to_money4>;
using TextToDatetime = TextTarget<Datetime, text_to_datetime>;
using TextToDatetime4 = TextTarget<Datetime4, text_to_datetime4>;
using TextToBinary = TextTarget<Binary, text_to_binary>;
using TextToVarbinary = TextTarget<Varbinary, text_to_varbinary>;
using TextToCharacter = TextTarget<Character, copy_to_character>;
using TextToVarchar = TextTarget<Varchar, copy_to_varchar>;
using TextToUnichar = TextTarget<Unichar, copy_to_unichar>;

}  // namespace comnlib
