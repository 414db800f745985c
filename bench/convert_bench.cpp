// Conversions of single values, each beside the least that could do the same work.
#define FMT_HEADER_ONLY
#include <fmt/format.h>

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <random>

#include "bench.h"

namespace {

using namespace bench;

template <class T>
using Values = std::array<T, kValues>;

template <class T>
Values<T> values(auto next) {
  Values<T> all;
  for (T& value : all) value = next();
  return all;
}

// Integers of all lengths, so that no length of text is favoured.
const Values<CS_INT>& integers() {
  static const auto all = values<CS_INT>([random = std::mt19937(1)]() mutable {
    return static_cast<CS_INT>(random()) >> (random() % 31);
  });
  return all;
}

// Full mantissas, within nine decades of 1.
const Values<CS_FLOAT>& measurements() {
  static const auto all = values<CS_FLOAT>([random = std::mt19937_64(2)]() mutable {
    const double mantissa = std::uniform_real_distribution<>(-10, 10)(random);
    const int exponent = std::uniform_int_distribution<>(-9, 9)(random);
    return mantissa * std::pow(10.0, exponent);
  });
  return all;
}

// Amounts with two decimals, as tables hold them.
const Values<CS_FLOAT>& amounts() {
  static const auto all = values<CS_FLOAT>([random = std::mt19937(3)]() mutable {
    return static_cast<double>(random() % 10'000'000) / 100;
  });
  return all;
}

struct Pair {
  CS_CONTEXT context{};
  CS_DATAFMT source{};
  CS_DATAFMT destination{};
  std::array<char, 64> text{};
  CS_INT length = 0;

  Pair(CS_INT srctype, CS_INT desttype) {
    com_conv_init(&context);
    source.datatype = srctype;
    destination.datatype = desttype;
    destination.maxlength = static_cast<CS_INT>(text.size());
  }
  ~Pair() { com_conv_free(&context); }
  Pair(const Pair&) = delete;
  Pair& operator=(const Pair&) = delete;

  CS_CONV_FUNC routine() const {
    return com_conv_func(&context, source.datatype, destination.datatype);
  }
  CS_RETCODE convert(CS_CONV_FUNC with, const auto& value) {
    return with(&context, &source, &value, &destination, text.data(), &length);
  }
};

void run(benchmark::State& state, Pair& pair, CS_CONV_FUNC routine, const auto& all) {
  benchmark::DoNotOptimize(routine);
  each(state, [&](std::size_t i) { return pair.convert(routine, all[i]); });
}

// What calling any routine through a pointer costs.
[[gnu::noinline]] CS_RETCODE nothing(CS_CONTEXT*, const CS_DATAFMT*, const CS_VOID*,
                                     const CS_DATAFMT*, CS_VOID*, CS_INT*) {
  return CS_SUCCEED;
}

void int_to_float_bare_call(benchmark::State& state) {
  Pair pair(CS_INT_TYPE, CS_FLOAT_TYPE);
  run(state, pair, nothing, integers());
}

void int_to_float(benchmark::State& state) {
  Pair pair(CS_INT_TYPE, CS_FLOAT_TYPE);
  run(state, pair, pair.routine(), integers());
}

void int_to_float_with_lookup(benchmark::State& state) {
  Pair pair(CS_INT_TYPE, CS_FLOAT_TYPE);
  each(state, [&](std::size_t i) { return pair.convert(pair.routine(), integers()[i]); });
}

void int_to_char(benchmark::State& state) {
  Pair pair(CS_INT_TYPE, CS_CHAR_TYPE);
  run(state, pair, pair.routine(), integers());
}

void int_snprintf(benchmark::State& state) {
  std::array<char, 64> text;
  each(state, [&](std::size_t i) {
    return std::snprintf(text.data(), text.size(), "%ld", static_cast<long>(integers()[i]));
  });
}

void float_to_char(benchmark::State& state, const Values<CS_FLOAT>& (*all)()) {
  Pair pair(CS_FLOAT_TYPE, CS_CHAR_TYPE);
  run(state, pair, pair.routine(), all());
}

void float_to_chars(benchmark::State& state, const Values<CS_FLOAT>& (*all)()) {
  std::array<char, 64> text;
  each(state, [&, &from = all()](std::size_t i) {
    return std::to_chars(text.begin(), text.end(), from[i], std::chars_format::general, 17);
  });
}

// The shortest text that reads back as the value, which is another text.
void float_to_chars_shortest(benchmark::State& state, const Values<CS_FLOAT>& (*all)()) {
  std::array<char, 64> text;
  each(state, [&, &from = all()](std::size_t i) {
    return std::to_chars(text.begin(), text.end(), from[i]);
  });
}

void float_fmt(benchmark::State& state, const Values<CS_FLOAT>& (*all)()) {
  std::array<char, 64> text;
  each(state, [&, &from = all()](std::size_t i) {
    return fmt::format_to(text.begin(), "{:.17g}", from[i]);
  });
}

void float_fmt_shortest(benchmark::State& state, const Values<CS_FLOAT>& (*all)()) {
  std::array<char, 64> text;
  each(state,
       [&, &from = all()](std::size_t i) { return fmt::format_to(text.begin(), "{}", from[i]); });
}

void float_snprintf(benchmark::State& state, const Values<CS_FLOAT>& (*all)()) {
  std::array<char, 64> text;
  each(state, [&, &from = all()](std::size_t i) {
    return std::snprintf(text.data(), text.size(), "%.17g", from[i]);
  });
}

const Registration registered([] {
  measure("conversion/int to float/comnlib", int_to_float);
  measure("conversion/int to float/comnlib with look-up", int_to_float_with_lookup);
  measure("conversion/int to float/bare call", int_to_float_bare_call);
  measure("conversion/int to text/comnlib", int_to_char);
  measure("conversion/int to text/snprintf", int_snprintf);
  const auto floats = [](const std::string& operation, auto all) {
    measure(operation + "/comnlib", float_to_char, all);
    measure(operation + "/snprintf", float_snprintf, all);
    measure(operation + "/std::to_chars", float_to_chars, all);
    measure(operation + "/std::to_chars, shortest", float_to_chars_shortest, all);
    measure(operation + "/fmt", float_fmt, all);
    measure(operation + "/fmt, shortest", float_fmt_shortest, all);
  };
  floats("conversion/float to text, measurements", measurements);
  floats("conversion/float to text, amounts", amounts);
});

}  // namespace
