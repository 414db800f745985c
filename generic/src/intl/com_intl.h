// Locale resolution for the rest of the library.
#pragma once

#include "comnlib/locale.h"

extern "C" {

// What the section "linux" of locales.dat says of a locale name. CS_FAIL when it, or the section,
// is not there, and when a line in front of it is no "locale" line. A value of 256 bytes or more
// stops the process.
CS_RETCODE comn__intl_lookup(CS_CONTEXT* ctx, const CS_CHAR* locname, CS_INT locnamelen,
                             CsLocNames* names, CS_CHAR* errbuf, CS_INT errlen);

// A copy of a cache entry with names of its own, in no list. CS_MEM_ERROR stores null.
CS_RETCODE comn__copy_loccache(CS_CONTEXT* ctx, const CsLocCache* src, CsLocCache** dst);
}

namespace comnlib {

// The locale of a value: its format's, else the context's, else null.
inline const CS_LOCALE* locale_of(const CS_CONTEXT& ctx, const CS_DATAFMT& format) {
  return format.locale != nullptr ? format.locale : ctx.ctxlocale;
}

}  // namespace comnlib
