// Sort orders, and the comparison of texts by them.
#pragma once

#include <array>
#include <span>

#include "comnlib/locale.h"
#include "runtime/podvector.h"

namespace comnlib {

enum class SortKind : CS_BYTE {
  kNone,
  kBinary,   // bytes compare by their values
  kWeights,  // single bytes by their weights, longer characters by their bytes and after them
  kFolded    // UTF-8 by code points, some of which count as others
};

// Code points from `first` to `last`, each `step`-th, count as those from `to` on.
struct FoldRun {
  CS_UINT first, last, step, to;
};

}  // namespace comnlib

// One sort order of one character set. Texts compare character by character.
struct _cssortorder {
  CsOid oid;
  std::array<CS_CHAR, COM_LOC_NAMESIZE> charset;
  std::array<CS_BYTE, 256> weights;
  comnlib::SortKind kind;
  comnlib::Owned<comnlib::PodVector<comnlib::FoldRun>> folds;  // ascending
  CsSortOrder* next;
};

namespace comnlib {

// Below 0, 0 or above 0, as memcmp. A text that another begins with comes first. Null attributes:
// every character is one byte.
CS_INT compare_text(const CsSortOrder& order, const char_attrib* attrib,
                    std::span<const CS_BYTE> text1, std::span<const CS_BYTE> text2);

void drop_sort_orders(CsSortOrder*& head);

}  // namespace comnlib

extern "C" {
// Gives the cache entry the sort order of its character set that it names: the one that the context
// has loaded, or else that of charsets/<charset>/<name>.srt.
CS_RETCODE comn__intl_load_sortorder(CS_CONTEXT* ctx, CsOid oid, CsLocCache* cache_entry,
                                     CS_CHAR* errbuf, CS_INT errlen);
}
