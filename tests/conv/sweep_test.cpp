// All 676 pairs of the matrix: values at the types' limits go from every source into every
// destination that it has, one by one and as columns. A number's text says what each type makes of
// it; in the end no pair with a routine is left out, but those from CS_VOID, which have one
// routine.
#include <set>
#include <sstream>

#include "comnlib/datetime.h"
#include "comnlib/money.h"
#include "comnlib/numeric.h"
#include "conversion.h"

namespace {

using namespace conversion;

constexpr CS_INT kIntegers[] = {CS_TINYINT_TYPE, CS_SMALLINT_TYPE, CS_INT_TYPE};
constexpr CS_INT kBinaries[] = {CS_BINARY_TYPE, CS_LONGBINARY_TYPE, CS_IMAGE_TYPE,
                                CS_VARBINARY_TYPE};
constexpr CS_INT kNumerics[] = {CS_NUMERIC_TYPE, CS_DECIMAL_TYPE};
constexpr CS_INT kLabels[] = {CS_SENSITIVITY_TYPE, CS_BOUNDARY_TYPE};
constexpr CS_INT kTexts[] = {CS_CHAR_TYPE, CS_LONGCHAR_TYPE, CS_TEXT_TYPE, CS_VARCHAR_TYPE,
                             CS_UNICHAR_TYPE};

bool among(const auto& types, CS_INT type) {
  return std::ranges::find(types, type) != std::end(types);
}

enum class Layout { lengths, bits, offsets, fields };

// A column of one value, some times over at odd addresses, gives what the value gives alone; every
// fourth one is null by its length or by its bit. Offsets make a text of all values and, where the
// destination has a length, lead to one; fields of fixed length follow each other without a gap.
void expect_column(Context& context, const Encoded& value, const CS_DATAFMT& to,
                   const Result& single, Layout layout) {
  constexpr CS_INT kCount = 12;  // more than a byte of bits
  const bool nulls = layout == Layout::lengths || layout == Layout::bits;
  const bool texts = layout == Layout::offsets && has_length(to.datatype);
  const auto length = static_cast<CS_INT>(value.bytes.size());
  const CS_INT from_stride = length + (nulls ? 3 : 0);
  const bool dense =
      layout == Layout::fields && !has_length(value.format.datatype) && !has_length(to.datatype);
  const CS_INT to_stride =
      dense ? comn_typelen(to.datatype, to.maxlength) : static_cast<CS_INT>(single.bytes.size());
  const auto size = static_cast<std::size_t>(texts ? single.length : to_stride);
  std::string held = "#", room, expected;
  std::array<CS_INT, kCount + 1> from_offsets{1}, to_offsets{};
  std::array<CS_INT, kCount> from_lengths, lengths{}, codes{}, expected_lengths, expected_codes;
  std::array<CS_BYTE, 2> valid{0xFF, 0xFF}, written{0x88, 0xF8};
  for (std::size_t at = 0; at < kCount; ++at) {
    const bool null = nulls && at % 4 == 3;
    if (null && layout == Layout::bits) valid[at / 8] ^= static_cast<CS_BYTE>(1 << at % 8);
    from_lengths[at] = null && layout == Layout::lengths ? -1 : length;
    from_offsets[at + 1] = from_offsets[at] + from_stride;
    held += value.bytes + std::string(nulls ? "###" : "");
    expected += null ? std::string(size, static_cast<char>(kCanary)) : single.first(size);
    expected_lengths[at] = null ? -1 : single.length;
    expected_codes[at] = null ? CS_SUCCEED : single.code;
  }
  room.assign(1 + kCount * single.bytes.size(), static_cast<char>(kCanary));
  CS_DATAFMT from = value.format;
  CsColumnSource source{&from, &held[1], from_stride, nullptr, nullptr, nullptr};
  CsColumnDest dest{&to, &room[1], to_stride, nullptr, lengths.data(), nullptr, 0};
  if (nulls) {
    from.maxlength = -9;  // not looked at
    source.lengths = from_lengths.data();
    source.valid = valid.data();
    dest.valid = written.data();
    dest.nulls = COMN_NULLS_AS_NULLS;
  } else if (layout == Layout::offsets) {
    source.values = held.data();
    source.offsets = from_offsets.data();
    if (texts) dest.offsets = to_offsets.data();
  }
  CS_INT faults = -1;
  EXPECT_EQ(CS_SUCCEED, comn_conv_column(&context, &source, &dest, kCount, codes.data(), &faults));
  EXPECT_EQ(expected, room.substr(1, expected.size()));
  EXPECT_EQ(expected_codes, codes);
  EXPECT_EQ(expected_lengths, lengths);
  EXPECT_EQ(kCount - std::ranges::count(codes, CS_SUCCEED), faults);
  EXPECT_EQ(nulls ? 0xF777 : 0xF888, written[1] << 8 | written[0]) << "later bits stay";
  if (layout != Layout::fields) return;
  room.assign(room.size(), static_cast<char>(kCanary));
  dest.lengths = nullptr;
  EXPECT_EQ(CS_SUCCEED, comn_conv_column(&context, &source, &dest, kCount, nullptr, &faults));
  EXPECT_EQ(expected, room.substr(1, expected.size())) << "without codes and lengths";
  EXPECT_EQ(kCount - std::ranges::count(codes, CS_SUCCEED), faults);
}

class Sweep {
 public:
  Result run(const Encoded& source, CS_INT to) {
    CS_DATAFMT format = numeric_format(among(kNumerics, to) ? 30 : 4, 4, to);
    format.maxlength = 60;
    tried_.insert({source.format.datatype, to});
    const Result single = convert(context_, source, format);
    as_columns(source, format, single);
    return single;
  }
  bool has(CS_INT from, CS_INT to) { return com_conv_func(&context_, from, to) != nullptr; }
  const std::set<std::pair<CS_INT, CS_INT>>& tried() const { return tried_; }

  // The text of a character, varchar or Unicode-character destination.
  static std::string text_of(const Result& result, CS_INT type) {
    if (type == CS_VARCHAR_TYPE)
      return {result.bytes.begin() + 2, result.bytes.begin() + 2 + result.as<CS_SMALLINT>()};
    std::string text = result.text();
    if (type != CS_UNICHAR_TYPE) return text;
    std::string narrow;
    for (std::size_t at = 0; at < text.size(); at += 2) narrow += text[at];
    return narrow;
  }
  static std::string binary_of(const Result& result, CS_INT type) {
    return type == CS_VARBINARY_TYPE ? text_of(result, CS_VARCHAR_TYPE) : result.text();
  }

  void numbers();
  void dates();
  void binaries();
  void texts();
  void malformed();

 private:
  void as_columns(const Encoded& source, const CS_DATAFMT& to, const Result& single) {
    for (const Layout layout : {Layout::lengths, Layout::bits, Layout::offsets})
      expect_column(context_, source, to, single, layout);
    if (!source.bytes.empty()) expect_column(context_, source, to, single, Layout::fields);
  }
  void number_to(const Encoded& source, const std::string& number, CS_INT to);
  Context context_;
  std::set<std::pair<CS_INT, CS_INT>> tried_;
};

long double value_of(const std::string& number) {
  return std::strtold(number.c_str(), nullptr);
}

// Whether a type whose conversion from that text succeeds has the number exactly.
bool holds(CS_INT type, const std::string& number) {
  const long double value = value_of(number);
  if (type == CS_REAL_TYPE) return static_cast<float>(value) == value;
  if (type == CS_FLOAT_TYPE) return static_cast<double>(value) == value;
  if (type == CS_BIT_TYPE) return value == 0 || value == 1;
  return true;
}

// Integers take the text of a whole number alone, but the whole part of any other source.
void Sweep::number_to(const Encoded& source, const std::string& number, CS_INT to) {
  const CS_INT from = source.format.datatype;
  SCOPED_TRACE(number + " from " + std::to_string(from) + " to " + std::to_string(to));
  const Result result = run(source, to);
  const bool text = among(kTexts, from);
  if (among(kTexts, to)) {
    EXPECT_EQ(CS_SUCCEED, result.code);
    EXPECT_EQ(value_of(number), value_of(text_of(result, to)));
  } else if (among(kBinaries, to)) {
    if (text) return;
    EXPECT_EQ(source.bytes, binary_of(result, to));
  } else if (to == CS_BIT_TYPE && !text) {
    EXPECT_EQ(value_of(number) != 0, result.as<CS_BIT>());
  } else {
    const bool cut = !text && among(kIntegers, to);
    const std::string literal = cut ? number.substr(0, number.find('.')) : number;
    const Result direct = run(text_as(CS_UNICHAR_TYPE, literal), to);
    EXPECT_EQ(direct.code, result.code);
    if (to == CS_REAL_TYPE) {
      EXPECT_FLOAT_EQ(direct.as<float>(), result.as<float>());
    } else if (to == CS_FLOAT_TYPE) {
      EXPECT_DOUBLE_EQ(direct.as<double>(), result.as<double>());
    } else if (direct.code == CS_SUCCEED || among(kIntegers, to)) {
      EXPECT_EQ(direct.text(), result.first(direct.text().size()));
    } else if (!text && !among(kNumerics, to)) {
      const std::uint64_t limit = number[0] == '-' ? 0x80000000 : 0xFFFFFFFF7FFFFFFF;
      EXPECT_EQ(bytes_of(limit).substr(0, result.text().size()), result.text()) << "a clamp";
    }
  }
}

void Sweep::numbers() {
  std::istringstream texts(
      "0 1 -1 5 127 255 256 -32768 -32769 32767 32768 16777216 2147483647 -2147483648 2147483648 "
      "-2147483649 0.5 -7.25 254.5 0.0001 12345.6789 214748.3647 214748.3648 -214748.3648 "
      "-214748.3649 922337203685477.5807 922337203685477.5808 -922337203685477.5808 "
      "-922337203685477.5809 123456789012 10000000000000000000000 -10000000000000000000000");
  for (std::string text; texts >> text;) {
    for (CS_INT from = 0; from < CS_BUILTIN_TYPES; ++from) {
      Encoded source = text_as(from, text);
      if (!among(kTexts, from)) {
        const bool number = has(CS_FLOAT_TYPE, from) && has(from, CS_FLOAT_TYPE);
        if (!number || among(kBinaries, from) || !holds(from, text)) continue;
        const Result made = run(text_as(CS_CHAR_TYPE, text), from);
        if (made.code != CS_SUCCEED) continue;
        const CS_INT size = comn_typelen(from, 0);
        source = {format_of(from), made.first(static_cast<std::size_t>(size))};
      }
      for (CS_INT to = 0; to < CS_BUILTIN_TYPES; ++to) {
        const bool date = to == CS_DATETIME_TYPE || to == CS_DATETIME4_TYPE;
        if (has(from, to) && !date && !among(kLabels, to)) number_to(source, text, to);
      }
    }
  }
}

// Between the sizes, from ISO text, into the default text, and as bytes.
void Sweep::dates() {
  const struct {
    CS_INT day, minute;
    const char *iso, *written;
  } rows[] = {{0, 0, "1900-01-01 00:00", "Jan  1 1900 12:00AM"},
              {45, 754, "1900-02-15 12:34", "Feb 15 1900 12:34PM"},
              {65535, 1439, "2079-06-06 23:59", "Jun  6 2079 11:59PM"},
              {-53690, 0, "1753-01-01 00:00", "Jan  1 1753 12:00AM"},
              {2958463, 1, "9999-12-31 00:01", "Dec 31 9999 12:01AM"}};
  for (const auto& [day, minute, iso, written] : rows) {
    const CS_DATETIME date{day, 18000 * minute};
    const bool fits = day >= 0 && day <= 65535;
    const CS_DATETIME4 small{static_cast<CS_USHORT>(day), static_cast<CS_USHORT>(minute)};
    std::vector<Encoded> sources{{format_of(CS_DATETIME_TYPE), bytes_of(date)}};
    for (const CS_INT type : kTexts) sources.push_back(text_as(type, iso));
    for (const CS_INT type : kBinaries) sources.push_back(text_as(type, bytes_of(date)));
    if (fits) sources.push_back({format_of(CS_DATETIME4_TYPE), bytes_of(small)});
    for (const Encoded& source : sources) {
      const CS_INT from = source.format.datatype;
      SCOPED_TRACE(std::string(iso) + " from " + std::to_string(from));
      EXPECT_EQ(bytes_of(date), run(source, CS_DATETIME_TYPE).text());
      if (among(kBinaries, from)) continue;
      const Result narrow = run(source, CS_DATETIME4_TYPE);
      EXPECT_EQ(fits ? CS_SUCCEED : CS_CVT_OVERFLOW, narrow.code);
      EXPECT_EQ(fits ? bytes_of(small) : "", narrow.text());
      if (among(kTexts, from)) continue;
      for (const CS_INT to : kTexts) EXPECT_EQ(written, text_of(run(source, to), to)) << to;
      EXPECT_EQ(source.bytes, binary_of(run(source, CS_VARBINARY_TYPE), CS_VARBINARY_TYPE));
    }
  }
}

// The stored bytes of the fixed-length types: whole, without their last byte, with surplus zeros
// and with another surplus byte.
void Sweep::binaries() {
  const std::string money("\x01\x02\x03\x04\x05\x06\x07", 7);
  for (const CS_INT from : kBinaries) {
    for (CS_INT to = CS_TINYINT_TYPE; to <= CS_DECIMAL_TYPE; ++to) {
      SCOPED_TRACE(std::to_string(from) + " to " + std::to_string(to));
      const auto size = static_cast<std::size_t>(comn_typelen(to, 0));
      std::string value = (money + std::string(40, '\0')).substr(0, size);
      if (to == CS_BIT_TYPE) value = "\x01";
      if (among(kNumerics, to)) value = bytes_of(CS_NUMERIC{2, 1, {1, 99}});
      const Result whole = run(text_as(from, value), to);
      EXPECT_EQ(CS_SUCCEED, whole.code);
      EXPECT_EQ(value, whole.text());
      const Result cut = run(text_as(from, value.substr(0, size - 1)), to);
      EXPECT_EQ(value.substr(0, size - 1) + '\0', cut.text());
      EXPECT_EQ(CS_SUCCEED, run(text_as(from, value + std::string(3, '\0')), to).code);
      const Result surplus = run(text_as(from, value + std::string("\0\x01", 2)), to);
      EXPECT_EQ(CS_CVT_OVERFLOW, surplus.code);
      EXPECT_EQ(value, surplus.text());
    }
    const std::string bytes("\x00\x9F\xFF'", 4);
    for (const CS_INT to : kTexts) {
      const std::string hex = text_of(run(text_as(from, bytes), to), to);
      EXPECT_EQ("009FFF27", hex);
      for (const CS_INT back : kBinaries) {
        EXPECT_EQ(bytes, binary_of(run(text_as(to, "0x" + hex), back), back)) << to << " " << back;
        EXPECT_EQ(bytes, binary_of(run(text_as(from, bytes), back), back));
        EXPECT_EQ("", binary_of(run(text_as(from, ""), back), back));
      }
    }
  }
}

void Sweep::texts() {
  const std::string text = "It's 'quoted', \t100%";
  for (CS_INT from = 0; from < CS_BUILTIN_TYPES; ++from) {
    if (!among(kTexts, from) && !among(kLabels, from)) continue;
    for (CS_INT to = 0; to < CS_BUILTIN_TYPES; ++to) {
      if (!has(from, to) || (!among(kTexts, to) && !among(kLabels, to))) continue;
      const Result result = run(text_as(from, text), to);
      EXPECT_EQ(CS_SUCCEED, result.code);
      EXPECT_EQ(text, text_of(result, to)) << from << " to " << to;
    }
  }
}

void Sweep::malformed() {
  for (const CS_INT from : kTexts) {
    for (CS_INT to = 0; to < CS_BUILTIN_TYPES; ++to) {
      if (!has(from, to) || among(kTexts, to) || among(kLabels, to)) continue;
      for (const char* bad :
           {"x", "1x", "--1", "1..2", "1 2", "12\x80", "\xFF\xFF", "1'", "x12", "0x1g"}) {
        const Result result = run(text_as(from, bad), to);
        EXPECT_EQ(CS_CVT_SYNTAX, result.code) << bad << " from " << from << " to " << to;
        EXPECT_EQ(0, result.length);
        if (!among(kBinaries, to)) {
          EXPECT_TRUE(result.untouched_from(0)) << bad << " from " << from << " to " << to;
        }
      }
    }
  }
}

TEST(Matrix, EveryPairConverts) {
  Sweep sweep;
  sweep.numbers();
  sweep.dates();
  sweep.binaries();
  sweep.texts();
  sweep.malformed();
  int gaps = 0;
  for (CS_INT from = 0; from < CS_BUILTIN_TYPES; ++from) {
    if (from == CS_VOID_TYPE) continue;
    for (CS_INT to = 0; to < CS_BUILTIN_TYPES; ++to) {
      EXPECT_EQ(sweep.has(from, to), sweep.tried().contains({from, to})) << from << " to " << to;
      gaps += sweep.has(from, to) ? 0 : 1;
    }
  }
  EXPECT_EQ(238, gaps);
}

}  // namespace
