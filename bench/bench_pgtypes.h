// Numerics of libpgtypes as text, whatever the program compares them with.
#ifndef COMNLIB_BENCH_PGTYPES_H
#define COMNLIB_BENCH_PGTYPES_H

#include <benchmark/benchmark.h>
#include <pgtypes_numeric.h>

#include <string>

namespace bench {

// libpgtypes takes pointers to text that is not const, although it does not change it.
inline ::numeric* made_by_pgtypes(const std::string& text) {
  return PGTYPESnumeric_from_asc(const_cast<char*>(text.c_str()), nullptr);
}

inline void read_pgtypes(const std::string& text) {
  ::numeric* value = made_by_pgtypes(text);
  benchmark::DoNotOptimize(value);
  PGTYPESnumeric_free(value);
}

inline void write_pgtypes(::numeric* value, int scale) {
  char* text = PGTYPESnumeric_to_asc(value, scale);
  benchmark::DoNotOptimize(text);
  PGTYPESchar_free(text);
}

}  // namespace bench

#endif
