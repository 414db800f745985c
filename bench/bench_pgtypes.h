// Numerics of libpgtypes as text, whatever the program compares them with.
#ifndef COMNLIB_BENCH_PGTYPES_H
#define COMNLIB_BENCH_PGTYPES_H

#include <benchmark/benchmark.h>
#include <pgtypes_numeric.h>

namespace bench {

inline void read_pgtypes(char* text) {
  ::numeric* value = PGTYPESnumeric_from_asc(text, nullptr);
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
