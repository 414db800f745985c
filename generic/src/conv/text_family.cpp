// Literals in text: numbers, money, dates and hexadecimal digits into their types.
#include "conv/text_family.h"

#include <algorithm>
#include <array>

#include "chars/hex.h"
#include "comnlib/numeric.h"
#include "conv/chfloat.h"
#include "conv/com_date.h"
#include "conv/newutils.h"
#include "conv/number_family.h"
#include "exact/mny4cnvt.h"
#include "exact/mnycnvt.h"
#include "exact/numeric.h"

namespace comnlib {
namespace {

// Longer literals, not counting surrounding blanks, are rejected.
constexpr std::size_t kLiteralRoom = 1024;

// Replaces a character without an ASCII form. No literal contains it.
constexpr CS_CHAR kNoAscii = '\x1A';

enum class NulBytes { kText, kEndOfText };

// The ASCII form of a literal without the blanks around it. Plain bytes are viewed in place.
class AsciiForm {
 public:
  explicit AsciiForm(const Text& text, NulBytes nul = NulBytes::kText) : nul_(nul) {
    if (is_plain(text))
      view_ = trim(text.bytes);
    else
      valid_ = with_reader(text, [this](auto reader) { return fill(reader); });
  }
  AsciiForm(const AsciiForm&) = delete;
  AsciiForm& operator=(const AsciiForm&) = delete;

  bool valid() const { return valid_ && view_.size() <= kLiteralRoom; }
  std::string_view view() const { return view_; }

 private:
  bool ends_text(bool nul) const { return nul && nul_ == NulBytes::kEndOfText; }

  std::string_view trim(Bytes bytes) const {
    if (nul_ == NulBytes::kEndOfText) {
      const auto* nul = static_cast<const CS_BYTE*>(std::memchr(bytes.data(), 0, bytes.size()));
      if (nul != nullptr) bytes = {bytes.data(), nul};
    }
    while (!bytes.empty() && is_default_space(bytes.front())) bytes = bytes.subspan(1);
    while (!bytes.empty() && is_default_space(bytes.back())) bytes = bytes.first(bytes.size() - 1);
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
  }

  template <class Reader>
  bool fill(Reader reader) {
    skip_blanks(reader);
    std::size_t length = 0;
    std::size_t kept = 0;  // without trailing blanks
    for (; !reader.done() && !ends_text(reader.nul()); reader.skip()) {
      const bool space = reader.space();
      if (length == kLiteralRoom) {
        if (space) continue;
        return false;
      }
      buffer_[length++] = space ? ' ' : form_of(reader);
      if (!space) kept = length;
    }
    view_ = {buffer_.data(), kept};
    return true;
  }

  template <class Reader>
  static CS_CHAR form_of(const Reader& reader) {
    const int ascii = reader.ascii();
    return ascii == 0 && !reader.nul() ? kNoAscii : static_cast<CS_CHAR>(ascii);
  }

  NulBytes nul_;
  std::array<CS_CHAR, kLiteralRoom> buffer_;
  std::string_view view_;
  bool valid_ = true;
};

// Reads money by a parser whose status is 0, 1 (overflow) or 2 (syntax). UTF-16 is parsed in the
// form that reads as ISO 8859-1, in which currency signs have a place.
template <class Value, class Parse>
CS_RETCODE text_to_amount(const Text& text, const Conversion& call, Parse parse) {
  Value value{};
  CS_INT status = kExactSyntax;
  if (text.utf16) {
    const AsciiForm form(text);
    if (form.valid())
      status =
          parse(&value, form.view().data(), static_cast<CS_INT>(form.view().size()), 0, nullptr);
  } else {
    const Bytes bytes = text.bytes;
    status = parse(&value, reinterpret_cast<const CS_CHAR*>(bytes.data()),
                   static_cast<CS_INT>(bytes.size()), 0, is_plain(text) ? nullptr : text.attrib);
  }
  if (status == kExactSyntax) return CS_CVT_SYNTAX;
  return store_result(call, value, exact_code(status));
}

// The hexadecimal digits of a literal, after an optional "0x".
template <class Reader>
struct HexDigits {
  bool valid;
  std::size_t count;
  Reader first;
};

template <class Reader>
void skip_prefix(Reader& reader) {
  Reader ahead = reader;
  if (ahead.done() || ahead.ascii() != '0') return;
  ahead.skip();
  if (ahead.done() || (ahead.ascii() != 'x' && ahead.ascii() != 'X')) return;
  ahead.skip();
  reader = ahead;
}

template <class Reader>
HexDigits<Reader> measure_hex(Reader reader) {
  skip_prefix(reader);
  HexDigits<Reader> digits{true, 0, reader};
  for (; digits.valid && !reader.done(); reader.skip(), ++digits.count)
    digits.valid = hex_value(reader.ascii()).has_value();
  return digits;
}

// Writes as many leading bytes as have room. An odd count of digits has a zero before it.
template <class Reader>
void write_bytes(HexDigits<Reader> digits, std::span<CS_BYTE> room) {
  bool low = digits.count % 2 != 0;
  unsigned high = 0;
  for (CS_BYTE& byte : room) {
    if (!low) {
      high = *hex_value(digits.first.ascii());
      digits.first.skip();
    }
    byte = static_cast<CS_BYTE>(high << 4 | *hex_value(digits.first.ascii()));
    digits.first.skip();
    low = false;
  }
}

struct HexRead {
  bool valid;
  std::size_t bytes;    // of the whole text
  std::size_t written;  // as many of them as had room
};

HexRead read_hex(Text text, std::span<CS_BYTE> room) {
  return with_reader(text, [room](auto reader) -> HexRead {
    const auto digits = measure_hex(reader);
    if (!digits.valid) return {false, 0, 0};
    const std::size_t bytes = (digits.count + 1) / 2;
    const std::size_t written = std::min(bytes, room.size());
    write_bytes(digits, room.first(written));
    return {true, bytes, written};
  });
}

}  // namespace

CS_RETCODE text_to_bit(const Text& text, const Conversion& call) {
  CS_INT value = 0;
  const ScanStatus status = scan_integer(text, value);
  if (status == kNoInteger) return CS_CVT_SYNTAX;
  const CS_RETCODE code = status == kOutOfRange ? CS_CVT_OVERFLOW : CS_SUCCEED;
  return store_result(call, static_cast<CS_BIT>(value != 0 ? 1 : 0), code);
}

CS_RETCODE text_to_float(const Text& text, const Conversion& call) {
  const ParsedFloat parsed = parse_float(text);
  if (parsed.code == CS_CVT_SYNTAX) return CS_CVT_SYNTAX;
  return store_result(call, parsed.value, parsed.code);
}

CS_RETCODE text_to_real(const Text& text, const Conversion& call) {
  const ParsedFloat parsed = parse_float(text);
  if (parsed.code == CS_CVT_SYNTAX) return CS_CVT_SYNTAX;
  *call.destlen = sizeof(CS_REAL);
  const CS_RETCODE narrowed = ToFloat<Real>::convert(parsed.value, call);
  return parsed.code == CS_SUCCEED ? narrowed : parsed.code;
}

CS_RETCODE text_to_money(const Text& text, const Conversion& call) {
  return text_to_amount<CS_MONEY>(text, call, com__mnyfromchar_mb);
}

CS_RETCODE text_to_money4(const Text& text, const Conversion& call) {
  return text_to_amount<CS_MONEY4>(text, call, com__mny4fromchar_mb);
}

CS_RETCODE parse_wide_datetime(const Text& text, const Conversion& call,
                               const DateConventions& conventions, ParsedDate& date) {
  if (text.utf16) {
    std::array<CS_BYTE, kLiteralRoom> room;
    const Encoding names = date_encoding(*call.context, *call.srcfmt);
    const Translated narrow = translate(call.context, kUtf16, names, text.bytes, room);
    if (narrow.code == CS_MEM_ERROR) return CS_MEM_ERROR;
    if (narrow.code == CS_SUCCEED)
      date = parse_datetime(view_of(Bytes(room).first(narrow.written)), conventions);
    if (date.status != DateText::syntax) return CS_SUCCEED;
  }
  const AsciiForm form(text);
  if (form.valid()) date = parse_datetime(form.view(), conventions);
  return CS_SUCCEED;
}

CS_RETCODE text_to_binary(const Text& text, const Conversion& call) {
  const auto room = static_cast<std::size_t>(call.destfmt->maxlength);
  const HexRead read = read_hex(text, {static_cast<CS_BYTE*>(call.dest), room});
  if (!read.valid) return CS_CVT_SYNTAX;
  *call.destlen = static_cast<CS_INT>(read.written);
  if (read.written < read.bytes) return CS_CVT_TRUNCATED;
  return comn__padbin(*call.destlen, call.destfmt, call.dest, call.destlen);
}

CS_RETCODE text_to_varbinary(const Text& text, const Conversion& call) {
  void* record = call.dest;
  const HexRead read = read_hex(text, {record_bytes(record), CS_MAX_CHAR});
  if (!read.valid) return CS_CVT_SYNTAX;
  store(record, static_cast<CS_SMALLINT>(read.written));
  *call.destlen = sizeof(CS_VARBINARY);
  return read.written < read.bytes ? CS_CVT_TRUNCATED : CS_SUCCEED;
}

CS_RETCODE text_to_numeric(const Text& text, const Conversion& call) {
  const bool own_precision = call.destfmt->precision == CS_USE_SRCVALUE;
  const bool own_scale = call.destfmt->scale == CS_USE_SRCVALUE;
  if (!own_precision && !is_precision(call.destfmt->precision)) return CS_CVT_PRECISION;
  if (!own_scale && !is_scale(call.destfmt->scale)) return CS_CVT_SCALE;

  const AsciiForm form(text, terminates(*call.srcfmt) ? NulBytes::kEndOfText : NulBytes::kText);
  if (!form.valid()) return CS_CVT_SYNTAX;

  const CS_BYTE precision =
      own_precision ? kFromText : static_cast<CS_BYTE>(call.destfmt->precision);
  const CS_BYTE scale = own_scale ? kFromText : static_cast<CS_BYTE>(call.destfmt->scale);
  constexpr bool kRounding = false;
  CS_NUMERIC result{};
  const CS_INT status = parse_numeric(form.view(), precision, scale, kRounding, result);
  if (status == kExactSyntax) return CS_CVT_SYNTAX;
  if (status == kExactOverflow && (own_precision || own_scale)) return CS_CVT_OVERFLOW;
  *call.destlen = comn_num_getlen(result.precision) + CS_INT{offsetof(CS_NUMERIC, array)};
  std::memcpy(call.dest, &result, static_cast<std::size_t>(*call.destlen));
  return status == kExactTruncated ? CS_CVT_TRUNCATED : exact_code(status);
}

}  // namespace comnlib
