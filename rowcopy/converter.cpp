#include "converter.h"

#include <charconv>
#include <cmath>

#include "fatal.h"
#include "iso_date.h"
#include "report.h"

namespace rowcopy {
namespace {

Conversion require(CS_CONTEXT* context, const Column& column, const CS_DATAFMT& source,
                   const std::string& source_name, const CS_DATAFMT& target,
                   const std::string& target_name) {
  const Conversion conversion(context, source, target);
  if (!conversion)
    throw Fatal(column.place + ": column \"" + column.name + "\": there is no conversion from " +
                source_name + " to " + target_name);
  return conversion;
}

// The text of a value of that type; money with all of its decimals.
CS_DATAFMT whole_text_format(const Datatype& type, CS_LOCALE* locale) {
  constexpr CS_INT kMoneyDecimals = 4;
  CS_DATAFMT format = text_format(CS_CHAR_TYPE, locale);
  format.maxlength = type.text_size;
  format.precision = kMoneyDecimals;
  return format;
}

// A null has no digits from which a numeric could take its precision.
CS_DATAFMT null_format(CS_DATAFMT format) {
  if (format.precision == CS_USE_SRCVALUE) {
    format.precision = 1;
    format.scale = 0;
  }
  return format;
}

}  // namespace

TextReader::TextReader(CS_CONTEXT* context, const Column& column, const Datatype& read_as,
                       Locales locales)
    : has_empty_(has_empty_value(read_as.kind)) {
  const CS_DATAFMT first = format_of(read_as, locales.to);
  const CS_DATAFMT target = format_of(column.type, locales.to);
  from_null_ = require(context, column, text_format(CS_VOID_TYPE, locales.from), "null",
                       null_format(target), column.type.name);
  from_empty_ = require(context, column, text_format(CS_VARCHAR_TYPE, locales.from), "varchar",
                        first, read_as.name);
  from_text_ = require(context, column, text_format(CS_CHAR_TYPE, locales.from), kText.name, first,
                       read_as.name);
  if (read_as == column.type) return;
  onward_ = require(context, column, first, read_as.name, target, column.type.name);
  intermediate_.resize(static_cast<std::size_t>(read_as.size));
}

CS_RETCODE TextReader::read_other(const Field& field, char* room, CS_INT& length) {
  if (field.null) {
    const CS_RETCODE code = from_null_("", 0, room, length);
    length = kNull;
    return code;
  }
  if (!onward_) return read_text(field, room, length);
  const CS_RETCODE code = read_text(field, intermediate_.data(), intermediate_length_);
  if (code == CS_SUCCEED)
    return onward_(intermediate_.data(), static_cast<std::size_t>(intermediate_length_), room,
                   length);
  length = 0;
  return code;
}

CS_RETCODE TextReader::read_text(const Field& field, char* room, CS_INT& length) {
  static constexpr CS_VARCHAR kEmpty{};
  length = 0;
  if (!field.text.empty()) return from_text_(field.text.data(), field.text.size(), room, length);
  return has_empty_ ? from_empty_(&kEmpty, sizeof kEmpty, room, length) : CS_CVT_SYNTAX;
}

ColumnConverter::ColumnConverter(CS_CONTEXT* context, const Column& column, Locales locales,
                                 TextStyle style)
    : read_as_(column.read_as),
      type_(column.type),
      onward_(!(column.read_as == column.type)),
      varying_(is_varying(column.type.code)),
      same_locale_(locales.from == locales.to),
      short_floats_(style.short_floats),
      own_text_((type_.kind == Kind::kDate && !style.locale_dates) || type_.kind == Kind::kFloat),
      reader_(context, column, column.read_as, locales),
      rereader_(context, column, column.type, {locales.to, locales.to}),
      // Text that is only on the way to another type is compared with what that holds.
      fidelity_(context, onward_ && read_as_.kind == Kind::kText ? type_ : read_as_, locales),
      to_text_(require(context, column, format_of(column.type, locales.to), column.type.name,
                       whole_text_format(column.type, locales.to), kText.name)),
      back_(context, format_of(column.type, locales.to), format_of(column.read_as, locales.to)),
      text_back_(context, text_format(CS_CHAR_TYPE, locales.to),
                 format_of(column.read_as, locales.to)),
      again_(static_cast<std::size_t>(column.type.size)),
      came_back_(static_cast<std::size_t>(column.read_as.size)),
      text_(static_cast<std::size_t>(column.type.text_size)) {}

// A value that was converted onward must lead back to what was read.
Verdict ColumnConverter::compare_onward(const Field& field, const char* value, CS_INT length) {
  if (read_as_.kind == Kind::kText) return fidelity_.compare(field, value, length);
  const Verdict first =
      fidelity_.compare(field, reader_.intermediate(), reader_.intermediate_length());
  if (!is_kept(first) || comes_back(field, value, length)) return first;
  return type_.kind == Kind::kFloat ? Verdict::kInexact : Verdict::kChanged;
}

bool ColumnConverter::comes_back(const Field& field, const char* value, CS_INT length) {
  CS_INT back_length = 0;
  CS_RETCODE code = CS_FAIL;
  if (back_) {
    code = back_(value, static_cast<std::size_t>(length), came_back_.data(), back_length);
  } else {
    CS_INT text_length = 0;
    code = to_text(value, length, text_.data(), text_length);
    if (code == CS_SUCCEED)
      code = text_back_(text_.data(), static_cast<std::size_t>(text_length), came_back_.data(),
                        back_length);
  }
  if (code != CS_SUCCEED) return false;
  if (back_length == reader_.intermediate_length() &&
      std::memcmp(came_back_.data(), reader_.intermediate(),
                  static_cast<std::size_t>(back_length)) == 0)
    return true;
  // One number has several forms.
  return read_as_.kind != Kind::kFloat &&
         is_kept(fidelity_.compare(field, came_back_.data(), back_length));
}

// False when the library's text is wanted. Its text of infinities does not read as such.
bool ColumnConverter::to_own_text(const char* value, char* room, CS_INT& text_length) const {
  if (type_.kind == Kind::kDate) {
    const IsoDate text = iso_date(widen_date(type_.code, value));
    std::memcpy(room, text.data(), text.size());
    text_length = static_cast<CS_INT>(text.size());
    return true;
  }
  const auto write = [&]<class Float>(Float number) {
    std::memcpy(&number, value, sizeof number);
    if (std::isfinite(number) && !short_floats_) return false;
    text_length =
        static_cast<CS_INT>(std::to_chars(room, room + type_.text_size, number).ptr - room);
    return true;
  };
  return type_.code == CS_REAL_TYPE ? write(CS_REAL{}) : write(CS_FLOAT{});
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
