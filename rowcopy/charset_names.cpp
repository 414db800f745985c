#include "charset_names.h"

#include <algorithm>
#include <array>

namespace rowcopy {
namespace {

struct Alias {
  std::string_view squeezed;
  const char* home_name;
};

constexpr std::array kAliases = {
    Alias{"ASCII", "ascii"},        Alias{"USASCII", "ascii"}, Alias{"ANSIX3.41968", "ascii"},
    Alias{"ISO646US", "ascii"},     Alias{"UTF8", "utf8"},     Alias{"ISO88591", "iso_1"},
    Alias{"LATIN1", "iso_1"},       Alias{"L1", "iso_1"},      Alias{"ISO885915", "iso15"},
    Alias{"LATIN9", "iso15"},       Alias{"CP437", "cp437"},   Alias{"IBM437", "cp437"},
    Alias{"CP850", "cp850"},        Alias{"IBM850", "cp850"},  Alias{"CP1252", "cp1252"},
    Alias{"WINDOWS1252", "cp1252"}, Alias{"KOI8R", "koi8"},    Alias{"KOI8", "koi8"},
    Alias{"SJIS", "sjis"},          Alias{"SHIFTJIS", "sjis"}, Alias{"CP932", "sjis"},
    Alias{"GBK", "cp936"},          Alias{"CP936", "cp936"},   Alias{"UTF16", "utf8"},
    Alias{"UTF16LE", "utf8"},       Alias{"UTF16BE", "utf8"},
};

}  // namespace

std::string squeeze(std::string_view name) {
  std::string squeezed;
  for (const char c : name) {
    if (c == '-' || c == '_' || c == ' ') continue;
    squeezed += c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  }
  return squeezed;
}

std::string home_charset(const std::string& name) {
  const auto* found = std::ranges::find(kAliases, squeeze(name), &Alias::squeezed);
  return found == kAliases.end() ? name : found->home_name;
}

}  // namespace rowcopy
