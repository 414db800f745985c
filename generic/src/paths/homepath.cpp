// Paths that grow piece by piece, and the path of a configuration file, which the configuration
// store and the localization services both build.
#include "paths/homepath.h"

#include <array>

#include "intl.h"

namespace comnlib {

HomePath::HomePath(CS_CONTEXT* ctx, CS_CHAR* buf, CS_INT buflen, CallSite site)
    : to_(buf), room_(buflen) {
  check_pointer(ctx, site);
  check_pointer(buf, site);
  require(buflen > 0, site);
  const CS_INT home = intl_home(buf, buflen);
  if (home < 0) {
    ctx->ctxintlerr = home;
    result_ = CS_INTL_LIBERR;
    return;
  }
  require(home <= buflen, site);
  to_ += home;
  counted_ = home;
  terminate();
}

HomePath& HomePath::add(std::string_view piece, Fit fit, char separator) {
  if (result_ != CS_SUCCEED) return *this;
  const auto left = static_cast<std::size_t>(room_ - counted_);
  const std::size_t needed = piece.size() + (fit == Fit::kSpare ? 2 : 1);
  if (needed > left) {
    result_ = CS_FAIL;
    return *this;
  }
  write(separator, piece);
  counted_ += static_cast<CS_INT>(piece.size()) + 1;
  terminate();
  return *this;
}

HomePath& HomePath::add_uncounted(std::string_view piece) {
  if (result_ == CS_SUCCEED) write('/', piece);
  return *this;
}

void HomePath::write(char separator, std::string_view piece) {
  *to_++ = separator;
  to_ += piece.copy(to_, piece.size());
}

void HomePath::terminate() {
  if (counted_ < room_) *to_ = '\0';
}

CS_RETCODE build_config_path(CS_CONTEXT* ctx, std::string_view file, CS_CHAR* buf, CS_INT buflen,
                             bool use_nuv, CallSite site) {
  HomePath path(ctx, buf, buflen, site);
  if (use_nuv) {
    std::array<CS_CHAR, COM_NUV_ROOM> value;
    const CS_INT length = intlgetenv(value.data(), COM_NUV_ROOM, "TALVEN_NUV");
    if (length > 0) path.add_uncounted({value.data(), static_cast<std::size_t>(length)});
  }
  return path.add("config").add(file).result();
}

}  // namespace comnlib
