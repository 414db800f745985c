// Compares what is stored with what a field says, apart from the routine that read it: a value that
// its type cannot hold as it is in the file is never taken for a copy.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "conversion.h"
#include "csv_reader.h"

namespace rowcopy {

enum class Verdict {
  kSame,
  kFilledIn,  // all that the field gives; the type added a date or a time of day
  kInexact,   // the nearest binary floating-point number
  kChanged,
  kNoValue,  // the field gives nothing that a value could be made of
};

// Whether the value says what the field says.
constexpr bool is_kept(Verdict verdict) {
  return verdict != Verdict::kChanged && verdict != Verdict::kNoValue;
}

class Fidelity {
 public:
  Fidelity(CS_CONTEXT* context, const Datatype& type, Locales locales);

  // `field` is not null; `value` is what became of it, with `length` bytes.
  Verdict compare(const Field& field, const char* value, CS_INT length) {
    if (!is_plain_text_) return compare_any(field, value, length);
    return std::string_view(value, static_cast<std::size_t>(length)) == field.text
               ? Verdict::kSame
               : Verdict::kChanged;
  }

 private:
  Verdict compare_any(const Field& field, const char* value, CS_INT length);
  Verdict compare_number(std::string_view text, const char* value, CS_INT length);
  Verdict compare_text(std::string_view text, const char* value, CS_INT length);
  std::string text_of(const char* value, CS_INT length);
  std::string_view plain(std::string_view text);

  Datatype type_;
  bool same_charset_;
  bool is_plain_text_;     // the bytes of the field, without more
  Conversion to_unicode_;  // of a field
  Conversion back_;        // of a value, to text in the character set of the field
  std::vector<CS_UNICHAR> units_;
  std::string plain_;
  std::vector<char> text_;
};

}  // namespace rowcopy
