// The handle of the plain reader: a file descriptor, plus one, so that no handle is null.
#pragma once

#include <cstdint>

#include "intl.h"

namespace comnlib::companion {

inline INTL_HANDLE handle_of(int descriptor) {
  return reinterpret_cast<INTL_HANDLE>(static_cast<std::intptr_t>(descriptor) + 1);
}

inline int descriptor_of(INTL_HANDLE handle) {
  return static_cast<int>(reinterpret_cast<std::intptr_t>(handle) - 1);
}

}  // namespace comnlib::companion
