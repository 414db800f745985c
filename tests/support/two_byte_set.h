// A small multibyte character set: ISO 8859-1, but 0x81 begins two-byte characters whose second
// bytes are their ASCII forms, a second "E" being a currency sign; 0x82 begins two bytes by its
// class alone, not by its width; 0x83 begins two bytes without an ASCII form.
#pragma once

#include <algorithm>
#include <array>

#include "comnlib/charset.h"

class TwoByteSet {
 public:
  TwoByteSet() {
    std::copy_n(com_get_typemap(), COMN_CS_MAPSIZE, types_.begin());
    types_[0x81] = {1, 0, 0, COMN_CT_LEAD};
    types_[0x82] = {1, 0, 0, COMN_CT_LEAD};
    types_[COMN_CS_MAPSIZE + 'E'] = {'E', 'E', COMN_LEX_CURRENCY, COMN_CT_PUNCT};
    types_[COMN_CS_MAPSIZE + ' '] = {' ', ' ', COMN_LEX_SPACE, COMN_CT_SPACE};
    types_[COMN_CS_MAPSIZE + 'A'] = {'A', 'a', COMN_LEX_LETTER, COMN_CT_UPPER | COMN_CT_GRAPH};
    types_[COMN_CS_MAPSIZE + 'a'] = {'A', 'a', COMN_LEX_LETTER, COMN_CT_LOWER | COMN_CT_GRAPH};
    types_[COMN_CS_MAPSIZE + '0'] = {'0', '0', COMN_LEX_DIGIT, COMN_CT_DIGIT | COMN_CT_XDIGIT};
    widths_.fill(0x11);
    widths_[0x81] = widths_[0x83] = 0x22;
    for (std::size_t byte = 0; byte < 128; ++byte) {
      norms_[byte] = norms_[COMN_CS_MAPSIZE + byte] = static_cast<CS_BYTE>(byte);
    }
    norms_[0x81] = 1;
    attrib_.cs_class = COMN_CS_MULTIBYTE;
    attrib_.cs_maxcharlen = attrib_.cs_ntype = attrib_.cs_nnorm = 2;
    attrib_.cs_width_map = widths_.data();
    attrib_.cs_norm_map = norms_.data();
    attrib_.cs_type_map = types_.data();
  }
  TwoByteSet(const TwoByteSet&) = delete;
  TwoByteSet& operator=(const TwoByteSet&) = delete;

  const char_attrib* attrib() const { return &attrib_; }

 private:
  std::array<char_map, 2 * COMN_CS_MAPSIZE> types_{};
  std::array<CS_BYTE, COMN_CS_MAPSIZE> widths_{};
  std::array<CS_BYTE, 2 * COMN_CS_MAPSIZE> norms_{};
  char_attrib attrib_{};
};
