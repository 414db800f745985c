// The conversions from CS_DATETIME, and what both sizes share: the locale's conventions and the
// style.
#include "conv/com_date.h"

#include <algorithm>

namespace comnlib {
namespace {

constexpr bool is_text(CS_INT datatype) {
  return is_character(datatype) || datatype == CS_VARCHAR_TYPE || datatype == CS_UNICHAR_TYPE;
}

}  // namespace

DateStyle read_date_style(CS_CONTEXT& context, CsLocCache& time) {
  const CsDateInfo* info = nullptr;
  const CS_RETCODE code = date_conventions_of(context, time, info);
  if (code != CS_SUCCEED) return {code == CS_MEM_ERROR ? code : CS_CVT_STYLE, kUsEnglish};
  return {CS_SUCCEED, info == nullptr ? kUsEnglish : info->conventions};
}

Encoding date_encoding(const CS_CONTEXT& context, const CS_DATAFMT& format) {
  const CsLocCache* time = time_entry(context, format);
  return {time == nullptr ? nullptr : time->locchardesc, false};
}

// Only month names go beyond ASCII, in the character set of the conventions that they belong to.
CS_RETCODE place_wide_date(std::string_view text, const Conversion& call) {
  const Bytes bytes(reinterpret_cast<const CS_BYTE*>(text.data()), text.size());
  const bool ascii = std::ranges::all_of(bytes, [](CS_BYTE byte) { return byte < 0x80; });
  const Encoding encoding =
      ascii ? Encoding{nullptr, false} : date_encoding(*call.context, *call.destfmt);
  std::array<CS_UNICHAR, kDateTextRoom> units;
  const Translated wide = translate(call.context, encoding, kUtf16, bytes,
                                    {reinterpret_cast<CS_BYTE*>(units.data()), sizeof units});
  if (wide.code != CS_SUCCEED) return wide.code;
  return place_in_general<false>(CodeUnits(units).first(wide.written / sizeof(CS_UNICHAR)), call);
}

}  // namespace comnlib

using namespace comnlib;
using Source = FixedSource<Datetime>;

COMNLIB_MEMBER(comn_datetodate, Source, DateToDatetime)
COMNLIB_MEMBER(comn_datetodate4, Source, DateToDatetime4)
COMNLIB_MEMBER(comn_datetochar, Source, DateToCharacter)
COMNLIB_MEMBER(comn_datetovarchar, Source, DateToVarchar)
COMNLIB_MEMBER(comn_datetobin, Source, ToBinary)
COMNLIB_MEMBER(comn_datetovarbin, Source, ToVarbinary)

CS_RETCODE comn_get_datetochar_fmt(COMNLIB_CONVERSION_PARAMETERS) {
  check_pointers({context, srcfmt, src, destfmt, dest, destlen});
  require(srcfmt->datatype == CS_DATETIME_TYPE || srcfmt->datatype == CS_DATETIME4_TYPE);
  require(is_text(destfmt->datatype));
  const DateStyle found = date_style(*context, *destfmt);
  const CS_INT style = found.code == CS_SUCCEED ? found.conventions.style : -1;
  store(dest, style);
  *destlen = sizeof style;
  if (found.code != CS_SUCCEED) return trace(found.code);
  return trace(is_date_style(style) ? CS_SUCCEED : CS_CVT_STYLE);
}
