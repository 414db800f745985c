// Properties of a list context: the defaults of its next lists, and what it counts.
#include "runtime/lmutils.h"

using namespace comnlib;

namespace {

CS_RETCODE get_current_name(const LmCxtProp& properties, CS_VOID* buffer, CS_INT buflen,
                            CS_INT* outlen) {
  const LM_HANDLE* current = properties.cur_handleaddr;
  return give_name(properties.cur_handlename, current == nullptr ? 0 : current->hdlprop->length,
                   buffer, buflen, outlen);
}

constexpr std::array kProperties = std::to_array<Property<LmCxtProp>>({
    {LM_CTX_LIST_TYPE, get_member<&LmCxtProp::list_type>},
    {LM_CTX_MAX_TABLESIZE, get_member<&LmCxtProp::max_tablesize>},
    {LM_CTX_MAX_POOLSIZE, get_member<&LmCxtProp::max_poolsize>},
    {LM_CTX_VERSION, get_member<&LmCxtProp::version>},
    {LM_CTX_CONTEXT_LOAD, get_member<&LmCxtProp::context_load>},
    {LM_CTX_CUR_HANDLENAME, get_current_name},
    {LM_CTX_CUR_HANDLEADDR, get_member<&LmCxtProp::cur_handleaddr>},
});

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
  const Property<LmCxtProp>& found = property_of(kProperties, property);
  LmCxtProp& properties = *context->cxtprop;
  if (action == CS_GET) return trace(found.get(properties, buffer, buflen, outlen));

  if (property > LM_CTX_MAX_POOLSIZE) return trace(CS_FAIL);
  const Default& target = kDefaults[static_cast<std::size_t>(property - LM_CTX_LIST_TYPE)];
  properties.*target.field = action == CS_SET ? integer_at(buffer) : target.initial;
  return trace(CS_SUCCEED);
}
