// Text to values and back beside the C library and PostgreSQL's client library, and the conversion
// between character sets beside iconv(3).
#include <benchmark/benchmark.h>
#include <iconv.h>
#include <pgtypes_numeric.h>
#include <pgtypes_timestamp.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "comnlib/convert.h"
#include "comnlib/locale.h"
#include "comnlib/thread.h"

namespace {

constexpr std::size_t kValues = 1024;

using Texts = std::vector<std::string>;

Texts texts(auto next) {
  Texts all(kValues);
  for (std::string& text : all) text = next();
  return all;
}

const Texts& integers() {
  static const Texts all = texts([random = std::mt19937(1)]() mutable {
    return std::to_string(static_cast<std::int32_t>(random()) >> (random() % 31));
  });
  return all;
}

// Up to 17 significant digits, as a program prints what it measured.
const Texts& measurements() {
  static const Texts all = texts([random = std::mt19937_64(2)]() mutable {
    char text[40];
    std::snprintf(text, sizeof text, "%.15g", std::uniform_real_distribution<>(-1e4, 1e4)(random));
    return std::string(text);
  });
  return all;
}

const Texts& amounts() {
  static const Texts all = texts([random = std::mt19937(3)]() mutable {
    char text[40];
    std::snprintf(text, sizeof text, "%u.%02u", unsigned(random() % 10'000'000),
                  unsigned(random() % 100));
    return std::string(text);
  });
  return all;
}

const Texts& dates() {
  static const Texts all = texts([random = std::mt19937(4)]() mutable {
    char text[80];
    std::snprintf(text, sizeof text, "%04u-%02u-%02u %02u:%02u:%02u",
                  unsigned(1950 + random() % 80), unsigned(1 + random() % 12),
                  unsigned(1 + random() % 28), unsigned(random() % 24), unsigned(random() % 60),
                  unsigned(random() % 60));
    return std::string(text);
  });
  return all;
}

// A context with the home's locales.
class Host {
 public:
  Host() {
    setenv("TALVEN", COMNLIB_HOME, 1);
    if (comn_create_mutex(&globals_.cmg_mtx) != CS_SUCCEED) std::abort();
    context.ctxglobals = &globals_;
    com_conv_init(&context);
    if (comn_intl_init(&context, nullptr, 0) != CS_SUCCEED) std::abort();
  }
  // Null: no locale, plain bytes.
  CS_LOCALE* locale(const char* charset) {
    if (charset == nullptr) return nullptr;
    CsLocCache* entry = nullptr;
    if (comn_intl_load_tlvtypes(&context, charset, CS_NULLTERM, charset, CS_NULLTERM, "us_english",
                                10, "binary", 6, &entry, nullptr, 0) != CS_SUCCEED)
      std::abort();
    return new CS_LOCALE{entry, entry, entry, entry, entry, entry, nullptr};
  }
  CS_CONTEXT context{};

 private:
  CsCtxGlobals globals_{};
};

Host& host() {
  static Host& made = *new Host;
  return made;
}

CS_DATAFMT format_of(CS_INT datatype, CS_INT maxlength = 0) {
  CS_DATAFMT format{};
  format.datatype = datatype;
  format.maxlength = maxlength;
  if (datatype == CS_NUMERIC_TYPE) format.precision = 18, format.scale = 2;
  return format;
}

template <class Body>
void each(benchmark::State& state, Body body) {
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(body(i++ % kValues));
    benchmark::ClobberMemory();
  }
}

void from_text(benchmark::State& state, const Texts& (*all)(), CS_INT datatype,
               const char* charset) {
  Host& on = host();
  CS_DATAFMT source = format_of(CS_CHAR_TYPE), destination = format_of(datatype);
  source.locale = on.locale(charset);
  const CS_CONV_FUNC routine = com_conv_func(&on.context, CS_CHAR_TYPE, datatype);
  std::array<CS_BYTE, 64> value;
  CS_INT length = 0;
  each(state, [&, &texts = all()](std::size_t i) {
    source.maxlength = static_cast<CS_INT>(texts[i].size());
    return routine(&on.context, &source, texts[i].data(), &destination, value.data(), &length);
  });
}

void to_text(benchmark::State& state, const Texts& (*all)(), CS_INT datatype) {
  Host& on = host();
  const CS_DATAFMT text = format_of(CS_CHAR_TYPE, 64);
  const CS_DATAFMT value = format_of(datatype);
  std::vector<std::array<CS_BYTE, 64>> values(kValues);
  CS_INT length = 0;
  for (std::size_t i = 0; i < kValues; ++i) {
    const CS_DATAFMT source = format_of(CS_CHAR_TYPE, static_cast<CS_INT>(all()[i].size()));
    com_conv_func(&on.context, CS_CHAR_TYPE, datatype)(&on.context, &source, all()[i].data(),
                                                       &value, values[i].data(), &length);
  }
  const CS_CONV_FUNC routine = com_conv_func(&on.context, datatype, CS_CHAR_TYPE);
  std::array<char, 64> room;
  each(state, [&](std::size_t i) {
    return routine(&on.context, &value, values[i].data(), &text, room.data(), &length);
  });
}

#define VALUE_BENCHES(name, all, datatype)                            \
  BENCHMARK_CAPTURE(from_text, name##_plain, all, datatype, nullptr); \
  BENCHMARK_CAPTURE(from_text, name##_iso_1, all, datatype, "iso_1"); \
  BENCHMARK_CAPTURE(from_text, name##_utf8, all, datatype, "utf8");   \
  BENCHMARK_CAPTURE(to_text, name, all, datatype)
VALUE_BENCHES(int, integers, CS_INT_TYPE);
VALUE_BENCHES(float, measurements, CS_FLOAT_TYPE);
VALUE_BENCHES(numeric, amounts, CS_NUMERIC_TYPE);
VALUE_BENCHES(money, amounts, CS_MONEY_TYPE);
VALUE_BENCHES(datetime, dates, CS_DATETIME_TYPE);
#undef VALUE_BENCHES

// A column's text has a length and no NUL. The C library's routines need one, and tell through
// errno and the end whether all of it was a number in range.
template <auto Parse>
auto parse_copy(const std::string& text, bool& good) {
  char copy[64];
  char* end = nullptr;
  std::memcpy(copy, text.data(), text.size());
  copy[text.size()] = '\0';
  errno = 0;
  const auto value = Parse(copy, &end);
  good = end == copy + text.size() && errno == 0;
  return value;
}

void int_strtol(benchmark::State& state) {
  bool good = false;
  constexpr auto parse = [](const char* text, char** end) { return std::strtol(text, end, 10); };
  each(state, [&](std::size_t i) { return parse_copy<parse>(integers()[i], good) + good; });
}
BENCHMARK(int_strtol);

void float_strtod(benchmark::State& state) {
  bool good = false;
  each(state,
       [&](std::size_t i) { return parse_copy<std::strtod>(measurements()[i], good) + good; });
}
BENCHMARK(float_strtod);

void int_snprintf(benchmark::State& state) {
  std::vector<long> values;
  for (const std::string& text : integers()) values.push_back(std::atol(text.c_str()));
  char room[64];
  each(state, [&](std::size_t i) { return std::snprintf(room, sizeof room, "%ld", values[i]); });
}
BENCHMARK(int_snprintf);

void float_snprintf(benchmark::State& state) {
  std::vector<double> values;
  for (const std::string& text : measurements()) values.push_back(std::atof(text.c_str()));
  char room[64];
  each(state, [&](std::size_t i) { return std::snprintf(room, sizeof room, "%.17g", values[i]); });
}
BENCHMARK(float_snprintf);

void numeric_from_text_pgtypes(benchmark::State& state) {
  Texts all = amounts();
  each(state, [&](std::size_t i) {
    numeric* value = PGTYPESnumeric_from_asc(all[i].data(), nullptr);
    const int digits = value->ndigits;
    PGTYPESnumeric_free(value);
    return digits;
  });
}
BENCHMARK(numeric_from_text_pgtypes);

void numeric_to_text_pgtypes(benchmark::State& state) {
  std::vector<numeric*> values;
  for (std::string text : amounts())
    values.push_back(PGTYPESnumeric_from_asc(text.data(), nullptr));
  each(state, [&](std::size_t i) {
    char* text = PGTYPESnumeric_to_asc(values[i], -1);
    const char first = *text;
    std::free(text);
    return first;
  });
  for (numeric* value : values) PGTYPESnumeric_free(value);
}
BENCHMARK(numeric_to_text_pgtypes);

void datetime_from_text_pgtypes(benchmark::State& state) {
  Texts all = dates();
  each(state, [&](std::size_t i) { return PGTYPEStimestamp_from_asc(all[i].data(), nullptr); });
}
BENCHMARK(datetime_from_text_pgtypes);

void datetime_to_text_pgtypes(benchmark::State& state) {
  std::vector<timestamp> values;
  for (std::string text : dates())
    values.push_back(PGTYPEStimestamp_from_asc(text.data(), nullptr));
  each(state, [&](std::size_t i) {
    char* text = PGTYPEStimestamp_to_asc(values[i]);
    const char first = *text;
    std::free(text);
    return first;
  });
}
BENCHMARK(datetime_to_text_pgtypes);

// Prose with the share of letters beyond ASCII that its language has.
constexpr std::string_view kEnglish = "The quick brown fox jumps over the lazy dog, 1234567890. ";
constexpr std::string_view kFrench = "Dès Noël, où un zéphyr haï me vêt de glaçons würmiens. ";
constexpr std::string_view kRussian = "Съешь же ещё этих мягких французских булок, да выпей чаю. ";
constexpr std::string_view kJapanese = "いろはにほへと散りぬるを、我が世誰ぞ常ならむ。";

// How one character set is called in the home and by iconv.
struct Charset {
  const char* name;  // null: UTF-16
  const char* iconv;
};
constexpr Charset kUtf8{"utf8", "UTF-8"};
constexpr Charset kUtf16{nullptr, "UTF-16LE"};
constexpr Charset kIso1{"iso_1", "ISO-8859-1"};
constexpr Charset kKoi8{"koi8", "KOI8-R"};
constexpr Charset kSjis{"sjis", "SJIS"};

std::string iconv_text(std::string text, const Charset& to) {
  const iconv_t cd = iconv_open(to.iconv, "UTF-8");
  if (cd == reinterpret_cast<iconv_t>(-1)) std::abort();
  std::string room(2 * text.size() + 16, '\0');
  char* in = text.data();
  char* out = room.data();
  std::size_t in_left = text.size(), out_left = room.size();
  iconv(cd, &in, &in_left, &out, &out_left);
  iconv_close(cd);
  room.resize(room.size() - out_left);
  return room;
}

// `length` bytes or a little more of prose in the source's character set.
std::string prose(std::string_view sentence, const Charset& from, std::size_t length) {
  std::string text;
  while (text.size() < length) text += sentence;
  return iconv_text(text, from);
}

void charset_comnlib(benchmark::State& state, std::string_view sentence, const Charset& from,
                     const Charset& to) {
  Host& on = host();
  const std::string text = prose(sentence, from, static_cast<std::size_t>(state.range(0)));
  const auto format = [&on](const Charset& set, std::size_t length) {
    CS_DATAFMT made = format_of(set.name == nullptr ? CS_UNICHAR_TYPE : CS_CHAR_TYPE,
                                static_cast<CS_INT>(length));
    made.locale = on.locale(set.name);
    return made;
  };
  std::string room(4 * text.size(), '\0');
  const CS_DATAFMT source = format(from, text.size()), destination = format(to, room.size());
  const CS_CONV_FUNC routine = com_conv_func(&on.context, source.datatype, destination.datatype);
  CS_INT length = 0;
  for (auto _ : state) {
    if (routine(&on.context, &source, text.data(), &destination, room.data(), &length) !=
        CS_SUCCEED)
      state.SkipWithError("not converted");
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}

void charset_iconv(benchmark::State& state, std::string_view sentence, const Charset& from,
                   const Charset& to) {
  std::string text = prose(sentence, from, static_cast<std::size_t>(state.range(0)));
  std::string room(4 * text.size(), '\0');
  const iconv_t cd = iconv_open(to.iconv, from.iconv);
  if (cd == reinterpret_cast<iconv_t>(-1)) return state.SkipWithError("no such conversion");
  for (auto _ : state) {
    char* in = text.data();
    char* out = room.data();
    std::size_t in_left = text.size(), out_left = room.size();
    if (iconv(cd, &in, &in_left, &out, &out_left) == static_cast<std::size_t>(-1))
      state.SkipWithError("not converted");
    benchmark::ClobberMemory();
  }
  iconv_close(cd);
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}

// A column's text, and a document.
#define CHARSET_BENCHES(name, sentence, from, to)                                    \
  BENCHMARK_CAPTURE(charset_comnlib, name, sentence, from, to)->Arg(40)->Arg(16384); \
  BENCHMARK_CAPTURE(charset_iconv, name, sentence, from, to)->Arg(40)->Arg(16384)
CHARSET_BENCHES(english_utf8_to_iso_1, kEnglish, kUtf8, kIso1);
CHARSET_BENCHES(english_utf8_to_utf16, kEnglish, kUtf8, kUtf16);
CHARSET_BENCHES(french_utf8_to_iso_1, kFrench, kUtf8, kIso1);
CHARSET_BENCHES(french_utf8_to_utf16, kFrench, kUtf8, kUtf16);
CHARSET_BENCHES(french_iso_1_to_utf8, kFrench, kIso1, kUtf8);
CHARSET_BENCHES(french_utf16_to_utf8, kFrench, kUtf16, kUtf8);
CHARSET_BENCHES(russian_utf8_to_koi8, kRussian, kUtf8, kKoi8);
CHARSET_BENCHES(russian_utf8_to_utf16, kRussian, kUtf8, kUtf16);
CHARSET_BENCHES(russian_koi8_to_utf8, kRussian, kKoi8, kUtf8);
CHARSET_BENCHES(japanese_utf8_to_sjis, kJapanese, kUtf8, kSjis);
CHARSET_BENCHES(japanese_utf8_to_utf16, kJapanese, kUtf8, kUtf16);
CHARSET_BENCHES(japanese_sjis_to_utf8, kJapanese, kSjis, kUtf8);
#undef CHARSET_BENCHES

}  // namespace
