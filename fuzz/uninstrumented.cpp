// For MemorySanitizer: the routines on floating point numbers that the library takes from the
// compiled part of the C++ library, with the bytes that they write marked as written.
#include <sanitizer/msan_interface.h>

#include <charconv>

extern "C" {

std::to_chars_result __real__ZSt8to_charsPcS_dSt12chars_formati(char* first, char* last,
                                                                double value,
                                                                std::chars_format format,
                                                                int precision);
std::from_chars_result __real__ZSt10from_charsPKcS0_RdSt12chars_format(const char* first,
                                                                       const char* last,
                                                                       double& value,
                                                                       std::chars_format format);

std::to_chars_result __wrap__ZSt8to_charsPcS_dSt12chars_formati(char* first, char* last,
                                                                double value,
                                                                std::chars_format format,
                                                                int precision) {
  std::to_chars_result result =
      __real__ZSt8to_charsPcS_dSt12chars_formati(first, last, value, format, precision);
  __msan_unpoison(&result, sizeof result);
  __msan_unpoison(first, static_cast<std::size_t>(result.ptr - first));
  return result;
}

std::from_chars_result __wrap__ZSt10from_charsPKcS0_RdSt12chars_format(const char* first,
                                                                       const char* last,
                                                                       double& value,
                                                                       std::chars_format format) {
  __msan_check_mem_is_initialized(first, static_cast<std::size_t>(last - first));
  std::from_chars_result result =
      __real__ZSt10from_charsPKcS0_RdSt12chars_format(first, last, value, format);
  __msan_unpoison(&result, sizeof result);
  if (result.ec == std::errc{}) __msan_unpoison(&value, sizeof value);
  return result;
}

}  // extern "C"
