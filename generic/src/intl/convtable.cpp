// Reader of conversion tables. The first byte sequence that a file gives for a code unit is the one
// that the code unit converts back to.
#include "intl/convtable.h"

#include <algorithm>

#include "chars/hex.h"
#include "chars/utf.h"
#include "intl/intlfile.h"
#include "intl/store.h"
#include "intl/text.h"

namespace comnlib {

bool PagedTable::set(CS_USHORT index, CS_USHORT value) {
  CS_USHORT& page = rows[index >> 8];
  if (page == 0) {
    if (!pages.reserve(256)) return false;
    std::fill_n(pages.items + pages.count, 256, kNoCharacter);
    pages.count += 256;
    page = static_cast<CS_USHORT>(pages.count / 256);
  }
  pages.items[(page - 1) * 256 + (index & 0xFF)] = value;
  return true;
}

namespace {

constexpr std::size_t kUnitDigits = 4;

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

CS_RETCODE add_character(ConvTable& table, bool is_double, CS_USHORT bytes, CS_USHORT unit) {
  // Nothing would read a surrogate on its own.
  if (is_surrogate(unit)) return CS_FAIL;
  if (is_double) {
    if (!table.pairs.set(bytes, unit)) return CS_MEM_ERROR;
  } else {
    table.single[bytes] = unit;
  }
  if (unit == kNoCharacter || table.reverse.at(unit) != kNoCharacter) return CS_SUCCEED;
  return table.reverse.set(unit, bytes) ? CS_SUCCEED : CS_MEM_ERROR;
}

// A run of code units for the byte sequences from `first` on, all with the same lead byte.
CS_RETCODE read_run(IntlFile& file, ConvTable& table, bool is_double, CS_BYTE lead) {
  const auto first = read_byte(file);
  const CS_CHAR* value = first ? file.next_value() : nullptr;
  if (value == nullptr) return file.failure();
  std::string_view digits = value;
  const std::size_t count = digits.size() / kUnitDigits;
  if (digits.size() % kUnitDigits != 0 || *first + count > 256) return CS_FAIL;
  for (std::size_t i = 0; i < count; ++i, digits.remove_prefix(kUnitDigits)) {
    const auto unit = read_unit(digits.substr(0, kUnitDigits));
    if (!unit) return CS_FAIL;
    const auto bytes = static_cast<CS_USHORT>(lead << 8 | static_cast<CS_INT>(*first + i));
    const CS_RETCODE result = add_character(table, is_double, bytes, *unit);
    if (result != CS_SUCCEED) return result;
  }
  return CS_SUCCEED;
}

CS_RETCODE read_entry(std::string_view key, IntlFile& file, ConvTable& table) {
  if (key == "single") return read_run(file, table, false, 0);
  if (key != "double") return CS_FAIL;
  const auto lead = read_byte(file);
  if (!lead) return file.failure();
  // A lead byte of 0 would read as a single byte on the way back.
  return *lead == 0 ? CS_FAIL : read_run(file, table, true, *lead);
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
  return true;
}

void drop(ConvTable* table) {
  table->pairs.pages.clear();
  table->reverse.pages.clear();
  comn_free(table);
}

}  // namespace

CS_RETCODE load_table(CS_CONTEXT& ctx, const CS_CHAR* charset, const CS_CHAR* table_name,
                      const ConvTable*& table, ErrorBuffer error) {
  const std::string_view name = charset;
  Store* store = store_of(*ctx.ctxglobals);
  if (store == nullptr) return CS_MEM_ERROR;
  for (const ConvTable* known = store->tables; known != nullptr; known = known->next) {
    if (known->charset.data() != name) continue;
    table = known;
    return CS_SUCCEED;
  }
  if (name.size() >= COM_LOC_NAMESIZE) return CS_FAIL;
  INTL_HANDLE handle = nullptr;
  const CS_RETCODE opened =
      com__open_charfile(&ctx, charset, table_name, "ctb", &handle, error.path, error.length);
  if (opened != CS_SUCCEED) return opened;
  IntlFile file(ctx, handle);
  auto* made = make_record<ConvTable>();
  if (made == nullptr) return CS_MEM_ERROR;
  made->single.fill(kNoCharacter);
  name.copy(made->charset.data(), name.size());
  const CS_RETCODE result = read_table(file, *made);
  if (result != CS_SUCCEED) {
    drop(made);
    return result;
  }
  made->ascii = is_ascii_based(*made);
  made->next = store->tables;
  store->tables = made;
  table = made;
  return CS_SUCCEED;
}

void drop_tables(ConvTable*& head) {
  while (ConvTable* table = head) {
    head = table->next;
    drop(table);
  }
}

}  // namespace comnlib
