// Scanner, parser and store over any bytes. The file is the input itself, handed out in pieces of a
// size that the input chooses, by readers of this host's own.
#include <algorithm>
#include <array>
#include <cstdarg>
#include <string>

#include "config/comcfg.h"
#include "fuzz.h"

namespace {

using Bytes = std::span<const std::uint8_t>;

Bytes contents;
std::size_t piece = 1;

void scan() {
  CS_CONTEXT context{};
  CfgParseInfo* parse = nullptr;
  fuzz::check(cfg__open_parse(&context, "file", &parse) == CS_SUCCEED);
  std::size_t at = 0;
  CS_INT lines = 1;
  for (;;) {
    const CS_INT code = cfg__lex(parse);
    fuzz::check(parse->line == lines);
    CS_INT length = 0;
    const CS_CHAR* text = cfg__toktext(parse, &length);
    const auto size = static_cast<std::size_t>(length);
    if (code == CFG_END) break;
    fuzz::check(code >= CFG_INCLUDE && code <= CFG_SPACE && size > 0);
    // The tokens put together are the file.
    fuzz::check(size <= contents.size() - at && std::memcmp(text, contents.data() + at, size) == 0);
    for (std::size_t i = 0; i < size; ++i) lines += text[i] == '\n';
    at += size;
  }
  fuzz::check(at == contents.size());
  cfg__clean_parse(parse);
}

void load() {
  CS_CONTEXT context{};
  const CS_RETCODE result = comn_init_cfg(&context, "file");
  fuzz::check(result == CS_SUCCEED || result == CS_FAIL);
  fuzz::check((result == CS_SUCCEED) == (context.ctxconfig != nullptr));
  std::array<CS_CHAR, 16> value;
  CS_INT length;
  comn_get_cfg(&context, "a", "b", value.data(), value.size(), &length);
  fuzz::check(length >= 0 && static_cast<std::size_t>(length) <= contents.size());
  comn_drop_cfg(&context);
}

}  // namespace

// Replaces the library's own routine, which would write every error of every input to a file.
extern "C" void __wrap__ZN7comnlib11print_errorEPKcz(const char* format, ...) {
  std::array<char, 3072> text;
  va_list args;
  va_start(args, format);
  const int length = std::vsnprintf(text.data(), text.size(), format, args);
  va_end(args);
  fuzz::check(length > 0);
  const auto size = static_cast<std::size_t>(length);
  fuzz::check(size >= text.size() || text[size - 1] == '\n');
}

// Whatever a file includes is the same file again, under a path that grows.
CS_INT intl_iocsfopen(const CS_CHAR*, INTL_HANDLE* handle) {
  *handle = new Bytes(contents);
  return 0;
}

CS_INT intl_iocsfread(INTL_HANDLE handle, CS_BYTE* buffer, CS_INT buflen) {
  auto& rest = *static_cast<Bytes*>(handle);
  const auto count = std::min({rest.size(), piece, static_cast<std::size_t>(buflen)});
  if (count != 0) std::memcpy(buffer, rest.data(), count);
  rest = rest.subspan(count);
  return static_cast<CS_INT>(count);
}

CS_INT intl_iocsfclose(INTL_HANDLE handle) {
  delete static_cast<Bytes*>(handle);
  return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  piece = 1 + input.take_upto(99);
  contents = input.rest();
  scan();
  load();
  return 0;
}
