#include "converter.h"

#include "fatal.h"
#include "report.h"

namespace rowcopy {
namespace {

// Looks up the routines that a column needs.
class Finder {
 public:
  Finder(CS_CONTEXT* context, const Column& column) : context_(context), column_(column) {}

  Conversion find(const CS_DATAFMT& source, const std::string& source_name,
                  const CS_DATAFMT& target, const std::string& target_name) const {
    const CS_CONV_FUNC routine = com_conv_func(context_, source.datatype, target.datatype);
    if (routine == nullptr) {
      throw Fatal(column_.place + ": column \"" + column_.name +
                  "\": there is no conversion from " + source_name + " to " + target_name);
    }
    return {context_, routine, source, target};
  }

 private:
  CS_CONTEXT* context_;
  const Column& column_;
};

CS_DATAFMT format_of_code(CS_INT code, CS_LOCALE* locale) {
  CS_DATAFMT format = format_of(kText, locale);
  format.datatype = code;
  return format;
}

// The text of a value of that type; money with all of its decimals.
CS_DATAFMT text_format(const Datatype& type, CS_LOCALE* locale) {
  constexpr CS_INT kMoneyDecimals = 4;
  CS_DATAFMT format = format_of(kText, locale);
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
                       Locales locales) {
  const Finder finder(context, column);
  const CS_DATAFMT text = format_of(kText, locales.from);
  const CS_DATAFMT first = format_of(read_as, locales.to);
  const CS_DATAFMT target = format_of(column.type, locales.to);
  from_null_ = finder.find(format_of_code(CS_VOID_TYPE, locales.from), "null", null_format(target),
                           column.type.name);
  from_empty_ =
      finder.find(format_of_code(CS_VARCHAR_TYPE, locales.from), "varchar", first, read_as.name);
  from_text_ = finder.find(text, kText.name, first, read_as.name);
  if (read_as == column.type) return;
  onward_ = finder.find(first, read_as.name, target, column.type.name);
  intermediate_.resize(static_cast<std::size_t>(read_as.size));
}

CS_RETCODE TextReader::read_other(const Field& field, char* room, CS_INT& length) {
  if (field.null) {
    const CS_RETCODE code = from_null_("", 0, room, length);
    length = kNull;
    return code;
  }
  if (!onward_) return read_text(field, room, length);
  CS_INT first_length = 0;
  const CS_RETCODE code = read_text(field, intermediate_.data(), first_length);
  if (code == CS_SUCCEED)
    return onward_(intermediate_.data(), static_cast<std::size_t>(first_length), room, length);
  length = 0;
  return code;
}

CS_RETCODE TextReader::read_text(const Field& field, char* room, CS_INT& length) {
  static constexpr CS_VARCHAR kEmpty{};
  if (field.text.empty()) return from_empty_(&kEmpty, sizeof kEmpty, room, length);
  return from_text_(field.text.data(), field.text.size(), room, length);
}

ColumnConverter::ColumnConverter(CS_CONTEXT* context, const Column& column, Locales locales)
    : varying_(is_varying(column.type.code)),
      reader_(context, column, column.read_as, locales),
      rereader_(context, column, column.type, {locales.to, locales.to}),
      to_text_(Finder(context, column)
                   .find(format_of(column.type, locales.to), column.type.name,
                         text_format(column.type, locales.to), kText.name)),
      again_(static_cast<std::size_t>(column.type.size)) {}

std::string translate(CS_CONTEXT* context, const std::string& text, Locales locales) {
  constexpr std::size_t kGrowth = 4;  // bytes of the longest character
  std::string translated(kGrowth * text.size(), '\0');
  CS_DATAFMT target = format_of(kText, locales.to);
  target.maxlength = static_cast<CS_INT>(translated.size());
  Conversion convert(context, com_conv_func(context, CS_CHAR_TYPE, CS_CHAR_TYPE),
                     format_of(kText, locales.from), target);
  CS_INT length = 0;
  const CS_RETCODE code = convert(text.data(), text.size(), translated.data(), length);
  if (code != CS_SUCCEED)
    throw Fatal("heading " + show_value(text) + " cannot be written: " + code_name(code));
  translated.resize(static_cast<std::size_t>(length));
  return translated;
}

}  // namespace rowcopy
