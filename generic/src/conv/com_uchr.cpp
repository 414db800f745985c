// Conversions from Unicode-character data, UTF-16 in host byte order, and into it from the types of
// fixed length, by way of their text.
#include <algorithm>

#include "comnlib/datetime.h"
#include "conv/com_date.h"
#include "conv/newutils.h"
#include "conv/text_family.h"

using namespace comnlib;
using namespace comnlib::text_family;

namespace {

// Room for the text of every fixed-length value.
constexpr std::size_t kTextRoom = 256;

using Units = std::span<const CS_UNICHAR>;

// Text that does not fit is cut, as the money routines cut theirs.
CS_RETCODE place_cut(Units text, const Conversion& call) {
  const auto length = static_cast<CS_INT>(text.size_bytes());
  *call.destlen = std::min(length, call.destfmt->maxlength - call.destfmt->maxlength % 2);
  std::memcpy(call.dest, text.data(), static_cast<std::size_t>(*call.destlen));
  return comn__padunichar(length, call.destfmt, call.dest, call.destlen);
}

// Only month names go beyond ASCII, in the character set of the conventions that they belong to.
Encoding encoding_of_text(Bytes text, const Conversion& call) {
  const bool ascii = std::ranges::all_of(text, [](CS_BYTE byte) { return byte < 0x80; });
  return ascii ? Encoding{nullptr, false} : date_encoding(*call.context, *call.destfmt);
}

// Converts by the member that gives text, in UTF-16.
template <CS_CONV_FUNC ToText, auto PlaceText = place_unichar>
CS_RETCODE by_text(const Conversion& call, Place place = Place::current()) {
  check_pointers(call, place);
  require(call.destfmt->datatype == CS_UNICHAR_TYPE && call.destfmt->maxlength >= 0, place);
  CS_DATAFMT textfmt = *call.destfmt;
  textfmt.datatype = CS_CHAR_TYPE;
  textfmt.format = 0;
  textfmt.maxlength = kTextRoom;
  std::array<CS_BYTE, kTextRoom> text;
  CS_INT length = 0;
  *call.destlen = 0;
  const CS_RETCODE code =
      ToText(call.context, call.srcfmt, call.src, &textfmt, text.data(), &length);
  if (code != CS_SUCCEED) return trace(code, place);

  const Bytes bytes = Bytes(text).first(static_cast<std::size_t>(length));
  std::array<CS_UNICHAR, kTextRoom> units;
  const Translated wide = translate(call.context, encoding_of_text(bytes, call), kUtf16, bytes,
                                    {reinterpret_cast<CS_BYTE*>(units.data()), sizeof units});
  if (wide.code != CS_SUCCEED) return trace(wide.code, place);
  return trace(PlaceText(Units(units).first(wide.written / sizeof(CS_UNICHAR)), call), place);
}

}  // namespace

COMNLIB_TEXT_FAMILY(unichar, UnicharSource)
COMNLIB_TEXT_MEMBER(comn_unichartotext, UnicharSource, ToCharacter)
COMNLIB_TEXT_MEMBER(comn_unichartoimage, UnicharSource, ToBinary)
COMNLIB_TEXT_MEMBER(comn_unichartoi8, UnicharSource, ToInteger<std::int64_t, CS_LONG_TYPE>)

#define COMNLIB_BY_TEXT(routine, ...)                                            \
  CS_RETCODE routine(COMNLIB_CONVERSION_PARAMETERS) {                            \
    return by_text<__VA_ARGS__>({context, srcfmt, src, destfmt, dest, destlen}); \
  }
COMNLIB_BY_TEXT(comn_i1tounichar, comn_i1tochar)
COMNLIB_BY_TEXT(comn_i2tounichar, comn_i2tochar)
COMNLIB_BY_TEXT(comn_i4tounichar, comn_i4tochar)
COMNLIB_BY_TEXT(comn_flt4tounichar, comn_flt4tochar)
COMNLIB_BY_TEXT(comn_flt8tounichar, comn_flt8tochar)
COMNLIB_BY_TEXT(comn_bittounichar, comn_bittochar)
COMNLIB_BY_TEXT(comn_datetimetounichar, comn_datetochar)
COMNLIB_BY_TEXT(comn_date4tounichar, comn_date4tochar)
COMNLIB_BY_TEXT(comn_moneytounichar, comn_moneytochar, place_cut)
COMNLIB_BY_TEXT(comn_mny4tounichar, comn_mny4tochar, place_cut)
COMNLIB_BY_TEXT(comn_numtounichar, comn_numtochar)
