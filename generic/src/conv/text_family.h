// The conversions of text to every type, for character data, varchar and Unicode-character data.
// Targets that read a number or a date use the ASCII forms of characters, so that all three share
// one body.
#pragma once

#include "chars/text.h"
#include "chars/utf.h"
#include "conv/chscan.h"
#include "conv/com_date.h"
#include "conv/short_number.h"
#include "conv/textcopy.h"

namespace comnlib {

// How a source's bytes are read.
struct TextSetup {
  [[gnu::always_inline]] explicit TextSetup(const Conversion& call)
      : empty(text_in(source_encoding(false, call), {})) {}

  Text of(const CS_BYTE* bytes, CS_INT length) const {
    return {{bytes, static_cast<std::size_t>(length)}, empty.attrib, false, empty.ascii_based};
  }

  Text empty;
};

struct CharacterSource : Sized<Family::character, 1> {
  using Value = Text;
  using Setup = TextSetup;
  static CS_RETCODE read(const Conversion& call, Text& value, const Setup& setup) {
    value = setup.of(static_cast<const CS_BYTE*>(call.src), call.srcfmt->maxlength);
    return CS_SUCCEED;
  }
};

// For targets that ask for the encodings themselves.
struct CharacterBytes : CharacterSource {
  using Setup = NoSetup;
  static CS_RETCODE read(const Conversion& call, Text& value) {
    const auto length = static_cast<std::size_t>(call.srcfmt->maxlength);
    value = {{static_cast<const CS_BYTE*>(call.src), length}, nullptr};
    return CS_SUCCEED;
  }
};

struct VarcharSource : Varchar {
  using Value = Text;
  using Setup = TextSetup;
  static CS_RETCODE read(const Conversion& call, Text& value, const Setup& setup) {
    const CS_SMALLINT length = record_length(call.src);
    if (!is_record_length(length)) return CS_CVT_DOMAIN;
    value = setup.of(record_bytes(call.src), length);
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

// A target that writes `Type` by a function. A text that is not valid gives length 0.
template <class Type, auto kConvert>
struct TextTarget : Type {
  static constexpr CS_INT kLength = 0;
  [[gnu::always_inline]] static CS_RETCODE convert(const Text& text, const Conversion& call) {
    return kConvert(text, call);
  }
};

// Calls the function with the members of text and call as arguments, so that the caller keeps them
// in registers.
template <auto kConvert>
[[gnu::noinline]] CS_RETCODE convert_apart(const CS_BYTE* bytes, std::size_t size,
                                           const char_attrib* attrib, bool utf16, bool ascii_based,
                                           COMNLIB_CONVERSION_PARAMETERS) {
  return kConvert(Text{{bytes, size}, attrib, utf16, ascii_based},
                  Conversion{context, srcfmt, src, destfmt, dest, destlen});
}

// The same for numbers. Short texts, which most columns have, are read without the function.
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
CS_RETCODE text_to_binary(const Text& text, const Conversion& call);
CS_RETCODE text_to_varbinary(const Text& text, const Conversion& call);

inline std::string_view view_of(Bytes bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// A date that parse_datetime() does not read as plain bytes. Month names are bytes of the
// conventions' own character set; digits of another width are read in their ASCII form. Without
// memory for the table of that set nothing is known of the text: CS_MEM_ERROR, else CS_SUCCEED.
CS_RETCODE parse_wide_datetime(const Text& text, const Conversion& call,
                               const DateConventions& conventions, ParsedDate& date);

template <class Target>
struct DateTarget : Target {
  static constexpr CS_INT kLength = 0;
  using Setup = KeptDateStyle;
  [[gnu::always_inline]] static CS_RETCODE convert(const Text& text, const Conversion& call,
                                                   Setup& setup) {
    const DateStyle style = setup.get(*call.context, *call.srcfmt);
    if (style.code != CS_SUCCEED) return style.code;
    ParsedDate date{DateText::syntax, {}};
    if (!text.utf16) date = parse_datetime(view_of(text.bytes), style.conventions);
    if (date.status == DateText::done) [[likely]]
      return Target::convert(date.value, call);
    if (date.status == DateText::syntax && (text.utf16 || text.attrib != nullptr)) {
      const CS_RETCODE code = parse_wide_datetime(text, call, style.conventions, date);
      if (code != CS_SUCCEED) return code;
      if (date.status == DateText::done) return Target::convert(date.value, call);
    }
    return date.status == DateText::out_of_range ? CS_CVT_OVERFLOW : CS_CVT_SYNTAX;
  }
};

template <class Type>
using TextToInteger = NumberTarget<Type, ShortInteger<Type>, text_to_integer<typename Type::Value>>;
using TextToBit = TextTarget<Bit, text_to_bit>;
using TextToReal = NumberTarget<Real, ShortFloat<Real>, text_to_real>;
using TextToFloat = NumberTarget<Float, ShortFloat<Float>, text_to_float>;
using TextToNumeric = NumberTarget<Numeric, ShortNumeric, text_to_numeric>;
using TextToMoney = NumberTarget<Money, ShortMoney, text_to_money>;
using TextToMoney4 = NumberTarget<Money4, ShortMoney4, text_to_money4>;
using TextToDatetime = DateTarget<DateToDatetime>;
using TextToDatetime4 = DateTarget<DateToDatetime4>;
using TextToBinary = TextTarget<Binary, text_to_binary>;
using TextToVarbinary = TextTarget<Varbinary, text_to_varbinary>;
using TextToUnichar = TextTarget<Unichar, copy_to_unichar>;

}  // namespace comnlib
