// Reader of conversion tables. The first byte sequence that a file gives for a code unit is the one
// that the code unit converts back to.
#include "intl/convtable.h"

#include <algorithm>

#include "chars/hex.h"
#include "intl/load_once.h"
#include "intl/loaded.h"
#include "intl/parse_number.h"
#include "intl/text.h"

namespace comnlib {

namespace {

bool add_page(PodVector<CS_USHORT>& pages) {
  if (!pages.reserve(256)) return false;
  std::fill_n(pages.items + pages.count, 256, kNoCharacter);
  pages.count += 256;
  return true;
}

}  // namespace

bool PagedTable::begin() {
  return add_page(pages);
}

bool PagedTable::set(CS_USHORT index, CS_USHORT value) {
  CS_UINT& row = rows[index >> 8];
  if (row == 0) {
    if (!add_page(pages)) return false;
    row = static_cast<CS_UINT>(pages.count) - 256;
  }
  pages.items[row + (index & 0xFFU)] = value;
  return true;
}

namespace {

constexpr std::size_t kUnitDigits = 4;
constexpr CS_INT kLastCode = 0x10FFFF;

std::optional<CS_USHORT> read_unit(std::string_view digits) {
  std::array<CS_BYTE, kUnitDigits / 2> bytes;
  if (!decode_hex(digits, bytes)) return std::nullopt;
  return static_cast<CS_USHORT>(bytes[0] << 8 | bytes[1]);
}

std::optional<CS_BYTE> read_byte(IntlFile& file) {
  const CS_CHAR* value = file.next_value();
  CS_BYTE byte = 0;
  if (value == nullptr || !decode_hex(value, {&byte, 1})) return std::nullopt;
  return byte;
}

// Bytes that the second to fourth of a sequence run through.
struct ByteSpan {
  CS_BYTE least, most;

  bool holds(CS_BYTE byte) const { return byte >= least && byte <= most; }
  CS_UINT count() const { return CS_UINT{most} - least + 1U; }
};
constexpr ByteSpan kLetters{0x81, 0xFE}, kDigits{0x30, 0x39};
constexpr std::array<ByteSpan, 4> kSequence{kLetters, kDigits, kLetters, kDigits};

// The place of a sequence of four bytes among all of them.
std::optional<CS_UINT> place_of(std::span<const CS_BYTE> bytes) {
  CS_UINT place = 0;
  for (std::size_t i = 0; i < kSequence.size(); ++i) {
    if (!kSequence[i].holds(bytes[i])) return std::nullopt;
    place = place * kSequence[i].count() + bytes[i] - kSequence[i].least;
  }
  return place;
}

constexpr CS_UINT kPlaces = 126 * 10 * 126 * 10;

CS_UINT sequence_at(CS_UINT place) {
  CS_UINT bytes = 0;
  for (std::size_t i = kSequence.size(); i-- > 0; place /= kSequence[i].count())
    bytes |= (place % kSequence[i].count() + kSequence[i].least) << 8 * (3 - i);
  return bytes;
}

// Where the characters of a run are stored.
struct RunPlaces {
  CS_USHORT* single;  // null: to the pairs
  PagedTable* pairs;
  PagedTable* reverse;

  CS_RETCODE add(CS_USHORT bytes, CS_USHORT unit) const {
    // A surrogate on its own could not be read back.
    if (is_surrogate(unit)) return CS_FAIL;
    if (single != nullptr) {
      single[bytes] = unit;
    } else if (!pairs->set(bytes, unit)) {
      return CS_MEM_ERROR;
    }
    if (unit == kNoCharacter || reverse->at(unit) != kNoCharacter) return CS_SUCCEED;
    return reverse->set(unit, bytes) ? CS_SUCCEED : CS_MEM_ERROR;
  }
};

// A run of code units for the byte sequences from `first` on, all with the same byte before.
CS_RETCODE read_run(IntlFile& file, const RunPlaces& places, CS_BYTE before) {
  const auto first = read_byte(file);
  if (!first) return file.failure();
  const CS_CHAR* value = file.next_value();
  if (value == nullptr) return file.failure();
  std::string_view digits = value;
  const std::size_t count = digits.size() / kUnitDigits;
  if (digits.size() % kUnitDigits != 0 || *first + count > 256) return CS_FAIL;
  for (std::size_t i = 0; i < count; ++i, digits.remove_prefix(kUnitDigits)) {
    const auto unit = read_unit(digits.substr(0, kUnitDigits));
    if (!unit) return CS_FAIL;
    const auto bytes = static_cast<CS_USHORT>(before << 8 | static_cast<CS_INT>(*first + i));
    const CS_RETCODE result = places.add(bytes, *unit);
    if (result != CS_SUCCEED) return result;
  }
  return CS_SUCCEED;
}

CS_RETCODE read_double(IntlFile& file, ConvTable& table) {
  const auto lead = read_byte(file);
  if (!lead) return file.failure();
  // A lead byte of 0 would read as a single byte on the way back.
  return *lead == 0 ? CS_FAIL : read_run(file, {nullptr, &table.pairs, &table.reverse}, *lead);
}

CS_RETCODE read_triple(IntlFile& file, ConvTable& table) {
  const auto lead = read_byte(file);
  const auto second = lead ? read_byte(file) : std::nullopt;
  if (!second) return file.failure();
  const bool is_other = table.triple_lead != 0 && table.triple_lead != *lead;
  if (*lead == 0 || is_other) return CS_FAIL;
  table.triple_lead = *lead;
  return read_run(file, {nullptr, &table.triples, &table.triple_reverse}, *second);
}

CS_RETCODE read_range(IntlFile& file, ConvTable& table) {
  std::array<CS_BYTE, 4> bytes;
  const CS_CHAR* value = file.next_value();
  if (value == nullptr || !decode_hex(value, bytes)) return file.failure();
  const auto first = place_of(bytes);
  const auto read = [&file] {
    const CS_CHAR* text = file.next_value();
    return text == nullptr ? std::nullopt : parse_number(text, 1, kLastCode + 1);
  };
  const auto code = read();
  const auto count = code ? read() : std::nullopt;
  if (!first || !count) return file.failure();
  const CodeRange range{*first, static_cast<CS_UINT>(*code), static_cast<CS_UINT>(*count)};
  const CS_UINT end = range.code + range.count;
  const bool has_surrogate = range.code <= 0xDFFF && end > 0xD800;
  if (end > kLastCode + 1 || range.first + range.count > kPlaces || has_surrogate) return CS_FAIL;
  if (table.ranges.count != 0) {
    const CodeRange& last = table.ranges.view().back();
    if (range.first < last.first + last.count || range.code < last.code + last.count)
      return CS_FAIL;
  }
  return table.ranges.push(range) ? CS_SUCCEED : CS_MEM_ERROR;
}

CS_RETCODE read_entry(std::string_view key, IntlFile& file, ConvTable& table) {
  if (key == "single") return read_run(file, {table.single.data(), nullptr, &table.reverse}, 0);
  if (key == "double") return read_double(file, table);
  if (key == "triple") return read_triple(file, table);
  return key == "range" ? read_range(file, table) : CS_FAIL;
}

CS_RETCODE read_table(IntlFile& file, ConvTable& table) {
  if (!file.find_section("table")) return file.failure();
  while (const CS_CHAR* key = file.next_entry()) {
    const CS_RETCODE result = read_entry(key, file, table);
    if (result != CS_SUCCEED) return result;
  }
  return file.failed() ? file.failure() : file.close();
}

bool is_ascii_based(const ConvTable& table) {
  for (CS_USHORT byte = 0; byte < 0x80; ++byte)
    if (table.single[byte] != byte || table.reverse.at(byte) != byte) return false;
  // A loop over text knows ASCII by the byte in one place and by the character in another.
  return std::ranges::none_of(std::span(table.single).subspan(0x80),
                              [](CS_USHORT unit) { return unit < 0x80; });
}

// What ConvTable::utf8 has for a character.
CS_UINT utf8_form(CS_USHORT unit) {
  std::array<CS_BYTE, kMostBytes> bytes{};
  bytes[3] = static_cast<CS_BYTE>(encode_utf8(unit, bytes.data()));
  CS_UINT form;
  std::memcpy(&form, bytes.data(), sizeof form);
  return form;
}

void complete(ConvTable& table) {
  table.ascii = is_ascii_based(table);
  table.single_bytes = table.pairs.empty() && !table.has_longer();
  for (std::size_t byte = 0; byte < table.single.size(); ++byte) {
    const CS_USHORT unit = table.single[byte];
    const bool is_letter = table.ascii && byte >= 0x40 && byte < 0x80;
    table.utf8[byte] = unit == kNoCharacter || is_letter ? 0 : utf8_form(unit);
  }
}

// The range that holds a number, which is a place or a code point; or null.
const CodeRange* range_of(const ConvTable& table, CS_UINT CodeRange::*start, CS_UINT number) {
  const auto ranges = table.ranges.view();
  const auto after = std::ranges::upper_bound(ranges, number, {}, start);
  if (after == ranges.begin()) return nullptr;
  const CodeRange& range = *std::prev(after);
  return number - range.*start < range.count ? &range : nullptr;
}

}  // namespace

Decoded decode_longer(const ConvTable& table, std::span<const CS_BYTE> text) {
  if (text.size() >= 3 && table.triple_lead != 0 && text[0] == table.triple_lead) {
    const CS_USHORT unit = table.triples.at(static_cast<CS_USHORT>(text[1] << 8 | text[2]));
    if (unit != kNoCharacter) return {unit, 3};
  }
  if (text.size() < kSequence.size()) return {0, 0};
  const auto place = place_of(text.first(kSequence.size()));
  if (!place) return {0, 0};
  const CodeRange* range = range_of(table, &CodeRange::first, *place);
  if (range == nullptr) return {0, 0};
  return {range->code + (*place - range->first), kSequence.size()};
}

CS_UINT encode_longer(const ConvTable& table, char32_t code) {
  if (code <= 0xFFFF) {
    const CS_USHORT bytes = table.triple_reverse.at(static_cast<CS_USHORT>(code));
    if (bytes != kNoCharacter) return CS_UINT{table.triple_lead} << 16 | bytes;
  }
  const CodeRange* range = range_of(table, &CodeRange::code, code);
  return range == nullptr ? 0 : sequence_at(range->first + (code - range->code));
}

CS_RETCODE load_table(CS_CONTEXT& ctx, const CS_CHAR* charset, const CS_CHAR* table_name,
                      const ConvTable*& table, ErrorBuffer error) {
  const std::string_view name = charset;
  if (name.size() >= COM_LOC_NAMESIZE) return CS_FAIL;
  LoadedOnce* loaded = loaded_of(*ctx.ctxglobals);
  if (loaded == nullptr) return CS_MEM_ERROR;
  const auto is_known = [name](const ConvTable& known) { return known.charset.data() == name; };
  const auto open = [&](INTL_HANDLE* handle) {
    return com__open_charfile(&ctx, charset, table_name, "ctb", handle, error.path, error.length);
  };
  const auto read = [&](ConvTable& made) {
    for (PagedTable* paged : {&made.pairs, &made.reverse, &made.triples, &made.triple_reverse})
      if (!paged->begin()) return CS_RETCODE{CS_MEM_ERROR};
    made.single.fill(kNoCharacter);
    name.copy(made.charset.data(), name.size());
    const CS_RETCODE result =
        read_file(ctx, open, [&made](IntlFile& file) { return read_table(file, made); });
    complete(made);
    return result;
  };
  return load_once<&ConvTable::next>(loaded->tables, table, is_known, read);
}

void drop_tables(ConvTable*& head) {
  drop_list<&ConvTable::next>(head);
}

}  // namespace comnlib
