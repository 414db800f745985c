// Money beside plain 64-bit integers that keep the same overflow and rounding rules, and money text
// beside libpgtypes, Boost's integers and the digits alone.
#include <benchmark/benchmark.h>
#include <pgtypes_numeric.h>

#include <array>
#include <boost/multiprecision/cpp_int.hpp>
#include <charconv>
#include <cstdint>
#include <random>
#include <string>

#include "comnlib/money.h"
#include "exact/mnycnvt.h"

namespace {

constexpr std::size_t kValues = 1024;  // a power of two

CS_MONEY record(std::int64_t units) {
  return {static_cast<CS_INT>(units >> 32), static_cast<CS_UINT>(units)};
}

struct Values {
  std::array<std::int64_t, kValues> plain;
  std::array<CS_MONEY, kValues> money;

  explicit Values(auto next) {
    for (std::size_t at = 0; at < kValues; ++at) {
      plain[at] = next();
      money[at] = record(plain[at]);
    }
  }
};

// Amounts of up to `bits` bits in units, both signs.
Values amounts(unsigned stream, unsigned bits) {
  std::mt19937_64 random(stream);
  return Values([&] {
    const auto value = static_cast<std::int64_t>(random() >> (64 - bits));
    return random() % 2 == 0 ? value : -value;
  });
}

// --- the peers: the same contract on native integers, results through a pointer as well

constexpr std::int64_t kOne = 10000;

[[gnu::noinline]] CS_RETCODE native_add(const std::int64_t* a, const std::int64_t* b,
                                        std::int64_t* r) {
  if (__builtin_add_overflow(*a, *b, r)) {
    *r = 0;
    return CS_CVT_OVERFLOW;
  }
  return CS_SUCCEED;
}

std::uint64_t magnitude(std::int64_t value) {
  return value < 0 ? -static_cast<std::uint64_t>(value) : static_cast<std::uint64_t>(value);
}

CS_RETCODE put(std::uint64_t magnitude, bool negative, std::int64_t* r) {
  const bool fits = magnitude <= static_cast<std::uint64_t>(INT64_MAX) + (negative ? 1 : 0);
  *r = fits ? static_cast<std::int64_t>(negative ? -magnitude : magnitude) : 0;
  return fits ? CS_SUCCEED : CS_CVT_OVERFLOW;
}

// a * b / 10^4. A product beyond 64 bits is put together from whole and broken parts.
[[gnu::noinline]] CS_RETCODE native_multiply(const std::int64_t* a, const std::int64_t* b,
                                             std::int64_t* r) {
  const std::uint64_t x = magnitude(*a);
  const std::uint64_t y = magnitude(*b);
  const bool negative = (*a < 0) != (*b < 0);
  std::uint64_t product;
  if (!__builtin_mul_overflow(x, y, &product)) {
    return put(product / kOne + (product % kOne >= kOne / 2), negative, r);
  }
  const std::uint64_t broken = (x % kOne) * (y % kOne);
  std::uint64_t whole;
  std::uint64_t rest;
  if (__builtin_mul_overflow(x / kOne, y, &whole) ||
      __builtin_mul_overflow(x % kOne, y / kOne, &rest) ||
      __builtin_add_overflow(whole, rest, &whole) ||
      __builtin_add_overflow(whole, broken / kOne + (broken % kOne >= kOne / 2), &whole)) {
    *r = 0;
    return CS_CVT_OVERFLOW;
  }
  return put(whole, negative, r);
}

// a * 10^4 / b, for dividends that leave room for the four digits.
[[gnu::noinline]] CS_RETCODE native_divide(const std::int64_t* a, const std::int64_t* b,
                                           std::int64_t* r) {
  std::uint64_t dividend;
  if (*b == 0 || __builtin_mul_overflow(magnitude(*a), std::uint64_t{kOne}, &dividend)) {
    *r = 0;
    return *b == 0 ? CS_CVT_DIVZERO : CS_CVT_OVERFLOW;
  }
  return put(dividend / magnitude(*b), (*a < 0) != (*b < 0), r);
}

void compute(benchmark::State& state, auto operation, const auto& a, const auto& b) {
  auto result = a[0];
  std::size_t at = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(operation(&a[at], &b[at], &result));
    benchmark::ClobberMemory();
    at = (at + 1) % kValues;
  }
}

#define COMPARE(name, ours, peer, bits_a, bits_b) \
  void comnlib_##name(benchmark::State& state) {  \
    const Values a = amounts(1, bits_a);          \
    const Values b = amounts(2, bits_b);          \
    compute(state, ours, a.money, b.money);       \
  }                                               \
  void plain_##name(benchmark::State& state) {    \
    const Values a = amounts(1, bits_a);          \
    const Values b = amounts(2, bits_b);          \
    compute(state, peer, a.plain, b.plain);       \
  }                                               \
  BENCHMARK(comnlib_##name);                      \
  BENCHMARK(plain_##name)

COMPARE(add, comn_mnyadd, native_add, 62, 62);
COMPARE(multiply_small, comn_mnymul, native_multiply, 34, 28);
COMPARE(multiply_large, comn_mnymul, native_multiply, 45, 30);
COMPARE(divide_small, comn_mnydivide, native_divide, 45, 30);
COMPARE(divide_large, comn_mnydivide, native_divide, 49, 40);

// --- text, amounts of up to ten digits with two decimals

constexpr CS_INT kTwoDecimals = 2 << 8;

Values priced() {
  std::mt19937_64 random(3);
  return Values([&] {
    const auto cents = static_cast<std::int64_t>(random() % 1'000'000'000'000);
    return (random() % 2 == 0 ? cents : -cents) / static_cast<std::int64_t>(1 + random() % 9999) *
           100;
  });
}

std::string text_of(const CS_MONEY& m) {
  CS_CHAR buffer[24];
  return com_cvtmnytochar(&m, buffer, sizeof buffer, kTwoDecimals);
}

struct Texts {
  std::array<std::string, kValues> text;

  Texts() {
    const Values values = priced();
    for (std::size_t at = 0; at < kValues; ++at) text[at] = text_of(values.money[at]);
  }
};

void comnlib_to_text(benchmark::State& state) {
  const Values values = priced();
  CS_CHAR buffer[24];
  std::size_t at = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        com_cvtmnytochar(&values.money[at++ % kValues], buffer, sizeof buffer, kTwoDecimals));
    benchmark::ClobberMemory();
  }
}

void comnlib_from_text(benchmark::State& state) {
  const Texts texts;
  CS_MONEY m;
  std::size_t at = 0;
  for (auto _ : state) {
    const std::string& text = texts.text[at++ % kValues];
    benchmark::DoNotOptimize(com__mnyfromchar_mb(&m, text.data(), static_cast<CS_INT>(text.size()),
                                                 0, com_get_charattrib()));
    benchmark::ClobberMemory();
  }
}

void pgtypes_to_text(benchmark::State& state) {
  const Texts texts;
  std::array<numeric*, kValues> values;
  for (std::size_t at = 0; at < kValues; ++at) {
    std::string text = texts.text[at];
    values[at] = PGTYPESnumeric_from_asc(text.data(), nullptr);
  }
  std::size_t at = 0;
  for (auto _ : state) {
    char* text = PGTYPESnumeric_to_asc(values[at++ % kValues], 2);
    benchmark::DoNotOptimize(text);
    PGTYPESchar_free(text);
  }
  for (numeric* value : values) PGTYPESnumeric_free(value);
}

void pgtypes_from_text(benchmark::State& state) {
  Texts texts;
  std::size_t at = 0;
  for (auto _ : state) {
    numeric* value = PGTYPESnumeric_from_asc(texts.text[at++ % kValues].data(), nullptr);
    benchmark::DoNotOptimize(value);
    PGTYPESnumeric_free(value);
  }
}

// The digits of the count of units: less than an amount needs.
void boost_digits_to_text(benchmark::State& state) {
  using Integer = boost::multiprecision::checked_int128_t;
  const Values values = priced();
  std::size_t at = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(Integer(values.plain[at++ % kValues]).str());
  }
}

void boost_digits_from_text(benchmark::State& state) {
  using Integer = boost::multiprecision::checked_int128_t;
  const Values values = priced();
  std::array<std::string, kValues> texts;
  for (std::size_t at = 0; at < kValues; ++at) texts[at] = std::to_string(values.plain[at]);
  std::size_t at = 0;
  for (auto _ : state) benchmark::DoNotOptimize(Integer(texts[at++ % kValues]));
}

void std_digits_to_text(benchmark::State& state) {
  const Values values = priced();
  char buffer[24];
  std::size_t at = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        std::to_chars(buffer, buffer + sizeof buffer, values.plain[at++ % kValues]));
    benchmark::ClobberMemory();
  }
}

void std_digits_from_text(benchmark::State& state) {
  const Values values = priced();
  std::array<std::string, kValues> texts;
  for (std::size_t at = 0; at < kValues; ++at) texts[at] = std::to_string(values.plain[at]);
  std::size_t at = 0;
  for (auto _ : state) {
    const std::string& text = texts[at++ % kValues];
    std::int64_t value = 0;
    benchmark::DoNotOptimize(std::from_chars(text.data(), text.data() + text.size(), value));
    benchmark::DoNotOptimize(value);
  }
}

BENCHMARK(comnlib_to_text);
BENCHMARK(pgtypes_to_text);
BENCHMARK(boost_digits_to_text);
BENCHMARK(std_digits_to_text);
BENCHMARK(comnlib_from_text);
BENCHMARK(pgtypes_from_text);
BENCHMARK(boost_digits_from_text);
BENCHMARK(std_digits_from_text);

}  // namespace
