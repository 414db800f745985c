// The sectioned reader over any bytes: every walk ends, every piece lies in the text with its NUL,
// and every fault has words.
#include <cstring>
#include <vector>

#include "fuzz.h"
#include "intl.h"
#include "reader.h"

using comnlib::companion::SectionedText;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  // Which entries' values are read, and which sections' entries.
  const auto choices = input.take<std::uint32_t>();
  const auto bytes = input.rest();
  std::vector<char> text(bytes.begin(), bytes.end());
  text.push_back('#');  // the byte behind the text that the reader may write
  SectionedText sections(text.data(), text.size() - 1);

  std::size_t steps = 0;
  unsigned turn = 0;
  const auto chosen = [&] { return (choices >> turn++ % 32 & 1) != 0; };
  const auto next = [&](auto step) {
    CS_INT status = 0;
    const char* piece = (sections.*step)(status);
    fuzz::check(++steps <= 2 * text.size() + 4);
    if (piece != nullptr) {
      fuzz::check(status == 0 && piece >= text.data() && piece < text.data() + text.size());
      fuzz::check(std::memchr(piece, 0, text.data() + text.size() - piece) != nullptr);
    } else if (status != 0) {
      char words[100];
      fuzz::check(status < 0 && intl_errstr(status, words, sizeof words) > 0);
      fuzz::check(std::strcmp(words, "unknown status") != 0);
    }
    return piece != nullptr || status < 0;
  };
  while (next(&SectionedText::next_section)) {
    if (chosen()) continue;
    while (next(&SectionedText::next_entry)) {
      if (chosen()) continue;
      while (next(&SectionedText::next_value)) {
      }
    }
  }
  return 0;
}
