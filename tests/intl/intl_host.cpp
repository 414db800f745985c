#include "intl_host.h"

#include <atomic>

#include "intl.h"
#include "reader.h"

namespace {

std::atomic<int> opened{0};
std::atomic<int> open{0};
std::atomic<bool> close_fails{false};

}  // namespace

CS_INT intl_open(const CS_CHAR* path, INTL_HANDLE* handle) {
  CS_INT status = 0;
  *handle = comnlib::companion::open_sectioned(path, status);
  if (*handle != nullptr) {
    ++opened;
    ++open;
  }
  return status;
}

CS_INT intl_close(INTL_HANDLE handle) {
  --open;
  comnlib::companion::close_sectioned(static_cast<comnlib::companion::SectionedText*>(handle));
  return close_fails ? -7 : 0;
}

int intl_host::files_opened() {
  return opened;
}

int intl_host::files_open() {
  return open;
}

intl_host::FailingClose::FailingClose() {
  close_fails = true;
}

intl_host::FailingClose::~FailingClose() {
  close_fails = false;
}
