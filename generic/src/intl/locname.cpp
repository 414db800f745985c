// Locale names in the caller's character set: from UTF-8 through the set's conversion.
#include <array>
#include <span>

#include "chars/utf8.h"
#include "intl/com_intl.h"
#include "intl/convcfg.h"
#include "intl/convtable.h"
#include "intl/locking.h"
#include "intl/text.h"

namespace comnlib {
namespace {

// The bytes of one character in the target set.
struct Encoded {
  std::array<CS_BYTE, 4> bytes;
  CS_INT length;
};

Encoded encode(const ConvTable& table, const CsConvConfig& config, CS_UINT code_point) {
  CS_USHORT bytes = kNoCharacter;
  if (code_point <= 0xFFFF) bytes = table.reverse.at(static_cast<CS_USHORT>(code_point));
  if (bytes == kNoCharacter) return {config.replacement, config.replacement_length};
  const auto low = static_cast<CS_BYTE>(bytes);
  if (bytes < 0x100) return {{low}, 1};
  return {{static_cast<CS_BYTE>(bytes >> 8), low}, 2};
}

// Converts the whole name, writing only below `room`; its full length, or -1 for malformed UTF-8.
CS_INT convert_name(std::span<const CS_BYTE> name, const ConvTable& table,
                    const CsConvConfig& config, CS_CHAR* buf, CS_INT room) {
  CS_INT length = 0;
  while (!name.empty()) {
    const CodePoint character = decode_utf8(name);
    if (character.bytes == 0) return -1;
    name = name.subspan(character.bytes);
    const Encoded encoded = encode(table, config, character.value);
    if (encoded.length <= room - length)
      std::memcpy(buf + length, encoded.bytes.data(), static_cast<std::size_t>(encoded.length));
    length += encoded.length;
  }
  return length;
}

bool is_utf8(std::span<const CS_BYTE> text) {
  while (!text.empty()) {
    const CodePoint character = decode_utf8(text);
    if (character.bytes == 0) return false;
    text = text.subspan(character.bytes);
  }
  return true;
}

CS_RETCODE copy_utf8(std::span<const CS_BYTE> name, CS_CHAR* buf, CS_INT buflen, CS_INT* outlen) {
  if (!is_utf8(name) || name.size() > static_cast<std::size_t>(buflen)) return CS_FAIL;
  std::memcpy(buf, name.data(), name.size());
  *outlen = static_cast<CS_INT>(name.size());
  return CS_SUCCEED;
}

CS_RETCODE convert_to(CS_CONTEXT& ctx, const CsLocCache& entry, std::span<const CS_BYTE> name,
                      CS_CHAR* buf, CS_INT buflen, CS_INT* outlen) {
  const CsConvConfig& config = *entry.locchardesc->conv_config;
  if (config.algorithm != nullptr)
    return config.algorithm->algorithm == Algorithm::kUtf8 ? copy_utf8(name, buf, buflen, outlen)
                                                           : CS_FAIL;
  const ConvTable* table = nullptr;
  {
    const GlobalsLock lock(ctx);
    if (!lock.taken()) return CS_FAIL;
    const CS_RETCODE result =
        load_table(ctx, entry.charname, config.table.data(), table, {nullptr, 0});
    if (result != CS_SUCCEED) return result;
  }
  // Measured first, so that nothing is stored of a name that does not fit.
  const CS_INT length = convert_name(name, *table, config, buf, 0);
  if (length < 0 || length > buflen) return CS_FAIL;
  *outlen = convert_name(name, *table, config, buf, buflen);
  return CS_SUCCEED;
}

}  // namespace
}  // namespace comnlib

using namespace comnlib;

CS_RETCODE com_intl_get_locname(CS_CONTEXT* ctx, const CS_LOCALE* locale, const CS_CHAR* utf8name,
                                CS_INT utf8len, CS_CHAR* buf, CS_INT buflen, CS_INT* outlen) {
  check_pointer(ctx);
  check_pointer(buf);
  check_pointer(outlen);
  require(buflen > 0);
  const std::string_view name = text_of(utf8name, utf8len);
  if (name.empty()) {
    *outlen = 0;
    return trace(CS_SUCCEED);
  }
  if (locale == nullptr) locale = ctx->ctxlocale;
  const CsLocCache* entry = locale == nullptr ? nullptr : locale->ctypeptr;
  const std::span bytes(reinterpret_cast<const CS_BYTE*>(name.data()), name.size());
  if (entry == nullptr || entry->locchardesc == nullptr) return trace(CS_FAIL);
  return trace(convert_to(*ctx, *entry, bytes, buf, buflen, outlen));
}
