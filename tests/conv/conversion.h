// One conversion through a context's matrix, into a guarded buffer.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "comnlib/column.h"
#include "comnlib/convert.h"

namespace conversion {

constexpr CS_BYTE kCanary = 0xA5;
constexpr std::size_t kGuard = 300;  // bytes after maxlength; a varchar fits too

// A context with default tables.
struct Context : CS_CONTEXT {
  Context() : CS_CONTEXT{} {
    EXPECT_EQ(CS_SUCCEED, com_conv_init(this));
    EXPECT_EQ(CS_SUCCEED, com_null_init(this));
  }
  ~Context() {
    com_null_free(this);
    com_conv_free(this);
  }
  Context(const Context&) = delete;
  Context& operator=(const Context&) = delete;
};

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
  if (type == CS_VARCHAR_TYPE || type == CS_VARBINARY_TYPE) {
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
  CS_INT length = 99;          // no length of a routine
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

// Source and destination are at odd addresses, as in a host's row buffer.
inline Result convert(Context& context, const Encoded& source, const CS_DATAFMT& to) {
  const CS_INT srctype = source.format.datatype;
  const CS_INT length =
      to.datatype == CS_UNICHAR_TYPE ? to.maxlength : comn_typelen(to.datatype, to.maxlength);
  const auto room = static_cast<std::size_t>(length);
  std::vector<CS_BYTE> held(1 + source.bytes.size());
  std::ranges::copy(source.bytes, held.begin() + 1);
  std::vector<CS_BYTE> dest(1 + room + kGuard, kCanary);
  const CS_DATAFMT to_before = to;

  Result result;
  const CS_CONV_FUNC routine = com_conv_func(&context, srctype, to.datatype);
  EXPECT_NE(nullptr, routine) << srctype << " to " << to.datatype;
  if (routine == nullptr) return result;
  result.code =
      routine(&context, &source.format, held.data() + 1, &to, dest.data() + 1, &result.length);
  EXPECT_EQ(0, std::memcmp(&to, &to_before, sizeof to)) << "the format is only read";
  result.bytes.assign(dest.begin() + 1, dest.end());
  EXPECT_TRUE(result.untouched_from(room)) << srctype << " to " << to.datatype;
  return result;
}

constexpr bool has_length(CS_INT type) {
  return type <= CS_IMAGE_TYPE || type == CS_SENSITIVITY_TYPE || type == CS_BOUNDARY_TYPE ||
         type == CS_UNICHAR_TYPE;
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

}  // namespace conversion
