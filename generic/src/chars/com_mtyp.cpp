// Classification, case, stepping and normal form over any character set, multibyte included.
#include <algorithm>
#include <cstring>
#include <limits>

#include "chars/com_attr.h"
#include "chars/iso_1.h"
#include "diag/diag.h"

namespace comnlib {
namespace {

const char_attrib& or_default(const char_attrib* attrib) {
  return attrib == nullptr ? kIso1 : *attrib;
}

bool is_lead(const char_map& entry) {
  return (entry.char_type & COMN_CT_LEAD) != 0;
}

// The second byte's entry in the type table that the first byte's entry names.
const char_map& second_entry(const char_attrib& attrib, const char_map& first, const CS_BYTE* ch) {
  return attrib.cs_type_map[first.char_upper * COMN_CS_MAPSIZE + ch[1]];
}

CS_INT width(const char_attrib& attrib, CS_BYTE first) {
  return attrib.cs_width_map == nullptr ? 1 : attrib.cs_width_map[first] & 0x0F;
}

// The bytes to advance by, at least 1: a width of 0 would never end a walk.
CS_INT step(const char_attrib& attrib, CS_BYTE first) {
  return std::max(width(attrib, first), 1);
}

// Usually a single byte is looked up in attributes that the caller passes. That needs neither the
// address of data nor a call, for which 32-bit code would set up registers first. All other cases
// have functions of their own.

// Stops at the line of a routine.
template <CS_INT kLine>
[[noreturn, gnu::noinline]] void refuse_null() {
  com_chkptr(nullptr, CallSite::current().file_name(), kLine);
  __builtin_unreachable();
}

// In the built-in attributes, which have single bytes only.
template <auto kMember, CS_INT kMask, CS_INT kLine>
[[gnu::noinline]] CS_INT look_up_default(const CS_BYTE* ch) {
  if (ch == nullptr) refuse_null<kLine>();
  return ISO_1_type_map[*ch].*kMember & kMask;
}

template <auto kMember, CS_INT kMask, CS_INT kLine>
[[gnu::noinline]] CS_INT look_up_second(const char_attrib* attrib, const CS_BYTE* ch) {
  if (ch == nullptr) refuse_null<kLine>();
  return second_entry(*attrib, attrib->cs_type_map[*ch], ch).*kMember & kMask;
}

template <auto kMember, CS_INT kMask, CS_INT kLine>
[[gnu::always_inline]] inline CS_INT look_up(const char_attrib* attrib, const CS_BYTE* ch) {
  if (attrib == nullptr) return look_up_default<kMember, kMask, kLine>(ch);
  if (ch != nullptr) [[likely]] {
    const char_map& entry = attrib->cs_type_map[*ch];
    if (!is_lead(entry)) [[likely]]
      return entry.*kMember & kMask;
  }
  return look_up_second<kMember, kMask, kLine>(attrib, ch);
}

// A single byte whose entry is 0 is copied with all bytes of its character.
template <auto kForm, CS_INT kLine>
[[gnu::noinline]] void map_case_other(const char_attrib* attrib, const CS_BYTE* ch, CS_BYTE* dst) {
  if (ch == nullptr || dst == nullptr) refuse_null<kLine>();
  const char_attrib& set = or_default(attrib);
  const char_map& first = set.cs_type_map[*ch];
  if (is_lead(first)) {
    const CS_BYTE second = second_entry(set, first, ch).*kForm;
    dst[0] = ch[0];
    dst[1] = second;
  } else if (first.*kForm == 0) {
    std::memmove(dst, ch, static_cast<std::size_t>(step(set, *ch)));
  } else {
    *dst = first.*kForm;
  }
}

template <auto kForm, CS_INT kLine>
[[gnu::always_inline]] inline void map_case(const char_attrib* attrib, const CS_BYTE* ch,
                                            CS_BYTE* dst) {
  if (attrib != nullptr && ch != nullptr) [[likely]] {
    const char_map& entry = attrib->cs_type_map[*ch];
    const CS_BYTE mapped = entry.*kForm;
    if (mapped != 0 && !is_lead(entry) && dst != nullptr) [[likely]] {
      *dst = mapped;
      return;
    }
  }
  map_case_other<kForm, kLine>(attrib, ch, dst);
}

CS_INT normal_form(const char_attrib* attrib, const CS_BYTE* ch) {
  if (attrib == nullptr) return *ch;
  const CS_BYTE* tables = attrib->cs_norm_map;
  if (tables == nullptr) return attrib->cs_type_map[*ch].char_lower;
  if (width(*attrib, *ch) <= 1) return tables[*ch];
  const CS_INT table = tables[*ch];
  return table == 0 ? 0 : tables[table * COMN_CS_MAPSIZE + ch[1]];
}

}  // namespace
}  // namespace comnlib

using namespace comnlib;

#define COMNLIB_LOOK_UP(routine, member, mask)                     \
  CS_INT routine(const char_attrib* attrib, const CS_BYTE* ch) {   \
    return look_up<&char_map::member, mask, __LINE__>(attrib, ch); \
  }
COMNLIB_LOOK_UP(comn_isalpha, char_type, COMN_CT_ALPHA)
COMNLIB_LOOK_UP(comn_isupper, char_type, COMN_CT_UPPER)
COMNLIB_LOOK_UP(comn_islower, char_type, COMN_CT_LOWER)
COMNLIB_LOOK_UP(comn_isdigit, char_type, COMN_CT_DIGIT)
COMNLIB_LOOK_UP(comn_isxdigit, char_type, COMN_CT_XDIGIT)
COMNLIB_LOOK_UP(comn_isspace, char_type, COMN_CT_SPACE)
COMNLIB_LOOK_UP(comn_ispunct, char_type, COMN_CT_PUNCT)
COMNLIB_LOOK_UP(comn_isgraph, char_type, COMN_CT_GRAPH)
COMNLIB_LOOK_UP(comn_get_lex, char_lex, 0xFF)
#undef COMNLIB_LOOK_UP

void comn_toupper(const char_attrib* attrib, const CS_BYTE* ch, CS_BYTE* dst) {
  map_case<&char_map::char_upper, __LINE__>(attrib, ch, dst);
}

void comn_tolower(const char_attrib* attrib, const CS_BYTE* ch, CS_BYTE* dst) {
  map_case<&char_map::char_lower, __LINE__>(attrib, ch, dst);
}

CS_INT comn_char_width(const char_attrib* attrib, const CS_BYTE* ch) {
  check_pointer(ch);
  return width(or_default(attrib), *ch);
}

void comn_inc_char(const char_attrib* attrib, CS_BYTE** ch) {
  check_pointer(ch);
  check_pointer(*ch);
  *ch += step(or_default(attrib), **ch);
}

CS_INT comn_disp_width(const char_attrib* attrib, const CS_BYTE* ch) {
  check_pointer(ch);
  const CS_BYTE* widths = or_default(attrib).cs_width_map;
  return widths == nullptr ? 1 : widths[*ch] >> 4;
}

const CS_BYTE* comn_get_widthmap(const char_attrib* attrib) {
  return or_default(attrib).cs_width_map;
}

void comn_whole_char(const char_attrib* attrib, const CS_BYTE* start, const CS_BYTE* end,
                     CS_INT* whole_len, CS_INT* partial_len, CS_INT* excess, CS_INT* count) {
  check_pointer(start);
  check_pointer(end);
  check_pointer(whole_len);
  check_pointer(partial_len);
  check_pointer(excess);
  check_pointer(count);
  // An end before the start is a distance beyond every length, too.
  require(static_cast<std::size_t>(end - start) <= std::numeric_limits<CS_INT>::max());

  const char_attrib& set = or_default(attrib);
  const auto length = static_cast<CS_INT>(end - start);
  *partial_len = 0;
  *excess = 0;
  if (set.cs_width_map == nullptr) {
    *whole_len = length;
    *count = length;
    return;
  }
  CS_INT at = 0;
  CS_INT characters = 0;
  for (; at < length; ++characters) {
    const CS_INT bytes = step(set, start[at]);
    const CS_INT left = length - at;
    if (bytes > left) {
      *partial_len = left;
      *excess = bytes - left;
      break;
    }
    at += bytes;
  }
  *whole_len = at;
  *count = characters;
}

CS_INT comn_to_ascii(const char_attrib* attrib, const CS_BYTE* ch) {
  check_pointer(ch);
  return normal_form(attrib, ch);
}

CS_INT comn_str_to_ascii(const char_attrib* attrib, const CS_BYTE* src, CS_INT srclen, CS_BYTE* dst,
                         CS_INT dstlen) {
  check_pointer(src);
  check_pointer(dst);
  require(srclen >= 0 && dstlen >= 0);
  const char_attrib& set = or_default(attrib);
  CS_INT written = 0;
  for (CS_INT at = 0; at < srclen && written < dstlen; ++written) {
    const CS_INT bytes = step(set, src[at]);
    if (bytes > srclen - at) break;
    dst[written] = static_cast<CS_BYTE>(normal_form(attrib, src + at));
    at += bytes;
  }
  return written;
}
