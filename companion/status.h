// Statuses of the companion library. One number holds the fault and its detail, a line number or an
// errno value, so that the words can be given long after the handle was closed.
#pragma once

#include <algorithm>
#include <cstdint>

#include "intl.h"

namespace comnlib::companion {

enum class Fault : CS_INT {
  kNone,
  kNoHome,
  kSystem,  // detail: errno
  kNoMemory,
  kNoRoom,
  kSectionOpen,
  kSectionTail,
  kNoEquals,
  kNoKey,
  kQuoteOpen,
  kQuoteTail,
  kNulByte,
  kNotRegular,
  kTooLarge,
  kSizeChanged,
};

constexpr CS_INT kFaults = 32;
constexpr CS_INT kMaxDetail = INT32_MAX / kFaults - 1;

// A line number that does not fit becomes the largest one that fits. Want of memory has a status of
// its own, INTL_NO_MEMORY.
constexpr CS_INT make_status(Fault fault, CS_INT detail = 0) {
  if (fault == Fault::kNoMemory) return INTL_NO_MEMORY;
  return -(std::min(detail, kMaxDetail) * kFaults + static_cast<CS_INT>(fault));
}

constexpr Fault fault_of(CS_INT status) {
  if (status == INTL_NO_MEMORY) return Fault::kNoMemory;
  return static_cast<Fault>((0U - static_cast<CS_UINT>(status)) % kFaults);
}

constexpr CS_INT detail_of(CS_INT status) {
  if (status == INTL_NO_MEMORY) return 0;
  return static_cast<CS_INT>((0U - static_cast<CS_UINT>(status)) / kFaults);
}

// The status of a system call that has just failed.
CS_INT system_status();

}  // namespace comnlib::companion
