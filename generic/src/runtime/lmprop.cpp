// Properties of a list context: the defaults of its next lists, and what it counts.
#include "runtime/lmutils.h"

using namespace comnlib;

namespace {

CS_RETCODE get(const LmCxtProp& properties, CS_INT property, CS_VOID* buffer, CS_INT buflen,
               CS_INT* outlen) {
  const LM_HANDLE* current = properties.cur_handleaddr;
  switch (property) {
    case LM_CTX_LIST_TYPE:
      return give_value(properties.list_type, buffer, outlen);
    case LM_CTX_MAX_TABLESIZE:
      return give_value(properties.max_tablesize, buffer, outlen);
    case LM_CTX_MAX_POOLSIZE:
      return give_value(properties.max_poolsize, buffer, outlen);
    case LM_CTX_VERSION:
      return give_value(properties.version, buffer, outlen);
    case LM_CTX_CONTEXT_LOAD:
      return give_value(properties.context_load, buffer, outlen);
    case LM_CTX_CUR_HANDLENAME:
      return give_name(properties.cur_handlename, current == nullptr ? 0 : current->hdlprop->length,
                       buffer, buflen, outlen);
    case LM_CTX_CUR_HANDLEADDR:
      return give_value(current, buffer, outlen);
    default:
      stop();
  }
}

struct Default {
  CS_INT LmCxtProp::*field;
  CS_INT initial;
};

// The settable properties are the first three.
constexpr std::array kDefaults = {
    Default{&LmCxtProp::list_type, LM_DEFAULT_LIST_TYPE},
    Default{&LmCxtProp::max_tablesize, LM_DEFAULT_TABLESIZE},
    Default{&LmCxtProp::max_poolsize, LM_DEFAULT_POOLSIZE},
};

}  // namespace

CS_RETCODE lm_property(LM_CONTEXT* context, CS_INT action, CS_INT property, CS_VOID* buffer,
                       CS_INT buflen, CS_INT* outlen) {
  check_ready(context);
  check_ready(context->cxtprop);
  check_action(action);
  require(property >= LM_CTX_LIST_TYPE && property <= LM_CTX_CUR_HANDLEADDR);
  LmCxtProp& properties = *context->cxtprop;
  if (action == CS_GET) return trace(get(properties, property, buffer, buflen, outlen));

  if (property > LM_CTX_MAX_POOLSIZE) return trace(CS_FAIL);
  const Default& target = kDefaults[static_cast<std::size_t>(property - LM_CTX_LIST_TYPE)];
  properties.*target.field = action == CS_SET ? integer_at(buffer) : target.initial;
  return trace(CS_SUCCEED);
}
