// locales.dat of any bytes: a look-up finds six short names or says why not.
#include <algorithm>
#include <cstring>

#include "intl/com_intl.h"
#include "memory_file.h"

namespace {

// A value of 256 bytes or more stops the process, as it must; no line that long is looked at.
bool has_long_line(std::span<const std::uint8_t> text) {
  std::size_t length = 0;
  return std::ranges::any_of(text, [&length](std::uint8_t byte) {
    length = byte == '\n' ? 0 : length + 1;
    return length >= COM_LOC_NAMESIZE;
  });
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::file = {data, size};
  if (has_long_line(fuzz::file)) return 0;
  CS_CONTEXT context{};
  CsLocNames names;
  const CS_RETCODE result = comn__intl_lookup(&context, "x", 1, &names, nullptr, 0);
  fuzz::check(fuzz::open_files == 0);
  fuzz::check((result == CS_INTL_LIBERR) == (context.ctxintlerr < 0));
  fuzz::check(result == CS_SUCCEED || result == CS_FAIL || result == CS_INTL_LIBERR);
  if (result != CS_SUCCEED) return 0;
  fuzz::check(names.sortorderlen > 0);
  fuzz::check(std::strlen(names.charset) == static_cast<std::size_t>(names.charsetlen));
  fuzz::check(std::strlen(names.money) == static_cast<std::size_t>(names.moneylen));
  return 0;
}
