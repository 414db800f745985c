// Making a list: the handle, its properties and what its kind keeps.
#include "runtime/hostmemory.h"
#include "runtime/lmutils.h"

using namespace comnlib;

namespace {

constexpr CS_INT kRefusedType = 17;

void discard(LM_HANDLE* handle) {
  if (LmHdlProp* properties = handle->hdlprop) {
    release(properties->handle_name);
    drop_record(properties);
  }
  drop_record(handle);
}

// The handle's properties, from the context's defaults.
bool set_up_properties(LM_HANDLE& handle, LM_CONTEXT& context, CS_INT list_type,
                       const CS_CHAR* name, CS_INT namelen) {
  handle.hdlprop = build_record<LmHdlProp>();
  if (handle.hdlprop == nullptr) return false;
  LmHdlProp& properties = *handle.hdlprop;
  if (!copy_name(name, namelen, properties.handle_name, properties.length)) return false;
  properties.list_type = list_type;
  properties.max_tablesize = context.cxtprop->max_tablesize;
  properties.max_poolsize = list_type == LM_DHASH ? 0 : context.cxtprop->max_poolsize;
  properties.context = &context;
  properties.state = LM_STATE_READY;
  return true;
}

void enter(LM_CONTEXT& context, LM_HANDLE* handle) {
  handle->next = context.first_handle;
  context.first_handle = handle;
  context.cxtprop->cur_handlename = handle->hdlprop->handle_name;
  context.cxtprop->cur_handleaddr = handle;
  ++context.cxtprop->context_load;
}

}  // namespace

CS_RETCODE lm_list_alloc(LM_CONTEXT* context, CS_INT list_type, const CS_CHAR* name, CS_INT namelen,
                         LM_HANDLE** handle_out) {
  if (context == nullptr) return trace(CS_FAIL);
  check_ready(context);
  check_ready(context->cxtprop);
  check_pointer(name);
  check_pointer(handle_out);
  const CS_INT type = list_type == CS_UNUSED ? context->cxtprop->list_type : list_type;
  if (type == kRefusedType) return trace(CS_FAIL);
  const KindOps& kind = kind_of(type);

  auto* handle = build_record<LM_HANDLE>();
  if (handle == nullptr) return trace(CS_MEM_ERROR);
  if (!set_up_properties(*handle, *context, type, name, namelen)) {
    discard(handle);
    return trace(CS_MEM_ERROR);
  }
  const CS_RETCODE built = kind.build(*handle);
  if (built != CS_SUCCEED) {
    discard(handle);
    return trace(built);
  }
  handle->state = LM_STATE_READY;
  enter(*context, handle);
  *handle_out = handle;
  return trace(CS_SUCCEED);
}
