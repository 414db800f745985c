// Weak default of intl_iocsfopen.
#include "diag/diag.h"
#include "file.h"
#include "plain.h"

using namespace comnlib;

__attribute__((weak)) CS_INT intl_iocsfopen(const CS_CHAR* path, INTL_HANDLE* handle) {
  check_pointer(path);
  check_pointer(handle);
  *handle = nullptr;
  std::size_t size = 0;
  const int number = companion::open_file(path, size);
  if (number < 0) return number;
  *handle = companion::handle_of(number);
  return 0;
}
