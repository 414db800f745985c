// Opening of localization files. Each opener builds the path, copies it to the error buffer when
// there is one, and opens the file.
#pragma once

#include "comnlib/locale.h"
#include "intl.h"

extern "C" {

CS_RETCODE com__open_locfile(CS_CONTEXT* ctx, const CS_CHAR* language, const CS_CHAR* charset,
                             const CS_CHAR* file, INTL_HANDLE* handle, CS_CHAR* errbuf,
                             CS_INT errlen);
CS_RETCODE com__open_charfile(CS_CONTEXT* ctx, const CS_CHAR* charset, const CS_CHAR* file,
                              const CS_CHAR* ext, INTL_HANDLE* handle, CS_CHAR* errbuf,
                              CS_INT errlen);
CS_RETCODE comn__open_msgfile(CS_CONTEXT* ctx, const CS_CHAR* language, CS_INT langlen,
                              const CS_CHAR* file, CS_INT filelen, INTL_HANDLE* handle,
                              CS_CHAR* errbuf, CS_INT errlen);
CS_RETCODE com__open_cfgfile(CS_CONTEXT* ctx, const CS_CHAR* name, INTL_HANDLE* handle,
                             CS_BOOL use_nuv);

// Gives the cache entry the money (kind 4), number (5) or date/time (6) conventions of a name:
// those that the context has loaded, or else those of their file. CS_FAIL for any other kind.
CS_RETCODE comn__load_locdata(CS_CONTEXT* ctx, CS_INT kind, const CS_CHAR* name,
                              CsLocCache* cache_entry, CS_CHAR* errbuf, CS_INT errlen);
}

namespace comnlib {

// An error buffer of a caller; `path` null when there is none.
struct ErrorBuffer {
  CS_CHAR* path;
  CS_INT length;
};

// As com__open_cfgfile, with an error buffer.
CS_RETCODE open_cfgfile(CS_CONTEXT* ctx, const CS_CHAR* name, INTL_HANDLE* handle, CS_BOOL use_nuv,
                        ErrorBuffer error);

// Opens a file of money, number or date/time conventions.
CS_RETCODE open_locdata(CS_CONTEXT* ctx, CS_INT kind, const CS_CHAR* name, INTL_HANDLE* handle,
                        ErrorBuffer error);

}  // namespace comnlib
