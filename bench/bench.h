// What the benchmarks share. A benchmark's name says where its figure goes:
//
//   SUBJECT/OPERATION/CONTENDER[/UNIT:COUNT]   a row of the table, "add, 38 digits"
//   size/SUBJECT/OPERATION/CONTENDER/UNIT:N    a point of a curve over the unit
//
// The contender "comnlib" is this library; a variant of it ("comnlib uniform") has a row of its own
// against the same peers. The figure is the processor time of an item, or of an iteration that
// counts none.
#ifndef COMNLIB_BENCH_H
#define COMNLIB_BENCH_H

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <type_traits>

#include "comnlib/convert.h"
#include "comnlib/locale.h"
#include "comnlib/thread.h"

namespace bench {

constexpr std::size_t kValues = 1024;

template <class Function, class... Arguments>
auto* measure(const std::string& name, Function function, Arguments... arguments) {
  return benchmark::RegisterBenchmark(name.c_str(), function, arguments...);
}

// Calls a function that registers a program's benchmarks, before main.
struct Registration {
  explicit Registration(void (*all)()) { all(); }
};

// Each iteration handles one value; the values differ, so that no branch is learned by heart.
template <std::size_t kCount = kValues, class Body>
void each(benchmark::State& state, Body body) {
  std::size_t i = 0;
  for (auto _ : state) {
    if constexpr (std::is_void_v<decltype(body(i))>) {
      body(i++ % kCount);
    } else {
      benchmark::DoNotOptimize(body(i++ % kCount));
    }
    benchmark::ClobberMemory();
  }
}

inline void items(benchmark::State& state, std::size_t each_iteration) {
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(each_iteration));
}

// One and three of each decade.
template <std::int64_t kMost>
void decades(benchmark::internal::Benchmark* benchmark) {
  for (std::int64_t size = 10; size <= kMost; size *= 10) {
    benchmark->Arg(size);
    if (3 * size <= kMost) benchmark->Arg(3 * size);
  }
}

// A context over the shipped home.
class Host {
 public:
  Host() {
    setenv("TALVEN", COMNLIB_HOME, 1);
    context.ctxglobals = &globals_;
    if (comn_create_mutex(&globals_.cmg_mtx) != CS_SUCCEED ||
        com_conv_init(&context) != CS_SUCCEED || comn_intl_init(&context, nullptr, 0) != CS_SUCCEED)
      std::abort();
  }
  ~Host() {
    com_intl_loccache_drop(&context);
    com_intl_chardesc_drop(&context);
    comn_lm_exit(globals_.lm);
    comn_delete_mutex(globals_.cmg_mtx);
    com_conv_free(&context);
  }
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;

  CsLocCache* load(const char* name) {
    CsLocCache* entry = nullptr;
    comn_intl_load(&context, name, CS_NULLTERM, &entry, nullptr, 0);
    return entry;
  }

  CS_CONTEXT context{};

 private:
  CsCtxGlobals globals_{};
};

}  // namespace bench

#endif
