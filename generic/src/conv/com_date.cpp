// The conversions of CS_DATETIME, and what both sizes share: the locale's conventions and the
// style.
#include "conv/com_date.h"

#include <algorithm>

#include "intl/locdata.h"
#include "intl/xlate.h"

namespace comnlib {
namespace {

constexpr bool is_text(CS_INT datatype) {
  return is_character(datatype) || datatype == CS_VARCHAR_TYPE || datatype == CS_UNICHAR_TYPE;
}

constexpr bool is_style(CS_INT style) {
  return style == COM_DATESTYLE_DEFAULT || style == COM_DATESTYLE_LONG ||
         style == COM_DATESTYLE_ISO;
}

const CsLocCache* time_entry(const CS_CONTEXT& context, const CS_DATAFMT& format) {
  const CS_LOCALE* locale = format.locale != nullptr ? format.locale : context.ctxlocale;
  return locale == nullptr ? nullptr : locale->timeptr;
}

constexpr bool is_ascii(char c) {
  return static_cast<unsigned char>(c) < 0x80;
}

}  // namespace

const DateConventions& date_conventions(const CS_CONTEXT& context, const CS_DATAFMT& format) {
  const CsLocCache* entry = time_entry(context, format);
  if (entry == nullptr || entry->locdateinfo == nullptr) return kUsEnglish;
  return entry->locdateinfo->conventions;
}

const CsCharDesc* date_charset(const CS_CONTEXT& context, const CS_DATAFMT& format) {
  const CsLocCache* entry = time_entry(context, format);
  return entry == nullptr ? nullptr : entry->locchardesc;
}

CS_RETCODE format_for(const CS_DATETIME& value, const Conversion& call, DateTextBuffer& buffer) {
  const DateConventions& conventions = date_conventions(*call.context, *call.destfmt);
  const FormattedDate result = format_datetime(value, conventions, buffer.characters);
  buffer.text = {buffer.characters.data(), result.length};
  if (result.status == DateText::done) return CS_SUCCEED;
  return result.status == DateText::domain ? CS_CVT_DOMAIN : CS_CVT_STYLE;
}

CS_RETCODE place_date_unichar(std::string_view text, const Conversion& call) {
  if (std::ranges::all_of(text, is_ascii)) return place_unichar(text, call);
  std::array<CS_UNICHAR, kDateTextRoom> units;  // never more than the bytes of the text
  const Translated result =
      translate(call.context, {date_charset(*call.context, *call.destfmt), false}, {nullptr, true},
                {reinterpret_cast<const CS_BYTE*>(text.data()), text.size()},
                std::span(reinterpret_cast<CS_BYTE*>(units.data()), sizeof units));
  if (result.code != CS_SUCCEED) {
    *call.destlen = 0;
    return result.code;
  }
  return place_unichar(std::span(units).first(result.written / sizeof(CS_UNICHAR)), call);
}

}  // namespace comnlib

using namespace comnlib;

COMNLIB_DATE_FAMILY(comn_date, CS_DATETIME)

CS_RETCODE comn_get_datetochar_fmt(COMNLIB_CONVERSION_PARAMETERS) {
  check_pointers({context, srcfmt, src, destfmt, dest, destlen});
  require(srcfmt->datatype == CS_DATETIME_TYPE || srcfmt->datatype == CS_DATETIME4_TYPE);
  require(is_text(destfmt->datatype));
  const CS_INT style = date_conventions(*context, *destfmt).style;
  store(dest, style);
  *destlen = sizeof style;
  return trace(is_style(style) ? CS_SUCCEED : CS_CVT_STYLE);
}
