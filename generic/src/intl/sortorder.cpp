// Reader of .srt files, and the comparison. A sort order enters the context's list only when its
// file was read whole.
#include "intl/sortorder.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "chars/hex.h"
#include "intl/com_loc.h"
#include "intl/load_once.h"
#include "intl/loaded.h"
#include "intl/text.h"

namespace comnlib {
namespace {

bool read_entry(std::string_view key, IntlFile& file, CsSortOrder& order, bool& has_weights) {
  if (key == "kind") {
    const std::string_view kind = file.next_text();
    order.is_binary = kind == "binary";
    return order.is_binary || kind == "weights";
  }
  if (key == "weights") return has_weights = decode_hex(file.next_text(), order.weights);
  return key == "description" && file.next_value() != nullptr;
}

CS_RETCODE read_sort_order(IntlFile& file, CsSortOrder& order) {
  if (!file.find_section("sortorder")) return file.failure();
  bool has_weights = false;
  while (const CS_CHAR* key = file.next_entry())
    if (!read_entry(key, file, order, has_weights)) return file.failure();
  if (file.failed() || order.is_binary == has_weights) return file.failure();
  return file.close();
}

// The next character of a text that is not empty, its last one as far as it goes.
std::span<const CS_BYTE> take_character(const char_attrib* attrib, std::span<const CS_BYTE>& text) {
  const auto width =
      static_cast<std::size_t>(std::max(comn_char_width(attrib, text.data()), CS_INT{1}));
  const auto character = text.first(std::min(width, text.size()));
  text = text.subspan(character.size());
  return character;
}

CS_INT compare_bytes(std::span<const CS_BYTE> text1, std::span<const CS_BYTE> text2) {
  const int order = std::memcmp(text1.data(), text2.data(), std::min(text1.size(), text2.size()));
  if (order != 0) return order;
  return static_cast<CS_INT>(text1.size()) - static_cast<CS_INT>(text2.size());
}

CS_INT compare_characters(const CsSortOrder& order, std::span<const CS_BYTE> character1,
                          std::span<const CS_BYTE> character2) {
  if (character1.size() == 1 && character2.size() == 1)
    return order.weights[character1[0]] - order.weights[character2[0]];
  if (character1.size() == 1) return -1;
  if (character2.size() == 1) return 1;
  return compare_bytes(character1, character2);
}

}  // namespace

CS_INT compare_text(const CsSortOrder& order, const char_attrib* attrib,
                    std::span<const CS_BYTE> text1, std::span<const CS_BYTE> text2) {
  if (order.is_binary) return compare_bytes(text1, text2);
  while (!text1.empty() && !text2.empty()) {
    const auto character1 = take_character(attrib, text1);
    const auto character2 = take_character(attrib, text2);
    const CS_INT difference = compare_characters(order, character1, character2);
    if (difference != 0) return difference;
  }
  return static_cast<CS_INT>(!text1.empty()) - static_cast<CS_INT>(!text2.empty());
}

void drop_sort_orders(CsSortOrder*& head) {
  drop_list<&CsSortOrder::next>(head);
}

}  // namespace comnlib

using namespace comnlib;

CS_RETCODE comn__intl_load_sortorder(CS_CONTEXT* ctx, CsOid oid, CsLocCache* cache_entry,
                                     CS_CHAR* errbuf, CS_INT errlen) {
  check_pointer(ctx);
  check_pointer(cache_entry);
  check_pointer(cache_entry->charname);
  check_pointer(cache_entry->sortname);
  const std::string_view charset = cache_entry->charname;
  if (charset.size() >= COM_LOC_NAMESIZE) return trace(CS_FAIL);
  LoadedOnce* loaded = loaded_of(*ctx->ctxglobals);
  if (loaded == nullptr) return trace(CS_MEM_ERROR);
  const auto is_known = [oid, charset](const CsSortOrder& known) {
    return known.oid == oid && known.charset.data() == charset;
  };
  const auto open = [&](INTL_HANDLE* handle) {
    return com__open_charfile(ctx, cache_entry->charname, cache_entry->sortname, "srt", handle,
                              errbuf, errlen);
  };
  const auto read = [&](CsSortOrder& order) {
    order.oid = oid;
    charset.copy(order.charset.data(), charset.size());
    return read_file(*ctx, open, [&order](IntlFile& file) { return read_sort_order(file, order); });
  };
  return trace(load_once<&CsSortOrder::next>(loaded->sort_orders, cache_entry->locsortorder,
                                             is_known, read));
}

CS_INT com_unsignstrcmp(const CS_BYTE* string1, const CS_BYTE* string2) {
  check_pointer(string1);
  check_pointer(string2);
  while (*string1 != 0 && *string1 == *string2) {
    ++string1;
    ++string2;
  }
  return *string1 - *string2;
}

CS_INT com_intl_compare(const CS_LOCALE* locale, const CS_BYTE* text1, CS_INT length1,
                        const CS_BYTE* text2, CS_INT length2) {
  check_pointer(locale);
  check_pointer(text1);
  check_pointer(text2);
  require(length1 >= 0 && length2 >= 0);
  const std::span first(text1, static_cast<std::size_t>(length1));
  const std::span second(text2, static_cast<std::size_t>(length2));
  const CsSortOrder* order =
      locale->collateptr == nullptr ? nullptr : locale->collateptr->locsortorder;
  if (order == nullptr) return compare_bytes(first, second);
  const CsCharDesc* charset = locale->collateptr->locchardesc;
  return compare_text(*order, charset == nullptr ? nullptr : charset->char_attrib, first, second);
}
