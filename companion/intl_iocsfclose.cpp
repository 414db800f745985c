// Weak default of intl_iocsfclose.
#include <unistd.h>

#include "diag/diag.h"
#include "plain.h"
#include "status.h"

using namespace comnlib;

__attribute__((weak)) CS_INT intl_iocsfclose(INTL_HANDLE handle) {
  check_pointer(handle);
  return ::close(companion::descriptor_of(handle)) == 0 ? 0 : companion::system_status();
}
