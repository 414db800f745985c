// Text arguments as views.
#pragma once

#include <cstring>
#include <limits>
#include <string_view>

#include "diag/diag.h"

namespace comnlib {

// A text of `length` bytes, or with CS_NULLTERM up to its NUL. A null text, other negative lengths
// and a text that is longer than a length can say stop the process.
inline std::string_view text_of(const CS_CHAR* text, CS_INT length,
                                CallSite site = CallSite::current()) {
  check_pointer(text, site);
  require(length >= 0 || length == CS_NULLTERM, site);
  const std::string_view view(
      text, length == CS_NULLTERM ? std::strlen(text) : static_cast<std::size_t>(length));
  require(view.size() <= std::numeric_limits<CS_INT>::max(), site);
  return view;
}

inline std::string_view text_of(const CS_CHAR* text, CallSite site = CallSite::current()) {
  return text_of(text, CS_NULLTERM, site);
}

constexpr CS_INT length_of(std::string_view text) {
  return static_cast<CS_INT>(text.size());
}

// Copies as much of `text` as fits, and a NUL after it.
inline void copy_cut(std::string_view text, CS_CHAR* to, CS_INT room) {
  to[text.copy(to, static_cast<std::size_t>(room - 1))] = '\0';
}

}  // namespace comnlib
