// Calls that stop the process, as a table: what each writes to standard error, and the call.
#pragma once

#include <gtest/gtest.h>

#include <csignal>
#include <functional>
#include <initializer_list>

namespace stops {

inline constexpr const char* kAssertion = "assertion failed";
inline constexpr const char* kPointer = "Invalid pointer";

struct Row {
  const char* text;
  const char* source;  // of the call, which names the row
  std::function<void()> call;
};

// A row: the text, and the call with what leads up to it.
#define STOP(text, ...)                      \
  stops::Row {                               \
    text, #__VA_ARGS__, [&] { __VA_ARGS__; } \
  }

inline void expect(std::initializer_list<Row> rows) {
  for (const Row& row : rows)
    EXPECT_EXIT(row.call(), testing::KilledBySignal(SIGABRT), row.text) << row.source;
}

}  // namespace stops
