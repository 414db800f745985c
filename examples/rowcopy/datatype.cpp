#include "datatype.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace rowcopy {
namespace {

constexpr CS_INT kLongest = 1'000'000;  // bytes of a value whose length the layout chooses

struct Spelling {
  std::string_view name;
  CS_INT code;
  TextForm form;
  bool takes_length;
};

constexpr std::array kSpellings = {
    Spelling{"tinyint", CS_TINYINT_TYPE, TextForm::kInteger, false},
    Spelling{"smallint", CS_SMALLINT_TYPE, TextForm::kInteger, false},
    Spelling{"int", CS_INT_TYPE, TextForm::kInteger, false},
    Spelling{"real", CS_REAL_TYPE, TextForm::kFloat, false},
    Spelling{"float", CS_FLOAT_TYPE, TextForm::kFloat, false},
    Spelling{"bit", CS_BIT_TYPE, TextForm::kInteger, false},
    Spelling{"char", CS_CHAR_TYPE, TextForm::kCharacters, true},
    Spelling{"text", CS_TEXT_TYPE, TextForm::kCharacters, true},
    Spelling{"varchar", CS_VARCHAR_TYPE, TextForm::kCharacters, false},
    Spelling{"binary", CS_BINARY_TYPE, TextForm::kHexadecimal, true},
    Spelling{"image", CS_IMAGE_TYPE, TextForm::kHexadecimal, true},
    Spelling{"varbinary", CS_VARBINARY_TYPE, TextForm::kHexadecimal, false},
};

// The number in "(number)", or nothing.
std::optional<CS_INT> parse_length(std::string_view text) {
  if (!text.starts_with('(') || !text.ends_with(')')) return std::nullopt;
  text = text.substr(1, text.size() - 2);
  CS_INT length = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), length);
  if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
  if (length < 1 || length > kLongest) return std::nullopt;
  return length;
}

}  // namespace

std::optional<Datatype> find_datatype(std::string_view spelling) {
  const std::size_t bracket = std::min(spelling.find('('), spelling.size());
  const auto* found = std::ranges::find(kSpellings, spelling.substr(0, bracket), &Spelling::name);
  if (found == kSpellings.end()) return std::nullopt;

  CS_INT length = 0;
  if (found->takes_length) {
    const auto chosen = parse_length(spelling.substr(bracket));
    if (!chosen) return std::nullopt;
    length = *chosen;
  } else if (bracket != spelling.size()) {
    return std::nullopt;
  }
  return Datatype{found->code, comn_typelen(found->code, length), found->form,
                  std::string(spelling)};
}

std::string datatype_spellings() {
  std::string list;
  for (const Spelling& spelling : kSpellings) {
    if (!list.empty()) list += ", ";
    list += spelling.name;
    if (spelling.takes_length) list += "(n)";
  }
  return list;
}

CS_DATAFMT format_of(CS_INT code, CS_INT length) {
  CS_DATAFMT format{};
  format.datatype = code;
  format.maxlength = length;
  return format;
}

}  // namespace rowcopy
