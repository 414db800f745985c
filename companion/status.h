// Statuses of the companion library. One number holds the fault and its detail, a line number or an
// errno value, so that the words can be given long after the handle is gone.
#pragma once

#include <algorithm>
#include <cstdint>

#include "comnlib/types.h"

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
};

constexpr CS_INT kFaults = 32;
constexpr CS_INT kMaxDetail = INT32_MAX / kFaults - 1;

// Line numbers beyond the last that fits stand as that one.
constexpr CS_INT make_status(Fault fault, CS_INT detail = 0) {
  return -(std::min(detail, kMaxDetail) * kFaults + static_cast<CS_INT>(fault));
}

constexpr Fault fault_of(CS_INT status) {
  return static_cast<Fault>((0U - static_cast<CS_UINT>(status)) % kFaults);
}

constexpr CS_INT detail_of(CS_INT status) {
  return static_cast<CS_INT>((0U - static_cast<CS_UINT>(status)) / kFaults);
}

// The status of a system call that has just failed.
CS_INT system_status();

}  // namespace comnlib::companion
