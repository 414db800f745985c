// Paths below the localization home. A path grows piece by piece; each piece is checked whole
// before a byte of it is written, so a path that does not fit ends after its last whole piece.
#pragma once

#include <string_view>

#include "comnlib/locale.h"
#include "diag/diag.h"

namespace comnlib {

// The length that the library gives to path builders. Its own buffers have one byte more, for the
// NUL of a path that fills that length.
inline constexpr CS_INT kPathLength = 1025;

// What the buffer of a configuration file's path needs beyond the given length: room for the
// subdirectory, which is not counted, and for the NUL.
inline constexpr CS_INT kConfigPathSpare = COM_NUV_ROOM + 1;

// kSpare: one byte must be left after the piece.
enum class Fit { kExact, kSpare };

class HomePath {
 public:
  // Begins with the home. Null pointers, a `buflen` below 1 and a home longer than `buflen` stop
  // the process. A failure of intl_home leaves its status in ctxintlerr.
  HomePath(CS_CONTEXT* ctx, CS_CHAR* buf, CS_INT buflen, CallSite site = CallSite::current());

  // Adds the separator and the piece; after a failure adds nothing more.
  HomePath& add(std::string_view piece, Fit fit = Fit::kExact, char separator = '/');

  // Adds a piece that is neither checked nor counted: later checks use the length without it.
  HomePath& add_uncounted(std::string_view piece);

  // CS_SUCCEED; CS_FAIL when a piece did not fit; CS_INTL_LIBERR when there is no home.
  CS_RETCODE result() const { return result_; }

 private:
  void write(char separator, std::string_view piece);
  void terminate();

  CS_CHAR* to_;
  CS_INT room_;
  CS_INT counted_ = 0;
  CS_RETCODE result_ = CS_SUCCEED;
};

// Builds home[/VALUE]/config/file in a buffer of `buflen` + COM_NUV_ROOM bytes. VALUE is the value
// of TALVEN_NUV, which is read only with `use_nuv`.
CS_RETCODE build_config_path(CS_CONTEXT* ctx, std::string_view file, CS_CHAR* buf, CS_INT buflen,
                             bool use_nuv, CallSite site = CallSite::current());

}  // namespace comnlib
