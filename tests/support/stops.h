// Calls that stop the process, as a table: the routine, what it writes to standard error, the call.
#pragma once

#include <gtest/gtest.h>

#include <csignal>
#include <functional>
#include <initializer_list>

namespace stops {

inline constexpr const char* kAssertion = "assertion failed";
inline constexpr const char* kPointer = "Invalid pointer";

struct Row {
  const char* routine;
  const char* text;
  std::function<void()> call;
};

inline void expect(std::initializer_list<Row> rows) {
  for (const Row& row : rows)
    EXPECT_EXIT(row.call(), testing::KilledBySignal(SIGABRT), row.text) << row.routine;
}

}  // namespace stops
