// Reader of .srt files, and the comparison. A sort order enters the context's list only when its
// file was read whole.
#include "intl/sortorder.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "chars/hex.h"
#include "chars/utf.h"
#include "intl/com_loc.h"
#include "intl/load_once.h"
#include "intl/loaded.h"
#include "intl/parse_number.h"
#include "intl/text.h"

namespace comnlib {
namespace {

constexpr CS_INT kLastCode = 0x10FFFF;

bool read_kind(std::string_view text, SortKind& kind) {
  if (text == "binary") kind = SortKind::kBinary;
  if (text == "weights") kind = SortKind::kWeights;
  if (text == "folded") kind = SortKind::kFolded;
  return kind != SortKind::kNone;
}

CS_RETCODE read_fold(IntlFile& file, CsSortOrder& order) {
  std::array<CS_UINT, 4> fields{};
  for (CS_UINT& field : fields) {
    const auto number = parse_number(file.next_text(), 0, kLastCode);
    if (!number) return file.failure();
    field = static_cast<CS_UINT>(*number);
  }
  const FoldRun run{fields[0], fields[1], fields[2], fields[3]};
  const auto known = order.folds.view();
  const bool ascends = known.empty() || run.first > known.back().last;
  if (!ascends || run.first > run.last || run.step == 0) return CS_FAIL;
  if (run.to + (run.last - run.first) > kLastCode) return CS_FAIL;
  return order.folds.push(run) ? CS_SUCCEED : CS_MEM_ERROR;
}

CS_RETCODE read_entry(std::string_view key, IntlFile& file, CsSortOrder& order, bool& has_weights) {
  if (key == "fold") return read_fold(file, order);
  bool good = false;
  if (key == "kind") good = read_kind(file.next_text(), order.kind);
  if (key == "weights") good = has_weights = decode_hex(file.next_text(), order.weights);
  if (key == "description") good = file.next_value() != nullptr;
  return good ? CS_SUCCEED : file.failure();
}

CS_RETCODE read_sort_order(IntlFile& file, CsSortOrder& order) {
  if (!file.find_section("sortorder")) return file.failure();
  bool has_weights = false;
  while (const CS_CHAR* key = file.next_entry()) {
    const CS_RETCODE result = read_entry(key, file, order, has_weights);
    if (result != CS_SUCCEED) return result;
  }
  const bool has_kind = order.kind != SortKind::kNone;
  const bool fits = has_weights == (order.kind == SortKind::kWeights) &&
                    (order.folds.count == 0 || order.kind == SortKind::kFolded);
  return has_kind && fits && !file.failed() ? file.close() : file.failure();
}

// Takes the next character off a text that is not empty. The text's end may cut its last character.
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

CS_UINT folded(const CsSortOrder& order, CS_UINT code) {
  const auto folds = order.folds.view();
  const auto after = std::ranges::upper_bound(folds, code, {}, &FoldRun::first);
  if (after == folds.begin()) return code;
  const FoldRun& run = *std::prev(after);
  const bool holds = code <= run.last && (code - run.first) % run.step == 0;
  return holds ? run.to + (code - run.first) : code;
}

// Takes the next character off a text that is not empty and returns what it counts as. A byte that
// begins no character counts as more than all characters.
CS_UINT take_folded(const CsSortOrder& order, std::span<const CS_BYTE>& text) {
  const Decoded character = decode_utf8(text);
  const CS_UINT code =
      character.bytes == 0 ? CS_UINT{kLastCode} + 1 + text[0] : folded(order, character.code);
  text = text.subspan(std::max<std::size_t>(character.bytes, 1));
  return code;
}

CS_INT compare_folded(const CsSortOrder& order, std::span<const CS_BYTE> text1,
                      std::span<const CS_BYTE> text2) {
  while (!text1.empty() && !text2.empty()) {
    const CS_UINT code1 = take_folded(order, text1);
    const CS_UINT code2 = take_folded(order, text2);
    if (code1 != code2) return code1 < code2 ? -1 : 1;
  }
  return static_cast<CS_INT>(!text1.empty()) - static_cast<CS_INT>(!text2.empty());
}

}  // namespace

CS_INT compare_text(const CsSortOrder& order, const char_attrib* attrib,
                    std::span<const CS_BYTE> text1, std::span<const CS_BYTE> text2) {
  if (order.kind == SortKind::kBinary) return compare_bytes(text1, text2);
  if (order.kind == SortKind::kFolded) return compare_folded(order, text1, text2);
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
