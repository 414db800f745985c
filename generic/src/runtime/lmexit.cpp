// Dropping a list context with everything in it.
#include "runtime/lmutils.h"

using namespace comnlib;

CS_RETCODE lm_exit(LM_CONTEXT* context) {
  check_ready(context);
  check_ready(context->cxtprop);
  while (context->first_handle != nullptr) lm_list_drop(context->first_handle);
  require(context->cxtprop->context_load == 0);
  drop_record(context->cxtprop);
  comn_free(context->context_name);
  drop_record(context);
  return trace(CS_SUCCEED);
}
