// Weak default of intl_iocsfopen.
#include <fcntl.h>

#include "diag/diag.h"
#include "intl.h"
#include "plain.h"
#include "status.h"

using namespace comnlib;

__attribute__((weak)) CS_INT intl_iocsfopen(const CS_CHAR* path, INTL_HANDLE* handle) {
  check_pointer(path);
  check_pointer(handle);
  *handle = nullptr;
  const int number = ::open(path, O_RDONLY | O_CLOEXEC);
  if (number < 0) return companion::system_status();
  *handle = companion::handle_of(number);
  return 0;
}
