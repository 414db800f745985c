// Conversions of single values, each beside the least that could do the same work.
#include <benchmark/benchmark.h>

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <random>

#include "comnlib/convert.h"

namespace {

constexpr std::size_t kValues = 1024;  // a power of two

template <class T>
std::array<T, kValues> values(auto next) {
  std::array<T, kValues> all;
  for (T& value : all) value = next();
  return all;
}

// Integers of all lengths, so that no length of text is favoured.
const std::array<CS_INT, kValues>& integers() {
  static const auto all = values<CS_INT>([random = std::mt19937(1)]() mutable {
    return static_cast<CS_INT>(random()) >> (random() % 31);
  });
  return all;
}

// Full mantissas, within nine decades of 1.
const std::array<CS_FLOAT, kValues>& measurements() {
  static const auto all = values<CS_FLOAT>([random = std::mt19937_64(2)]() mutable {
    const double mantissa = std::uniform_real_distribution<>(-10, 10)(random);
    const int exponent = std::uniform_int_distribution<>(-9, 9)(random);
    return mantissa * std::pow(10.0, exponent);
  });
  return all;
}

// Amounts with two decimals, as tables hold them.
const std::array<CS_FLOAT, kValues>& amounts() {
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
};

void run(benchmark::State& state, Pair& pair, CS_CONV_FUNC routine, const auto& all) {
  benchmark::DoNotOptimize(routine);
  std::size_t at = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(routine(&pair.context, &pair.source, &all[at++ % kValues],
                                     &pair.destination, pair.text.data(), &pair.length));
    benchmark::ClobberMemory();
  }
}

// What any routine behind a pointer costs: the call alone.
[[gnu::noinline]] CS_RETCODE nothing(CS_CONTEXT*, const CS_DATAFMT*, const CS_VOID*,
                                     const CS_DATAFMT*, CS_VOID*, CS_INT*) {
  return CS_SUCCEED;
}

void int_to_float_bare_call(benchmark::State& state) {
  Pair pair(CS_INT_TYPE, CS_FLOAT_TYPE);
  run(state, pair, nothing, integers());
}
BENCHMARK(int_to_float_bare_call);

void int_to_float(benchmark::State& state) {
  Pair pair(CS_INT_TYPE, CS_FLOAT_TYPE);
  run(state, pair, pair.routine(), integers());
}
BENCHMARK(int_to_float);

void int_to_float_with_lookup(benchmark::State& state) {
  Pair pair(CS_INT_TYPE, CS_FLOAT_TYPE);
  std::size_t at = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(pair.routine()(&pair.context, &pair.source,
                                            &integers()[at++ % kValues], &pair.destination,
                                            pair.text.data(), &pair.length));
    benchmark::ClobberMemory();
  }
}
BENCHMARK(int_to_float_with_lookup);

void int_to_char(benchmark::State& state) {
  Pair pair(CS_INT_TYPE, CS_CHAR_TYPE);
  run(state, pair, pair.routine(), integers());
}
BENCHMARK(int_to_char);

void int_snprintf(benchmark::State& state) {
  std::array<char, 64> text;
  std::size_t at = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(std::snprintf(text.data(), text.size(), "%ld",
                                           static_cast<long>(integers()[at++ % kValues])));
    benchmark::ClobberMemory();
  }
}
BENCHMARK(int_snprintf);

void float_to_char(benchmark::State& state, const std::array<CS_FLOAT, kValues>& (*all)()) {
  Pair pair(CS_FLOAT_TYPE, CS_CHAR_TYPE);
  run(state, pair, pair.routine(), all());
}
BENCHMARK_CAPTURE(float_to_char, measurements, measurements);
BENCHMARK_CAPTURE(float_to_char, amounts, amounts);

void float_to_chars(benchmark::State& state, const std::array<CS_FLOAT, kValues>& (*all)()) {
  std::array<char, 64> text;
  std::size_t at = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(std::to_chars(text.begin(), text.end(), all()[at++ % kValues],
                                           std::chars_format::general, 17));
    benchmark::ClobberMemory();
  }
}
BENCHMARK_CAPTURE(float_to_chars, measurements, measurements);
BENCHMARK_CAPTURE(float_to_chars, amounts, amounts);

void float_snprintf(benchmark::State& state, const std::array<CS_FLOAT, kValues>& (*all)()) {
  std::array<char, 64> text;
  std::size_t at = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        std::snprintf(text.data(), text.size(), "%.17g", all()[at++ % kValues]));
    benchmark::ClobberMemory();
  }
}
BENCHMARK_CAPTURE(float_snprintf, measurements, measurements);
BENCHMARK_CAPTURE(float_snprintf, amounts, amounts);

}  // namespace
