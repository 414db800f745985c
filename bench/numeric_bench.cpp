// Exact numerics beside their peers: GMP on bare limbs, GMP with our byte layout imported and
// exported, Boost's fixed-width integers, libpgtypes and libmpdec. Arguments are decimal digits.
// The peers do the same arithmetic on the same digits; only ours checks precisions and follows the
// rules of scales.
#include <gmp.h>
#if defined(BENCH_MPDEC)
#include <mpdecimal.h>
#endif

#include <algorithm>
#include <array>
#include <boost/multiprecision/cpp_int.hpp>
#include <cstring>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include "bench.h"
#include "bench_pgtypes.h"
#include "comnlib/numeric.h"
#include "exact/limbs.h"
#include "exact/numeric.h"

namespace {

using namespace bench;
using namespace comnlib;
namespace mp = boost::multiprecision;
// Room for the products and scaled dividends of 77 digits; nothing is allocated.
using Integer =
    mp::number<mp::cpp_int_backend<320, 320, mp::signed_magnitude, mp::unchecked, void>>;

// A power of two, and few enough for all representations to stay in the first cache.
constexpr std::size_t kPairs = 64;

std::string random_digits(std::mt19937& random, int count) {
  std::string text(1, static_cast<char>('1' + random() % 9));
  while (static_cast<int>(text.size()) < count) text += static_cast<char>('0' + random() % 10);
  return text;
}

// One operand in every representation.
struct Operand {
  std::string text;
  CS_NUMERIC numeric{};
  std::array<mp_limb_t, 10> limbs{};
  mp_size_t size = 0;
  Integer integer;
  ::numeric* pg = nullptr;
#if defined(BENCH_MPDEC)
  mpd_t* decimal = nullptr;
#endif

  // The digits are those of the value without its point.
  Operand(const std::string& digits, int precision, int scale = 0, bool negative = false)
      : text(digits) {
    mpz_t value;
    mpz_init_set_str(value, digits.c_str(), 10);
    size = static_cast<mp_size_t>(mpz_size(value));
    std::copy_n(mpz_limbs_read(value), size, limbs.begin());
    mpz_clear(value);
    integer = Integer(digits);
    if (negative) integer = -integer;
    if (scale > 0) text.insert(text.size() - static_cast<std::size_t>(scale), ".");
    if (negative) text.insert(0, "-");
    parse_numeric(text, static_cast<CS_BYTE>(precision), static_cast<CS_BYTE>(scale), false,
                  numeric);
    pg = made_by_pgtypes(text);
#if defined(BENCH_MPDEC)
    decimal = mpd_qnew();
    std::uint32_t status = 0;
    mpd_context_t all;
    mpd_maxcontext(&all);
    mpd_qset_string(decimal, text.c_str(), &all, &status);
#endif
  }
};

// How the operands of a row differ besides in their digits.
struct Mix {
  const char* name;
  int scale_a = 0;
  int scale_b = 0;
  bool signs = false;    // any signs
  bool lengths = false;  // values of any length; one in eight is zero
};

// Pairs for a row: the second operand has `second` digits of precision.
struct Pairs {
  std::vector<Operand> a;
  std::vector<Operand> b;

  Pairs(int digits, const Mix& mix) {
    std::mt19937 random(7);
    const auto operand = [&](int scale) {
      const int shortest = scale + 1;
      const bool zero = mix.lengths && random() % 8 == 0;
      const auto longer = static_cast<unsigned>(digits - shortest + 1);
      const int count = mix.lengths ? shortest + static_cast<int>(random() % longer) : digits;
      const std::string text = zero ? std::string(static_cast<std::size_t>(shortest), '0')
                                    : random_digits(random, count);
      return Operand(text, digits, scale, mix.signs && random() % 2 == 0);
    };
    for (std::size_t n = 0; n < kPairs; ++n) {
      a.push_back(operand(mix.scale_a));
      b.push_back(operand(mix.scale_b));
    }
  }

  Pairs(int precision_a, int digits_a, int precision_b, int digits_b) {
    std::mt19937 random(7);
    for (std::size_t n = 0; n < kPairs; ++n) {
      a.emplace_back(random_digits(random, digits_a), precision_a);
      b.emplace_back(random_digits(random, digits_b), precision_b);
    }
  }
};

// 77 digits of product are all that there is room for, so factors have half as many at most;
// divisors have half the digits of the dividend.
Pairs pairs_for(int digits, char operation) {
  const int factor = std::min(digits, 38), divisor = std::max(digits / 2, 1);
  if (operation == '*') return Pairs(digits, factor, digits, factor);
  if (operation == '/') return Pairs(digits, digits, divisor, divisor);
  return Pairs(digits, digits, digits, digits);
}

template <class Step>
void loop(benchmark::State& state, char operation, Step step) {
  const Pairs pairs = pairs_for(static_cast<int>(state.range(0)), operation);
  each<kPairs>(state, [&](std::size_t i) { return step(pairs.a[i], pairs.b[i]); });
}

template <auto operation, char sign>
void comnlib(benchmark::State& state) {
  CS_NUMERIC result;
  loop(state, sign, [&](const Operand& a, const Operand& b) {
    return operation(&a.numeric, &b.numeric, &result);
  });
}

void comnlib_compare(benchmark::State& state) {
  loop(state, '?',
       [](const Operand& a, const Operand& b) { return comn_numcmp(&a.numeric, &b.numeric); });
}

// The power of ten that our quotient's scale multiplies the dividend by.
int dividend_shift(const Operand& a, const Operand& b) {
  CS_NUMERIC quotient;
  comn_numdivide(&a.numeric, &b.numeric, &quotient);
  return quotient.scale;
}

template <char sign>
void gmp_limbs(benchmark::State& state) {
  std::array<mp_limb_t, 20> result;
  std::array<mp_limb_t, 20> scaled;
  std::array<mp_limb_t, 20> rest;
  Limbs power;
  int shift = -1;
  loop(state, sign, [&](const Operand& a, const Operand& b) {
    // The limbs after the shorter operand are zero.
    const mp_size_t common = std::max(a.size, b.size);
    if constexpr (sign == '+') {
      result[static_cast<std::size_t>(common)] =
          mpn_add_n(result.data(), a.limbs.data(), b.limbs.data(), common);
    } else if constexpr (sign == '-') {
      mpn_sub_n(result.data(), a.limbs.data(), b.limbs.data(), common);
    } else if constexpr (sign == '*') {
      mpn_mul_n(result.data(), a.limbs.data(), b.limbs.data(), common);
    } else if constexpr (sign == '?') {
      benchmark::DoNotOptimize(mpn_cmp(a.limbs.data(), b.limbs.data(), common));
    } else {
      if (shift < 0) {
        shift = dividend_shift(a, b);
        power = power_of_ten(shift);
      }
      const mp_limb_t* dividend = a.limbs.data();
      mp_size_t size = a.size;
      if (shift > 0) {
        const auto power_size = static_cast<mp_size_t>(power.size());
        const auto* limbs = reinterpret_cast<const mp_limb_t*>(power.data());
        const mp_limb_t top = size >= power_size
                                  ? mpn_mul(scaled.data(), dividend, size, limbs, power_size)
                                  : mpn_mul(scaled.data(), limbs, power_size, dividend, size);
        size += power_size - (top == 0);
        dividend = scaled.data();
      }
      mpn_tdiv_qr(result.data(), rest.data(), 0, dividend, size, b.limbs.data(), b.size);
    }
  });
}

// What a host would write around GMP to work on our records.
template <char sign>
void gmp_layout(benchmark::State& state) {
  mpz_t a, b, result, power;
  mpz_inits(a, b, result, power, nullptr);
  CS_NUMERIC out{};
  int shift = -1;
  loop(state, sign, [&](const Operand& left, const Operand& right) {
    const auto import = [](mpz_t to, const CS_NUMERIC& from) {
      mpz_import(to, static_cast<std::size_t>(comn_num_getlen(from.precision)) - 1, 1, 1, 1, 0,
                 from.array + 1);
      if (from.array[0] != 0) mpz_neg(to, to);
    };
    if (sign == '/' && shift < 0) {
      shift = dividend_shift(left, right);
      mpz_ui_pow_ui(power, 10, static_cast<unsigned long>(shift));
    }
    import(a, left.numeric);
    import(b, right.numeric);
    if constexpr (sign == '+') mpz_add(result, a, b);
    if constexpr (sign == '-') mpz_sub(result, a, b);
    if constexpr (sign == '*') mpz_mul(result, a, b);
    if constexpr (sign == '?') {
      benchmark::DoNotOptimize(mpz_cmp(a, b));
      return;
    }
    if constexpr (sign == '/') {
      if (shift > 0) mpz_mul(a, a, power);
      mpz_tdiv_q(result, a, b);
    }
    const std::size_t bytes = (mpz_sizeinbase(result, 2) + 7) / 8;
    std::memset(out.array, 0, sizeof out.array);
    mpz_export(out.array + sizeof out.array - bytes, nullptr, 1, 1, 1, 0, result);
    out.array[0] = mpz_sgn(result) < 0;
  });
  mpz_clears(a, b, result, power, nullptr);
}

template <char sign>
void boost_integer(benchmark::State& state) {
  Integer result;
  Integer power = -1;
  loop(state, sign, [&](const Operand& a, const Operand& b) {
    if constexpr (sign == '+') result = a.integer + b.integer;
    if constexpr (sign == '-') result = a.integer - b.integer;
    if constexpr (sign == '*') result = a.integer * b.integer;
    if constexpr (sign == '/') {
      if (power < 0) power = mp::pow(Integer(10), static_cast<unsigned>(dividend_shift(a, b)));
      result = power == 1 ? Integer(a.integer / b.integer) : Integer(a.integer * power / b.integer);
    }
    benchmark::DoNotOptimize(result);
  });
}

void boost_compare(benchmark::State& state) {
  loop(state, '?', [](const Operand& a, const Operand& b) { return a.integer.compare(b.integer); });
}

template <auto operation, char sign>
void pgtypes(benchmark::State& state) {
  ::numeric* result = PGTYPESnumeric_new();
  loop(state, sign,
       [&](const Operand& a, const Operand& b) { return operation(a.pg, b.pg, result); });
  PGTYPESnumeric_free(result);
}

void pgtypes_compare(benchmark::State& state) {
  loop(state, '?',
       [](const Operand& a, const Operand& b) { return PGTYPESnumeric_cmp(a.pg, b.pg); });
}

// --- operands that differ in scale, sign or length

void mixed_loop(benchmark::State& state, const Mix& mix, auto step) {
  const Pairs pairs(static_cast<int>(state.range(0)), mix);
  each<kPairs>(state, [&](std::size_t i) { return step(pairs.a[i], pairs.b[i]); });
}

template <auto operation>
void mixed_comnlib(benchmark::State& state, const Mix& mix) {
  CS_NUMERIC result;
  mixed_loop(state, mix, [&](const Operand& a, const Operand& b) {
    if constexpr (std::is_invocable_v<decltype(operation), const CS_NUMERIC*, const CS_NUMERIC*>) {
      return operation(&a.numeric, &b.numeric);
    } else {
      return operation(&a.numeric, &b.numeric, &result);
    }
  });
}

// Brought to one scale by a product with a power of ten, as a host of integers would.
template <char sign>
void mixed_boost(benchmark::State& state, const Mix& mix) {
  const Integer power = mp::pow(Integer(10), static_cast<unsigned>(mix.scale_b - mix.scale_a));
  const bool alike = sign == '*' || mix.scale_a == mix.scale_b;
  Integer result;
  mixed_loop(state, mix, [&](const Operand& a, const Operand& b) {
    const Integer left = alike ? a.integer : Integer(a.integer * power);
    if constexpr (sign == '+') result = left + b.integer;
    if constexpr (sign == '*') result = left * b.integer;
    if constexpr (sign == '?') result = left.compare(b.integer);
    benchmark::DoNotOptimize(result);
  });
}

template <auto operation>
void mixed_pgtypes(benchmark::State& state, const Mix& mix) {
  ::numeric* result = PGTYPESnumeric_new();
  mixed_loop(state, mix, [&](const Operand& a, const Operand& b) {
    if constexpr (std::is_invocable_v<decltype(operation), ::numeric*, ::numeric*>) {
      return operation(a.pg, b.pg);
    } else {
      return operation(a.pg, b.pg, result);
    }
  });
  PGTYPESnumeric_free(result);
}

// --- libmpdec

#if defined(BENCH_MPDEC)
// Results of as many digits as ours can have.
struct Mpdec {
  mpd_context_t context;
  mpd_t* result = mpd_qnew();
  std::uint32_t status = 0;

  explicit Mpdec(mpd_ssize_t precision = CS_MAX_PREC) {
    mpd_maxcontext(&context);
    context.prec = precision;
  }
  ~Mpdec() { mpd_del(result); }
  Mpdec(const Mpdec&) = delete;
  Mpdec& operator=(const Mpdec&) = delete;

  template <auto operation>
  auto run(const Operand& a, const Operand& b) {
    if constexpr (std::is_same_v<decltype(operation), decltype(&mpd_qcmp)>)
      return operation(a.decimal, b.decimal, &status);
    else
      operation(result, a.decimal, b.decimal, &context, &status);
  }
};

template <auto operation, char sign>
void mpdec(benchmark::State& state) {
  Mpdec decimal;
  if (sign == '/') {
    const Pairs pairs = pairs_for(static_cast<int>(state.range(0)), '/');
    CS_NUMERIC quotient;
    comn_numdivide(&pairs.a[0].numeric, &pairs.b[0].numeric, &quotient);
    decimal.context.prec = quotient.precision;
  }
  loop(state, sign,
       [&](const Operand& a, const Operand& b) { return decimal.template run<operation>(a, b); });
}

template <auto operation>
void mixed_mpdec(benchmark::State& state, const Mix& mix) {
  Mpdec decimal;
  mixed_loop(state, mix, [&](const Operand& a, const Operand& b) {
    return decimal.template run<operation>(a, b);
  });
}

void from_text_mpdec(benchmark::State& state) {
  Mpdec decimal;
  loop(state, '+', [&](const Operand& a, const Operand&) {
    mpd_qset_string(decimal.result, a.text.c_str(), &decimal.context, &decimal.status);
  });
}

void to_text_mpdec(benchmark::State& state) {
  loop(state, '+', [&](const Operand& a, const Operand&) {
    char* text = mpd_to_sci(a.decimal, 0);
    benchmark::DoNotOptimize(text);
    mpd_free(text);
  });
}
#endif

// --- text

void from_text_comnlib(benchmark::State& state) {
  CS_NUMERIC result;
  loop(state, '+', [&](const Operand& a, const Operand&) {
    result.precision = a.numeric.precision;
    result.scale = 0;
    constant record = record_of(result);
    return com__subchartoexctnume(a.text.data(), static_cast<CS_INT>(a.text.size()), &record, 0);
  });
}

void from_text_gmp(benchmark::State& state) {
  mpz_t value;
  mpz_init2(value, 320);
  loop(state, '+',
       [&](const Operand& a, const Operand&) { return mpz_set_str(value, a.text.c_str(), 10); });
  mpz_clear(value);
}

void from_text_boost(benchmark::State& state) {
  loop(state, '+', [](const Operand& a, const Operand&) { return Integer(a.text.c_str()); });
}

void from_text_pgtypes(benchmark::State& state) {
  loop(state, '+', [](const Operand& a, const Operand&) { read_pgtypes(a.text); });
}

void to_text_comnlib(benchmark::State& state) {
  std::array<char, 84> buffer;
  loop(state, '+', [&](const Operand& a, const Operand&) {
    const constant record = record_of(a.numeric);
    CS_INT length = 0;
    return com__subexctnumetochar(&record, buffer.data(), buffer.size(), &length);
  });
}

void to_text_gmp(benchmark::State& state) {
  std::array<char, 84> buffer;
  mpz_t value;
  loop(state, '+', [&](const Operand& a, const Operand&) {
    return mpz_get_str(buffer.data(), 10, mpz_roinit_n(value, a.limbs.data(), a.size));
  });
}

void to_text_boost(benchmark::State& state) {
  loop(state, '+', [](const Operand& a, const Operand&) { return a.integer.str(); });
}

void to_text_pgtypes(benchmark::State& state) {
  loop(state, '+', [](const Operand& a, const Operand&) { write_pgtypes(a.pg, 0); });
}

// --- names

using Function = void (*)(benchmark::State&);

// On both sides of each border between limbs, and between.
constexpr std::array<std::int64_t, 25> kDigits = {
    1, 2, 4, 6, 9, 10, 14, 19, 20, 24, 28, 29, 33, 38, 39, 43, 48, 49, 53, 57, 58, 62, 67, 68, 77};

void measure_at_digits(const std::string& name, Function function, std::int64_t most = 0) {
  measure("numeric/" + name, function)->ArgName("digits")->Arg(19)->Arg(38)->Arg(77);
  if (most == 0) return;
  auto* curve = measure("size/numeric/" + name, function)->ArgName("digits");
  for (const std::int64_t digits : kDigits)
    if (digits <= most) curve->Arg(digits);
}

// An operation by everyone, up to so many digits on the curve.
template <auto ours, auto pg, char sign>
void operation(const std::string& name, std::int64_t most) {
  measure_at_digits(name + "/comnlib", comnlib<ours, sign>, most);
  measure_at_digits(name + "/GMP, bare limbs", gmp_limbs<sign>, most);
  measure_at_digits(name + "/GMP, our layout", gmp_layout<sign>, most);
  measure_at_digits(name + "/Boost", boost_integer<sign>, most);
  measure_at_digits(name + "/pgtypes", pgtypes<pg, sign>);
}

template <auto ours, auto pg, char sign>
void mixed(const std::string& name, const Mix& mix) {
  const auto at_digits = [&](const char* contender, auto function) {
    measure("numeric/" + (mix.name + (", " + name)) + contender, function, mix)
        ->ArgName("digits")
        ->Arg(9)
        ->Arg(19)
        ->Arg(38);
  };
  at_digits("/comnlib", mixed_comnlib<ours>);
  at_digits("/Boost", mixed_boost<sign>);
  at_digits("/pgtypes", mixed_pgtypes<pg>);
#if defined(BENCH_MPDEC)
  constexpr auto mpd = [] {
    if constexpr (sign == '+') return &mpd_qadd;
    if constexpr (sign == '?') return &mpd_qcmp;
    if constexpr (sign == '*') return &mpd_qmul;
  }();
  at_digits("/libmpdec", mixed_mpdec<mpd>);
#endif
}

const Registration registered([] {
  for (const Mix& mix : {Mix{"unlike scales", 2, 4}, Mix{"mixed signs", 2, 2, true},
                         Mix{"any lengths", 2, 2, true, true}}) {
    mixed<comn_numadd, PGTYPESnumeric_add, '+'>("add", mix);
    mixed<comn_numcmp, PGTYPESnumeric_cmp, '?'>("compare", mix);
    mixed<comn_nummul, PGTYPESnumeric_mul, '*'>("multiply", mix);
  }
  operation<comn_numadd, PGTYPESnumeric_add, '+'>("add", 77);
  operation<comn_numsub, PGTYPESnumeric_sub, '-'>("subtract", 0);
  operation<comn_nummul, PGTYPESnumeric_mul, '*'>("multiply", 38);
  operation<comn_numdivide, PGTYPESnumeric_div, '/'>("divide", 77);
  measure_at_digits("compare/comnlib", comnlib_compare);
  measure_at_digits("compare/GMP, bare limbs", gmp_limbs<'?'>);
  measure_at_digits("compare/GMP, our layout", gmp_layout<'?'>);
  measure_at_digits("compare/Boost", boost_compare);
  measure_at_digits("compare/pgtypes", pgtypes_compare);
  measure_at_digits("from text/comnlib", from_text_comnlib, 77);
  measure_at_digits("from text/GMP", from_text_gmp, 77);
  measure_at_digits("from text/Boost", from_text_boost, 77);
  measure_at_digits("from text/pgtypes", from_text_pgtypes);
  measure_at_digits("to text/comnlib", to_text_comnlib, 77);
  measure_at_digits("to text/GMP", to_text_gmp, 77);
  measure_at_digits("to text/Boost", to_text_boost, 77);
  measure_at_digits("to text/pgtypes", to_text_pgtypes);
#if defined(BENCH_MPDEC)
  measure_at_digits("add/libmpdec", mpdec<&mpd_qadd, '+'>);
  measure_at_digits("subtract/libmpdec", mpdec<&mpd_qsub, '-'>);
  measure_at_digits("multiply/libmpdec", mpdec<&mpd_qmul, '*'>);
  measure_at_digits("divide/libmpdec", mpdec<&mpd_qdiv, '/'>);
  measure_at_digits("compare/libmpdec", mpdec<&mpd_qcmp, '?'>);
  measure_at_digits("from text/libmpdec", from_text_mpdec);
  measure_at_digits("to text/libmpdec", to_text_mpdec);
#endif
});

}  // namespace
