// charset.loc of any bytes: it is refused, or every question about every pair of bytes is answered
// from within its maps.
#include "comnlib/charset.h"
#include "intl/charset.h"
#include "memory_file.h"

namespace {

void ask(const char_attrib& set) {
  for (unsigned pair = 0; pair <= 0xFFFF; ++pair) {
    const CS_BYTE ch[16] = {static_cast<CS_BYTE>(pair >> 8), static_cast<CS_BYTE>(pair)};
    CS_BYTE out[16];
    comn_toupper(&set, ch, out);
    static_cast<void>(comn_isalpha(&set, ch));
    fuzz::check(comn_char_width(&set, ch) >= 1);
    fuzz::check(comn_to_ascii(&set, ch) <= 255);
    CS_INT whole = 0, partial = 0, excess = 0, count = 0;
    comn_whole_char(&set, ch, ch + 3, &whole, &partial, &excess, &count);
    fuzz::check(whole + partial == 3);
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::file = {data, size};
  CS_CONTEXT context{};
  CsCtxGlobals globals{};
  context.ctxglobals = &globals;
  char name[] = "x";
  auto* desc = static_cast<CsCharDesc*>(comn_calloc(1, sizeof(CsCharDesc)));
  CsLocCache entry{};
  entry.charname = name;
  entry.charnamelen = 1;
  entry.locchardesc = desc;
  if (comn__get_charset(&context, &entry, nullptr, 0) == CS_SUCCEED) ask(*desc->char_attrib);
  fuzz::check(comn__chardesc_drop(desc) == CS_SUCCEED);
  fuzz::check(fuzz::open_files == 0);
  return 0;
}
