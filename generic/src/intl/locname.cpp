// Locale names in the caller's character set, from UTF-8.
#include "intl/com_intl.h"
#include "intl/text.h"
#include "intl/xlate.h"

using namespace comnlib;

CS_RETCODE com_intl_get_locname(CS_CONTEXT* ctx, const CS_LOCALE* locale, const CS_CHAR* utf8name,
                                CS_INT utf8len, CS_CHAR* buf, CS_INT buflen, CS_INT* outlen) {
  check_pointer(ctx);
  check_pointer(buf);
  check_pointer(outlen);
  require(buflen > 0);
  const std::string_view name = text_of(utf8name, utf8len);
  if (name.empty()) {
    *outlen = 0;
    return trace(CS_SUCCEED);
  }
  if (locale == nullptr) locale = ctx->ctxlocale;
  const CsLocCache* entry = locale == nullptr ? nullptr : locale->ctypeptr;
  if (entry == nullptr || entry->locchardesc == nullptr) return trace(CS_FAIL);

  const std::span text(reinterpret_cast<const CS_BYTE*>(name.data()), name.size());
  const std::span room(reinterpret_cast<CS_BYTE*>(buf), static_cast<std::size_t>(buflen));
  const Translated converted = translate(ctx, {ctx->ctxglobals->utf8_charset, false},
                                         {entry->locchardesc, false}, text, room);
  if (converted.code == CS_MEM_ERROR) return trace(CS_MEM_ERROR);
  if (converted.code != CS_SUCCEED && converted.code != CS_CVT_SUBSTITUTED) return trace(CS_FAIL);
  *outlen = static_cast<CS_INT>(converted.written);
  return trace(CS_SUCCEED);
}
