// Character classes and case against the C library's, and loading of locales.
#include <ctype.h>
#include <clocale>
#include <cwchar>
#include <cwctype>
#include <random>
#include <string>
#include <vector>

#include "bench.h"
#include "comnlib/charset.h"

namespace {

using namespace bench;

constexpr std::size_t kBytes = 1 << 20;

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

// Hiragana, every fourth character an ASCII one; in SJIS, and for the C library in UTF-8, which is
// the multibyte locale that every machine has.
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
        const auto n = static_cast<unsigned>(random() % 63);  // hiragana U+3041 on
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
  Host host;
  const char_attrib* set =
      null_attributes ? nullptr : host.load("default")->locchardesc->char_attrib;
  const std::string& text = latin_text();
  for (auto _ : state) {
    CS_INT count = 0;
    for (const char& byte : text)
      count += routine(set, reinterpret_cast<const CS_BYTE*>(&byte)) != 0 ? 1 : 0;
    benchmark::DoNotOptimize(count);
  }
  items(state, kBytes);
}

void single_glibc(benchmark::State& state, int (*routine)(int)) {
  const std::string& text = latin_text();
  for (auto _ : state) {
    int count = 0;
    for (const char byte : text) count += routine(static_cast<unsigned char>(byte)) != 0 ? 1 : 0;
    benchmark::DoNotOptimize(count);
  }
  items(state, kBytes);
}

void toupper_comnlib(benchmark::State& state) {
  Host host;
  const char_attrib* set = host.load("default")->locchardesc->char_attrib;
  std::string text = latin_text();
  for (auto _ : state) {
    for (char& byte : text) {
      auto* at = reinterpret_cast<CS_BYTE*>(&byte);
      comn_toupper(set, at, at);
    }
    benchmark::ClobberMemory();
  }
  items(state, kBytes);
}

void toupper_glibc(benchmark::State& state) {
  std::string text = latin_text();
  int (*volatile routine)(int) = ::toupper;
  for (auto _ : state) {
    for (char& byte : text) byte = static_cast<char>(routine(static_cast<unsigned char>(byte)));
    benchmark::ClobberMemory();
  }
  items(state, kBytes);
}

// Items are characters: both texts hold the same ones.
void multibyte_comnlib(benchmark::State& state) {
  Host host;
  const char_attrib* set = host.load("ja_JP")->locchardesc->char_attrib;
  std::string text = japanese_text().sjis;
  std::int64_t characters = 0;
  for (auto _ : state) {
    CS_INT letters = 0;
    auto* at = reinterpret_cast<CS_BYTE*>(text.data());
    for (const CS_BYTE* end = at + text.size(); at < end; ++characters) {
      letters += comn_isalpha(set, at) != 0 ? 1 : 0;
      comn_inc_char(set, &at);
    }
    benchmark::DoNotOptimize(letters);
  }
  state.SetItemsProcessed(characters);
}

// mbtowc gives the length and the wide character, whose class is then looked up.
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

void load_again(benchmark::State& state) {
  Host host;
  host.load("default");
  for (auto _ : state) benchmark::DoNotOptimize(host.load("default"));
}

// With the set-up of the context, which reads utf8 and the table of identifiers. Of the shipped
// locales the last one named takes longest: its character set has the largest file.
void load_first(benchmark::State& state, const char* name) {
  for (auto _ : state) {
    Host host;
    benchmark::DoNotOptimize(host.load(name));
  }
}

const Registration registered([] {
  measure("localization/isalpha/comnlib", single_comnlib, comn_isalpha, false);
  measure("localization/isalpha/comnlib no attributes", single_comnlib, comn_isalpha, true);
  measure("localization/isalpha/C library", single_glibc, ::isalpha);
  measure("localization/isdigit/comnlib", single_comnlib, comn_isdigit, false);
  measure("localization/isdigit/C library", single_glibc, ::isdigit);
  measure("localization/toupper/comnlib", toupper_comnlib);
  measure("localization/toupper/C library", toupper_glibc);
  measure("localization/class and step, double-byte/comnlib", multibyte_comnlib);
  measure("localization/class and step, double-byte/C library", multibyte_glibc);
  measure("localization/load a loaded locale/comnlib", load_again);
  measure("localization/set up and load/comnlib default", load_first, "default");
  measure("localization/set up and load/comnlib ja_JP", load_first, "ja_JP");
  measure("localization/set up and load/comnlib zh_TW.BIG5-HKSCS", load_first, "zh_TW.BIG5-HKSCS");
});

}  // namespace
