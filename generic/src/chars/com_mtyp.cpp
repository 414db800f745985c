// Classification, case, stepping and normal form over any character set, multibyte included.
#include <algorithm>
#include <cstring>
#include <limits>

#include "chars/com_attr.h"
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

const char_map& entry_of(const char_attrib* attrib, const CS_BYTE* ch) {
  const char_attrib& set = or_default(attrib);
  const char_map& first = set.cs_type_map[*ch];
  return is_lead(first) ? second_entry(set, first, ch) : first;
}

CS_INT masked(const char_attrib* attrib, const CS_BYTE* ch, CS_INT mask,
              CallSite site = CallSite::current()) {
  check_pointer(ch, site);
  return entry_of(attrib, ch).char_type & mask;
}

CS_INT width(const char_attrib& attrib, CS_BYTE first) {
  return attrib.cs_width_map == nullptr ? 1 : attrib.cs_width_map[first] & 0x0F;
}

// The bytes to advance by, at least 1: a width of 0 would never end a walk.
CS_INT step(const char_attrib& attrib, CS_BYTE first) {
  return std::max(width(attrib, first), 1);
}

// Case forms that need more than one look-up: those of two-byte characters, and of single bytes
// whose entry is 0, which are copied with all bytes of their character.
void copy_case(const char_attrib& set, const char_map& first, const CS_BYTE* ch, CS_BYTE* dst,
               CS_BYTE char_map::*form) {
  if (is_lead(first)) {
    const CS_BYTE second = second_entry(set, first, ch).*form;
    dst[0] = ch[0];
    dst[1] = second;
  } else {
    std::memmove(dst, ch, static_cast<std::size_t>(step(set, *ch)));
  }
}

template <auto form>
void map_case(const char_attrib* attrib, const CS_BYTE* ch, CS_BYTE* dst) {
  const char_attrib& set = or_default(attrib);
  const char_map& first = set.cs_type_map[*ch];
  if (is_lead(first) || first.*form == 0) [[unlikely]]
    return copy_case(set, first, ch, dst, form);
  *dst = first.*form;
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

#define COMNLIB_CLASS(routine, mask)                             \
  CS_INT routine(const char_attrib* attrib, const CS_BYTE* ch) { \
    return masked(attrib, ch, mask);                             \
  }
COMNLIB_CLASS(comn_isalpha, COMN_CT_ALPHA)
COMNLIB_CLASS(comn_isupper, COMN_CT_UPPER)
COMNLIB_CLASS(comn_islower, COMN_CT_LOWER)
COMNLIB_CLASS(comn_isdigit, COMN_CT_DIGIT)
COMNLIB_CLASS(comn_isxdigit, COMN_CT_XDIGIT)
COMNLIB_CLASS(comn_isspace, COMN_CT_SPACE)
COMNLIB_CLASS(comn_ispunct, COMN_CT_PUNCT)
COMNLIB_CLASS(comn_isgraph, COMN_CT_GRAPH)
#undef COMNLIB_CLASS

CS_INT comn_get_lex(const char_attrib* attrib, const CS_BYTE* ch) {
  check_pointer(ch);
  return entry_of(attrib, ch).char_lex;
}

void comn_toupper(const char_attrib* attrib, const CS_BYTE* ch, CS_BYTE* dst) {
  check_pointer(ch);
  check_pointer(dst);
  map_case<&char_map::char_upper>(attrib, ch, dst);
}

void comn_tolower(const char_attrib* attrib, const CS_BYTE* ch, CS_BYTE* dst) {
  check_pointer(ch);
  check_pointer(dst);
  map_case<&char_map::char_lower>(attrib, ch, dst);
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
