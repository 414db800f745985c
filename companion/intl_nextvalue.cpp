// Weak default of intl_nextvalue.
#include "diag/diag.h"
#include "intl.h"
#include "reader.h"

using namespace comnlib;

__attribute__((weak)) const CS_CHAR* intl_nextvalue(INTL_HANDLE handle, CS_INT* status) {
  check_pointer(handle);
  check_pointer(status);
  return static_cast<companion::SectionedText*>(handle)->next_value(*status);
}
