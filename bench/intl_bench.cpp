// Character classes and case against the C library's, and loading of locales.
#include <benchmark/benchmark.h>

#include <cctype>
#include <clocale>
#include <cstdlib>
#include <cwchar>
#include <cwctype>
#include <random>
#include <string>
#include <vector>

#include "comnlib/charset.h"
#include "comnlib/locale.h"
#include "comnlib/thread.h"

namespace {

constexpr std::size_t kBytes = 1 << 20;

// A context over the shipped home.
class Context {
 public:
  Context() {
    setenv("TALVEN", COMNLIB_HOME, 1);
    context_.ctxglobals = &globals_;
    comn_create_mutex(&globals_.cmg_mtx);
    comn_intl_init(&context_, nullptr, 0);
  }
  ~Context() {
    com_intl_loccache_drop(&context_);
    com_intl_chardesc_drop(&context_);
    comn_lm_exit(globals_.lm);
    comn_delete_mutex(globals_.cmg_mtx);
  }
  Context(const Context&) = delete;
  Context& operator=(const Context&) = delete;

  CsLocCache* load(const char* name) {
    CsLocCache* entry = nullptr;
    comn_intl_load(&context_, name, CS_NULLTERM, &entry, nullptr, 0);
    return entry;
  }

 private:
  CS_CONTEXT context_{};
  CsCtxGlobals globals_{};
};

const std::string& latin_text() {
  static const std::string text = [] {
    std::mt19937 random(1);
    std::string bytes(kBytes, ' ');
    for (char& byte : bytes)
      byte = static_cast<char>(random() % 2 == 0 ? random() : 'a' + random() % 26);
    return bytes;
  }();
  return text;
}

// Kanji and kana, every fourth character an ASCII one; in SJIS and in the C library's EUC-JP-like
// double-byte stand-in, UTF-8, which is the multibyte locale that every machine has.
struct JapaneseText {
  std::string sjis, utf8;
};

const JapaneseText& japanese_text() {
  static const JapaneseText text = [] {
    JapaneseText made;
    std::mt19937 random(2);
    while (made.sjis.size() < kBytes) {
      if (random() % 4 == 0) {
        const char letter = static_cast<char>('a' + random() % 26);
        made.sjis += letter;
        made.utf8 += letter;
      } else {
        const unsigned n = random() % 63;  // hiragana U+3041 on
        made.sjis += '\x82';
        made.sjis += static_cast<char>(0x9F + n);
        made.utf8 += '\xE3';
        made.utf8 += static_cast<char>(0x3041 + n < 0x3080 ? 0x81 : 0x82);
        made.utf8 += static_cast<char>(0x80 | ((0x41 + n) & 0x3F));
      }
    }
    return made;
  }();
  return text;
}

using Routine = CS_INT (*)(const char_attrib*, const CS_BYTE*);

// All calls go out of line on both sides: through the library's routine, and through the C
// library's function (not its macro).
void single_comnlib(benchmark::State& state, Routine routine, bool null_attributes) {
  Context context;
  const char_attrib* set =
      null_attributes ? nullptr : context.load("default")->locchardesc->char_attrib;
  const std::string& text = latin_text();
  for (auto _ : state) {
    CS_INT count = 0;
    for (const char& byte : text)
      count += routine(set, reinterpret_cast<const CS_BYTE*>(&byte)) != 0 ? 1 : 0;
    benchmark::DoNotOptimize(count);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * kBytes);
}
BENCHMARK_CAPTURE(single_comnlib, isalpha_iso_1, comn_isalpha, false);
BENCHMARK_CAPTURE(single_comnlib, isalpha_default, comn_isalpha, true);
BENCHMARK_CAPTURE(single_comnlib, isdigit_iso_1, comn_isdigit, false);

void single_glibc(benchmark::State& state, int (*routine)(int)) {
  const std::string& text = latin_text();
  for (auto _ : state) {
    int count = 0;
    for (const char byte : text) count += routine(static_cast<unsigned char>(byte)) != 0 ? 1 : 0;
    benchmark::DoNotOptimize(count);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * kBytes);
}
BENCHMARK_CAPTURE(single_glibc, isalpha, std::isalpha);
BENCHMARK_CAPTURE(single_glibc, isdigit, std::isdigit);

void toupper_comnlib(benchmark::State& state) {
  Context context;
  const char_attrib* set = context.load("default")->locchardesc->char_attrib;
  std::string text = latin_text();
  for (auto _ : state) {
    for (char& byte : text) {
      auto* at = reinterpret_cast<CS_BYTE*>(&byte);
      comn_toupper(set, at, at);
    }
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * kBytes);
}
BENCHMARK(toupper_comnlib);

void toupper_glibc(benchmark::State& state) {
  std::string text = latin_text();
  int (*volatile routine)(int) = std::toupper;
  for (auto _ : state) {
    for (char& byte : text) byte = static_cast<char>(routine(static_cast<unsigned char>(byte)));
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * kBytes);
}
BENCHMARK(toupper_glibc);

// Items are characters: both texts hold the same ones.
void multibyte_comnlib(benchmark::State& state) {
  Context context;
  const char_attrib* set = context.load("ja_JP")->locchardesc->char_attrib;
  const std::string& text = japanese_text().sjis;
  std::int64_t characters = 0;
  for (auto _ : state) {
    CS_INT letters = 0;
    const auto* at = reinterpret_cast<const CS_BYTE*>(text.data());
    for (const CS_BYTE* end = at + text.size(); at < end; ++characters) {
      letters += comn_isalpha(set, at) != 0 ? 1 : 0;
      comn_inc_char(set, &at);
    }
    benchmark::DoNotOptimize(letters);
  }
  state.SetItemsProcessed(characters);
}
BENCHMARK(multibyte_comnlib);

// mblen tells the length; the class is that of the wide character, which mbtowc gives with it.
void multibyte_glibc(benchmark::State& state) {
  const std::string before = std::setlocale(LC_CTYPE, nullptr);
  if (std::setlocale(LC_CTYPE, "C.UTF-8") == nullptr) {
    state.SkipWithError("no multibyte locale");
    return;
  }
  const std::string& text = japanese_text().utf8;
  std::int64_t characters = 0;
  for (auto _ : state) {
    int letters = 0;
    const char* at = text.data();
    for (const char* end = at + text.size(); at < end; ++characters) {
      wchar_t wide = 0;
      const int length = std::mbtowc(&wide, at, static_cast<std::size_t>(end - at));
      letters += std::iswalpha(static_cast<std::wint_t>(wide)) != 0 ? 1 : 0;
      at += length;
    }
    benchmark::DoNotOptimize(letters);
  }
  state.SetItemsProcessed(characters);
  std::setlocale(LC_CTYPE, before.c_str());
}
BENCHMARK(multibyte_glibc);

void load_again(benchmark::State& state) {
  Context context;
  context.load("default");
  for (auto _ : state) benchmark::DoNotOptimize(context.load("default"));
}
BENCHMARK(load_again);

// With the set-up of the context, which reads utf8 and the table of identifiers.
void load_first(benchmark::State& state, const char* name) {
  for (auto _ : state) {
    Context context;
    benchmark::DoNotOptimize(context.load(name));
  }
}
BENCHMARK_CAPTURE(load_first, default_locale, "default");
BENCHMARK_CAPTURE(load_first, sjis_locale, "ja_JP");

}  // namespace
