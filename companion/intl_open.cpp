// Weak default of intl_open.
#include "diag/diag.h"
#include "intl.h"
#include "reader.h"

using namespace comnlib;

__attribute__((weak)) CS_INT intl_open(const CS_CHAR* path, INTL_HANDLE* handle) {
  check_pointer(path);
  check_pointer(handle);
  CS_INT status = 0;
  *handle = companion::open_sectioned(path, status);
  return status;
}
