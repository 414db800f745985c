// Padding of character, Unicode-character and binary destinations, and the copies of fixed-length
// values into binary ones. No routine writes past destfmt->maxlength.
#include "conv/newutils.h"

#include <algorithm>
#include <cstring>
#include <span>

#include "conv/frame.h"
#include "diag/diag.h"

namespace comnlib {
namespace {

// Fills whole units only. The first byte of each is `low`; a second one is zero.
void fill_units(std::span<CS_BYTE> room, std::size_t unit, CS_BYTE low) {
  const std::size_t whole = room.size() - room.size() % unit;
  std::ranges::fill(room.first(whole), CS_BYTE{0});
  for (std::size_t at = 0; at < whole; at += unit) room[at] = low;
}

// The padding rule of text in units of `unit` bytes. A text that ends in half a unit is completed
// with a zero byte before anything is written after it.
CS_RETCODE pad_text(CS_INT length, const CS_DATAFMT& format, CS_BYTE* dest, CS_INT& resultlen,
                    CS_INT unit) {
  const CS_INT room = format.maxlength;
  require(length >= 0 && room >= 0);
  const bool terminate = terminates(format);
  const bool pad_null = (format.format & CS_DFMT_PADNULL) != 0;
  const bool pad_blank = (format.format & CS_DFMT_PADBLANK) != 0;

  const CS_INT spare = room - length;
  const bool fits = spare >= 0 && (!terminate || length % unit + unit <= spare);
  if (!fits) {
    if (terminate && room >= unit) {
      const CS_INT last = (room / unit - 1) * unit;
      std::memset(dest + last, 0, static_cast<std::size_t>(unit));
    }
    return CS_CVT_OVERFLOW;
  }
  if (pad_null && pad_blank) return CS_CVT_FORMAT;
  if (!pad_null && !pad_blank && !terminate) return CS_SUCCEED;

  require(resultlen >= 0 && resultlen <= room);
  while (resultlen % unit != 0 && resultlen < room) dest[resultlen++] = 0;
  const std::span rest(dest + resultlen, static_cast<std::size_t>(room - resultlen));
  const auto unit_size = static_cast<std::size_t>(unit);
  if (pad_null) {
    std::ranges::fill(rest, CS_BYTE{0});
    resultlen = room;
  } else if (pad_blank) {
    fill_units(rest, unit_size, ' ');
    if (terminate && rest.size() >= unit_size) {
      const std::size_t units = rest.size() - rest.size() % unit_size;
      std::memset(rest.data() + units - unit_size, 0, unit_size);
    }
    resultlen = std::max(resultlen, room - room % unit);
  } else {
    require(rest.size() >= unit_size);
    std::memset(rest.data(), 0, unit_size);
    resultlen += unit;
  }
  return CS_SUCCEED;
}

}  // namespace
}  // namespace comnlib

using namespace comnlib;

CS_RETCODE comn__padchar(CS_INT length, const CS_DATAFMT* destfmt, CS_VOID* dest,
                         CS_INT* resultlen) {
  return trace(pad_text(length, *destfmt, static_cast<CS_BYTE*>(dest), *resultlen, 1));
}

CS_RETCODE comn__padunichar(CS_INT length, const CS_DATAFMT* destfmt, CS_VOID* dest,
                            CS_INT* resultlen) {
  return trace(pad_text(length, *destfmt, static_cast<CS_BYTE*>(dest), *resultlen,
                        static_cast<CS_INT>(sizeof(CS_UNICHAR))));
}

CS_RETCODE comn__padbin(CS_INT length, const CS_DATAFMT* destfmt, CS_VOID* dest,
                        CS_INT* resultlen) {
  const CS_INT room = destfmt->maxlength;
  require(length >= 0 && room >= 0);
  if ((destfmt->format & CS_DFMT_PADNULL) != 0 && room > length) {
    std::memset(static_cast<CS_BYTE*>(dest) + length, 0, static_cast<std::size_t>(room - length));
    *resultlen = room;
  }
  return trace(CS_SUCCEED);
}

CS_RETCODE comn_fixedtobin(COMNLIB_CONVERSION_PARAMETERS, CS_INT size) {
  check_pointers({context, srcfmt, src, destfmt, dest, destlen});
  require(is_binary(destfmt->datatype) && destfmt->maxlength >= 0 && size >= 0);
  *destlen = std::min(destfmt->maxlength, size);
  std::memmove(dest, src, static_cast<std::size_t>(*destlen));
  if (destfmt->maxlength < size) return trace(CS_CVT_TRUNCATED);
  return trace(comn__padbin(size, destfmt, dest, destlen));
}

CS_RETCODE comn_fixedtovarbin(COMNLIB_CONVERSION_PARAMETERS, CS_INT size) {
  check_pointers({context, srcfmt, src, destfmt, dest, destlen});
  require(destfmt->datatype == CS_VARBINARY_TYPE && size >= 0);
  const CS_INT kept = std::min<CS_INT>(size, CS_MAX_CHAR);
  auto* record = static_cast<CS_BYTE*>(dest);
  // The value is copied first, since it may lie where the length is stored.
  std::memmove(record_bytes(record), src, static_cast<std::size_t>(kept));
  store(record, static_cast<CS_SMALLINT>(kept));
  *destlen = sizeof(CS_VARBINARY);
  return trace(kept < size ? CS_CVT_OVERFLOW : CS_SUCCEED);
}
