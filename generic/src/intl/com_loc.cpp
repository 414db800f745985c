// The file openers. A failed one leaves nothing open.
#include "intl/com_loc.h"

#include <array>

#include "intl/com_path.h"
#include "intl/locdata.h"
#include "intl/text.h"

namespace comnlib {
namespace {

// Zero-filled, with a byte after the longest path.
using PathBuffer = std::array<CS_CHAR, kPathLength + 1>;
using CfgPathBuffer = std::array<CS_CHAR, kPathLength + kConfigPathSpare>;

// What every opener does after it has built the path.
template <class Buffer>
CS_RETCODE open_built(CS_CONTEXT& ctx, CS_RETCODE built, const Buffer& path, INTL_HANDLE* handle,
                      ErrorBuffer error) {
  if (error.path != nullptr) copy_cut(path.data(), error.path, error.length);
  if (built != CS_SUCCEED) return built;
  const CS_INT status = intl_open(path.data(), handle);
  if (status >= 0) return CS_SUCCEED;
  ctx.ctxintlerr = status;
  return status == INTL_NO_MEMORY ? CS_MEM_ERROR : CS_INTL_NOFILE;
}

ErrorBuffer error_buffer(CS_CHAR* errbuf, CS_INT errlen, CallSite site = CallSite::current()) {
  require(errbuf == nullptr || errlen > 0, site);
  return {errbuf, errlen};
}

}  // namespace

CS_RETCODE open_cfgfile(CS_CONTEXT* ctx, const CS_CHAR* name, INTL_HANDLE* handle, CS_BOOL use_nuv,
                        ErrorBuffer error) {
  CfgPathBuffer path{};
  const CS_RETCODE built = com_path_cfgfile(ctx, name, path.data(), kPathLength, use_nuv);
  return open_built(*ctx, built, path, handle, error);
}

CS_RETCODE open_locdata(CS_CONTEXT* ctx, CS_INT kind, const CS_CHAR* name, INTL_HANDLE* handle,
                        ErrorBuffer error) {
  PathBuffer path{};
  const CS_RETCODE built = comn__path_locdata(ctx, kind, name, path.data(), kPathLength);
  return open_built(*ctx, built, path, handle, error);
}

}  // namespace comnlib

using namespace comnlib;

CS_RETCODE com__open_locfile(CS_CONTEXT* ctx, const CS_CHAR* language, const CS_CHAR* charset,
                             const CS_CHAR* file, INTL_HANDLE* handle, CS_CHAR* errbuf,
                             CS_INT errlen) {
  check_pointer(handle);
  const ErrorBuffer error = error_buffer(errbuf, errlen);
  PathBuffer path{};
  const CS_RETCODE built =
      com__path_locfile(ctx, language, charset, file, path.data(), kPathLength);
  return trace(open_built(*ctx, built, path, handle, error));
}

CS_RETCODE com__open_charfile(CS_CONTEXT* ctx, const CS_CHAR* charset, const CS_CHAR* file,
                              const CS_CHAR* ext, INTL_HANDLE* handle, CS_CHAR* errbuf,
                              CS_INT errlen) {
  check_pointer(handle);
  const ErrorBuffer error = error_buffer(errbuf, errlen);
  PathBuffer path{};
  const CS_RETCODE built = com__path_charfile(ctx, charset, file, ext, path.data(), kPathLength);
  return trace(open_built(*ctx, built, path, handle, error));
}

CS_RETCODE comn__open_msgfile(CS_CONTEXT* ctx, const CS_CHAR* language, CS_INT langlen,
                              const CS_CHAR* file, CS_INT filelen, INTL_HANDLE* handle,
                              CS_CHAR* errbuf, CS_INT errlen) {
  check_pointer(handle);
  const ErrorBuffer error = error_buffer(errbuf, errlen);
  PathBuffer path{};
  const CS_RETCODE built =
      comn__path_msgfile(ctx, language, langlen, file, filelen, path.data(), kPathLength);
  return trace(open_built(*ctx, built, path, handle, error));
}

CS_RETCODE com__open_cfgfile(CS_CONTEXT* ctx, const CS_CHAR* name, INTL_HANDLE* handle,
                             CS_BOOL use_nuv) {
  check_pointer(handle);
  return trace(open_cfgfile(ctx, name, handle, use_nuv, {nullptr, 0}));
}

CS_RETCODE comn__load_locdata(CS_CONTEXT* ctx, CS_INT kind, const CS_CHAR* name,
                              CsLocCache* cache_entry, CS_CHAR* errbuf, CS_INT errlen) {
  check_pointer(ctx);
  check_pointer(name);
  check_pointer(cache_entry);
  const ErrorBuffer error = error_buffer(errbuf, errlen);
  if (kind != COM_LC_MONETARY && kind != COM_LC_NUMERIC && kind != COM_LC_TIME)
    return trace(CS_FAIL);
  return trace(load_conventions(*ctx, kind, name, *cache_entry, error));
}
