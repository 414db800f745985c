// Weak default of intl_iocsfread.
#include <unistd.h>

#include <cerrno>

#include "diag/diag.h"
#include "file.h"
#include "plain.h"
#include "status.h"

using namespace comnlib;

__attribute__((weak)) CS_INT intl_iocsfread(INTL_HANDLE handle, CS_BYTE* buffer, CS_INT buflen) {
  check_pointer(handle);
  check_pointer(buffer);
  require(buflen >= 0);
  ssize_t got = 0;
  do {
    got = ::read(companion::descriptor_of(handle), buffer, static_cast<std::size_t>(buflen));
  } while (got < 0 && errno == EINTR);
  if (got < 0) return companion::system_status();
  if (got == 0 && buflen > 0) return companion::check_end(companion::descriptor_of(handle));
  return static_cast<CS_INT>(got);
}
