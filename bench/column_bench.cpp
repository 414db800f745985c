// Whole columns, each beside a single call for every value. The figure is the time of a value.
#include "comnlib/column.h"

#include <cstring>
#include <string_view>
#include <vector>

#include "bench.h"

namespace {

using namespace bench;

// 123456789012345.67 with a precision of 18, in all bytes of a record.
constexpr std::string_view kNumeric{
    "\x12\2\0\0\x2B\xDC\x54\x5D\x6B\x4B\x87"
    "\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0",
    sizeof(CS_NUMERIC)};

// A column of one value, some times over: the frame counts here, not what a value costs to read.
struct Column {
  CS_CONTEXT context{};
  CS_DATAFMT from{}, to{};
  std::vector<char> values, results;
  CsColumnSource source{};
  CsColumnDest destination{};
  CS_INT count;

  Column(CS_INT srctype, CS_INT desttype, std::string_view value, CS_INT values_in_column)
      : count(values_in_column) {
    com_conv_init(&context);
    from.datatype = srctype;
    from.maxlength = static_cast<CS_INT>(value.size());
    to.datatype = desttype;
    to.maxlength = 20;
    to.format = srctype == CS_CHAR_TYPE ? CS_DFMT_PADBLANK : 0;
    to.precision = 18;
    to.scale = 2;
    source.stride = comn_typelen(srctype, from.maxlength);
    destination.stride = comn_typelen(desttype, to.maxlength);
    const auto rows = static_cast<std::size_t>(count);
    values.resize(rows * static_cast<std::size_t>(source.stride));
    results.resize(rows * static_cast<std::size_t>(destination.stride));
    for (std::size_t at = 0; at < values.size(); at += static_cast<std::size_t>(source.stride))
      std::memcpy(&values[at], value.data(), value.size());
    source.format = &from;
    source.values = values.data();
    destination.format = &to;
    destination.values = results.data();
  }
  ~Column() { com_conv_free(&context); }
  Column(const Column&) = delete;
  Column& operator=(const Column&) = delete;
};

void whole(benchmark::State& state, CS_INT from, CS_INT to, std::string_view value) {
  Column column(from, to, value, static_cast<CS_INT>(state.range(0)));
  CS_INT faults = 0;
  for (auto _ : state) {
    comn_conv_column(&column.context, &column.source, &column.destination, column.count, nullptr,
                     &faults);
    benchmark::DoNotOptimize(faults);
    benchmark::ClobberMemory();
  }
  items(state, static_cast<std::size_t>(column.count));
}

void one_by_one(benchmark::State& state, CS_INT from, CS_INT to, std::string_view value) {
  Column column(from, to, value, static_cast<CS_INT>(state.range(0)));
  const CS_CONV_FUNC routine = com_conv_func(&column.context, from, to);
  CS_INT length = 0;
  for (auto _ : state) {
    const char* src = column.values.data();
    char* dest = column.results.data();
    for (CS_INT at = 0; at < column.count; ++at) {
      routine(&column.context, &column.from, src, &column.to, dest, &length);
      src += column.source.stride;
      dest += column.destination.stride;
    }
    benchmark::ClobberMemory();
  }
  items(state, static_cast<std::size_t>(column.count));
}

const Registration registered([] {
  const struct {
    const char* operation;
    CS_INT from, to;
    std::string_view value;
  } rows[] = {{"int to float", CS_INT_TYPE, CS_FLOAT_TYPE, {"\1\2\3\0", 4}},
              {"int to smallint", CS_INT_TYPE, CS_SMALLINT_TYPE, {"\1\2\0\0", 4}},
              {"float to int", CS_FLOAT_TYPE, CS_INT_TYPE, {"\0\0\0\0\0\1\2\x40", 8}},
              {"int to text", CS_INT_TYPE, CS_CHAR_TYPE, {"\1\2\3\0", 4}},
              {"numeric to text", CS_NUMERIC_TYPE, CS_CHAR_TYPE, kNumeric},
              {"text to float", CS_CHAR_TYPE, CS_FLOAT_TYPE, "  1234567.89"},
              {"text to int", CS_CHAR_TYPE, CS_INT_TYPE, "  1234567890"},
              {"text to money", CS_CHAR_TYPE, CS_MONEY_TYPE, "  1234567.89"},
              {"text to numeric", CS_CHAR_TYPE, CS_NUMERIC_TYPE, "  1234567.89"},
              {"text to datetime", CS_CHAR_TYPE, CS_DATETIME_TYPE, "Jan  2 2024 "},
              {"text to text", CS_CHAR_TYPE, CS_CHAR_TYPE, "hello world!"}};
  for (const auto& [operation, from, to, value] : rows) {
    const std::string subject = std::string("columns/") + operation;
    measure(subject + "/comnlib", whole, from, to, value)->ArgName("values")->Arg(1024);
    measure(subject + "/single calls", one_by_one, from, to, value)->ArgName("values")->Arg(1024);
  }
  for (const auto& [operation, from, to, value] : {rows[0], rows[std::size(rows) - 1]}) {
    const std::string subject = std::string("size/columns/") + operation;
    for (std::int64_t count = 1; count <= 1'000'000; count *= 10) {
      measure(subject + "/comnlib", whole, from, to, value)->ArgName("values")->Arg(count);
      measure(subject + "/single calls", one_by_one, from, to, value)
          ->ArgName("values")
          ->Arg(count);
    }
  }
});

}  // namespace
