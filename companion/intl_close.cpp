// Weak default of intl_close.
#include "diag/diag.h"
#include "intl.h"
#include "reader.h"

using namespace comnlib;

__attribute__((weak)) CS_INT intl_close(INTL_HANDLE handle) {
  check_pointer(handle);
  companion::close_sectioned(static_cast<companion::SectionedText*>(handle));
  return 0;
}
