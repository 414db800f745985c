// Money text: what reads as a value is written and read again as the same value, in every layout
// that keeps four decimals, and the small type agrees with the large one.
#include <array>
#include <vector>

#include "comnlib/money.h"
#include "exact/mny4cnvt.h"
#include "exact/mnycnvt.h"
#include "exact/numeaux.h"
#include "fuzz.h"
#include "support/two_byte_set.h"

namespace {

bool same(const CS_MONEY& a, const CS_MONEY& b) {
  return a.mnyhigh == b.mnyhigh && a.mnylow == b.mnylow;
}

// From a buffer of the exact size, so that a sanitizer sees every byte outside.
CS_INT read(const std::vector<CS_CHAR>& text, const char_attrib* charset, CS_MONEY& m) {
  return com__mnyfromchar_mb(&m, text.data(), static_cast<CS_INT>(text.size()), 0, charset);
}

std::vector<CS_CHAR> write(const CS_MONEY& m, CS_INT grouped, CS_INT decimals) {
  std::array<CS_CHAR, 26> room;  // the most that a value needs
  const CS_CHAR* text = com_precmnytochar(&m, room.data(), CS_INT{room.size()}, grouped, decimals);
  fuzz::check(text != nullptr);
  return {text, text + std::strlen(text)};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const TwoByteSet two_byte_set;
  fuzz::Input input(data, size);
  const auto choice = input.take<std::uint8_t>();
  const char_attrib* charset = choice % 2 == 0 ? nullptr : two_byte_set.attrib();
  const std::vector<CS_CHAR> text(input.rest().begin(), input.rest().end());

  CS_MONEY value;
  const CS_INT status = read(text, charset, value);
  fuzz::check(status == comnlib::kExactOk || status == comnlib::kExactOverflow ||
              status == comnlib::kExactSyntax);
  static_cast<void>(write(value, choice / 2 % 2, choice / 4 % 8 - 2));
  if (status != comnlib::kExactOk) return 0;

  for (const CS_INT grouped : {0, 1}) {
    CS_MONEY again;
    fuzz::check(read(write(value, grouped, 4), charset, again) == comnlib::kExactOk);
    fuzz::check(same(value, again));
  }
  CS_MONEY4 small;
  CS_MONEY widened;
  const auto length = static_cast<CS_INT>(text.size());
  const bool fits =
      com__mny4fromchar_mb(&small, text.data(), length, 0, charset) == comnlib::kExactOk;
  com__mny4tomny(&small, &widened);
  fuzz::check(fits == same(value, widened));
  return 0;
}
