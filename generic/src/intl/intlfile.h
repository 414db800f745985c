// A sectioned localization file that is being read. It closes itself, and when the companion
// library fails it keeps the status in the context's ctxintlerr. A text that a step returned is
// valid until the next step: a host's reader may have one buffer for all.
#pragma once

#include <string_view>

#include "comnlib/context.h"
#include "comnlib/result.h"
#include "intl.h"

namespace comnlib {

class IntlFile {
 public:
  IntlFile(CS_CONTEXT& ctx, INTL_HANDLE handle) : ctx_(ctx), handle_(handle) {}
  ~IntlFile() {
    if (open_) static_cast<void>(intl_close(handle_));
  }
  IntlFile(const IntlFile&) = delete;
  IntlFile& operator=(const IntlFile&) = delete;

  INTL_HANDLE handle() const { return handle_; }

  const CS_CHAR* next_section() { return next(intl_nextsection); }
  const CS_CHAR* next_entry() { return next(intl_nextentry); }
  const CS_CHAR* next_value() { return next(intl_nextvalue); }

  // The next value, empty when there is none.
  std::string_view next_text() {
    const CS_CHAR* value = next_value();
    return value == nullptr ? std::string_view() : std::string_view(value);
  }

  // Steps to the next section of that name.
  bool find_section(std::string_view name) {
    const CS_CHAR* section = nullptr;
    do {
      section = next_section();
    } while (section != nullptr && section != name);
    return section != nullptr;
  }

  // What a reader returns at an end that it did not expect: the failure of the companion library if
  // there was one, else CS_FAIL.
  CS_RETCODE failure() const {
    if (!failed_) return CS_FAIL;
    return ctx_.ctxintlerr == INTL_NO_MEMORY ? CS_MEM_ERROR : CS_INTL_LIBERR;
  }
  bool failed() const { return failed_; }

  CS_RETCODE close() {
    const CS_INT status = intl_close(handle_);
    open_ = false;
    if (status >= 0) return CS_SUCCEED;
    ctx_.ctxintlerr = status;
    failed_ = true;
    return failure();
  }

 private:
  const CS_CHAR* next(const CS_CHAR* (*step)(INTL_HANDLE, CS_INT*)) {
    CS_INT status = 0;
    const CS_CHAR* text = step(handle_, &status);
    if (text == nullptr && status < 0) {
      ctx_.ctxintlerr = status;
      failed_ = true;
    }
    return text;
  }

  CS_CONTEXT& ctx_;
  INTL_HANDLE handle_;  // any value: it is the companion library's
  bool open_ = true;
  bool failed_ = false;
};

}  // namespace comnlib
