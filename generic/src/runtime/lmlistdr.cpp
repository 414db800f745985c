// Dropping a list: its elements, its pool, its place in the context.
#include "runtime/lmutils.h"

using namespace comnlib;

namespace {

void leave(LM_CONTEXT& context, LM_HANDLE* handle) {
  LM_HANDLE** link = &context.first_handle;
  while (*link != handle) {
    check_ready(*link);
    link = &(*link)->next;
  }
  *link = handle->next;
  LmCxtProp& properties = *context.cxtprop;
  --properties.context_load;
  if (properties.cur_handleaddr == handle) {
    properties.cur_handleaddr = nullptr;
    properties.cur_handlename = nullptr;
  }
}

}  // namespace

CS_RETCODE lm_list_drop(LM_HANDLE* handle) {
  check_ready(handle);
  check_ready(handle->hdlprop);
  LmHdlProp* properties = handle->hdlprop;
  check_ready(properties->context);
  check_ready(properties->context->cxtprop);
  leave(*properties->context, handle);

  kind_of(properties->list_type).drop(*handle);
  trim_pool(*handle, 0);
  comn_free(properties->handle_name);
  drop_record(properties);
  drop_record(handle);
  return trace(CS_SUCCEED);
}
