// Compares what is stored with what a field says, without the routine that read it: a value that
// its type cannot hold exactly is never taken for a copy.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "conversion.h"
#include "csv_reader.h"
#include "decimal.h"
#include "iso_date.h"

namespace rowcopy {

enum class Verdict {
  kSame,
  kFilledIn,  // all that the field gives; the type added a date or a time of day
  kInexact,   // the nearest binary floating-point number
  kChanged,
  kNoValue,  // the field gives no value
};

// Whether the value says what the field says.
constexpr bool is_kept(Verdict verdict) {
  return verdict != Verdict::kChanged && verdict != Verdict::kNoValue;
}

class Fidelity {
 public:
  Fidelity(CS_CONTEXT* context, const Datatype& type, Locales locales);

  // Compares the values of a column with the fields that they came from. Nulls and values whose
  // code is not CS_SUCCEED count as the same. Returns the number of values with another verdict
  // than kSame.
  std::size_t compare(const FieldColumn& fields, Values values, const Results& results,
                      std::vector<Verdict>& verdicts);

  // `value`, of `length` bytes, is what the field was converted to.
  Verdict compare(std::string_view field, const char* value, CS_INT length);

  // Of a column of dates that were compared, the text of each.
  const std::vector<IsoDate>& iso_dates() const { return iso_dates_; }

 private:
  Verdict compare_plain_text(std::string_view field, const char* value, CS_INT length) const;
  template <CS_INT kCode>
  Verdict compare_exact(std::string_view field, const char* value, CS_INT length);
  Verdict compare_dates(std::string_view field, const char* value, IsoDate& text);
  Decimal read_number(std::string_view& text);
  Verdict compare_float(std::string_view text, const char* value);
  Verdict compare_text(std::string_view text, const char* value, CS_INT length);
  std::string text_of(const char* value, CS_INT length);
  std::string_view plain(std::string_view text);

  Datatype type_;
  bool same_charset_;
  bool is_plain_text_;     // the bytes of the field, without more
  Conversion to_unicode_;  // of a field
  Conversion back_;        // of a value, to text in the character set of the field
  std::vector<IsoDate> iso_dates_;
  std::vector<CS_UNICHAR> units_;
  std::string plain_;
  std::vector<char> text_;
};

}  // namespace rowcopy
