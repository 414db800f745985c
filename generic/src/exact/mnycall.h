// Public money routines, current and older names alike: each checks its pointers, calls the
// internal routine, and turns its status into a result code. The macros define one routine each, so
// that a stop or a trace names its line.
#pragma once

#include "diag/diag.h"
#include "exact/numeaux.h"

namespace comnlib::money {

inline void check_argument(const void* pointer, CallSite site) {
  check_pointer(pointer, site);
}
inline void check_argument(CS_INT /*number*/, CallSite /*site*/) {}

// What the internal routine returns, for those whose return value is an answer and not a status.
template <auto internal, class... Arguments>
CS_INT call(CallSite site, Arguments... arguments) {
  (check_argument(arguments, site), ...);
  return internal(arguments...);
}

// The result code of the status that the internal routine returns.
template <auto internal, class... Arguments>
CS_RETCODE call_for_code(CallSite site, Arguments... arguments) {
  return trace(exact_code(call<internal>(site, arguments...)), site);
}

}  // namespace comnlib::money

// Any arguments; the result is a result code, or the internal routine's answer.
#define MONEY_ROUTINE(name, internal, parameters, ...)                                \
  CS_RETCODE name parameters {                                                        \
    return comnlib::money::call_for_code<internal>(CallSite::current(), __VA_ARGS__); \
  }
#define MONEY_QUESTION(name, internal, parameters, ...)                      \
  CS_INT name parameters {                                                   \
    return comnlib::money::call<internal>(CallSite::current(), __VA_ARGS__); \
  }

// By what the operation takes.
#define MONEY_IN_PLACE(name, internal, Record) MONEY_ROUTINE(name, internal, (Record * m), m)
#define MONEY_COPY(name, internal, Record) \
  MONEY_ROUTINE(name, internal, (const Record* src, Record* dst), src, dst)
#define MONEY_COMPUTE(name, internal, Record) \
  MONEY_ROUTINE(name, internal, (const Record* a, const Record* b, Record* r), a, b, r)
#define MONEY_COMPARE(name, internal, Record) \
  MONEY_QUESTION(name, internal, (const Record* a, const Record* b), a, b)
