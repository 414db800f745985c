// Datetime values against the C library and std::chrono on the same days and texts.
#include <array>
#include <chrono>
#include <ctime>
#include <random>
#include <string>
#include <vector>

#include "bench.h"
#include "time/datetext.h"
#include "time/datetime.h"

namespace {

using namespace bench;
using namespace comnlib;

// Days from 1902 to 2036, which the C library knows too.
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

void crack_comnlib(benchmark::State& state) {
  each(state, [&, &dates = values()](std::size_t i) {
    CS_DATEREC rec;
    com__datecrack(&dates[i], &rec);
    benchmark::DoNotOptimize(rec);
  });
}

void crack_chrono(benchmark::State& state) {
  each(state, [&, &dates = values()](std::size_t i) {
    return std::chrono::year_month_day{
        std::chrono::sys_days{std::chrono::days{dates[i].dtdays - kUnixDays}}};
  });
}

void crack_gmtime(benchmark::State& state) {
  each(state, [times = unix_times()](std::size_t i) {
    std::tm tm;
    gmtime_r(&times[i], &tm);
    benchmark::DoNotOptimize(tm);
  });
}

// To the second, which strptime reads to the end, or to the millisecond.
constexpr std::size_t kToSeconds = 19, kToMilliseconds = 23;

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
  each(state,
       [texts = iso_texts(length)](std::size_t i) { return parse_datetime(texts[i], kUsEnglish); });
}

// strptime stops at the fields; timegm makes a value of them, as the library's reading does.
void parse_strptime(benchmark::State& state, bool to_value) {
  each(state, [to_value, texts = iso_texts(kToSeconds)](std::size_t i) {
    std::tm tm{};
    benchmark::DoNotOptimize(strptime(texts[i].c_str(), "%Y-%m-%dT%H:%M:%S", &tm));
    if (to_value) benchmark::DoNotOptimize(timegm(&tm));
    benchmark::DoNotOptimize(tm);
  });
}

constexpr const char* kDefaultFormat = "%b %e %Y %l:%M%p";

std::vector<std::string> default_texts() {
  std::vector<std::string> texts;
  for (const CS_DATETIME& dt : values()) {
    std::array<char, kDateTextRoom> room;
    texts.emplace_back(room.data(), format_datetime(dt, kUsEnglish, room).length);
  }
  return texts;
}

void parse_default_comnlib(benchmark::State& state) {
  each(state,
       [texts = default_texts()](std::size_t i) { return parse_datetime(texts[i], kUsEnglish); });
}

void parse_default_strptime(benchmark::State& state) {
  each(state, [texts = default_texts()](std::size_t i) {
    std::tm tm{};
    benchmark::DoNotOptimize(strptime(texts[i].c_str(), kDefaultFormat, &tm));
    benchmark::DoNotOptimize(timegm(&tm));
  });
}

void format_comnlib(benchmark::State& state, const DateConventions& conventions) {
  std::array<char, kDateTextRoom> room;
  each(state, [&, &dates = values()](std::size_t i) {
    return format_datetime(dates[i], conventions, room);
  });
}

// From values that are cracked already; the comparison leaves that work out in its favour.
void format_strftime(benchmark::State& state, const char* format) {
  std::vector<std::tm> cracked;
  for (const std::time_t time : unix_times()) gmtime_r(&time, &cracked.emplace_back());
  std::array<char, kDateTextRoom> room;
  each(state,
       [&](std::size_t i) { return std::strftime(room.data(), room.size(), format, &cracked[i]); });
}

const Registration registered([] {
  measure("datetime/crack a day/comnlib", crack_comnlib);
  measure("datetime/crack a day/gmtime_r", crack_gmtime);
  measure("datetime/crack a day/std::chrono", crack_chrono);
  measure("datetime/read ISO, seconds/comnlib", parse_comnlib, kToSeconds);
  measure("datetime/read ISO, seconds/strptime", parse_strptime, false);
  measure("datetime/read ISO, seconds/strptime and timegm", parse_strptime, true);
  measure("datetime/read ISO, milliseconds/comnlib", parse_comnlib, kToMilliseconds);
  measure("datetime/read default style/comnlib", parse_default_comnlib);
  measure("datetime/read default style/strptime and timegm", parse_default_strptime);
  measure("datetime/write default style/comnlib", format_comnlib, kUsEnglish);
  measure("datetime/write default style/strftime", format_strftime, kDefaultFormat);
  measure("datetime/write ISO style/comnlib", format_comnlib, kIso);
  measure("datetime/write ISO style/strftime", format_strftime, "%Y-%m-%dT%H:%M:%S");
});

}  // namespace
