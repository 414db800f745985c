// A host in C++20, for what only C++ shows: a lambda as a conversion, and an object that gives the
// library's memory back.
#include <comnlib.h>

#include <memory>
#include <string_view>

int main() {
  CS_CONTEXT context{};
  const std::unique_ptr<CS_CONTEXT, decltype(&com_conv_free)> matrix{&context, com_conv_free};
  if (com_conv_init(&context) != CS_SUCCEED) return 1;
  com_conv_install(&context, CS_CHAR_TYPE, CS_USER_TYPE,
                   [](CS_CONTEXT*, const CS_DATAFMT* from, const CS_VOID*, const CS_DATAFMT*,
                      CS_VOID* dest, CS_INT*) -> CS_RETCODE {
                     *static_cast<CS_INT*>(dest) = from->maxlength;
                     return CS_SUCCEED;
                   });
  constexpr std::string_view kText = "seven b";
  CS_DATAFMT from{}, to{};
  from.maxlength = static_cast<CS_INT>(kText.size());
  CS_INT result = 0, length = 0;
  const auto convert = com_conv_func(&context, CS_CHAR_TYPE, CS_USER_TYPE);
  return convert(&context, &from, kText.data(), &to, &result, &length) != CS_SUCCEED || result != 7;
}
