#include "intl_host.h"

#include "intl.h"
#include "reader.h"

CS_INT intl_open(const CS_CHAR* path, INTL_HANDLE* handle) {
  CS_INT status = 0;
  *handle = comnlib::companion::open_sectioned(path, status);
  if (*handle != nullptr) {
    ++intl_host::files_opened;
    ++intl_host::files_open;
  }
  return status;
}

CS_INT intl_close(INTL_HANDLE handle) {
  --intl_host::files_open;
  comnlib::companion::close_sectioned(static_cast<comnlib::companion::SectionedText*>(handle));
  return intl_host::close_fails ? -7 : 0;
}
