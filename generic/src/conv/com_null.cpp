// The context's null values: the table of the built-in types and the list of the user types. One
// built-in type is in both, and hosts depend on it: CS_UNICHAR_TYPE is read from the table but set
// and reinstalled in the list.
#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

#include "comnlib/convert.h"
#include "comnlib/numeric.h"
#include "conv/frame.h"
#include "conv/newutils.h"
#include "diag/diag.h"
#include "runtime/hostmemory.h"

namespace comnlib {
namespace {

constexpr bool is_set_in_table(CS_INT datatype) {
  return is_builtin(datatype) && datatype != CS_UNICHAR_TYPE;
}

constexpr CS_INT kNumericHead = offsetof(CS_NUMERIC, array);

// Every entry has a buffer, even when its value is empty.
constexpr std::size_t buffer_size(CS_INT size) {
  return static_cast<std::size_t>(std::max(size, 1));
}

void fill_default(CsDefVal& entry, const Datatype& type) {
  entry.dvsize = type.null_size;
  entry.dvpadtype = type.padding;
  std::memset(entry.dventity, 0, static_cast<std::size_t>(type.null_size));
  if (type.null_size > 0) std::memcpy(entry.dventity, &type.null_head, 1);
}

// Replaces a stored value by a copy of `length` bytes, or by nothing for length 0. The stored value
// stays when it cannot be copied.
CS_RETCODE replace_value(CS_VOID*& entity, CS_INT& size, const CS_VOID* value, CS_INT length) {
  CS_VOID* copy = nullptr;
  if (length > 0) {
    copy = comn_malloc(static_cast<std::size_t>(length));
    if (copy == nullptr) return CS_MEM_ERROR;
    std::memcpy(copy, value, static_cast<std::size_t>(length));
  }
  release(entity);
  entity = copy;
  size = length;
  return CS_SUCCEED;
}

CsDefVal& table_entry(const CS_CONTEXT& context, CS_INT datatype) {
  check_pointer(context.ctxnulls.nullvals);
  return context.ctxnulls.nullvals[datatype];
}

CsUsrNull* find_user_null(const CS_CONTEXT& context, CS_INT datatype) {
  CsUsrNull* node = context.ctxusrnulls;
  while (node != nullptr && node->dttype != datatype) node = node->nextnull;
  return node;
}

CS_RETCODE set_user_null(CS_CONTEXT& context, CS_INT datatype, const CS_VOID* value,
                         CS_INT length) {
  if (CsUsrNull* found = find_user_null(context, datatype))
    return replace_value(found->dventity, found->dvsize, value, length);

  auto* node = make_record<CsUsrNull>();
  if (node == nullptr) return CS_MEM_ERROR;
  node->dttype = datatype;
  node->nextnull = context.ctxusrnulls;
  if (replace_value(node->dventity, node->dvsize, value, length) != CS_SUCCEED) {
    comn_free(node);
    return CS_MEM_ERROR;
  }
  context.ctxusrnulls = node;
  return CS_SUCCEED;
}

CS_RETCODE reinstall_default(CsDefVal& entry, const Datatype& type) {
  check_pointer(entry.dventity);
  if (entry.dvsize < type.null_size) {
    CS_VOID* grown = comn_realloc(entry.dventity, buffer_size(type.null_size));
    if (grown == nullptr) return CS_MEM_ERROR;
    entry.dventity = grown;
  }
  fill_default(entry, type);
  return CS_SUCCEED;
}

// Takes the type's node off the list and releases it. The head moves when the node before is the
// head, which it is for the first and for the second node: removing the second one drops the first
// from the list as well. Hosts depend on it.
void remove_user_null(CS_CONTEXT& context, CS_INT datatype) {
  CsUsrNull* previous = context.ctxusrnulls;
  CsUsrNull* current = context.ctxusrnulls;
  while (current != nullptr && current->dttype != datatype) {
    previous = current;
    current = current->nextnull;
  }
  if (current == nullptr) return;
  if (previous == context.ctxusrnulls) {
    context.ctxusrnulls = current->nextnull;
  } else {
    previous->nextnull = current->nextnull;
  }
  release(current->dventity);
  comn_free(current);
}

// Copies a stored value of `size` bytes into `length` bytes; what it lacks is zero.
void copy_value(CS_BYTE* dest, CS_INT length, const CS_VOID* value, CS_INT size) {
  const CS_INT stored = std::min(length, size);
  if (stored > 0) std::memcpy(dest, value, static_cast<std::size_t>(stored));
  if (length > stored) std::memset(dest + stored, 0, static_cast<std::size_t>(length - stored));
}

CS_RETCODE get_user_null(const CsUsrNull* node, CS_BYTE* dest, CS_INT destlen, CS_INT* resultlen) {
  if (node == nullptr) {
    *resultlen = 0;
    return CS_SUCCEED;
  }
  const CS_INT length = std::min({destlen, node->dvsize, std::numeric_limits<CS_INT>::max() - 1});
  copy_value(dest, length, node->dventity, node->dvsize);
  dest[length] = 0;  // counted, and written even at dest[destlen]: hosts leave room for it
  *resultlen = length + 1;
  return CS_SUCCEED;
}

CS_RETCODE get_builtin_null(const CsDefVal& value, const CS_DATAFMT* destfmt, CS_BYTE* dest,
                            CS_INT destlen, CS_INT* resultlen) {
  const bool numeric = is_numeric(destfmt->datatype);
  const bool sized_by_precision =
      numeric && destfmt->precision >= 1 && destfmt->precision <= CS_MAX_PREC;
  const CS_INT length =
      std::min(destlen, sized_by_precision ? comn_num_getlen(destfmt->precision) + kNumericHead
                                           : value.dvsize);
  *resultlen = length;
  copy_value(dest, length, value.dventity, value.dvsize);

  switch (value.dvpadtype) {
    case CS_PAD_CHAR:
      return comn__padchar(length, destfmt, dest, resultlen);
    case CS_PAD_BINARY:
      return comn__padbin(length, destfmt, dest, resultlen);
    case CS_PAD_UNICHAR:
      return comn__padunichar(length, destfmt, dest, resultlen);
    default:
      if (numeric && destlen > 0) dest[0] = static_cast<CS_BYTE>(destfmt->precision);
      if (numeric && destlen > 1) dest[1] = static_cast<CS_BYTE>(destfmt->scale);
      return CS_SUCCEED;
  }
}

}  // namespace
}  // namespace comnlib

using namespace comnlib;

CS_RETCODE com_null_init(CS_CONTEXT* context) {
  check_pointer(context);
  context->ctxusrnulls = nullptr;
  context->ctxnulls = {};
  auto* table = static_cast<CsDefVal*>(comn_calloc(kDatatypes.size(), sizeof(CsDefVal)));
  if (table == nullptr) return trace(CS_MEM_ERROR);
  context->ctxnulls = {.nullvals = table, .nulldim = CS_BUILTIN_TYPES};
  for (const Datatype& type : kDatatypes) {
    CsDefVal& entry = table[type.code];
    entry.dventity = comn_malloc(buffer_size(type.null_size));
    if (entry.dventity == nullptr) return trace(CS_MEM_ERROR);
    fill_default(entry, type);
  }
  return trace(CS_SUCCEED);
}

CS_RETCODE com_null_free(CS_CONTEXT* context) {
  check_pointer(context);
  const CsNullTbl& table = context->ctxnulls;
  for (int at = 0; at < table.nulldim; ++at) release(table.nullvals[at].dventity);
  release(table.nullvals);
  context->ctxnulls = {};
  while (CsUsrNull* node = context->ctxusrnulls) {
    context->ctxusrnulls = node->nextnull;
    comn_free(node);
  }
  return trace(CS_SUCCEED);
}

CS_RETCODE com_null_get(const CS_CONTEXT* context, const CS_DATAFMT* destfmt, CS_VOID* dest,
                        CS_INT destlen, CS_INT* resultlen) {
  check_pointer(context);
  check_pointer(destfmt);
  check_pointer(dest);
  check_pointer(resultlen);
  const CS_INT datatype = destfmt->datatype;
  require(datatype >= 0 && destlen >= 0);
  auto* bytes = static_cast<CS_BYTE*>(dest);
  if (!is_builtin(datatype))
    return trace(get_user_null(find_user_null(*context, datatype), bytes, destlen, resultlen));
  return trace(
      get_builtin_null(table_entry(*context, datatype), destfmt, bytes, destlen, resultlen));
}

CS_RETCODE com_null_set(CS_CONTEXT* context, CS_INT datatype, const CS_VOID* value, CS_INT length) {
  check_pointer(context);
  check_pointer(value);
  require(datatype >= 0 && length >= 0);
  if (!is_set_in_table(datatype)) return trace(set_user_null(*context, datatype, value, length));
  CsDefVal& entry = table_entry(*context, datatype);
  return trace(replace_value(entry.dventity, entry.dvsize, value, length));
}

CS_RETCODE com_null_reinstall(CS_CONTEXT* context, CS_INT datatype) {
  check_pointer(context);
  require(datatype >= 0);
  if (!is_set_in_table(datatype)) {
    remove_user_null(*context, datatype);
    return trace(CS_SUCCEED);
  }
  return trace(reinstall_default(table_entry(*context, datatype), datatype_of(datatype)));
}
