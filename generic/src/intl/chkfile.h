// Verification of localization files.
#pragma once

#include "comnlib/locale.h"

extern "C" {
// Whether a message file or a character-set file can be read: CS_SUCCEED or CS_FAIL with its path
// in `pathbuf`, with a NUL when there is room. When the path cannot be built, `pathbuf` gets "*"
// and the result is the builder's.
CS_RETCODE com__verify_msgfile(CS_CONTEXT* ctx, const CS_CHAR* language, CS_INT langlen,
                               const CS_CHAR* file, CS_INT filelen, CS_CHAR* pathbuf,
                               CS_INT pathlen);
CS_RETCODE com__verify_charfile(CS_CONTEXT* ctx, const CS_CHAR* charset, const CS_CHAR* file,
                                const CS_CHAR* ext, CS_CHAR* pathbuf, CS_INT pathlen);
}
