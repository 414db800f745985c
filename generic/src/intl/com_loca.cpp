// Locale records and the context's list of them, which cmg_mtx guards.
#include "diag/diag.h"
#include "intl/locking.h"
#include "runtime/hostmemory.h"

namespace comnlib {
namespace {

// The link to the record: the list's head or another record's `next`; null when it is in no list.
CS_LOCALE** link_to(CsCtxGlobals& globals, const CS_LOCALE* locale) {
  CS_LOCALE** link = &globals.cmg_locale;
  while (*link != nullptr && *link != locale) link = &(*link)->next;
  return *link == nullptr ? nullptr : link;
}

// The context must not point at a record that is about to be freed.
void forget(CS_CONTEXT& ctx, const CS_LOCALE* locale) {
  if (ctx.ctxlocale == locale) ctx.ctxlocale = nullptr;
  if (ctx.ctxdeflocale == locale) ctx.ctxdeflocale = nullptr;
}

void check_context(const CS_CONTEXT* ctx, CallSite site = CallSite::current()) {
  check_pointer(ctx, site);
  check_pointer(ctx->ctxglobals, site);
}

}  // namespace
}  // namespace comnlib

using namespace comnlib;

CS_RETCODE comn_loc_alloc(CS_CONTEXT* ctx, CS_LOCALE** locale) {
  check_context(ctx);
  check_pointer(locale);
  auto* made = make_record<CS_LOCALE>();
  if (made == nullptr) return trace(CS_MEM_ERROR);
  const GlobalsLock lock(*ctx);
  if (!lock.taken()) {
    comn_free(made);
    return trace(CS_FAIL);
  }
  if (ctx->ctxlocale != nullptr) static_cast<void>(comn_loc_copy(made, ctx->ctxlocale));
  made->next = ctx->ctxglobals->cmg_locale;
  ctx->ctxglobals->cmg_locale = made;
  *locale = made;
  return trace(CS_SUCCEED);
}

CS_RETCODE comn_loc_drop(CS_CONTEXT* ctx, CS_LOCALE* locale) {
  check_context(ctx);
  check_pointer(locale);
  {
    const GlobalsLock lock(*ctx);
    if (!lock.taken()) return trace(CS_FAIL);
    CS_LOCALE** link = link_to(*ctx->ctxglobals, locale);
    require(link != nullptr);
    *link = locale->next;
    forget(*ctx, locale);
  }
  comn_free(locale);
  return trace(CS_SUCCEED);
}

CS_RETCODE comn_loc_drop_all(CS_CONTEXT* ctx) {
  check_context(ctx);
  const GlobalsLock lock(*ctx);
  if (!lock.taken()) return trace(CS_FAIL);
  while (CS_LOCALE* locale = ctx->ctxglobals->cmg_locale) {
    ctx->ctxglobals->cmg_locale = locale->next;
    forget(*ctx, locale);
    // Zero-filled, so that a use after the drop finds no categories.
    *locale = CS_LOCALE{};
    comn_free(locale);
  }
  ctx->ctxlocale = nullptr;
  release(ctx->ctxdeflocale);
  ctx->ctxdeflocale = nullptr;
  return trace(CS_SUCCEED);
}

CS_RETCODE comn_loc_validate(CS_CONTEXT* ctx, const CS_LOCALE* locale) {
  check_context(ctx);
  check_pointer(locale);
  const GlobalsLock lock(*ctx);
  if (!lock.taken()) return trace(CS_FAIL);
  return trace(link_to(*ctx->ctxglobals, locale) == nullptr ? CS_FAIL : CS_SUCCEED);
}

CS_RETCODE comn_loc_copy(CS_LOCALE* dst, const CS_LOCALE* src) {
  check_pointer(dst);
  check_pointer(src);
  CS_LOCALE* const next = dst->next;
  *dst = *src;
  dst->next = next;
  return trace(CS_SUCCEED);
}
