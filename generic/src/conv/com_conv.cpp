// The context's conversion matrix and its user conversions, the routines that serve CS_VOID
// sources, and the lengths of the datatypes. A null entry means that the pair is not supported.
#include <algorithm>
#include <cassert>

#include "comnlib/convert.h"
#include "conv/com_ctbl.h"
#include "conv/frame.h"
#include "diag/diag.h"
#include "runtime/hostmemory.h"

namespace comnlib {
namespace {

constexpr bool is_builtin_pair(CS_INT srctype, CS_INT desttype) {
  return srctype < CS_BUILTIN_TYPES && desttype < CS_BUILTIN_TYPES;
}

CS_CONV_FUNC& matrix_entry(const CS_CONTEXT& context, CS_INT srctype, CS_INT desttype) {
  assert(srctype >= 0 && desttype >= 0);
  const CsConvertTbl& table = context.ctxcvttbl;
  check_pointer(table.cvttbl);
  return table.cvttbl[srctype * table.cvtdim + desttype];
}

// The link that holds the pair's node among the user conversions or, without one, the null link
// where it belongs: at the end of its source's chain, or of the spine for a new source.
template <class Head>
auto user_link(Head* link, CS_INT srctype, CS_INT desttype) {
  while (*link != nullptr && (*link)->srctype != srctype) link = &(*link)->nextsrc;
  while (*link != nullptr && (*link)->desttype != desttype) link = &(*link)->nextdest;
  return link;
}

void free_user_conversions(CsUsrCvtFunc* spine) {
  while (spine != nullptr) {
    CsUsrCvtFunc* const next_source = spine->nextsrc;
    for (CsUsrCvtFunc* node = spine; node != nullptr;) {
      CsUsrCvtFunc* const next = node->nextdest;
      comn_free(node);
      node = next;
    }
    spine = next_source;
  }
}

}  // namespace
}  // namespace comnlib

using namespace comnlib;

CS_INT comn_typelen(CS_INT datatype, CS_INT length) {
  const CS_INT fixed = is_builtin(datatype) ? datatype_of(datatype).size : 0;
  return fixed == 0 ? length : fixed;
}

CS_RETCODE com_conv_init(CS_CONTEXT* context) {
  check_pointer(context);
  const CS_CONV_FUNC* defaults = nullptr;
  int dimension = 0;
  com__get_ctbl(&defaults, &dimension);
  const auto entries = static_cast<std::size_t>(dimension) * static_cast<std::size_t>(dimension);

  context->ctxusrcvttbl = nullptr;
  context->ctxcvttbl = {};
  auto* matrix = static_cast<CS_CONV_FUNC*>(comn_malloc(entries * sizeof(CS_CONV_FUNC)));
  if (matrix == nullptr) return trace(CS_MEM_ERROR);
  std::copy_n(defaults, entries, matrix);
  context->ctxcvttbl = {.cvttbl = matrix, .cvtdim = dimension};
  return trace(CS_SUCCEED);
}

CS_RETCODE com_conv_free(CS_CONTEXT* context) {
  check_pointer(context);
  release(context->ctxcvttbl.cvttbl);
  context->ctxcvttbl = {};
  free_user_conversions(context->ctxusrcvttbl);
  context->ctxusrcvttbl = nullptr;
  return trace(CS_SUCCEED);
}

CS_CONV_FUNC com_conv_func(const CS_CONTEXT* context, CS_INT srctype, CS_INT desttype) {
  check_pointer(context);
  if (srctype < 0 || desttype < 0) return nullptr;
  if (is_builtin_pair(srctype, desttype)) return matrix_entry(*context, srctype, desttype);
  const CsUsrCvtFunc* node = *user_link(&context->ctxusrcvttbl, srctype, desttype);
  return node == nullptr ? nullptr : node->cvtfunc;
}

CS_RETCODE com_conv_install(CS_CONTEXT* context, CS_INT srctype, CS_INT desttype,
                            CS_CONV_FUNC func) {
  check_pointer(context);
  if (is_builtin_pair(srctype, desttype)) {
    matrix_entry(*context, srctype, desttype) = func;
    return trace(CS_SUCCEED);
  }
  CsUsrCvtFunc** const link = user_link(&context->ctxusrcvttbl, srctype, desttype);
  if (*link == nullptr) {
    auto* node = make_record<CsUsrCvtFunc>();
    if (node == nullptr) return trace(CS_MEM_ERROR);
    node->srctype = srctype;
    node->desttype = desttype;
    *link = node;
  }
  (*link)->cvtfunc = func;
  return trace(CS_SUCCEED);
}

CS_RETCODE com_conv_default(CS_CONTEXT* context, CS_INT srctype, CS_INT desttype) {
  check_pointer(context);
  require(srctype >= 0 && desttype >= 0);
  if (is_builtin_pair(srctype, desttype)) {
    const CS_CONV_FUNC* defaults = nullptr;
    int dimension = 0;
    com__get_ctbl(&defaults, &dimension);
    return trace(
        com_conv_install(context, srctype, desttype, defaults[srctype * dimension + desttype]));
  }
  if (CsUsrCvtFunc* node = *user_link(&context->ctxusrcvttbl, srctype, desttype))
    node->cvtfunc = nullptr;
  return trace(CS_SUCCEED);
}

CS_RETCODE comn_voidtoany(COMNLIB_CONVERSION_PARAMETERS) {
  check_pointers({context, srcfmt, src, destfmt, dest, destlen});
  require(srcfmt->datatype == CS_VOID_TYPE);
  const CS_INT room = comn_typelen(destfmt->datatype, destfmt->maxlength);
  return trace(com_null_get(context, destfmt, dest, room, destlen));
}

CS_RETCODE comn_voidtovoid(CS_CONTEXT*, const CS_DATAFMT*, const CS_VOID*, const CS_DATAFMT*,
                           CS_VOID*, CS_INT*) {
  return trace(CS_SUCCEED);
}
