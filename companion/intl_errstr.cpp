// Weak default of intl_errstr: the words of every status.
#include <array>
#include <cstdio>
#include <cstring>

#include "diag/diag.h"
#include "intl.h"
#include "status.h"

namespace comnlib::companion {
namespace {

const char* words(Fault fault) {
  switch (fault) {
    case Fault::kNoHome:
      return "neither TALVEN, nor the user talven, nor the installation gives a home directory";
    case Fault::kNoMemory:
      return "out of memory";
    case Fault::kNoRoom:
      return "the value is longer than its buffer";
    case Fault::kSectionOpen:
      return "the section line has no ']'";
    case Fault::kSectionTail:
      return "text follows the ']' of the section line";
    case Fault::kNoEquals:
      return "the entry has no '='";
    case Fault::kNoKey:
      return "the entry has no name before its '='";
    case Fault::kQuoteOpen:
      return "the quoted value has no closing quote";
    case Fault::kQuoteTail:
      return "text follows the closing quote of a value";
    case Fault::kNulByte:
      return "the line holds a NUL byte";
    case Fault::kNotRegular:
      return "not a regular file";
    case Fault::kTooLarge:
      return "the file is larger than 256 MB";
    case Fault::kSizeChanged:
      return "the file is not as long as its size says";
    case Fault::kNone:
    case Fault::kSystem:
      break;
  }
  return "unknown status";
}

// The system's own words in English, whatever the process's locale is.
const char* system_words(int error) {
  const char* text = strerrordesc_np(error);
  return text == nullptr ? "unknown system error" : text;
}

}  // namespace
}  // namespace comnlib::companion

using namespace comnlib;

__attribute__((weak)) CS_INT intl_errstr(CS_INT status, CS_CHAR* buffer, CS_INT buflen) {
  check_pointer(buffer);
  require(buflen >= 0);
  const companion::Fault fault = companion::fault_of(status);
  const CS_INT detail = companion::detail_of(status);
  const auto room = static_cast<std::size_t>(buflen);
  if (fault == companion::Fault::kSystem)
    return std::snprintf(buffer, room, "%s", companion::system_words(detail));
  if (detail == 0) return std::snprintf(buffer, room, "%s", companion::words(fault));
  return std::snprintf(buffer, room, "line %d: %s", static_cast<int>(detail),
                       companion::words(fault));
}
