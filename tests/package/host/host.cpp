// A host in C++20, for what a C host does not show: a lambda as a conversion, an object that gives
// the library's memory back, and text as a view.
#include <comnlib.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string_view>

int main() {
  CS_CONTEXT context{};
  if (com_conv_init(&context) != CS_SUCCEED) return EXIT_FAILURE;
  const std::unique_ptr<CS_CONTEXT, decltype(&com_conv_free)> matrix{&context, com_conv_free};

  constexpr CS_INT kLengthType = CS_USER_TYPE;
  com_conv_install(&context, CS_CHAR_TYPE, kLengthType,
                   [](CS_CONTEXT*, const CS_DATAFMT* from, const CS_VOID*, const CS_DATAFMT*,
                      CS_VOID* dest, CS_INT* length) -> CS_RETCODE {
                     *static_cast<CS_INT*>(dest) = from->maxlength;
                     *length = sizeof(CS_INT);
                     return CS_SUCCEED;
                   });
  constexpr std::string_view kText = "seven b";
  CS_DATAFMT from{}, to{};
  from.maxlength = static_cast<CS_INT>(kText.size());
  CS_INT result = 0, length = 0;
  const CS_CONV_FUNC convert = com_conv_func(&context, CS_CHAR_TYPE, kLengthType);
  if (convert != nullptr &&
      convert(&context, &from, kText.data(), &to, &result, &length) == CS_SUCCEED && result == 7)
    return EXIT_SUCCESS;
  std::fprintf(stderr, "host: expected: the length of a text, and not %d\n", int{result});
  return EXIT_FAILURE;
}
