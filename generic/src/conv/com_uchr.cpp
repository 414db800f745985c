// Conversions from Unicode-character data, UTF-16 in host byte order, and into it from the types of
// fixed length, by way of their text.
#include "conv/com_date.h"
#include "conv/text_family.h"

using namespace comnlib;
using namespace comnlib::text_family;

namespace {

// Room for the text of every fixed-length value.
constexpr CS_INT kTextRoom = 256;

// Converts by the member that gives text and widens its ASCII to UTF-16.
template <CS_CONV_FUNC ToText>
CS_RETCODE by_text(const Conversion& call, Place place = Place::current()) {
  check_pointers(call, place);
  require(call.destfmt->datatype == CS_UNICHAR_TYPE && call.destfmt->maxlength >= 0, place);
  CS_DATAFMT textfmt = *call.destfmt;
  textfmt.datatype = CS_CHAR_TYPE;
  textfmt.format = 0;
  textfmt.maxlength = kTextRoom;
  std::array<CS_CHAR, kTextRoom> text;
  CS_INT length = 0;
  const CS_RETCODE code =
      ToText(call.context, call.srcfmt, call.src, &textfmt, text.data(), &length);
  if (code != CS_SUCCEED) {
    *call.destlen = 0;
    return trace(code, place);
  }
  return trace(place_unichar({text.data(), static_cast<std::size_t>(length)}, call), place);
}

}  // namespace

COMNLIB_TEXT_FAMILY(unichar, UnicharSource)
COMNLIB_TEXT_MEMBER(comn_unichartotext, UnicharSource, ToCharacter)
COMNLIB_TEXT_MEMBER(comn_unichartoimage, UnicharSource, ToBinary)
COMNLIB_TEXT_MEMBER(comn_unichartoi8, UnicharSource, ToInteger<std::int64_t, CS_LONG_TYPE>)

#define COMNLIB_BY_TEXT(routine, to_text)                                    \
  CS_RETCODE routine(COMNLIB_CONVERSION_PARAMETERS) {                        \
    return by_text<to_text>({context, srcfmt, src, destfmt, dest, destlen}); \
  }
COMNLIB_BY_TEXT(comn_i1tounichar, comn_i1tochar)
COMNLIB_BY_TEXT(comn_i2tounichar, comn_i2tochar)
COMNLIB_BY_TEXT(comn_i4tounichar, comn_i4tochar)
COMNLIB_BY_TEXT(comn_flt4tounichar, comn_flt4tochar)
COMNLIB_BY_TEXT(comn_flt8tounichar, comn_flt8tochar)
COMNLIB_BY_TEXT(comn_bittounichar, comn_bittochar)
COMNLIB_BY_TEXT(comn_moneytounichar, comn_moneytochar)
COMNLIB_BY_TEXT(comn_mny4tounichar, comn_mny4tochar)
COMNLIB_BY_TEXT(comn_numtounichar, comn_numtochar)

COMNLIB_DATE_MEMBER(comn_datetimetounichar, comnlib::date_to_unichar<CS_DATETIME>)
COMNLIB_DATE_MEMBER(comn_date4tounichar, comnlib::date_to_unichar<CS_DATETIME4>)
