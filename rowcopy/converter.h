// Converts the values of a column between text and record, each by the routines of the context's
// conversion matrix, and checks the results.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "conversion.h"
#include "csv_reader.h"
#include "fidelity.h"
#include "layout.h"

namespace rowcopy {

struct TextStyle {
  bool locale_dates = false;
  bool short_floats = false;
};

// Reads text as the type of a column, directly or by way of another type.
class TextReader {
 public:
  // A pair of datatypes without a routine is a Fatal. The context outlives the reader.
  TextReader(CS_CONTEXT* context, const Column& column, const Datatype& read_as, Locales locales,
             std::size_t rows);

  // Stores values, their lengths and codes; a value whose code is not CS_SUCCEED holds what the
  // routine left there. Returns the number of such values. Empty text is a syntax error for types
  // that have no empty value.
  std::size_t read(const FieldColumn& fields, Values to, Results& results);

  // Of the last column: what its texts were read as, before they were converted onward.
  const char* intermediate(std::size_t row) const { return intermediates()[row]; }
  CS_INT intermediate_length(std::size_t row) const { return first_.lengths[row]; }

 private:
  Values intermediates() const;
  std::size_t read_text(const FieldColumn& fields, Values to, Results& results) const;
  CS_RETCODE read_empty(char* room, CS_INT& length);

  Datatype read_as_;
  Datatype type_;
  bool onward_;  // the text is read as another type first
  ColumnConversion from_text_;
  ColumnConversion go_on_;
  Conversion from_empty_;  // a character value has at least one byte, a varchar may be empty
  mutable std::vector<char> intermediate_;
  Results first_;
  std::vector<CS_INT> going_on_;  // the lengths of the values that are converted onward
};

// Works on columns of a batch. What it stores for a row stays until the next batch.
class ColumnConverter {
 public:
  ColumnConverter(CS_CONTEXT* context, const Column& column, Locales locales, TextStyle style,
                  std::size_t rows);

  // Converts fields to values, whose lengths precede them, and compares these with the fields.
  void to_record(const FieldColumn& fields, Values values);
  CS_RETCODE code(std::size_t row) const { return values_.codes[row]; }
  CS_INT length(std::size_t row) const { return values_.lengths[row]; }
  Verdict verdict(std::size_t row) const { return verdicts_[row]; }  // with CS_SUCCEED
  std::size_t nulls() const { return nulls_; }
  std::size_t faults() const { return faults_; }  // codes that are not CS_SUCCEED
  // How many values have such a code or another verdict than kSame.
  std::size_t oddities() const { return faults_ + unlike_; }

  // Writes the texts of the values that are not null in rows with a mark other than 0 to `rooms`,
  // each of the type's text_size, and reads them again. `fields` are those the values came from.
  void to_text(const FieldColumn& fields, Values values, const std::vector<char>& marks,
               Values rooms);
  CS_INT text_length(std::size_t row) const { return texts_.lengths[row]; }  // or kNull
  CS_RETCODE text_code(std::size_t row) const { return texts_.codes[row]; }
  bool comes_back(std::size_t row) const { return again_.codes[row] == CS_SUCCEED; }
  std::size_t texts() const { return written_; }
  std::size_t text_faults() const { return text_faults_; }  // codes that are not CS_SUCCEED
  // How many texts have such a code or read as another value.
  std::size_t text_oddities() const { return text_faults_ + strays_; }

  // The text of a single value, for a report.
  std::string text_of(const char* value, CS_INT length);

 private:
  void put_lengths(Values values, std::size_t count);
  std::size_t compare(const FieldColumn& fields, Values values);
  Verdict compare_onward(std::string_view field, std::size_t row, const char* value);
  bool leads_back(std::string_view field, std::size_t row, const char* value);
  void write_texts(std::size_t count, Values values, Values rooms);
  void write_dates(std::size_t count, Values values, Values rooms);
  void write_floats(std::size_t count, Values values, Values rooms);
  void read_again(const FieldColumn& fields, Values values, Values rooms);

  Datatype read_as_;
  Datatype type_;
  bool onward_;
  bool same_locale_;
  bool short_floats_;
  bool iso_dates_;  // texts are those that the comparison made
  TextReader reader_;
  TextReader rereader_;
  Fidelity fidelity_;
  ColumnConversion to_text_;
  Conversion single_text_;
  Conversion back_;         // to what the text was read as
  Conversion text_back_;    // the same from the value's text
  std::vector<char> null_;  // the value of a null
  Results values_;
  std::vector<Verdict> verdicts_;
  std::size_t nulls_ = 0;
  std::size_t faults_ = 0;
  std::size_t unlike_ = 0;
  Results texts_;
  std::vector<CS_INT> sources_;  // the lengths of what is converted next
  std::size_t written_ = 0;
  std::size_t text_faults_ = 0;
  std::size_t strays_ = 0;
  Results again_;
  std::vector<char> again_values_;
  std::vector<char> came_back_;
};

// Translates a text into the character set of the records. Text that cannot be translated without a
// loss is a Fatal.
std::string translate(CS_CONTEXT* context, const std::string& text, Locales locales);

}  // namespace rowcopy
