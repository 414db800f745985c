// The frame of every conversion routine: its arguments, the checks that open it, and the rules by
// which formatted text is placed in its destination.
#pragma once

#include <cstring>
#include <span>
#include <string_view>
#include <type_traits>

#include "comnlib/convert.h"
#include "diag/diag.h"

#define COMNLIB_CONVERSION_PARAMETERS                                                           \
  CS_CONTEXT *context, const CS_DATAFMT *srcfmt, const CS_VOID *src, const CS_DATAFMT *destfmt, \
      CS_VOID *dest, CS_INT *destlen

// The refusing member of the family of a module, which says where it stops: kToLong and kToOther.
#define COMNLIB_REFUSING_MEMBER(routine, Source)                                          \
  CS_RETCODE routine(COMNLIB_CONVERSION_PARAMETERS) {                                     \
    comnlib::refuse_long<Source>({context, srcfmt, src, destfmt, dest, destlen}, kToLong, \
                                 kToOther);                                               \
  }

namespace comnlib {

struct Conversion {
  CS_CONTEXT* context;
  const CS_DATAFMT* srcfmt;
  const CS_VOID* src;
  const CS_DATAFMT* destfmt;
  CS_VOID* dest;
  CS_INT* destlen;
};

inline void check_pointers(const Conversion& call, Place place = Place::current()) {
  check_pointer(call.context, place);
  check_pointer(call.srcfmt, place);
  check_pointer(call.src, place);
  check_pointer(call.destfmt, place);
  check_pointer(call.dest, place);
  check_pointer(call.destlen, place);
}

constexpr bool is_character(CS_INT datatype) {
  return datatype == CS_CHAR_TYPE || datatype == CS_LONGCHAR_TYPE || datatype == CS_TEXT_TYPE ||
         datatype == CS_SENSITIVITY_TYPE || datatype == CS_BOUNDARY_TYPE;
}

constexpr bool is_binary(CS_INT datatype) {
  return datatype == CS_BINARY_TYPE || datatype == CS_LONGBINARY_TYPE || datatype == CS_IMAGE_TYPE;
}

constexpr bool is_numeric(CS_INT datatype) {
  return datatype == CS_NUMERIC_TYPE || datatype == CS_DECIMAL_TYPE;
}

constexpr bool terminates(const CS_DATAFMT& format) {
  return (format.format & CS_DFMT_NULLTERM) != 0;
}

// Values stand anywhere in a host's row buffer, so they are read and written bytewise.
template <class T>
T load(const void* from) {
  static_assert(std::is_trivially_copyable_v<T>);
  T value;
  std::memcpy(&value, from, sizeof value);
  return value;
}

template <class T>
void store(void* to, const T& value) {
  static_assert(std::is_trivially_copyable_v<T>);
  std::memcpy(to, &value, sizeof value);
}

// Parts of a CS_VARCHAR or CS_VARBINARY wherever it stands.
inline CS_SMALLINT record_length(const void* record) {
  return load<CS_SMALLINT>(record);
}
inline const CS_BYTE* record_bytes(const void* record) {
  return static_cast<const CS_BYTE*>(record) + offsetof(CS_VARBINARY, array);
}
inline CS_BYTE* record_bytes(void* record) {
  return static_cast<CS_BYTE*>(record) + offsetof(CS_VARBINARY, array);
}

// The body of a member into CS_LONG, of a family that does not convert to it: after the checks that
// all members make it stops, at one place for destination code 20 and at another for every other.
template <class Source>
[[noreturn]] void refuse_long(const Conversion& call, Place to_long, Place to_other,
                              Place place = Place::current()) {
  check_pointers(call, place);
  require(Source::serves(call.srcfmt->datatype), place);
  stop(call.destfmt->datatype == CS_LONG_TYPE ? to_long : to_other);
}

// Places the text of a number in a character destination and pads it. Text that does not fit, its
// NUL included where one is asked for, becomes "*" when there are at least two bytes of room, and
// CS_CVT_OVERFLOW is returned. The caller has checked pointers and datatypes.
CS_RETCODE place_text(std::string_view text, const Conversion& call);

// The same for a Unicode-character destination.
CS_RETCODE place_unichar(std::span<const CS_UNICHAR> text, const Conversion& call);

// Places the text of a number in a CS_VARCHAR, with its NUL where one fits in `str`; text of more
// than 256 characters becomes "*" with CS_CVT_OVERFLOW. The destination length is 258.
CS_RETCODE place_varchar(std::string_view text, const Conversion& call);

}  // namespace comnlib
