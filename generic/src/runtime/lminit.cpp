// Making a list context.
#include "runtime/lmutils.h"

using namespace comnlib;

CS_RETCODE lm_initlm(CS_INT version, const CS_CHAR* name, CS_INT namelen,
                     LM_CONTEXT** context_out) {
  require(version >= LM_MIN_VERSION);
  check_pointer(name);
  check_pointer(context_out);

  auto* context = build_record<LM_CONTEXT>();
  if (context == nullptr) return trace(CS_MEM_ERROR);
  context->cxtprop = build_record<LmCxtProp>();
  if (context->cxtprop == nullptr) {
    drop_record(context);
    return trace(CS_MEM_ERROR);
  }
  if (!copy_name(name, namelen, context->context_name, context->length)) {
    drop_record(context->cxtprop);
    drop_record(context);
    return trace(CS_MEM_ERROR);
  }

  context->cxtprop->list_type = LM_DEFAULT_LIST_TYPE;
  context->cxtprop->max_tablesize = LM_DEFAULT_TABLESIZE;
  context->cxtprop->max_poolsize = LM_DEFAULT_POOLSIZE;
  context->cxtprop->version = version;
  context->cxtprop->state = LM_STATE_READY;
  context->state = LM_STATE_READY;
  *context_out = context;
  return trace(CS_SUCCEED);
}
