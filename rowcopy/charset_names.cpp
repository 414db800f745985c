#include "charset_names.h"

#include <algorithm>
#include <array>

namespace rowcopy {
namespace {

struct Alias {
  std::string_view squeezed;
  const char* home_name;
};

// Names that follow no rule.
constexpr std::array kAliases = {
    Alias{"USASCII", "ascii"}, Alias{"ANSIX3.41968", "ascii"}, Alias{"ISO646US", "ascii"},
    Alias{"LATIN5", "iso_9"},  Alias{"LATIN6", "iso10"},       Alias{"LATIN7", "iso13"},
    Alias{"LATIN8", "iso14"},  Alias{"LATIN9", "iso15"},       Alias{"LATIN10", "iso16"},
    Alias{"SHIFTJIS", "sjis"}, Alias{"GBK", "cp936"},          Alias{"UHC", "cp949"},
    Alias{"KOI8R", "koi8"},    Alias{"MACINTOSH", "macroman"}, Alias{"UTF16", "utf8"},
    Alias{"UTF16LE", "utf8"},  Alias{"UTF16BE", "utf8"},
};

// Names that begin differently in the home and elsewhere.
struct Prefix {
  std::string_view squeezed;
  std::size_t digits;  // that follow
  const char* home_prefix;
};
constexpr std::array kPrefixes = {
    Prefix{"ISO8859", 1, "iso_"}, Prefix{"ISO8859", 2, "iso"}, Prefix{"LATIN", 1, "iso_"},
    Prefix{"IBM", 3, "cp"},       Prefix{"WINDOWS", 3, "cp"},  Prefix{"WINDOWS", 4, "cp"},
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
  std::string text = squeeze(name);
  const auto* found = std::ranges::find(kAliases, text, &Alias::squeezed);
  if (found != kAliases.end()) return found->home_name;
  for (const Prefix& prefix : kPrefixes)
    if (text.starts_with(prefix.squeezed) && text.size() == prefix.squeezed.size() + prefix.digits)
      return prefix.home_prefix + text.substr(prefix.squeezed.size());
  std::ranges::transform(text, text.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  return text;
}

}  // namespace rowcopy
