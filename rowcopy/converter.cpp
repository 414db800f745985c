#include "converter.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

#include "fatal.h"
#include "iso_date.h"
#include "report.h"
#include "special.h"

namespace rowcopy {
namespace {

void require(CS_CONTEXT* context, const Column& column, CS_INT source,
             const std::string& source_name, const Datatype& target) {
  if (com_conv_func(context, source, target.code) == nullptr)
    throw Fatal(column.place + ": column \"" + column.name + "\": there is no conversion from " +
                source_name + " to " + target.name);
}

// The format of a value's text; money has all of its decimals.
CS_DATAFMT whole_text_format(const Datatype& type, CS_LOCALE* locale) {
  constexpr CS_INT kMoneyDecimals = 4;
  CS_DATAFMT format = text_format(CS_CHAR_TYPE, locale);
  format.maxlength = type.text_size;
  format.precision = kMoneyDecimals;
  return format;
}

// The bytes that a null has in a record.
std::vector<char> null_of(CS_CONTEXT* context, const Datatype& type, Locales locales) {
  CS_DATAFMT target = format_of(type, locales.to);
  if (target.precision == CS_USE_SRCVALUE) {
    // A null has no digits from which a numeric could take its precision.
    target.precision = 1;
    target.scale = 0;
  }
  std::vector<char> bytes(static_cast<std::size_t>(type.size));
  CS_INT length = 0;
  Conversion(context, text_format(CS_VOID_TYPE, locales.from), target)("", 0, bytes.data(), length);
  return bytes;
}

// Room for values of a type, and for what may be read after them.
std::vector<char> room_for(const Datatype& type, std::size_t rows) {
  return std::vector<char>(static_cast<std::size_t>(type.size) * rows + kSpecialSlack);
}

// How many bytes of a stored value are used: those after a varying value's own length are not.
std::size_t used_bytes(const Datatype& type, const char* value, CS_INT length) {
  // For numerics that come from binary numbers the library gives the length of the whole record.
  if (type.code == CS_NUMERIC_TYPE && length > 0)
    return std::min(offsetof(CS_NUMERIC, array) +
                        static_cast<std::size_t>(comn_num_getlen(static_cast<CS_BYTE>(*value))),
                    static_cast<std::size_t>(length));
  if (!is_varying(type.code)) return static_cast<std::size_t>(length);
  CS_SMALLINT count = 0;
  std::memcpy(&count, value, sizeof count);
  return std::min(sizeof count + static_cast<CS_USHORT>(count), static_cast<std::size_t>(length));
}

}  // namespace

TextReader::TextReader(CS_CONTEXT* context, const Column& column, const Datatype& read_as,
                       Locales locales, std::size_t rows)
    : read_as_(read_as),
      type_(column.type),
      onward_(!(read_as == column.type)),
      from_text_(context, text_format(CS_CHAR_TYPE, locales.from), format_of(read_as, locales.to)),
      go_on_(context, format_of(read_as, locales.to), format_of(column.type, locales.to)),
      from_empty_(context, text_format(CS_VARCHAR_TYPE, locales.from),
                  format_of(column.type, locales.to)),
      first_(rows) {
  require(context, column, CS_CHAR_TYPE, kText.name, read_as);
  require(context, column, read_as.code, read_as.name, column.type);
  if (!onward_) return;
  intermediate_ = room_for(read_as, rows);
  going_on_.resize(rows);
}

Values TextReader::intermediates() const {
  return {intermediate_.data(), static_cast<std::size_t>(read_as_.size)};
}

std::size_t TextReader::read(const FieldColumn& fields, Values to, Results& results) {
  if (!onward_) return read_text(fields, to, results);
  const Values between = intermediates();
  read_text(fields, between, first_);
  for (std::size_t row = 0; row < fields.count; ++row)
    going_on_[row] =
        first_.codes[row] == CS_SUCCEED && first_.lengths[row] > 0 ? first_.lengths[row] : kNull;
  go_on_(between, going_on_.data(), fields.count, to, results);
  std::size_t faults = 0;
  for (std::size_t row = 0; row < fields.count; ++row) {
    if (first_.codes[row] != CS_SUCCEED) {
      results.codes[row] = first_.codes[row];
      results.lengths[row] = 0;
    } else if (first_.lengths[row] == 0) {
      results.codes[row] = read_empty(to[row], results.lengths[row]);
    }
    faults += results.codes[row] == CS_SUCCEED ? 0 : 1;
  }
  return faults;
}

std::size_t TextReader::read_text(const FieldColumn& fields, Values to, Results& results) const {
  std::size_t faults = from_text_(fields, to, results);
  if (has_empty_value(read_as_.kind)) return faults;
  for (std::size_t row = 0; row < fields.count; ++row) {
    if (fields.lengths[row] != 0) continue;
    faults += results.codes[row] == CS_SUCCEED ? 1 : 0;
    results.codes[row] = CS_CVT_SYNTAX;
    results.lengths[row] = 0;
  }
  return faults;
}

CS_RETCODE TextReader::read_empty(char* room, CS_INT& length) {
  static constexpr CS_VARCHAR kEmpty{};
  length = 0;
  return has_empty_value(type_.kind) ? from_empty_(&kEmpty, sizeof kEmpty, room, length)
                                     : CS_CVT_SYNTAX;
}

ColumnConverter::ColumnConverter(CS_CONTEXT* context, const Column& column, Locales locales,
                                 TextStyle style, std::size_t rows)
    : read_as_(column.read_as),
      type_(column.type),
      onward_(!(column.read_as == column.type)),
      same_locale_(locales.from == locales.to),
      short_floats_(style.short_floats),
      iso_dates_(type_.kind == Kind::kDate && !style.locale_dates),
      reader_(context, column, column.read_as, locales, rows),
      rereader_(context, column, column.type, {locales.to, locales.to}, rows),
      // Text that is converted onward is compared with the value that it becomes.
      fidelity_(context, onward_ && read_as_.kind == Kind::kText ? type_ : read_as_, locales),
      to_text_(context, format_of(column.type, locales.to),
               whole_text_format(column.type, locales.to)),
      single_text_(context, format_of(column.type, locales.to),
                   whole_text_format(column.type, locales.to)),
      back_(context, format_of(column.type, locales.to), format_of(column.read_as, locales.to)),
      text_back_(context, text_format(CS_CHAR_TYPE, locales.to),
                 format_of(column.read_as, locales.to)),
      null_(null_of(context, column.type, locales)),
      values_(rows),
      verdicts_(rows),
      texts_(rows),
      sources_(rows),
      again_(rows),
      again_values_(room_for(column.type, rows)),
      came_back_(static_cast<std::size_t>(column.read_as.size)) {
  require(context, column, column.type.code, column.type.name, kText);
}

void ColumnConverter::to_record(const FieldColumn& fields, Values values) {
  faults_ = reader_.read(fields, values, values_);
  put_lengths(values, fields.count);
  unlike_ = compare(fields, values);
}

void ColumnConverter::put_lengths(Values values, std::size_t count) {
  nulls_ = 0;
  char* value = values.first;
  for (const CS_INT length : std::span(values_.lengths).first(count)) {
    std::memcpy(value - sizeof length, &length, sizeof length);
    if (length < 0) {
      ++nulls_;
      std::memcpy(value, null_.data(), null_.size());
    }
    value += values.stride;
  }
}

std::size_t ColumnConverter::compare(const FieldColumn& fields, Values values) {
  if (!onward_) return fidelity_.compare(fields, values, values_, verdicts_);
  std::size_t unlike = 0;
  for (std::size_t row = 0; row < fields.count; ++row) {
    verdicts_[row] = Verdict::kSame;
    if (values_.codes[row] == CS_SUCCEED && values_.lengths[row] != kNull)
      verdicts_[row] = compare_onward(fields[row], row, values[row]);
    unlike += verdicts_[row] == Verdict::kSame ? 0 : 1;
  }
  return unlike;
}

// A value that was converted onward must convert back to what was read.
Verdict ColumnConverter::compare_onward(std::string_view field, std::size_t row,
                                        const char* value) {
  if (read_as_.kind == Kind::kText) return fidelity_.compare(field, value, values_.lengths[row]);
  const Verdict first =
      fidelity_.compare(field, reader_.intermediate(row), reader_.intermediate_length(row));
  if (!is_kept(first) || leads_back(field, row, value)) return first;
  return type_.kind == Kind::kFloat ? Verdict::kInexact : Verdict::kChanged;
}

bool ColumnConverter::leads_back(std::string_view field, std::size_t row, const char* value) {
  const CS_INT length = values_.lengths[row];
  if (length == 0)
    return used_bytes(read_as_, reader_.intermediate(row), reader_.intermediate_length(row)) ==
           (is_varying(read_as_.code) ? sizeof(CS_SMALLINT) : 0);
  CS_INT back_length = 0;
  CS_RETCODE code = CS_FAIL;
  if (back_) {
    code = back_(value, static_cast<std::size_t>(length), came_back_.data(), back_length);
  } else {
    const std::string text = text_of(value, length);
    if (!text.empty()) code = text_back_(text.data(), text.size(), came_back_.data(), back_length);
  }
  if (code != CS_SUCCEED) return false;
  if (back_length == reader_.intermediate_length(row) &&
      std::memcmp(came_back_.data(), reader_.intermediate(row),
                  static_cast<std::size_t>(back_length)) == 0)
    return true;
  // One number has several forms.
  return read_as_.kind != Kind::kFloat &&
         is_kept(fidelity_.compare(field, came_back_.data(), back_length));
}

void ColumnConverter::to_text(const FieldColumn& fields, Values values,
                              const std::vector<char>& marks, Values rooms) {
  written_ = 0;
  for (std::size_t row = 0; row < fields.count; ++row) {
    sources_[row] = marks[row] != 0 ? values_.lengths[row] : kNull;
    written_ += sources_[row] == kNull ? 0 : 1;
  }
  write_texts(fields.count, values, rooms);
  read_again(fields, values, rooms);
}

void ColumnConverter::write_texts(std::size_t count, Values values, Values rooms) {
  text_faults_ = 0;
  if (iso_dates_) return write_dates(count, values, rooms);
  text_faults_ = to_text_(values, sources_.data(), count, rooms, texts_);
  if (type_.kind == Kind::kFloat) write_floats(count, values, rooms);
}

void ColumnConverter::write_dates(std::size_t count, Values values, Values rooms) {
  for (std::size_t row = 0; row < count; ++row) {
    texts_.codes[row] = CS_SUCCEED;
    texts_.lengths[row] = kNull;
    if (sources_[row] == kNull) continue;
    const IsoDate text =
        onward_ ? iso_date(widen_date(type_.code, values[row])) : fidelity_.iso_dates()[row];
    std::memcpy(rooms[row], text.data(), text.size());
    texts_.lengths[row] = text.size();
  }
}

// The library's text of an infinity does not read as one, that of -0 has no sign, and its numbers
// always have 17 digits. The shortest text of the largest single reads as a double above it.
void ColumnConverter::write_floats(std::size_t count, Values values, Values rooms) {
  const auto write = [&]<class Float>(std::size_t row, Float number) {
    std::memcpy(&number, values[row], sizeof number);
    const bool reads_back = std::isfinite(number) && (number != 0 || !std::signbit(number));
    if (reads_back && !short_floats_) return;
    char* const room = rooms[row];
    char* const end = room + type_.text_size;
    const bool largest = std::abs(number) == std::numeric_limits<Float>::max();
    texts_.lengths[row] = static_cast<CS_INT>(
        (largest ? std::to_chars(room, end, double{number}) : std::to_chars(room, end, number))
            .ptr -
        room);
  };
  for (std::size_t row = 0; row < count; ++row) {
    if (sources_[row] == kNull) continue;
    if (type_.code == CS_REAL_TYPE) {
      write(row, CS_REAL{});
    } else {
      write(row, CS_FLOAT{});
    }
  }
}

void ColumnConverter::read_again(const FieldColumn& fields, Values values, Values rooms) {
  strays_ = 0;
  const bool field_will_do = same_locale_ && !onward_;
  std::size_t left = 0;
  for (std::size_t row = 0; row < fields.count; ++row) {
    const CS_INT length = texts_.codes[row] == CS_SUCCEED ? texts_.lengths[row] : kNull;
    // A text that equals the field reads as the field did.
    const bool read = length == kNull || (field_will_do && length == fields.lengths[row] &&
                                          same_bytes(rooms[row], fields.text + fields.offsets[row],
                                                     static_cast<std::size_t>(length)));
    again_.codes[row] = CS_SUCCEED;
    sources_[row] = read ? kNull : length;
    left += read ? 0 : 1;
  }
  if (left == 0) return;
  const Values again{again_values_.data(), static_cast<std::size_t>(type_.size)};
  rereader_.read({rooms.first, nullptr, sources_.data(), fields.count, rooms.stride}, again,
                 again_);
  const auto used_of = [&](const char* value, CS_INT length) {
    return std::string_view(value, used_bytes(type_, value, length));
  };
  for (std::size_t row = 0; row < fields.count; ++row) {
    if (sources_[row] == kNull) continue;
    if (again_.codes[row] == CS_SUCCEED &&
        used_of(again[row], again_.lengths[row]) != used_of(values[row], values_.lengths[row]))
      again_.codes[row] = CS_FAIL;
    strays_ += again_.codes[row] == CS_SUCCEED ? 0 : 1;
  }
}

std::string ColumnConverter::text_of(const char* value, CS_INT length) {
  if (length == 0) return {};
  if (iso_dates_) {
    const IsoDate text = iso_date(widen_date(type_.code, value));
    return {text.data(), text.size()};
  }
  std::string text(static_cast<std::size_t>(type_.text_size), '\0');
  CS_INT size = 0;
  single_text_(value, static_cast<std::size_t>(length), text.data(), size);
  text.resize(static_cast<std::size_t>(size));
  return text;
}

std::string translate(CS_CONTEXT* context, const std::string& text, Locales locales) {
  if (text.empty()) return text;
  constexpr std::size_t kGrowth = 4;  // bytes of the longest character
  std::string translated(kGrowth * text.size(), '\0');
  CS_DATAFMT target = text_format(CS_CHAR_TYPE, locales.to);
  target.maxlength = static_cast<CS_INT>(translated.size());
  Conversion convert(context, text_format(CS_CHAR_TYPE, locales.from), target);
  CS_INT length = 0;
  const CS_RETCODE code = convert(text.data(), text.size(), translated.data(), length);
  if (code != CS_SUCCEED)
    throw Fatal("heading " + show_value(text) + " cannot be written: " + code_name(code));
  translated.resize(static_cast<std::size_t>(length));
  return translated;
}

}  // namespace rowcopy
