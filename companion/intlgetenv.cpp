// Weak default of intlgetenv.
#include <cstdlib>
#include <cstring>

#include "diag/diag.h"
#include "intl.h"
#include "status.h"

using namespace comnlib;

__attribute__((weak)) CS_INT intlgetenv(CS_CHAR* dst, CS_INT dstlen, const CS_CHAR* name) {
  check_pointer(dst);
  check_pointer(name);
  require(dstlen >= 0);
  const char* value = std::getenv(name);
  if (value == nullptr || *value == '\0') return 0;
  const std::size_t length = std::strlen(value);
  if (length >= static_cast<std::size_t>(dstlen))
    return companion::make_status(companion::Fault::kNoRoom);
  std::memcpy(dst, value, length + 1);
  return static_cast<CS_INT>(length);
}
