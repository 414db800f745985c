// Paths of localization files below the home, for the openers and the diagnosis. The public
// builders and the rules common to all are in comnlib/locale.h.
#pragma once

#include "paths/homepath.h"

extern "C" {

// home/locales[/language[/charset]]/file. A null piece is left out; `charset` without `language`
// is ignored.
CS_RETCODE com__path_locfile(CS_CONTEXT* ctx, const CS_CHAR* language, const CS_CHAR* charset,
                             const CS_CHAR* file, CS_CHAR* buf, CS_INT buflen);

// home/locales/message/language/file, in a buffer that is zero-filled first. The last piece needs a
// byte to spare. A language that is a leading part of "us_english" is written as that in full.
CS_RETCODE comn__path_msgfile(CS_CONTEXT* ctx, const CS_CHAR* language, CS_INT langlen,
                              const CS_CHAR* file, CS_INT filelen, CS_CHAR* buf, CS_INT buflen);

// home/charsets[/charset]/file[.ext]. All steps but the extension's need a byte to spare.
CS_RETCODE com__path_charfile(CS_CONTEXT* ctx, const CS_CHAR* charset, const CS_CHAR* file,
                              const CS_CHAR* ext, CS_CHAR* buf, CS_INT buflen);

// home/locales/money/name.mon (kind 4), home/locales/numeric/name.num (5) or
// home/locales/datetime/name.dt (6). The name and the extension need a byte to spare.
CS_RETCODE comn__path_locdata(CS_CONTEXT* ctx, CS_INT kind, const CS_CHAR* name, CS_CHAR* buf,
                              CS_INT buflen);
}
