// Text to values and back beside the C library, std::from_chars, fast_float and PostgreSQL's client
// library, and the conversion between character sets beside iconv(3).
#include <fast_float/fast_float.h>
#include <iconv.h>
#include <pgtypes_timestamp.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "bench.h"
#include "bench_pgtypes.h"

namespace {

using namespace bench;

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

Host& host() {
  static Host& made = *new Host;
  return made;
}

// The locale of a character set; null: no locale, plain bytes.
CS_LOCALE* locale(const char* charset) {
  if (charset == nullptr) return nullptr;
  CsLocCache* entry = nullptr;
  if (comn_intl_load_tlvtypes(&host().context, charset, CS_NULLTERM, charset, CS_NULLTERM,
                              "us_english", 10, "binary", 6, &entry, nullptr, 0) != CS_SUCCEED)
    std::abort();
  return new CS_LOCALE{entry, entry, entry, entry, entry, entry, nullptr};
}

CS_DATAFMT format_of(CS_INT datatype, CS_INT maxlength = 0) {
  CS_DATAFMT format{};
  format.datatype = datatype;
  format.maxlength = maxlength;
  if (datatype == CS_NUMERIC_TYPE) format.precision = 18, format.scale = 2;
  return format;
}

void from_text(benchmark::State& state, const Texts& (*all)(), CS_INT datatype,
               const char* charset) {
  Host& on = host();
  CS_DATAFMT source = format_of(CS_CHAR_TYPE), destination = format_of(datatype);
  source.locale = locale(charset);
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

// A column's text has a length and no NUL. The C library's routines need one, and report by errno
// and the end pointer whether all of it was a number in range.
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

// A column of names: 12 bytes into 20, with blanks.
constexpr std::string_view kName = "Seattle, WA.";
constexpr CS_INT kColumn = 20;

void text_to_text(benchmark::State& state, const char* charset) {
  Host& on = host();
  CS_DATAFMT source = format_of(CS_CHAR_TYPE, static_cast<CS_INT>(kName.size()));
  CS_DATAFMT destination = format_of(CS_CHAR_TYPE, kColumn);
  destination.format = CS_DFMT_PADBLANK;
  source.locale = destination.locale = locale(charset);
  const CS_CONV_FUNC routine = com_conv_func(&on.context, CS_CHAR_TYPE, CS_CHAR_TYPE);
  std::array<char, kColumn> room;
  CS_INT length = 0;
  each(state, [&](std::size_t) {
    return routine(&on.context, &source, kName.data(), &destination, room.data(), &length);
  });
}

// What the copy alone costs where the compiler does not know the lengths.
void text_to_text_bare(benchmark::State& state) {
  std::array<char, kColumn> room;
  std::size_t length = kName.size();
  benchmark::DoNotOptimize(length);
  each(state, [&](std::size_t) {
    std::memcpy(room.data(), kName.data(), length);
    std::memset(room.data() + length, ' ', room.size() - length);
  });
}

void int_strtol(benchmark::State& state) {
  bool good = false;
  constexpr auto parse = [](const char* text, char** end) { return std::strtol(text, end, 10); };
  each(state, [&](std::size_t i) { return parse_copy<parse>(integers()[i], good) + good; });
}

void float_strtod(benchmark::State& state) {
  bool good = false;
  each(state,
       [&](std::size_t i) { return parse_copy<std::strtod>(measurements()[i], good) + good; });
}

// These read a text by its length, but neither blanks nor a plus sign before a number.
void float_reader(benchmark::State& state, auto read) {
  each(state, [read, &all = measurements()](std::size_t i) {
    const std::string& text = all[i];
    double value = 0;
    const auto [end, error] = read(text.data(), text.data() + text.size(), value);
    return value + (end == text.data() + text.size() && error == std::errc{} ? 1 : 0);
  });
}

void float_from_chars(benchmark::State& state) {
  float_reader(state, [](const char* begin, const char* end, double& value) {
    return std::from_chars(begin, end, value);
  });
}

void float_fast_float(benchmark::State& state) {
  float_reader(state, [](const char* begin, const char* end, double& value) {
    return fast_float::from_chars(begin, end, value);
  });
}

void numeric_from_text_pgtypes(benchmark::State& state) {
  each(state, [&all = amounts()](std::size_t i) { read_pgtypes(all[i]); });
}

void numeric_to_text_pgtypes(benchmark::State& state) {
  std::vector<numeric*> values;
  for (const std::string& text : amounts()) values.push_back(made_by_pgtypes(text));
  each(state, [&](std::size_t i) { write_pgtypes(values[i], -1); });
  for (numeric* value : values) PGTYPESnumeric_free(value);
}

void datetime_from_text_pgtypes(benchmark::State& state) {
  Texts all = dates();
  each(state, [&](std::size_t i) { return PGTYPEStimestamp_from_asc(all[i].data(), nullptr); });
}

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
  const auto format = [](const Charset& set, std::size_t length) {
    CS_DATAFMT made = format_of(set.name == nullptr ? CS_UNICHAR_TYPE : CS_CHAR_TYPE,
                                static_cast<CS_INT>(length));
    made.locale = locale(set.name);
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
}

using Peer = void (*)(benchmark::State&);
using Peers = std::vector<std::pair<std::string, Peer>>;

// A datatype's reading, by every kind of locale, beside the peers'.
void reading(const std::string& name, const Texts& (*all)(), CS_INT datatype, const Peers& peers) {
  const std::string operation = "text/text to " + name;
  measure(operation + "/comnlib plain bytes", from_text, all, datatype, nullptr);
  for (const char* charset : {"iso_1", "utf8", "sjis"})
    measure(operation + "/comnlib " + charset, from_text, all, datatype, charset);
  // Once more, since the character sets are compared with it.
  measure(operation + "/plain bytes", from_text, all, datatype, nullptr);
  for (const auto& [peer, measured] : peers) measure(operation + "/" + peer, measured);
}

void writing(const std::string& name, const Texts& (*all)(), CS_INT datatype,
             const std::string& peer, Peer measured) {
  const std::string operation = "text/" + name + " to text";
  measure(operation + "/comnlib", to_text, all, datatype);
  measure(operation + "/" + peer, measured);
}

// A column's text, and a document.
void charset(const std::string& name, std::string_view sentence, const Charset& from,
             const Charset& to) {
  for (auto* added : {measure("charset/" + name + "/comnlib", charset_comnlib, sentence, from, to),
                      measure("charset/" + name + "/iconv", charset_iconv, sentence, from, to)})
    added->ArgName("bytes")->Arg(40)->Arg(16384);
}

const Registration registered([] {
  reading("int", integers, CS_INT_TYPE, {{"strtol", int_strtol}});
  reading("float", measurements, CS_FLOAT_TYPE,
          {{"strtod", float_strtod},
           {"std::from_chars", float_from_chars},
           {"fast_float", float_fast_float}});
  reading("numeric", amounts, CS_NUMERIC_TYPE, {{"pgtypes", numeric_from_text_pgtypes}});
  reading("money", amounts, CS_MONEY_TYPE, {{"pgtypes", numeric_from_text_pgtypes}});
  reading("datetime", dates, CS_DATETIME_TYPE, {{"pgtypes", datetime_from_text_pgtypes}});
  measure("text/text to text/comnlib plain bytes", text_to_text, nullptr);
  for (const char* charset : {"iso_1", "utf8", "sjis"})
    measure(std::string("text/text to text/comnlib ") + charset, text_to_text, charset);
  measure("text/text to text/memcpy and memset", text_to_text_bare);
  writing("numeric", amounts, CS_NUMERIC_TYPE, "pgtypes", numeric_to_text_pgtypes);
  writing("money", amounts, CS_MONEY_TYPE, "pgtypes", numeric_to_text_pgtypes);
  writing("datetime", dates, CS_DATETIME_TYPE, "pgtypes", datetime_to_text_pgtypes);
  charset("UTF-8 to iso_1, English", kEnglish, kUtf8, kIso1);
  charset("UTF-8 to iso_1, French", kFrench, kUtf8, kIso1);
  charset("UTF-8 to koi8, Russian", kRussian, kUtf8, kKoi8);
  charset("UTF-8 to sjis, Japanese", kJapanese, kUtf8, kSjis);
  charset("UTF-8 to UTF-16, English", kEnglish, kUtf8, kUtf16);
  charset("UTF-8 to UTF-16, French", kFrench, kUtf8, kUtf16);
  charset("UTF-8 to UTF-16, Russian", kRussian, kUtf8, kUtf16);
  charset("UTF-8 to UTF-16, Japanese", kJapanese, kUtf8, kUtf16);
  charset("iso_1 to UTF-8, French", kFrench, kIso1, kUtf8);
  charset("UTF-16 to UTF-8, French", kFrench, kUtf16, kUtf8);
  charset("koi8 to UTF-8, Russian", kRussian, kKoi8, kUtf8);
  charset("sjis to UTF-8, Japanese", kJapanese, kSjis, kUtf8);
});

}  // namespace
