// Conversion tables: characters of one to four bytes to and from Unicode (.ctb files). A table is
// read once for a context and only read from then on.
#pragma once

#include <array>
#include <span>

#include "chars/utf.h"
#include "comnlib/locale.h"
#include "intl/com_loc.h"
#include "runtime/podvector.h"

namespace comnlib {

// The entry of a table where there is no character.
inline constexpr CS_USHORT kNoCharacter = 0xFFFF;

// 256 rows of 256 entries, of which only the rows in use take room. The others share an empty one.
struct PagedTable {
  std::array<CS_UINT, 256> rows;  // where each row begins in the pages
  Owned<PodVector<CS_USHORT>> pages;

  // To be called before anything else. Returns false when there is no memory, as `set` does.
  bool begin();
  bool set(CS_USHORT index, CS_USHORT value);
  bool empty() const { return pages.count <= 256; }
  CS_USHORT at(CS_USHORT index) const { return pages.items[rows[index >> 8] + (index & 0xFFU)]; }
};

// Characters of four bytes: the sequences from one on, in their order, are the code points from one
// on.
struct CodeRange {
  CS_UINT first;  // the place of the first sequence among all of four bytes
  CS_UINT code;
  CS_UINT count;
};

struct ConvTable {
  std::array<CS_CHAR, COM_LOC_NAMESIZE> charset;
  std::array<CS_USHORT, 256> single;  // code unit of each single byte
  PagedTable pairs;                   // code unit of lead byte * 256 + second byte
  PagedTable reverse;         // of a code unit: a single byte, or lead byte * 256 + second byte
  CS_BYTE triple_lead;        // first byte of all characters of three bytes; 0: there are none
  PagedTable triples;         // code unit of second byte * 256 + third byte
  PagedTable triple_reverse;  // and back
  Owned<PodVector<CodeRange>> ranges;  // ascending by sequence and by code point
  bool ascii;                          // the bytes below 0x80, and no others, are ASCII, both ways
  bool single_bytes;                   // all characters are single bytes; then:
  // Of each byte its bytes in UTF-8, lowest first, and their number in the highest. 0 where there
  // is no character, and for the letters of ASCII where it stands for itself.
  std::array<CS_UINT, 256> utf8;
  ConvTable* next;

  bool has_longer() const { return triple_lead != 0 || ranges.count != 0; }
};

// The character of three or four bytes at the front of a text; 0 bytes when there is none.
Decoded decode_longer(const ConvTable& table, std::span<const CS_BYTE> text);

// Its bytes in the order of a big-endian number, of which a character of three has the lower three;
// 0 when the table has no such character.
CS_UINT encode_longer(const ConvTable& table, char32_t code);

// The table of a character set, from the context's or else from charsets/<charset>/<table>.ctb.
// The caller holds the context's mutex.
CS_RETCODE load_table(CS_CONTEXT& ctx, const CS_CHAR* charset, const CS_CHAR* table_name,
                      const ConvTable*& table, ErrorBuffer error);

void drop_tables(ConvTable*& head);

}  // namespace comnlib
