// All 676 pairs of the matrix: values at the types' limits go from every source into every
// destination that it has, one by one and as columns. In the end no pair with a routine is left
// out, but those from CS_VOID, which have one routine.
#include <map>
#include <set>

#include "comnlib/money.h"
#include "comnlib/numeric.h"
#include "conversion.h"

// What the linker hands over here, see the build file.
extern "C" {
void* __real_malloc(std::size_t size);
void* real_new(std::size_t size) asm("__real_" OPERATOR_NEW);
}

namespace {

std::size_t plain_allocations = 0;

// Those through the host's allocator and those past it.
std::size_t all_allocations() {
  return hosts::allocations() + plain_allocations;
}

using namespace conversion;

using Types = std::vector<CS_INT>;

const std::map<std::string, Types> kFamilies = {
    {"texts", {CS_CHAR_TYPE, CS_LONGCHAR_TYPE, CS_TEXT_TYPE, CS_VARCHAR_TYPE, CS_UNICHAR_TYPE}},
    {"binaries", {CS_BINARY_TYPE, CS_LONGBINARY_TYPE, CS_IMAGE_TYPE, CS_VARBINARY_TYPE}},
    {"labels", {CS_SENSITIVITY_TYPE, CS_BOUNDARY_TYPE}},
    {"values",
     {CS_TINYINT_TYPE, CS_SMALLINT_TYPE, CS_INT_TYPE, CS_REAL_TYPE, CS_FLOAT_TYPE, CS_BIT_TYPE,
      CS_DATETIME_TYPE, CS_DATETIME4_TYPE, CS_MONEY_TYPE, CS_MONEY4_TYPE, CS_NUMERIC_TYPE,
      CS_DECIMAL_TYPE, CS_LONG_TYPE}}};
const Types& kTexts = kFamilies.at("texts");

bool among(const Types& types, CS_INT type) {
  return std::ranges::find(types, type) != types.end();
}

// The types of a family, or the one of that name.
Types types_of(const std::string& name) {
  return kFamilies.contains(name) ? kFamilies.at(name) : Types{type_of(name)};
}

bool is_numeric(CS_INT type) {
  return type == CS_NUMERIC_TYPE || type == CS_DECIMAL_TYPE;
}
bool is_integer(CS_INT type) {
  return type >= CS_TINYINT_TYPE && type <= CS_INT_TYPE;
}
bool has_text(CS_INT type) {
  return has_length(type) || has_record(type);
}
bool is_whole(const std::string& number) {
  return number.find('.') == std::string::npos;
}

// The bytes of a value, without the length of a record; UTF-16 as single bytes.
std::string content_of(const Result& result, CS_INT type) {
  std::string text = result.text();
  if (has_record(type) && !text.empty())
    return text.substr(2, static_cast<std::size_t>(result.as<CS_SMALLINT>()));
  std::string narrow;
  for (std::size_t at = 0; at < text.size(); at += type == CS_UNICHAR_TYPE ? 2 : 1)
    narrow += text[at];
  return narrow;
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
  // One by one and as a column; `use` gets the single result.
  void run(const Encoded& source, CS_INT to, auto use) {
    const CS_INT from = source.format.datatype;
    if (com_conv_func(&context_, from, to) == nullptr) return;
    SCOPED_TRACE(testing::Message() << from << " to " << to);
    CS_DATAFMT format = numeric_format(is_numeric(to) ? 30 : 4, 4, to);
    format.maxlength = 60;
    tried_.insert({from, to});
    const Result single = convert(context_, source, format);
    for (const Layout layout : {Layout::lengths, Layout::bits, Layout::offsets, Layout::fields})
      if (layout != Layout::fields || !source.bytes.empty())
        expect_column(context_, source, format, single, layout);
    use(single);
  }

  // A line "source | value | target | result | code" for all types of both families.
  void families(const table::Fields& line) {
    for (const CS_INT from : types_of(line[0])) {
      for (const CS_INT to : types_of(line[2])) {
        std::string expected = has_text(to) ? table::text_of(line[3]) : bytes_as(to, line[3]);
        if (is_numeric(to) && !expected.empty()) expected.resize(sizeof(CS_NUMERIC));
        run(source_of(from, line[1]), to, [&](const Result& result) {
          EXPECT_EQ(line[4], comn_result_name(result.code));
          EXPECT_EQ(expected, content_of(result, to));
          EXPECT_TRUE(has_record(to) ||
                      result.untouched_from(static_cast<std::size_t>(result.length)));
        });
      }
    }
  }

  void numbers(const table::Fields& line);
  void expect_all_tried() const;

 private:
  Context context_;
  std::set<std::pair<CS_INT, CS_INT>> tried_;
};

using Values = std::map<CS_INT, std::string>;

// A number as each type has it that holds it exactly.
std::vector<Encoded> sources_of(const std::string& number, const Values& values) {
  const float single = std::strtof(number.c_str(), nullptr);
  const double wide = std::strtod(number.c_str(), nullptr);
  const long double exact = std::strtold(number.c_str(), nullptr);
  std::vector<Encoded> sources;
  for (const CS_INT type : kTexts) sources.push_back(text_as(type, number));
  if (single == exact) sources.push_back(value_of(CS_REAL_TYPE, single));
  if (wide == exact) sources.push_back(value_of(CS_FLOAT_TYPE, wide));
  for (const auto& [type, value] : values) {
    const bool holds =
        type == CS_BIT_TYPE ? exact == 0 || exact == 1 : !is_integer(type) || is_whole(number);
    if (holds && !value.ends_with('!')) sources.push_back(source_of(type, value));
  }
  return sources;
}

// The columns of a line are the number, and what each type makes of it.
void Sweep::numbers(const table::Fields& line) {
  constexpr CS_INT kColumns[] = {CS_BIT_TYPE,   CS_TINYINT_TYPE, CS_SMALLINT_TYPE, CS_INT_TYPE,
                                 CS_MONEY_TYPE, CS_MONEY4_TYPE,  CS_NUMERIC_TYPE};
  const std::string& number = line[0];
  Values values;
  for (std::size_t at = 0; at < std::size(kColumns); ++at) values[kColumns[at]] = line[at + 1];
  values[CS_DECIMAL_TYPE] = values[CS_NUMERIC_TYPE];
  for (const Encoded& source : sources_of(number, values)) {
    const bool text = among(kTexts, source.format.datatype);
    for (const CS_INT to : types_of("binaries"))
      run(source, to, [&](const Result& result) {
        EXPECT_EQ(text ? "" : source.bytes, text ? "" : content_of(result, to));
      });
    for (const CS_INT to : kTexts)
      run(source, to, [&](const Result& result) {
        EXPECT_EQ(CS_SUCCEED, result.code);
        EXPECT_EQ(std::stod(number), std::stod(content_of(result, to)));
      });
    run(source, CS_REAL_TYPE, [&](const Result& result) {
      EXPECT_EQ(CS_SUCCEED, result.code);
      EXPECT_FLOAT_EQ(std::stof(number), result.as<float>());
    });
    run(source, CS_FLOAT_TYPE, [&](const Result& result) {
      EXPECT_EQ(CS_SUCCEED, result.code);
      EXPECT_DOUBLE_EQ(std::stod(number), result.as<double>());
    });
    for (const auto& entry : values)
      run(source, entry.first, [&](const Result& result) {
        const auto& [to, value] = entry;
        if (text && to == CS_BIT_TYPE) return;  // not every number is a bit's literal
        const bool literal = !text || is_whole(number) || !is_integer(to);
        const bool over = value.ends_with('!');
        EXPECT_EQ(!literal ? CS_CVT_SYNTAX : over ? CS_CVT_OVERFLOW : CS_SUCCEED, result.code);
        if (text && (!literal || (over && !is_integer(to)))) return;
        const std::string bytes = bytes_as(to, value);
        EXPECT_EQ(bytes, result.first(bytes.size()));
      });
  }
}

void Sweep::expect_all_tried() const {
  int gaps = 0;
  for (CS_INT from = 0; from < CS_BUILTIN_TYPES; ++from) {
    if (from == CS_VOID_TYPE) continue;
    for (CS_INT to = 0; to < CS_BUILTIN_TYPES; ++to) {
      const bool has = com_conv_func(&context_, from, to) != nullptr;
      EXPECT_EQ(has, tried_.contains({from, to})) << from << " to " << to;
      gaps += has ? 0 : 1;
    }
  }
  EXPECT_EQ(238, gaps);
}

TEST(Matrix, EveryPairConverts) {
  conversion::allocations = all_allocations;
  Sweep sweep;
  table::for_each_line("conv/data/families.txt", [&](const auto& line) { sweep.families(line); });
  table::for_each_line("conv/data/numbers.txt", [&](const auto& line) { sweep.numbers(line); });
  sweep.expect_all_tried();
}

TEST(Arithmetic, AsksForNoMemory) {
  CS_NUMERIC a{77, 10, {}}, b{40, 3, {}}, number{};
  a.array[30] = b.array[16] = 7;
  const CS_MONEY money{1, 5};
  CS_MONEY sum{};
  const std::size_t before = all_allocations();
  for (const auto operation : {comn_numadd, comn_numsub, comn_nummul, comn_numdivide})
    static_cast<void>(operation(&a, &b, &number));
  for (const auto operation : {comn_mnyadd, comn_mnysub, comn_mnymul, comn_mnydivide, comn_mnyxdiv})
    static_cast<void>(operation(&money, &money, &sum));
  EXPECT_EQ(before, all_allocations());
}

}  // namespace

extern "C" {
void* __wrap_malloc(std::size_t size) {
  return ++plain_allocations, __real_malloc(size);
}
void* wrapped_new(std::size_t size) asm("__wrap_" OPERATOR_NEW);
void* wrapped_new(std::size_t size) {
  return ++plain_allocations, real_new(size);
}
}
