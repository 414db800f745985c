#include "converter.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <new>

#include "fatal.h"

namespace rowcopy {
namespace {

constexpr std::size_t kNumberRoom = 512;  // bytes; more than the text of any number takes

bool is_number(const Datatype& type) {
  return type.form == TextForm::kInteger || type.form == TextForm::kFloat;
}

bool is_varying(const Datatype& type) {
  return type.code == CS_VARCHAR_TYPE || type.code == CS_VARBINARY_TYPE;
}

// Varchar and varbinary records share their layout: the count, then the bytes.
static_assert(sizeof(CS_VARCHAR) == sizeof(CS_VARBINARY));
static_assert(offsetof(CS_VARCHAR, str) == offsetof(CS_VARBINARY, array));
constexpr std::size_t kCountSize = offsetof(CS_VARCHAR, str);

// Character and binary values take their bytes as they are; too many are cut.
CS_RETCODE store_bytes(std::string_view bytes, const Datatype& type, std::span<char> room,
                       CS_INT& length) {
  const std::span<char> target = is_varying(type) ? room.subspan(kCountSize) : room;
  const std::size_t kept = std::min(bytes.size(), target.size());
  bytes.copy(target.data(), kept);
  length = static_cast<CS_INT>(kept);
  if (is_varying(type)) {
    const auto count = static_cast<CS_SMALLINT>(kept);
    std::memcpy(room.data(), &count, sizeof count);
    length = type.size;
  }
  return kept < bytes.size() ? CS_CVT_TRUNCATED : CS_SUCCEED;
}

CS_RETCODE load_bytes(std::span<const char> value, const Datatype& type, std::string_view& bytes) {
  bytes = {value.data(), value.size()};
  if (!is_varying(type)) return CS_SUCCEED;
  CS_SMALLINT count = 0;
  if (bytes.size() != sizeof(CS_VARCHAR)) return CS_CVT_DOMAIN;
  std::memcpy(&count, bytes.data(), sizeof count);
  if (count < 0 || count > CS_MAX_CHAR) return CS_CVT_DOMAIN;
  bytes = bytes.substr(kCountSize, static_cast<std::size_t>(count));
  return CS_SUCCEED;
}

}  // namespace

Context::Context() {
  if (com_conv_init(&context_) == CS_SUCCEED && com_null_init(&context_) == CS_SUCCEED) return;
  release();
  throw std::bad_alloc();
}

Context::~Context() {
  release();
}

void Context::release() {
  com_null_free(&context_);
  com_conv_free(&context_);
}

ColumnConverter::ColumnConverter(Context& context, const Column& column,
                                 const std::string& layout_path)
    : context_(context.get()), read_as_(column.read_as), type_(column.type) {
  const auto find = [&](CS_INT from, const std::string& from_name, CS_INT to,
                        const std::string& to_name) {
    const CS_CONV_FUNC routine = com_conv_func(context_, from, to);
    if (routine == nullptr) {
      throw Fatal(layout_path + ":" + std::to_string(column.line) + ": column \"" + column.name +
                  "\": there is no conversion from " + from_name + " to " + to_name);
    }
    return routine;
  };
  from_null_ = find(CS_VOID_TYPE, "null", type_.code, type_.name);
  if (is_number(read_as_)) {
    from_integer_ = find(CS_INT_TYPE, "int", read_as_.code, read_as_.name);
    from_float_ = find(CS_FLOAT_TYPE, "float", read_as_.code, read_as_.name);
  }
  if (read_as_ != type_) {
    onward_ = find(read_as_.code, read_as_.name, type_.code, type_.name);
    intermediate_.resize(static_cast<std::size_t>(read_as_.size));
  }
  if (is_number(type_)) to_characters_ = find(type_.code, type_.name, CS_CHAR_TYPE, "char");
}

CS_RETCODE ColumnConverter::to_record(Field field, std::span<char> room, CS_INT& length) {
  std::ranges::fill(room, '\0');
  length = 0;
  if (field.null) {
    const CS_RETCODE code =
        convert(from_null_, format_of(CS_VOID_TYPE, 0), "", type_.code, room, length);
    length = kNull;
    return code;
  }
  if (onward_ == nullptr) return read(field.text, type_, room, length);

  CS_INT read_length = 0;
  const CS_RETCODE code = read(field.text, read_as_, intermediate_, read_length);
  if (code != CS_SUCCEED) return code;
  return convert(onward_, format_of(read_as_.code, read_length), intermediate_.data(), type_.code,
                 room, length);
}

CS_RETCODE ColumnConverter::read(std::string_view text, const Datatype& type, std::span<char> room,
                                 CS_INT& length) {
  length = 0;
  if (type.form == TextForm::kCharacters) return store_bytes(text, type, room, length);
  if (type.form == TextForm::kHexadecimal) {
    const CS_RETCODE code = read_hexadecimal(text, bytes_);
    if (code != CS_SUCCEED) return code;
    return store_bytes({bytes_.data(), bytes_.size()}, type, room, length);
  }
  Number number;
  const CS_RETCODE code = read_number(text, type.form, number);
  if (code != CS_SUCCEED) return code;
  const CS_CONV_FUNC routine = number.code == CS_INT_TYPE ? from_integer_ : from_float_;
  return convert(routine, format_of(number.code, 0), number.data(), type.code, room, length);
}

CS_RETCODE ColumnConverter::convert(CS_CONV_FUNC routine, const CS_DATAFMT& source_format,
                                    const void* source, CS_INT code, std::span<char> room,
                                    CS_INT& length) {
  const CS_DATAFMT format = format_of(code, static_cast<CS_INT>(room.size()));
  length = 0;
  return routine(context_, &source_format, source, &format, room.data(), &length);
}

CS_RETCODE ColumnConverter::to_text(std::span<const char> value, std::string& text) {
  text.clear();
  if (!is_number(type_)) {
    std::string_view bytes;
    const CS_RETCODE code = load_bytes(value, type_, bytes);
    if (type_.form == TextForm::kHexadecimal && code == CS_SUCCEED) {
      append_hexadecimal(bytes, text);
    } else {
      text = bytes;
    }
    return code;
  }
  std::array<char, kNumberRoom> characters;
  CS_INT length = 0;
  const CS_RETCODE code = convert(to_characters_, format_of(type_.code, type_.size), value.data(),
                                  CS_CHAR_TYPE, characters, length);
  text.assign(characters.data(), static_cast<std::size_t>(length));
  return code;
}

}  // namespace rowcopy
