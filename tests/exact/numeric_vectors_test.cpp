// Exact numerics against vectors from arbitrary-precision integers, which
// tools/mkvectors_numeric.py writes. Records are built from their text byte by byte, with guard
// bytes after the value that no routine may touch.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <map>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "comnlib/convert.h"
#include "comnlib/numeric.h"
#include "exact/numemath.h"
#include "exact/numeric.h"

using namespace comnlib;

namespace {

constexpr CS_BYTE kGuard = 0xEE;

using Fields = std::vector<std::string>;

Fields split(std::string_view text, char at) {
  Fields fields;
  for (;;) {
    const std::size_t end = text.find(at);
    fields.emplace_back(text.substr(0, end));
    if (end == std::string_view::npos) return fields;
    text.remove_prefix(end + 1);
  }
}

int number(std::string_view text) {
  int value = 0;
  std::from_chars(text.data(), text.data() + text.size(), value);
  return value;
}

// Calls `check` for each line of a file; a failure names the line.
template <class Check>
void for_each_line(const std::string& name, Check check) {
  std::ifstream file(std::string(COMNLIB_VECTORS) + "/numeric_" + name + ".tsv");
  ASSERT_TRUE(file) << name;
  std::string line;
  for (int at = 1; std::getline(file, line); ++at) {
    SCOPED_TRACE(name + ":" + std::to_string(at) + ": " + line);
    check(split(line, '\t'));
  }
}

// Sign byte and big-endian magnitude of a decimal integer, in all of `bytes`.
void put(std::string_view decimal, CS_BYTE* bytes, std::size_t length) {
  std::fill_n(bytes, length, CS_BYTE{0});
  if (decimal.starts_with('-')) {
    bytes[0] = 1;
    decimal.remove_prefix(1);
  }
  for (const char digit : decimal) {
    unsigned carry = static_cast<unsigned>(digit - '0');
    for (std::size_t at = length; at-- > 1;) {
      carry += bytes[at] * 10u;
      bytes[at] = static_cast<CS_BYTE>(carry);
      carry >>= 8;
    }
    ASSERT_EQ(carry, 0u) << decimal;
  }
}

std::size_t length_of(int precision) {
  return precision <= CS_MAX_PREC ? Com__Nume_Prec_To_Len[static_cast<std::size_t>(precision)]
                                  : std::size_t{CS_MAX_NUMLEN};
}

CS_NUMERIC untouched() {
  CS_NUMERIC numeric;
  std::memset(&numeric, kGuard, sizeof numeric);
  return numeric;
}

// "precision,scale" or "precision,scale,value"; without a value the array holds guard bytes.
CS_NUMERIC numeric(std::string_view text) {
  const Fields fields = split(text, ',');
  CS_NUMERIC record = untouched();
  record.precision = static_cast<CS_BYTE>(number(fields.at(0)));
  record.scale = static_cast<CS_BYTE>(number(fields.at(1)));
  if (fields.size() > 2) put(fields[2], record.array, length_of(record.precision));
  return record;
}

// A result "code[,precision,scale[,value]]".
struct Expected {
  explicit Expected(std::string_view text) : code(number(text)), record(untouched()) {
    const std::size_t comma = text.find(',');
    if (comma != std::string_view::npos) record = numeric(text.substr(comma + 1));
  }
  int code;
  CS_NUMERIC record;
};

std::string bytes(const void* from, std::size_t count) {
  return {static_cast<const char*>(from), count};
}

std::string bytes(const CS_NUMERIC& record) {
  return bytes(&record, sizeof record);
}

// The bytes of a value at a length.
std::string bytes_of(std::string_view decimal, CS_INT length) {
  std::string bytes(static_cast<std::size_t>(length), '\0');
  put(decimal, reinterpret_cast<CS_BYTE*>(bytes.data()), bytes.size());
  return bytes;
}

// A working record "length,precision,scale,value" of exactly its length, so that a sanitizer sees
// every byte outside.
class Record {
 public:
  explicit Record(std::string_view text) {
    const Fields fields = split(text, ',');
    bytes_.resize(static_cast<std::size_t>(number(fields.at(0))));
    put(fields.at(3), bytes_.data(), bytes_.size());
    record = {number(fields[0]), static_cast<CS_BYTE>(number(fields[1])),
              static_cast<CS_BYTE>(number(fields[2])), bytes_.data()};
  }
  Record(int precision, const std::string& size)
      : Record(std::to_string(length_of(precision)) + "," + size + ",0") {}
  Record(const Record&) = delete;
  Record& operator=(const Record&) = delete;

  std::string value() const { return bytes(record.value, static_cast<std::size_t>(record.len)); }

  constant record;

 private:
  std::vector<CS_BYTE> bytes_;
};

using Operation = CS_RETCODE (*)(const CS_NUMERIC*, const CS_NUMERIC*, CS_NUMERIC*);

void check_operation(Operation operation, const Fields& row, std::size_t column) {
  const CS_NUMERIC a = numeric(row.at(0));
  const CS_NUMERIC b = numeric(row.at(1));
  const Expected expected(row.at(column));
  CS_NUMERIC op1 = a;
  CS_NUMERIC op2 = b;
  CS_NUMERIC result = untouched();
  EXPECT_EQ(operation(&op1, &op2, &result), expected.code) << "column " << column;
  EXPECT_EQ(bytes(result), bytes(expected.record)) << "column " << column;
  EXPECT_EQ(bytes(op1) + bytes(op2), bytes(a) + bytes(b)) << "an operand changed";

  // The result over either operand; bytes that are not written are the operand's.
  for (CS_NUMERIC* const shared : {&op1, &op2}) {
    op1 = a;
    op2 = b;
    EXPECT_EQ(operation(&op1, &op2, shared), expected.code);
    if (expected.record.array[0] == kGuard) continue;
    const std::size_t size = 2 + length_of(expected.record.precision);
    EXPECT_EQ(bytes(shared, size), bytes(&expected.record, size)) << "column " << column;
  }
}

template <CS_INT kOperation>
CS_RETCODE either(const CS_NUMERIC* a, const CS_NUMERIC* b, CS_NUMERIC* result) {
  return comn_num_addorsub(a, b, result, kOperation);
}

TEST(NumericVectors, Operations) {
  for_each_line("operations", [](const Fields& row) {
    check_operation(comn_numadd, row, 2);
    check_operation(comn_numsub, row, 3);
    check_operation(either<COMN_NUM_ADD>, row, 2);
    check_operation(either<COMN_NUM_SUBTRACT>, row, 3);
    check_operation(comn_nummul, row, 4);
    check_operation(comn_numdivide, row, 5);
    const CS_NUMERIC a = numeric(row.at(0));
    const CS_NUMERIC b = numeric(row.at(1));
    EXPECT_EQ(comn_numcmp(&a, &b), number(row.at(6)));
    EXPECT_EQ(comn_numcmp(&b, &a), -number(row.at(6)));
  });
}

struct Call {
  constant *a, *b;
  CS_INT argument;
  constant *target, *rest;
};

CS_INT divide_by_10(const Call& c) {
  const CS_INT digit = com__exctnume_divby10(c.target);
  put(std::to_string(c.target->len), c.rest->value, static_cast<std::size_t>(c.rest->len));
  return digit;
}

#define KERNEL(name, ...)                                                  \
  {                                                                        \
#name, [](const Call& c) { return com__exctnume_##name(__VA_ARGS__); } \
  }
const std::map<std::string, CS_INT (*)(const Call&)> kKernel = {
    KERNEL(intadd, c.a, c.b, c.target),
    KERNEL(intsub, c.a, c.b, c.target),
    KERNEL(intmul, c.a, c.b, c.target),
    KERNEL(intdiv, c.a, c.b, c.target, c.rest),
    KERNEL(addorsub, c.a, c.b, c.target, c.argument),
    KERNEL(mul, c.a, c.b, c.target),
    KERNEL(div, c.a, c.b, c.target, nullptr),
    {"divrem", [](const Call& c) { return com__exctnume_div(c.a, c.b, c.target, c.rest); }},
    KERNEL(scale, c.a, c.target, c.argument),
    {"scale_in_place",
     [](const Call& c) { return com__exctnume_scale(c.target, nullptr, c.argument); }},
    KERNEL(round, c.a, c.argument, c.target),
    KERNEL(ceilingfloor, c.a, c.target, c.argument),
    KERNEL(inc, c.target),
    KERNEL(needsbyte, c.target),
    KERNEL(mulby10_add, c.target, c.argument),
    {"divby10", divide_by_10},
    KERNEL(copy, c.a, c.target),
    KERNEL(checkprecision, c.a),
    KERNEL(intcmp, c.a, c.argument),
    KERNEL(cmp, c.a, c.b, c.argument),
};

TEST(NumericVectors, Kernel) {
  for_each_line("kernel", [](const Fields& row) {
    Record a(row.at(1).empty() ? "2,1,0,0" : row[1]);
    Record b(row.at(2).empty() ? "2,1,0,0" : row[2]);
    Record result(row.at(3));
    Record rest("133,77,0,0");
    const std::string operands = a.value() + b.value();
    const std::string before = result.value();
    const CS_INT status = kKernel.at(row.at(0))(
        {&a.record, &b.record, number(row.at(4)), &result.record, &rest.record});
    EXPECT_EQ(status, number(row.at(5)));
    EXPECT_EQ(result.value(), row.at(6).empty() ? before : bytes_of(row[6], result.record.len));
    EXPECT_TRUE(row.at(7).empty() || rest.value() == bytes_of(row[7], rest.record.len));
    EXPECT_EQ(a.value() + b.value(), operands) << "an operand changed";
  });
}

TEST(NumericVectors, Rescalings) {
  for_each_line("rescalings", [](const Fields& row) {
    CS_CONTEXT context{};
    CS_DATAFMT from{};
    CS_DATAFMT to{};
    from.datatype = CS_NUMERIC_TYPE;
    to.datatype = CS_DECIMAL_TYPE;
    const Fields size = split(row.at(1), ',');
    to.precision = number(size.at(0));
    to.scale = number(size.at(1));
    const CS_NUMERIC source = numeric(row.at(0));
    const Expected expected(row.at(2));
    CS_NUMERIC result = untouched();
    CS_INT length = -1;
    EXPECT_EQ(comn_numtonum(&context, &from, &source, &to, &result, &length), expected.code);
    EXPECT_EQ(bytes(result), bytes(expected.record));
    const bool written = expected.record.precision != kGuard;
    EXPECT_EQ(length, written ? static_cast<CS_INT>(length_of(result.precision)) + 2 : 0);
  });
}

TEST(NumericVectors, Texts) {
  for_each_line("texts", [](const Fields& row) {
    std::string text = row.at(0);
    for (std::size_t at; (at = text.find("\\t")) != text.npos;) text.replace(at, 2, "\t");
    const int precision = number(row.at(1));
    Record record(precision, row[1] + "," + row.at(2));
    const CS_INT status = com__subchartoexctnume(text.data(), static_cast<CS_INT>(text.size()),
                                                 &record.record, number(row.at(3)));
    EXPECT_EQ(status, number(row.at(4)));
    EXPECT_EQ(record.value(), bytes_of(row.at(5), record.record.len));
  });
}

// Digits at the edges of what limbs and groups of digits hold, and any others; up to a record that
// no host has.
TEST(NumericVectors, PrintsWhatWasPut) {
  std::mt19937 random(9);
  for (std::size_t count = 1; count <= 160; ++count) {
    std::string any(count, '1'), sparse(count, '0');
    for (char& digit : any) digit = static_cast<char>('1' + random() % 9);
    sparse.front() = sparse[random() % count] = '1';
    for (const std::string& text :
         {std::string(count, '9'), "1" + std::string(count - 1, '0'), any, sparse}) {
      const Record record((count <= CS_MAX_PREC ? "33,77,0," : "133,77,0,") + text);
      std::string printed(200, '#');
      CS_INT length = 0;
      EXPECT_EQ(com__subexctnumetochar(&record.record, printed.data(), 200, &length), 0);
      EXPECT_EQ(printed.substr(0, static_cast<std::size_t>(length)), text);
    }
  }
}

std::uint64_t bits_of(const std::string& text) {
  std::uint64_t bits = 0;
  std::from_chars(text.data(), text.data() + text.size(), bits, 16);
  return bits;
}

TEST(NumericVectors, Doubles) {
  for_each_line("doubles", [](const Fields& row) {
    Record record(number(row.at(1)), row[1]);
    const auto value = std::bit_cast<CS_FLOAT>(bits_of(row.at(0)));
    EXPECT_EQ(com__doubletoexctnume(value, &record.record), number(row.at(2)));
    EXPECT_EQ(record.value(), bytes_of(row.at(3), record.record.len));
  });
  for_each_line("to_doubles", [](const Fields& row) {
    const CS_NUMERIC source = numeric(row.at(0));
    const constant record = record_of(source);
    CS_FLOAT value = 0;
    EXPECT_EQ(com__subexctnumetoflt8(&record, &value), 0);
    EXPECT_EQ(std::bit_cast<std::uint64_t>(value), bits_of(row.at(1)));
  });
}

}  // namespace
