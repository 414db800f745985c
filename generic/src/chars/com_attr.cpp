// The attributes record: the built-in default, and records filled from an image in memory. The maps
// of a record are never owned here.
#include "chars/com_attr.h"

#include <algorithm>
#include <cstring>

#include "chars/iso_1.h"
#include "comnlib/result.h"
#include "diag/diag.h"
#include "runtime/hostmemory.h"

namespace comnlib {
namespace {

constexpr CS_UINT big_endian(const CS_BYTE* at) {
  return static_cast<CS_UINT>(at[0]) << 24 | static_cast<CS_UINT>(at[1]) << 16 |
         static_cast<CS_UINT>(at[2]) << 8 | at[3];
}

ImageMap map_at(const CS_BYTE* at) {
  return {big_endian(at), big_endian(at + 4)};
}

constexpr char_attrib iso_1_attributes() {
  char_attrib attrib{};
  attrib.cs_class = COMN_CS_SINGLEBYTE;
  attrib.cs_id = 1;
  attrib.cs_namelen = 5;
  std::copy_n("iso_1", attrib.cs_namelen, attrib.cs_name);
  attrib.cs_maxcharlen = 1;
  attrib.cs_ncharsize = 1;
  attrib.cs_ntype = 1;
  attrib.cs_type_map = ISO_1_type_map;
  return attrib;
}

bool is_plain(const char_attrib& attrib, CS_BYTE byte) {
  const CS_BYTE text[] = {byte, 0};
  if (comn_char_width(&attrib, text) > 1) return false;
  if ((attrib.cs_type_map[byte].char_type & COMN_CT_LEAD) != 0) return false;
  const auto form = static_cast<CS_BYTE>(comn_to_ascii(&attrib, text));
  const bool space = comn_isspace(&attrib, text) != 0;
  const bool currency = (comn_get_lex(&attrib, text) & COMN_LEX_CURRENCY) != 0;
  return com_tolower(form) == com_tolower(byte) && space == latin1::is_space(byte) &&
         currency == latin1::is_currency(byte);
}

const CS_BYTE* map_in(const CS_BYTE* image, ImageMap map) {
  return map.size == 0 ? nullptr : image + map.offset;
}

// A type table consists of bytes, so it may be at any address in an image.
const char_map* type_map_at(const CS_BYTE* at) {
  static_assert(alignof(char_map) == 1);
  return reinterpret_cast<const char_map*>(at);
}

}  // namespace

constexpr char_attrib kIso1 = iso_1_attributes();

ImageHeader read_image_header(const CS_BYTE* image) {
  ImageHeader header{};
  // Unlike the other numbers, the status is in the machine's byte order.
  std::memcpy(&header.status, image, sizeof header.status);
  header.charset_class = image[2];
  header.maxcharlen = image[3];
  header.ncharsize = image[4];
  header.ntype = image[5];
  header.nnorm = image[6];
  header.nsoundex = image[7];
  header.width = map_at(image + 12);
  header.norm = map_at(image + 20);
  header.type = map_at(image + 28);
  header.soundex = map_at(image + 36);
  return header;
}

bool is_ascii_based(const char_attrib& attrib) {
  for (CS_BYTE byte = 0; byte < 0x80; ++byte)
    if (!is_plain(attrib, byte)) return false;
  return true;
}

void set_counts(char_attrib& attrib, const ImageHeader& header) {
  attrib.cs_maxcharlen = header.maxcharlen;
  attrib.cs_ncharsize = header.ncharsize;
  attrib.cs_nnorm = header.nnorm;
  attrib.cs_ntype = header.ntype;
  attrib.cs_nsoundex = header.nsoundex;
}

void set_single_byte_counts(char_attrib& attrib) {
  attrib.cs_maxcharlen = 1;
  attrib.cs_ncharsize = 1;
  attrib.cs_nnorm = 0;
  attrib.cs_ntype = 1;
  attrib.cs_nsoundex = 1;
}

}  // namespace comnlib

using namespace comnlib;

char_attrib* com_alloc_char_attrib() {
  return make_record<char_attrib>();
}

CS_RETCODE com_free_char_attrib(char_attrib* attrib) {
  check_pointer(attrib);
  comn_free(attrib);
  return trace(CS_SUCCEED);
}

CS_RETCODE com_build_char_attrib(CS_INT kind, CS_INT id, const CS_CHAR* name, const CS_BYTE* image,
                                 char_attrib* attrib) {
  if (image == nullptr || attrib == nullptr) return trace(CS_FAIL);
  if (kind != COM_IMAGE_SINGLEBYTE && kind != COM_IMAGE_MULTIBYTE) return trace(CS_FAIL);
  check_pointer(name);

  *attrib = char_attrib{};
  attrib->cs_id = static_cast<CS_BYTE>(id);
  attrib->cs_namelen = static_cast<CS_USHORT>(strnlen(name, COMN_CS_NAMELEN));
  std::memcpy(attrib->cs_name, name, attrib->cs_namelen);

  if (kind == COM_IMAGE_SINGLEBYTE) {
    attrib->cs_class = COMN_CS_SINGLEBYTE;
    set_single_byte_counts(*attrib);
    attrib->cs_type_map = type_map_at(image);
    attrib->cs_soundex = image + COMN_CS_IMAGE1_TYPES;
    return trace(CS_SUCCEED);
  }
  const ImageHeader header = read_image_header(image);
  attrib->cs_status = header.status;
  attrib->cs_class = header.charset_class;
  set_counts(*attrib, header);
  attrib->cs_width_map = map_in(image, header.width);
  attrib->cs_norm_map = map_in(image, header.norm);
  attrib->cs_type_map = type_map_at(image + header.type.offset);
  attrib->cs_soundex = image + header.soundex.offset;
  return trace(CS_SUCCEED);
}

const char_attrib* com_get_charattrib() {
  return &kIso1;
}

const char_map* com_get_typemap() {
  return ISO_1_type_map;
}
