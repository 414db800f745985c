// Money beside plain 64-bit integers that keep the same overflow and rounding rules, and money text
// beside libpgtypes, Boost's integers and the bare digits.

#include <array>
#include <boost/multiprecision/cpp_int.hpp>
#include <charconv>
#include <cstdint>
#include <random>
#include <string>

#include "bench.h"
#include "bench_pgtypes.h"
#include "comnlib/money.h"
#include "exact/mnycnvt.h"

namespace {

using namespace bench;

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
  each(state, [&](std::size_t i) { return operation(&a[i], &b[i], &result); });
}

// One operation on pairs of so many bits, ours and the peer's.
template <auto ours, auto peer>
void compare(const std::string& operation, unsigned bits_a, unsigned bits_b) {
  measure("money/" + operation + "/comnlib", [=](benchmark::State& state) {
    compute(state, ours, amounts(1, bits_a).money, amounts(2, bits_b).money);
  });
  measure("money/" + operation + "/plain 64-bit", [=](benchmark::State& state) {
    compute(state, peer, amounts(1, bits_a).plain, amounts(2, bits_b).plain);
  });
}

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
  each(state, [&](std::size_t i) {
    return com_cvtmnytochar(&values.money[i], buffer, sizeof buffer, kTwoDecimals);
  });
}

void comnlib_from_text(benchmark::State& state) {
  const Texts texts;
  CS_MONEY m;
  each(state, [&](std::size_t i) {
    const std::string& text = texts.text[i];
    return com__mnyfromchar_mb(&m, text.data(), static_cast<CS_INT>(text.size()), 0,
                               com_get_charattrib());
  });
}

void pgtypes_to_text(benchmark::State& state) {
  const Texts texts;
  std::array<numeric*, kValues> values;
  for (std::size_t at = 0; at < kValues; ++at) values[at] = made_by_pgtypes(texts.text[at]);
  each(state, [&](std::size_t i) { write_pgtypes(values[i], 2); });
  for (numeric* value : values) PGTYPESnumeric_free(value);
}

void pgtypes_from_text(benchmark::State& state) {
  const Texts texts;
  each(state, [&](std::size_t i) { read_pgtypes(texts.text[i]); });
}

// The digits of the count of units: less than an amount needs.
std::array<std::string, kValues> digits_of(const Values& values) {
  std::array<std::string, kValues> texts;
  for (std::size_t at = 0; at < kValues; ++at) texts[at] = std::to_string(values.plain[at]);
  return texts;
}

using Integer = boost::multiprecision::checked_int128_t;

void boost_digits_to_text(benchmark::State& state) {
  const Values values = priced();
  each(state, [&](std::size_t i) { return Integer(values.plain[i]).str(); });
}

void boost_digits_from_text(benchmark::State& state) {
  each(state, [texts = digits_of(priced())](std::size_t i) { return Integer(texts[i]); });
}

void std_digits_to_text(benchmark::State& state) {
  const Values values = priced();
  char buffer[24];
  each(state, [&](std::size_t i) {
    return std::to_chars(buffer, buffer + sizeof buffer, values.plain[i]);
  });
}

void std_digits_from_text(benchmark::State& state) {
  std::int64_t value = 0;
  each(state, [&, texts = digits_of(priced())](std::size_t i) {
    benchmark::DoNotOptimize(&value);
    return std::from_chars(texts[i].data(), texts[i].data() + texts[i].size(), value);
  });
}

const Registration registered([] {
  compare<comn_mnyadd, native_add>("add", 62, 62);
  compare<comn_mnymul, native_multiply>("multiply, product below 64 bits", 34, 28);
  compare<comn_mnymul, native_multiply>("multiply, product beyond 64 bits", 45, 30);
  compare<comn_mnydivide, native_divide>("divide, divisor of one limb", 45, 30);
  compare<comn_mnydivide, native_divide>("divide, divisor of two limbs", 49, 40);
  measure("money/to text/comnlib", comnlib_to_text);
  measure("money/to text/pgtypes", pgtypes_to_text);
  measure("money/to text/Boost, digits", boost_digits_to_text);
  measure("money/to text/std::to_chars, digits", std_digits_to_text);
  measure("money/from text/comnlib", comnlib_from_text);
  measure("money/from text/pgtypes", pgtypes_from_text);
  measure("money/from text/Boost, digits", boost_digits_from_text);
  measure("money/from text/std::from_chars, digits", std_digits_from_text);
});

}  // namespace
