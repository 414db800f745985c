// The one way from a public money routine to the internal one: every pointer argument is checked,
// then the call is made.
#pragma once

#include "diag/diag.h"
#include "exact/numeaux.h"

namespace comnlib::money {

inline void check_argument(const void* pointer, Place place) {
  check_pointer(pointer, place);
}
inline void check_argument(CS_INT /*number*/, Place /*place*/) {}

// What the internal routine returns: a status, or an answer of its own.
template <auto internal, class... Arguments>
CS_INT call(Place place, Arguments... arguments) {
  (check_argument(arguments, place), ...);
  return internal(arguments...);
}

// The result code of the status that the internal routine returns.
template <auto internal, class... Arguments>
CS_RETCODE call_for_code(Place place, Arguments... arguments) {
  return trace(exact_code(call<internal>(place, arguments...)), place);
}

}  // namespace comnlib::money
