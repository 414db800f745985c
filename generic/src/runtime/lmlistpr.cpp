// Properties of a list handle. A new table size rebuilds the table, a smaller pool size trims the
// pool, so the properties always describe what is there.
#include "runtime/lmutils.h"

using namespace comnlib;

namespace {

CS_RETCODE get_handle_name(const LmHdlProp& properties, CS_VOID* buffer, CS_INT buflen,
                           CS_INT* outlen) {
  return give_name(properties.handle_name, properties.length, buffer, buflen, outlen);
}

constexpr std::array kProperties = std::to_array<Property<LmHdlProp>>({
    {LM_PROP_LIST_TYPE, get_member<&LmHdlProp::list_type>},
    {LM_PROP_MAX_TABLESIZE, get_member<&LmHdlProp::max_tablesize>},
    {LM_PROP_MAX_POOLSIZE, get_member<&LmHdlProp::max_poolsize>},
    {LM_PROP_HANDLE_LOAD, get_member<&LmHdlProp::handle_load>},
    {LM_PROP_CONTEXT, get_member<&LmHdlProp::context>},
    {LM_PROP_HANDLE_NAME, get_handle_name},
    {LM_PROP_PRINT_FUNC, get_member<&LmHdlProp::print_func>},
    {LM_PROP_COMP_FUNC, get_member<&LmHdlProp::comp_func>},
});

CS_RETCODE set_table_size(LM_HANDLE& handle, CS_INT size) {
  const KindOps& kind = kind_of(handle.hdlprop->list_type);
  return kind.rebuild == nullptr ? CS_FAIL : kind.rebuild(handle, size);
}

CS_RETCODE set_pool_size(LM_HANDLE& handle, CS_INT size) {
  LmHdlProp& properties = *handle.hdlprop;
  properties.max_poolsize = properties.list_type == LM_DHASH ? 0 : size;
  trim_pool(handle, properties.max_poolsize);
  return CS_SUCCEED;
}

// `buffer` is null for a clear: a function becomes null, a size the context's.
CS_RETCODE change(LM_HANDLE& handle, CS_INT property, bool clear, CS_VOID* buffer) {
  LmHdlProp& properties = *handle.hdlprop;
  const LmCxtProp& defaults = *properties.context->cxtprop;
  switch (property) {
    case LM_PROP_MAX_TABLESIZE:
      return set_table_size(handle, clear ? defaults.max_tablesize : integer_at(buffer));
    case LM_PROP_MAX_POOLSIZE:
      return set_pool_size(handle, clear ? defaults.max_poolsize : integer_at(buffer));
    case LM_PROP_PRINT_FUNC:
      properties.print_func = reinterpret_cast<LM_PRINT_FUNC>(buffer);
      return CS_SUCCEED;
    case LM_PROP_COMP_FUNC:
      properties.comp_func = reinterpret_cast<LM_COMP_FUNC>(buffer);
      return CS_SUCCEED;
    default:
      return CS_FAIL;
  }
}

}  // namespace

CS_RETCODE lm_list_prop(LM_HANDLE* handle, CS_INT action, CS_INT property, CS_VOID* buffer,
                        CS_INT buflen, CS_INT* outlen) {
  check_ready(handle);
  check_ready(handle->hdlprop);
  check_ready(handle->hdlprop->context);
  check_action(action);
  const Property<LmHdlProp>& found = property_of(kProperties, property);
  if (action == CS_GET) return trace(found.get(*handle->hdlprop, buffer, buflen, outlen));
  const bool clear = action == CS_CLEAR;
  return trace(change(*handle, property, clear, clear ? nullptr : buffer));
}
