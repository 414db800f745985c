// Conversion tables: single- and double-byte characters to and from Unicode (.ctb files). A table
// is read once for a context and only read from then on.
#pragma once

#include <array>
#include <span>

#include "comnlib/locale.h"
#include "intl/com_loc.h"
#include "runtime/podvector.h"

namespace comnlib {

// What stands in a table where there is no character.
inline constexpr CS_USHORT kNoCharacter = 0xFFFF;

// 256 rows of 256 entries, of which only the rows in use take room.
struct PagedTable {
  std::array<CS_USHORT, 256> rows;  // number of the row's page plus 1; 0: no entries
  PodVector<CS_USHORT> pages;

  CS_USHORT at(CS_USHORT index) const {
    const CS_USHORT page = rows[index >> 8];
    return page == 0 ? kNoCharacter : pages.items[(page - 1) * 256 + (index & 0xFF)];
  }
  bool set(CS_USHORT index, CS_USHORT value);  // false when memory is out
};

struct ConvTable {
  std::array<CS_CHAR, COM_LOC_NAMESIZE> charset;
  std::array<CS_USHORT, 256> single;  // code unit of each single byte
  PagedTable pairs;                   // code unit of lead byte * 256 + second byte
  PagedTable reverse;  // of a code unit: a single byte, or lead byte * 256 + second byte
  bool ascii;          // the bytes below 0x80 stand for themselves, both ways
  ConvTable* next;
};

// The table of a character set, from the context's or else from charsets/<charset>/<table>.ctb.
// The caller holds the context's mutex.
CS_RETCODE load_table(CS_CONTEXT& ctx, const CS_CHAR* charset, const CS_CHAR* table_name,
                      const ConvTable*& table, ErrorBuffer error);

void drop_tables(ConvTable*& head);

}  // namespace comnlib
