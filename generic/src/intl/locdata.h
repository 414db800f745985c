// Date/time, number and money conventions: the records, and the readers of their files. A record
// holds its texts itself and stays in the context's list until com_intl_loccache_drop.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <string_view>

#include "comnlib/locale.h"
#include "intl/com_loc.h"
#include "time/dateinfo.h"

namespace comnlib {

// What every record of conventions begins with: its key, and room for its texts.
struct ConventionTexts {
  // A name below locales/datetime, numeric or money, or "language/charset" of a common.loc.
  std::array<CS_CHAR, 2 * COM_LOC_NAMESIZE> name;
  std::array<CS_CHAR, 1536> bytes;
  std::size_t used;

  // Keeps a copy of the text; false when there is no room left.
  bool keep(std::string_view text, std::string_view& kept);
};

enum class SymbolPlace : CS_BYTE { kBefore, kAfter };

// How digits are written: shared by numbers and money.
struct DigitConventions {
  std::string_view decimal_point;
  std::string_view group_separator;  // empty: digits are not grouped
  CS_INT group_size;
};

}  // namespace comnlib

struct _csdateinfo {
  comnlib::ConventionTexts texts;
  comnlib::DateConventions conventions;
  CsDateInfo* next;
};

struct _csnuminfo {
  comnlib::ConventionTexts texts;
  comnlib::DigitConventions digits;
  CsNumInfo* next;
};

struct _csmoninfo {
  comnlib::ConventionTexts texts;
  comnlib::DigitConventions digits;
  std::string_view symbol;
  comnlib::SymbolPlace symbol_place;
  CsMonInfo* next;
};

namespace comnlib {

// As comn__load_locdata, for one of its three kinds.
CS_RETCODE load_conventions(CS_CONTEXT& ctx, CS_INT kind, const CS_CHAR* name, CsLocCache& entry,
                            ErrorBuffer error);

// The date/time conventions of a cache entry, null when it has none. Those that locales.dat names
// are read here, under the context's mutex, when they are first needed.
CS_RETCODE date_conventions_of(CS_CONTEXT& ctx, CsLocCache& entry, const CsDateInfo*& info);

// The same, null for those that must be read first, too.
inline const CsDateInfo* known_date_conventions(CsLocCache& entry) {
  return std::atomic_ref(entry.locdateinfo).load(std::memory_order_acquire);
}

// Frees all conventions of a context.
void drop_conventions(CsCtxGlobals& globals);

}  // namespace comnlib

extern "C" {
// Gives the cache entry the date/time, number and money conventions of its language and character
// set: those that the context has loaded, or else those of the common.loc. On failure the entry has
// none of the three.
CS_RETCODE comn__read_common(CS_CONTEXT* ctx, CsLocCache* cache_entry, CS_CHAR* errbuf,
                             CS_INT errlen);
}
