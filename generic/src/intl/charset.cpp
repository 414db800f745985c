// Loader of character sets. A descriptor enters the context's list only when everything about it
// was read; its maps hold every table that they name, so that classification need not check.
#include "intl/charset.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "chars/com_attr.h"
#include "chars/hex.h"
#include "diag/diag.h"
#include "intl/com_loc.h"
#include "intl/convcfg.h"
#include "intl/load_once.h"
#include "intl/loaded.h"
#include "intl/objectid.h"
#include "intl/parse_number.h"
#include "intl/sortorder.h"
#include "intl/text.h"

namespace comnlib {
namespace {

// A map of its own for the attributes, read from new "definition" entries; null with the result of
// the read on failure.
template <class T>
const T* read_map(CS_CONTEXT* ctx, CS_INT size, INTL_HANDLE handle, CS_BOOL need_entry,
                  CS_RETCODE& result) {
  auto* bytes = static_cast<CS_BYTE*>(comn_malloc(static_cast<std::size_t>(size)));
  result = bytes == nullptr ? CS_MEM_ERROR : comn__get_image(ctx, bytes, size, handle, need_entry);
  if (result == CS_SUCCEED) return reinterpret_cast<const T*>(bytes);
  release(bytes);
  return nullptr;
}

// How many tables a set needs, since its first bytes name them. `named` gives the number of a
// byte's table, or 0.
template <class Named>
std::size_t tables_named(Named named) {
  std::size_t last = 0;
  for (std::size_t byte = 0; byte < COMN_CS_MAPSIZE; ++byte) last = std::max(last, named(byte));
  return last + 1;
}

// Extends a map of `size` bytes to the last table that a first byte names. Tables that the file
// does not have are empty, so that classification need not check.
template <class T>
CS_RETCODE complete_map(const T*& map, std::size_t size, std::size_t wanted) {
  if (wanted <= size) return CS_SUCCEED;
  auto* bytes = static_cast<CS_BYTE*>(comn_realloc(const_cast<T*>(map), wanted));
  if (bytes == nullptr) return CS_MEM_ERROR;
  std::memset(bytes + size, 0, wanted - size);
  map = reinterpret_cast<const T*>(bytes);
  return CS_SUCCEED;
}

CS_RETCODE complete_type_map(char_attrib& attrib, std::size_t size) {
  const std::size_t tables = tables_named([&](std::size_t byte) -> std::size_t {
    const char_map& entry = attrib.cs_type_map[byte];
    return (entry.char_type & COMN_CT_LEAD) != 0 ? entry.char_upper : 0;
  });
  return complete_map(attrib.cs_type_map, size, tables * COMN_CS_TYPEMAPSIZE);
}

// Only first bytes of longer characters name a table.
CS_RETCODE complete_norm_map(char_attrib& attrib, std::size_t size) {
  if (attrib.cs_norm_map == nullptr || attrib.cs_width_map == nullptr) return CS_SUCCEED;
  const std::size_t tables = tables_named([&](std::size_t byte) -> std::size_t {
    return (attrib.cs_width_map[byte] & 0x0F) > 1 ? attrib.cs_norm_map[byte] : 0;
  });
  return complete_map(attrib.cs_norm_map, size, tables * COMN_CS_MAPSIZE);
}

// Whether a map has the size of its tables, or 0 for no map.
constexpr bool is_optional_size(CS_UINT size, CS_UINT tables) {
  return size == 0 || (tables != 0 && size == tables * COMN_CS_MAPSIZE);
}

constexpr bool sizes_agree(const ImageHeader& header) {
  return header.type.size != 0 && header.type.size == header.ntype * COMN_CS_TYPEMAPSIZE &&
         header.soundex.size != 0 && header.soundex.size == header.nsoundex * COMN_CS_MAPSIZE &&
         is_optional_size(header.width.size, 1) && is_optional_size(header.norm.size, header.nnorm);
}

CS_RETCODE read_multibyte_maps(CS_CONTEXT* ctx, char_attrib& attrib, const ImageHeader& header,
                               INTL_HANDLE handle) {
  CS_RETCODE result = CS_SUCCEED;
  const auto read = [&]<class T>(const T*& map, ImageMap part) {
    if (result == CS_SUCCEED && part.size != 0)
      map = read_map<T>(ctx, static_cast<CS_INT>(part.size), handle, 1, result);
  };
  read(attrib.cs_width_map, header.width);
  read(attrib.cs_norm_map, header.norm);
  read(attrib.cs_type_map, header.type);
  read(attrib.cs_soundex, header.soundex);
  if (result != CS_SUCCEED) return result;
  result = complete_type_map(attrib, header.type.size);
  return result == CS_SUCCEED ? complete_norm_map(attrib, header.norm.size) : result;
}

bool read_name(std::string_view name, char_attrib& attrib) {
  if (name.size() > COMN_CS_NAMELEN) return false;
  attrib.cs_namelen = static_cast<CS_USHORT>(name.size());
  name.copy(attrib.cs_name, name.size());
  return true;
}

template <class T>
bool read_field(std::string_view text, CS_INT least, CS_INT most, T& field) {
  const auto number = parse_number(text, least, most);
  field = static_cast<T>(number.value_or(0));
  return number.has_value();
}

// An entry before the image; false for a bad value or a key of another name.
bool read_key(std::string_view key, IntlFile& file, char_attrib& attrib, CS_LONG& image_size) {
  if (key == "class")
    return read_field(file.next_text(), COMN_CS_SINGLEBYTE, COMN_CS_MULTIBYTE, attrib.cs_class);
  if (key == "id") return read_field(file.next_text(), 0, UINT8_MAX, attrib.cs_id);
  if (key == "status") return read_field(file.next_text(), 0, UINT16_MAX, attrib.cs_status);
  if (key == "image_size") return read_field(file.next_text(), INT32_MIN, INT32_MAX, image_size);
  if (key == "name") return read_name(file.next_text(), attrib) && !file.failed();
  return key == "description" && file.next_value() != nullptr;
}

CS_RETCODE read_image(CS_CONTEXT* ctx, char_attrib& attrib, CS_LONG image_size, IntlFile& file) {
  CS_RETCODE result = CS_FAIL;
  if (attrib.cs_class == COMN_CS_SINGLEBYTE)
    result = comn__load_charset1(ctx, &attrib, image_size, file.handle());
  if (attrib.cs_class == COMN_CS_MULTIBYTE)
    result = comn__load_charset2(ctx, &attrib, image_size, file.handle());
  if (result != CS_SUCCEED) return result;
  const CS_CHAR* next = file.next_entry();
  if (file.failed()) return file.failure();
  if (next != nullptr && std::string_view(next) == "definition") return CS_FAIL;
  return file.close();
}

CS_RETCODE read_charset(CS_CONTEXT* ctx, IntlFile& file, CsCharDesc& desc) {
  if (!file.find_section("charset")) return file.failure();
  desc.char_attrib = com_alloc_char_attrib();
  if (desc.char_attrib == nullptr) return CS_MEM_ERROR;
  CS_LONG image_size = 0;
  while (const CS_CHAR* key = file.next_entry()) {
    if (std::string_view(key) == "definition")
      return read_image(ctx, *desc.char_attrib, image_size, file);
    if (!read_key(key, file, *desc.char_attrib, image_size)) return file.failure();
  }
  return file.failure();
}

// What a new descriptor needs besides its attributes.
CS_RETCODE complete(CS_CONTEXT& ctx, CsLocCache& entry, CsCharDesc& desc, ErrorBuffer error) {
  const CS_CHAR* name = entry.charname;
  CS_RETCODE result = load_conv_config(ctx, name, desc.conv_config, error);
  if (result != CS_SUCCEED) {
    print_error("Cannot load the conversion configuration of %s from $TALVEN/charsets/%s/%s.cfg\n",
                name, name, name);
    return result;
  }
  desc.conv_config->ascii_based = is_ascii_based(*desc.char_attrib);
  // The name is compared over its own length, so a leading part of "utf8" passes as well.
  const std::string_view charset(name, static_cast<std::size_t>(entry.charnamelen));
  const bool is_utf8 = std::string_view("utf8").starts_with(charset);
  const CsCharDesc* utf8 = ctx.ctxglobals->utf8_charset;
  if (!is_utf8 && (utf8 == nullptr || !converts_to(*utf8->conv_config, charset))) {
    print_error("Conversion from utf8 to %s is not defined in $TALVEN/charsets/utf8/utf8.cfg\n",
                name);
    return CS_FAIL;
  }
  if (ctx.ctxlocale == nullptr || entry.sortname == nullptr) return CS_SUCCEED;
  CsOid oid = 0;
  result = global_id(ctx, "collate", entry.sortname, oid, error);
  if (result == CS_SUCCEED)
    result = comn__intl_load_sortorder(&ctx, oid, &entry, error.path, error.length);
  if (result == CS_SUCCEED) desc.sort_order = entry.locsortorder;
  return result;
}

}  // namespace
}  // namespace comnlib

using namespace comnlib;

CS_RETCODE comn__intl_load_charset(CS_CONTEXT* ctx, CsOid oid, CsLocCache* cache_entry,
                                   CS_CHAR* errbuf, CS_INT errlen) {
  check_pointer(ctx);
  check_pointer(cache_entry);
  check_pointer(cache_entry->charname);
  const auto is_known = [oid](const CsCharDesc& known) { return known.oid == oid; };
  const auto read = [&](CsCharDesc& desc) {
    desc.oid = oid;
    cache_entry->locchardesc = &desc;
    const CS_RETCODE result = comn__get_charset(ctx, cache_entry, errbuf, errlen);
    if (result != CS_SUCCEED) return result;
    return complete(*ctx, *cache_entry, desc, {errbuf, errlen});
  };
  const CS_RETCODE result = load_once<&CsCharDesc::charnext>(
      ctx->ctxglobals->cmg_chardesc, cache_entry->locchardesc, is_known, read);
  if (result != CS_SUCCEED) cache_entry->locchardesc = nullptr;
  return trace(result);
}

CS_RETCODE comn__get_charset(CS_CONTEXT* ctx, CsLocCache* cache_entry, CS_CHAR* errbuf,
                             CS_INT errlen) {
  check_pointer(ctx);
  check_pointer(cache_entry);
  check_pointer(cache_entry->locchardesc);
  const auto open = [&](INTL_HANDLE* handle) {
    return com__open_charfile(ctx, cache_entry->charname, "charset.loc", nullptr, handle, errbuf,
                              errlen);
  };
  return trace(read_file(*ctx, open, [&](IntlFile& file) {
    return read_charset(ctx, file, *cache_entry->locchardesc);
  }));
}

CS_RETCODE comn__load_charset1(CS_CONTEXT* ctx, char_attrib* attrib, CS_LONG image_size,
                               INTL_HANDLE handle) {
  check_pointer(attrib);
  if (image_size != COMN_CS_IMAGE1_SIZE) return trace(CS_FAIL);
  set_single_byte_counts(*attrib);
  CS_RETCODE result = CS_SUCCEED;
  attrib->cs_type_map = read_map<char_map>(ctx, COMN_CS_IMAGE1_TYPES, handle, 0, result);
  if (result != CS_SUCCEED) return trace(result);
  attrib->cs_soundex = read_map<CS_BYTE>(ctx, COMN_CS_IMAGE1_SOUNDEX, handle, 1, result);
  if (result != CS_SUCCEED) return trace(result);
  return trace(complete_type_map(*attrib, COMN_CS_IMAGE1_TYPES));
}

CS_RETCODE comn__load_charset2(CS_CONTEXT* ctx, char_attrib* attrib, CS_LONG image_size,
                               INTL_HANDLE handle) {
  check_pointer(attrib);
  if (image_size < COMN_CS_IMAGE2_MINSIZE) return trace(CS_FAIL);
  std::array<CS_BYTE, COMN_CS_IMAGE2_HEADER> bytes{};
  const CS_RETCODE result = comn__get_image(ctx, bytes.data(), COMN_CS_IMAGE2_HEADER, handle, 0);
  if (result != CS_SUCCEED) return trace(result);
  const ImageHeader header = read_image_header(bytes.data());
  set_counts(*attrib, header);
  if (!sizes_agree(header)) return trace(CS_FAIL);
  return trace(read_multibyte_maps(ctx, *attrib, header, handle));
}

CS_RETCODE comn__get_image(CS_CONTEXT* ctx, CS_BYTE* dst, CS_INT size, INTL_HANDLE handle,
                           CS_BOOL need_entry) {
  check_pointer(ctx);
  check_pointer(dst);
  require(size >= 0);
  CS_INT status = 0;
  const auto failure = [&]() -> CS_RETCODE {
    if (status >= 0) return CS_FAIL;
    ctx->ctxintlerr = status;
    return status == INTL_NO_MEMORY ? CS_MEM_ERROR : CS_INTL_LIBERR;
  };
  const std::int64_t wanted = std::int64_t{2} * size;
  std::int64_t held = 0;  // hexadecimal digits so far; an odd one waits in the byte's upper half
  for (bool take_entry = need_entry != 0; held < wanted; take_entry = true) {
    if (take_entry) {
      const CS_CHAR* key = intl_nextentry(handle, &status);
      if (key == nullptr) return trace(failure());
      if (std::string_view(key) != "definition") return trace(CS_FAIL);
    }
    const CS_CHAR* value = intl_nextvalue(handle, &status);
    if (value == nullptr) return trace(failure());
    for (const CS_CHAR* at = value; *at != '\0'; ++at, ++held) {
      const auto digit = hex_value(*at);
      if (!digit || held == wanted) return trace(CS_FAIL);
      CS_BYTE& byte = dst[held / 2];
      byte = static_cast<CS_BYTE>(held % 2 == 0 ? *digit << 4 : byte | *digit);
    }
  }
  return trace(CS_SUCCEED);
}

CS_RETCODE comn__chardesc_drop(CsCharDesc* desc) {
  check_pointer(desc);
  if (const char_attrib* attrib = desc->char_attrib) {
    release(attrib->cs_width_map);
    release(attrib->cs_norm_map);
    release(attrib->cs_type_map);
    release(attrib->cs_soundex);
    static_cast<void>(com_free_char_attrib(desc->char_attrib));
  }
  drop_conv_config(desc->conv_config);
  comn_free(desc);
  return trace(CS_SUCCEED);
}

CS_RETCODE com_intl_chardesc_drop(CS_CONTEXT* ctx) {
  check_pointer(ctx);
  check_pointer(ctx->ctxglobals);
  CsCtxGlobals& globals = *ctx->ctxglobals;
  drop_list<&CsCharDesc::charnext>(globals.cmg_chardesc);
  globals.utf8_charset = nullptr;
  drop_loaded(globals);
  return trace(CS_SUCCEED);
}
