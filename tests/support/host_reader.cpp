#include "intl.h"
#include "reader.h"
#include "support/hosts.h"

namespace {

using comnlib::companion::SectionedText;

// One buffer for all texts that are handed out, which every step writes over.
const CS_CHAR* step(INTL_HANDLE handle, const char* (SectionedText::*next)(CS_INT&),
                    CS_INT* status) {
  if (hosts::steps_left == 0) {
    *status = INTL_NO_MEMORY;
    return nullptr;
  }
  if (hosts::steps_left > 0) --hosts::steps_left;
  thread_local std::string buffer;
  const char* text = (static_cast<SectionedText*>(handle)->*next)(*status);
  buffer.assign(text == nullptr ? "overwritten" : text);
  return text == nullptr ? nullptr : buffer.c_str();
}

}  // namespace

CS_INT intl_open(const CS_CHAR* path, INTL_HANDLE* handle) {
  CS_INT status = 0;
  *handle = comnlib::companion::open_sectioned(path, status);
  if (*handle != nullptr) {
    ++hosts::files_opened;
    ++hosts::files_open;
  }
  return status;
}

const CS_CHAR* intl_nextsection(INTL_HANDLE handle, CS_INT* status) {
  return step(handle, &SectionedText::next_section, status);
}

const CS_CHAR* intl_nextentry(INTL_HANDLE handle, CS_INT* status) {
  return step(handle, &SectionedText::next_entry, status);
}

const CS_CHAR* intl_nextvalue(INTL_HANDLE handle, CS_INT* status) {
  return step(handle, &SectionedText::next_value, status);
}

CS_INT intl_close(INTL_HANDLE handle) {
  --hosts::files_open;
  comnlib::companion::close_sectioned(static_cast<comnlib::companion::SectionedText*>(handle));
  return hosts::close_fails ? -7 : 0;
}
