// One conversion through a context's matrix, into a guarded buffer.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <string>
#include <vector>

#include "comnlib/column.h"
#include "comnlib/convert.h"
#include "comnlib/numeric.h"
#include "support/hosts.h"
#include "support/table.h"

namespace conversion {

constexpr CS_BYTE kCanary = 0xA5;
constexpr std::size_t kGuard = 300;  // bytes after maxlength; a varchar fits too

using Context = hosts::ConversionContext;

constexpr bool has_length(CS_INT type) {
  return type <= CS_IMAGE_TYPE || type == CS_SENSITIVITY_TYPE || type == CS_BOUNDARY_TYPE ||
         type == CS_UNICHAR_TYPE;
}
constexpr bool has_record(CS_INT type) {
  return type == CS_VARCHAR_TYPE || type == CS_VARBINARY_TYPE;
}
constexpr bool is_binary(CS_INT type) {
  return type == CS_BINARY_TYPE || type == CS_LONGBINARY_TYPE || type == CS_IMAGE_TYPE ||
         type == CS_VARBINARY_TYPE;
}
constexpr bool is_text(CS_INT type) {
  return (has_length(type) || has_record(type)) && !is_binary(type);
}

inline CS_DATAFMT format_of(CS_INT datatype, CS_INT maxlength = 0, CS_INT format = 0) {
  CS_DATAFMT made{};
  made.datatype = datatype;
  made.maxlength = maxlength;
  made.format = format;
  return made;
}

inline CS_DATAFMT numeric_format(CS_INT precision, CS_INT scale, CS_INT type = CS_NUMERIC_TYPE) {
  CS_DATAFMT made = format_of(type);
  made.precision = precision;
  made.scale = scale;
  return made;
}

std::string bytes_of(const auto& value) {
  return {reinterpret_cast<const char*>(&value), sizeof value};
}

// A source: its format, and its bytes.
struct Encoded {
  CS_DATAFMT format;
  std::string bytes;
};

// A text as the source `type` holds it; a varchar may be told another length.
inline Encoded text_as(CS_INT type, const std::string& text, CS_SMALLINT record_length = 0) {
  if (has_record(type)) {
    CS_VARCHAR record{record_length == 0 ? static_cast<CS_SMALLINT>(text.size()) : record_length,
                      {}};
    text.copy(record.str, sizeof record.str);
    return {format_of(type), bytes_of(record)};
  }
  std::string bytes = text;
  if (type == CS_UNICHAR_TYPE) {
    bytes.clear();
    for (const char c : text) bytes += {c, '\0'};
  }
  return {format_of(type, static_cast<CS_INT>(bytes.size())), bytes};
}

inline Encoded utf16_of(const std::u16string& text) {
  std::string bytes(reinterpret_cast<const char*>(text.data()), 2 * text.size());
  return {format_of(CS_UNICHAR_TYPE, static_cast<CS_INT>(bytes.size())), bytes};
}

struct Result {
  CS_RETCODE code = 0;
  CS_INT length = 99;          // a length that no routine gives
  std::vector<CS_BYTE> bytes;  // maxlength and the guard

  std::string text() const { return first(static_cast<std::size_t>(std::max(length, 0))); }
  std::string first(std::size_t count) const {
    return {bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count)};
  }

  template <class T>
  T as(std::size_t at = 0) const {
    T value;
    std::memcpy(&value, bytes.data() + at, sizeof value);
    return value;
  }

  bool untouched_from(std::size_t at) const {
    return std::all_of(bytes.begin() + static_cast<std::ptrdiff_t>(at), bytes.end(),
                       [](CS_BYTE byte) { return byte == kCanary; });
  }
};

// Whether the destination may be the source: not between character sets, and not for text as bytes
// of a record.
inline bool works_in_place(const CS_DATAFMT& from, const CS_DATAFMT& to) {
  const bool one_is_unicode =
      (from.datatype == CS_UNICHAR_TYPE) != (to.datatype == CS_UNICHAR_TYPE);
  if (!is_text(from.datatype)) return true;
  if (is_text(to.datatype)) return !one_is_unicode && from.locale == to.locale;
  return to.datatype != CS_VARBINARY_TYPE;
}

// How often memory has been asked for, which no conversion does.
inline std::size_t (*allocations)() = hosts::allocations;

// Source and destination are at odd addresses, as in a host's row buffer. Where the destination may
// be the source, the outcome is the same.
inline Result convert(Context& context, const Encoded& source, const CS_DATAFMT& to) {
  const CS_INT srctype = source.format.datatype;
  const CS_INT length =
      to.datatype == CS_UNICHAR_TYPE ? to.maxlength : comn_typelen(to.datatype, to.maxlength);
  const auto room = static_cast<std::size_t>(length);
  const std::size_t size = source.bytes.size();
  std::vector<CS_BYTE> held(1 + size);  // a sanitizer sees every byte read beyond
  std::ranges::copy(source.bytes, held.begin() + 1);
  std::vector<CS_BYTE> dest(1 + room + kGuard, kCanary);
  const CS_DATAFMT to_before = to;

  Result result;
  const CS_CONV_FUNC routine = com_conv_func(&context, srctype, to.datatype);
  EXPECT_NE(nullptr, routine) << srctype << " to " << to.datatype;
  if (routine == nullptr) return result;
  const std::size_t allocated = allocations();
  result.code =
      routine(&context, &source.format, held.data() + 1, &to, dest.data() + 1, &result.length);
  EXPECT_EQ(allocated, allocations());
  EXPECT_EQ(0, std::memcmp(&to, &to_before, sizeof to)) << "the format is only read";
  result.bytes.assign(dest.begin() + 1, dest.end());
  EXPECT_TRUE(result.untouched_from(room)) << srctype << " to " << to.datatype;
  if (!works_in_place(source.format, to)) return result;
  held.resize(1 + std::max(size, room) + kGuard);
  Result in_place;
  in_place.code =
      routine(&context, &source.format, held.data() + 1, &to, held.data() + 1, &in_place.length);
  in_place.bytes.assign(held.begin() + 1, held.end());
  EXPECT_EQ(std::pair(result.code, result.length), std::pair(in_place.code, in_place.length));
  if (result.code != CS_SUCCEED) return result;
  auto written = static_cast<std::size_t>(result.length);
  if (has_record(to.datatype) && written > 0)
    written = 2 + static_cast<std::size_t>(result.as<CS_SMALLINT>());
  EXPECT_EQ(result.first(written), in_place.first(written))
      << srctype << " to " << to.datatype << " in place";
  return result;
}

Result convert(Context& context, CS_INT srctype, const auto& value, const CS_DATAFMT& to) {
  return convert(context, {format_of(srctype), bytes_of(value)}, to);
}

// One conversion and all that it leaves in its room: the length is that of the bytes where none is
// given.
struct Row {
  Encoded source;
  CS_DATAFMT to;
  CS_RETCODE code;
  std::string bytes;
  CS_INT length = -1;
};

inline Encoded value_of(CS_INT type, const auto& value) {
  return {format_of(type), bytes_of(value)};
}

inline void check(Context& context, const Row& row) {
  SCOPED_TRACE(testing::Message() << '"' << row.source.bytes << "\" from "
                                  << row.source.format.datatype << " to " << row.to.datatype
                                  << " of " << row.to.maxlength << ", format " << row.to.format);
  const Result result = convert(context, row.source, row.to);
  EXPECT_EQ(row.code, result.code);
  EXPECT_EQ(row.bytes, result.first(row.bytes.size()));
  EXPECT_EQ(row.length < 0 ? static_cast<CS_INT>(row.bytes.size()) : row.length, result.length);
  EXPECT_TRUE(result.untouched_from(row.bytes.size()));
}

// What a call that must abort writes to standard error; "" when it returns.
inline std::string stop_text(auto call) {
  testing::internal::CaptureStderr();
  const pid_t child = fork();
  if (child == 0) {
    call();
    _exit(0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  const std::string text = testing::internal::GetCapturedStderr();
  return WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT ? text : "";
}

// --- Tables of conversions -----------------------------------------------------------------------

// A datatype by its name without "CS_" and "_TYPE", in small letters.
inline CS_INT type_of(const std::string& name) {
  constexpr std::array<std::string_view, CS_BUILTIN_TYPES> kNames = {
      "char",        "binary",   "longchar", "longbinary", "text",    "image",     "tinyint",
      "smallint",    "int",      "real",     "float",      "bit",     "datetime",  "datetime4",
      "money",       "money4",   "numeric",  "decimal",    "varchar", "varbinary", "long",
      "sensitivity", "boundary", "void",     "ushort",     "unichar"};
  const auto at = std::ranges::find(kNames, name) - kNames.begin();
  EXPECT_GT(CS_BUILTIN_TYPES, at) << name;
  return static_cast<CS_INT>(at);
}

// The bytes of a value: of a number by its text, of money with four decimals, of a numeric by
// "precision,scale,integer", of a date by "day,time", of all else by its characters or bytes.
inline std::string bytes_as(CS_INT type, const std::string& text) {
  if (table::text_of(text).empty()) return "";
  std::string units = text;
  std::erase(units, '.');
  const table::Fields parts = table::split(text, ',');
  const auto part = [&](std::size_t at) { return table::number(parts[at]); };
  switch (type) {
    case CS_REAL_TYPE:
      return bytes_of(std::strtof(text.c_str(), nullptr));
    case CS_FLOAT_TYPE:
      return bytes_of(std::strtod(text.c_str(), nullptr));
    case CS_TINYINT_TYPE:
    case CS_SMALLINT_TYPE:
    case CS_INT_TYPE:
    case CS_LONG_TYPE:
    case CS_BIT_TYPE:
    case CS_MONEY4_TYPE: {
      const auto size = type == CS_LONG_TYPE ? 8 : comn_typelen(type, 0);
      return bytes_of(std::stoll(units)).substr(0, static_cast<std::size_t>(size));
    }
    case CS_MONEY_TYPE:
      return bytes_of(std::stoll(units) >> 32).substr(0, 4) +
             bytes_of(std::stoll(units)).substr(0, 4);
    case CS_DATETIME_TYPE:
      return bytes_of(CS_DATETIME{part(0), part(1)});
    case CS_DATETIME4_TYPE:
      return bytes_of(
          CS_DATETIME4{static_cast<CS_USHORT>(part(0)), static_cast<CS_USHORT>(part(1))});
    case CS_NUMERIC_TYPE:
    case CS_DECIMAL_TYPE: {
      const bool valid = part(0) >= 1 && part(0) <= CS_MAX_PREC;
      const CS_INT length = valid ? comn_num_getlen(part(0)) : CS_INT{CS_MAX_NUMLEN};
      return std::string{static_cast<char>(part(0)), static_cast<char>(part(1))} +
             table::magnitude_of(parts[2], static_cast<std::size_t>(length));
    }
    default:
      return text_as(type == CS_UNICHAR_TYPE ? type : CS_CHAR_TYPE, table::text_of(text)).bytes;
  }
}

inline Encoded source_of(CS_INT type, const std::string& value) {
  if (has_length(type) || has_record(type)) return text_as(type, table::text_of(value));
  std::string bytes = bytes_as(type, value);
  if (type == CS_NUMERIC_TYPE || type == CS_DECIMAL_TYPE) bytes.resize(sizeof(CS_NUMERIC));
  return {format_of(type), bytes};
}

// A result code by its name.
inline CS_RETCODE code_of(const std::string& name) {
  CS_RETCODE code = CS_SUCCEED;
  while (code > CS_CVT_SUBSTITUTED && name != comn_result_name(code)) --code;
  EXPECT_EQ(name, comn_result_name(code));
  return code;
}

// The bits of a format by their names.
inline CS_INT format_bits(const std::string& names) {
  CS_INT bits = 0;
  for (const auto& [name, bit] : {std::pair{"term", CS_DFMT_NULLTERM},
                                  {"nulls", CS_DFMT_PADNULL},
                                  {"blanks", CS_DFMT_PADBLANK},
                                  {"quotes", CS_DFMT_ESCQUOTE}})
    if (names.find(name) != std::string::npos) bits |= bit;
  return bits;
}

// A line "source | value | target | size | format | result | length | code". The size is a room,
// maybe with the decimals of money, or precision and scale; "source" is the source's own. The
// length is that of the result where none is given; a numeric of a record's length is zero after
// its value.
inline Row row_of(const table::Fields& line) {
  const CS_INT source = type_of(line[0]), target = type_of(line[2]);
  const table::Fields sizes = table::split(line[3], ',');
  const auto size = [&](std::size_t at) {
    return sizes[at] == "source" ? CS_INT{CS_USE_SRCVALUE} : table::number(sizes[at]);
  };
  const bool numeric = target == CS_NUMERIC_TYPE || target == CS_DECIMAL_TYPE;
  CS_DATAFMT to = numeric ? numeric_format(size(0), size(1), target) : format_of(target, size(0));
  if (!numeric) to.precision = size(1);
  to.format = format_bits(line[4]);
  Row row{source_of(source, line[1]), to, code_of(line[7]), bytes_as(target, line[5])};
  if (line[6].empty()) return row;
  row.length = table::number(line[6]);
  if (numeric && !row.bytes.empty()) row.bytes.resize(static_cast<std::size_t>(row.length));
  return row;
}

}  // namespace conversion
