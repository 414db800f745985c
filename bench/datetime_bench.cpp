// Datetime values against the C library and std::chrono on the same days and texts.
#include <benchmark/benchmark.h>

#include <array>
#include <chrono>
#include <ctime>
#include <random>
#include <string>
#include <vector>

#include "time/datetext.h"
#include "time/datetime.h"

namespace {

using namespace comnlib;

constexpr std::size_t kValues = 1024;

// Days from 1902 to 2037, which the C library knows too.
const std::vector<CS_DATETIME>& values() {
  static const auto result = [] {
    std::mt19937 random(1900);
    std::uniform_int_distribution<CS_INT> day(731, 50000), tick(0, COM_DTTIME_MAX);
    std::vector<CS_DATETIME> dates(kValues);
    for (CS_DATETIME& dt : dates) dt = {day(random), tick(random)};
    return dates;
  }();
  return result;
}

constexpr CS_INT kUnixDays = 25567;  // 1 January 1970

std::vector<std::time_t> unix_times() {
  std::vector<std::time_t> times;
  for (const CS_DATETIME& dt : values())
    times.push_back(std::time_t{dt.dtdays - kUnixDays} * 86400 + dt.dttime / kTicksPerSecond);
  return times;
}

constexpr DateConventions in_style(CS_INT style) {
  DateConventions conventions = kUsEnglish;
  conventions.style = style;
  return conventions;
}
constexpr DateConventions kIso = in_style(COM_DATESTYLE_ISO);

// Each loop handles one value; the values differ, so that no branch is learned by heart.
template <class Body>
void each(benchmark::State& state, Body body) {
  std::size_t i = 0;
  for (auto _ : state) body(i++ % kValues);
  state.SetItemsProcessed(state.iterations());
}

void crack_comnlib(benchmark::State& state) {
  each(state, [&, &dates = values()](std::size_t i) {
    CS_DATEREC rec;
    com__datecrack(&dates[i], &rec);
    benchmark::DoNotOptimize(rec);
  });
}
BENCHMARK(crack_comnlib);

void crack_chrono(benchmark::State& state) {
  each(state, [&, &dates = values()](std::size_t i) {
    std::chrono::year_month_day date{
        std::chrono::sys_days{std::chrono::days{dates[i].dtdays - kUnixDays}}};
    benchmark::DoNotOptimize(date);
  });
}
BENCHMARK(crack_chrono);

void crack_gmtime(benchmark::State& state) {
  each(state, [times = unix_times()](std::size_t i) {
    std::tm tm;
    gmtime_r(&times[i], &tm);
    benchmark::DoNotOptimize(tm);
  });
}
BENCHMARK(crack_gmtime);

// To the second, which strptime reads to the end, or to the millisecond.
std::vector<std::string> iso_texts(std::size_t length) {
  std::vector<std::string> texts;
  for (const CS_DATETIME& dt : values()) {
    std::array<char, kDateTextRoom> room;
    format_datetime(dt, kIso, room);
    texts.emplace_back(room.data(), length);
  }
  return texts;
}

void parse_comnlib(benchmark::State& state, std::size_t length) {
  each(state, [texts = iso_texts(length)](std::size_t i) {
    benchmark::DoNotOptimize(parse_datetime(texts[i], kUsEnglish));
  });
}
BENCHMARK_CAPTURE(parse_comnlib, iso_seconds, std::size_t{19});
BENCHMARK_CAPTURE(parse_comnlib, iso_milliseconds, std::size_t{23});

// strptime stops at the fields; timegm makes a value of them, as the library's reading does.
void parse_strptime(benchmark::State& state, bool to_value) {
  each(state, [to_value, texts = iso_texts(19)](std::size_t i) {
    std::tm tm{};
    benchmark::DoNotOptimize(strptime(texts[i].c_str(), "%Y-%m-%dT%H:%M:%S", &tm));
    if (to_value) benchmark::DoNotOptimize(timegm(&tm));
    benchmark::DoNotOptimize(tm);
  });
}
BENCHMARK_CAPTURE(parse_strptime, fields, false);
BENCHMARK_CAPTURE(parse_strptime, value, true);

void format_comnlib(benchmark::State& state, const DateConventions& conventions) {
  each(state, [&, &dates = values()](std::size_t i) {
    std::array<char, kDateTextRoom> room;
    benchmark::DoNotOptimize(format_datetime(dates[i], conventions, room));
    benchmark::ClobberMemory();
  });
}
BENCHMARK_CAPTURE(format_comnlib, default_style, kUsEnglish);
BENCHMARK_CAPTURE(format_comnlib, iso_style, kIso);

// From values that are cracked already; the comparison leaves that work out in its favour.
void format_strftime(benchmark::State& state, const char* format) {
  std::vector<std::tm> cracked;
  for (const std::time_t time : unix_times()) gmtime_r(&time, &cracked.emplace_back());
  each(state, [&](std::size_t i) {
    std::array<char, kDateTextRoom> room;
    benchmark::DoNotOptimize(std::strftime(room.data(), room.size(), format, &cracked[i]));
    benchmark::ClobberMemory();
  });
}
BENCHMARK_CAPTURE(format_strftime, default_style, "%b %e %Y %l:%M%p");
BENCHMARK_CAPTURE(format_strftime, iso_style, "%Y-%m-%dT%H:%M:%S");

}  // namespace
