// Exact numerics: vectors from arbitrary-precision integers, which tools/mkvectors_numeric.py
// writes, and by hand tables, text with markers and stops. Records are built from their text byte
// by byte, with guard bytes after the value that no routine may touch.
#include "comnlib/numeric.h"

#include <gtest/gtest.h>

#include <bit>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "comnlib/convert.h"
#include "exact/limbs.h"
#include "exact/numemath.h"
#include "exact/numeric.h"
#include "support/table.h"

using namespace comnlib;

namespace {

constexpr CS_BYTE kGuard = 0xEE;

using table::Fields, table::magnitude_of, table::number, table::split;

void for_each_line(const std::string& name, auto check) {
  table::for_each_line("exact/data/numeric_" + name + ".tsv", check);
}

std::string bytes_of(const CS_NUMERIC& record) {
  return {reinterpret_cast<const char*>(&record), sizeof record};
}

std::size_t length_of(int precision) {
  return precision <= CS_MAX_PREC ? Com__Nume_Prec_To_Len[static_cast<std::size_t>(precision)]
                                  : std::size_t{CS_MAX_NUMLEN};
}

// "precision,scale,value"; what is missing is guard bytes.
CS_NUMERIC numeric(const std::string& text) {
  const Fields fields = split(text, ',');
  CS_NUMERIC record;
  std::memset(&record, kGuard, sizeof record);
  if (fields[0].empty()) return record;
  record.precision = static_cast<CS_BYTE>(number(fields[0]));
  record.scale = static_cast<CS_BYTE>(number(fields[1]));
  const std::size_t length = fields[2].empty() ? 0 : length_of(record.precision);
  if (length > 0) std::ranges::copy(magnitude_of(fields[2], length), record.array);
  return record;
}

// A result "code[,precision,scale[,value]]".
struct Expected {
  explicit Expected(const std::string& text)
      : code(number(text)),
        record(numeric(text.substr(std::min(text.find(','), text.size() - 1) + 1))) {}
  int code;
  CS_NUMERIC record;
};

// A working record "length,precision,scale,value" of exactly its length, so that a sanitizer sees
// every byte outside.
class Record {
 public:
  explicit Record(const std::string& text) {
    const Fields fields = split(text.empty() ? "2,1,0,0" : text, ',');
    const std::string bytes = magnitude_of(fields[3], static_cast<std::size_t>(number(fields[0])));
    bytes_.assign(bytes.begin(), bytes.end());
    record = {number(fields[0]), static_cast<CS_BYTE>(number(fields[1])),
              static_cast<CS_BYTE>(number(fields[2])), bytes_.data()};
  }
  // A zero of "precision,scale".
  static Record sized(const std::string& size) {
    return Record(std::to_string(length_of(number(size))) + "," + size + ",0");
  }
  Record(const Record&) = delete;
  Record& operator=(const Record&) = delete;

  std::string value() const { return {bytes_.begin(), bytes_.begin() + record.len}; }
  // Whether it holds a decimal value.
  void expect(const std::string& decimal) const {
    EXPECT_EQ(value(), magnitude_of(decimal, value().size()));
  }

  constant record;

 private:
  std::vector<CS_BYTE> bytes_;
};

// --- vectors

using Operation = CS_RETCODE (*)(const CS_NUMERIC*, const CS_NUMERIC*, CS_NUMERIC*);

void check_operation(Operation operation, const Fields& row, std::size_t column) {
  SCOPED_TRACE(column);
  const CS_NUMERIC a = numeric(row[0]), b = numeric(row[1]);
  const Expected expected(row[column]);
  CS_NUMERIC op1 = a, op2 = b, result = numeric("");
  EXPECT_EQ(operation(&op1, &op2, &result), expected.code);
  EXPECT_EQ(bytes_of(result), bytes_of(expected.record));
  EXPECT_EQ(bytes_of(op1) + bytes_of(op2), bytes_of(a) + bytes_of(b)) << "an operand changed";

  // The result over either operand; bytes that are not written are the operand's.
  for (CS_NUMERIC* const shared : {&op1, &op2}) {
    op1 = a;
    op2 = b;
    EXPECT_EQ(operation(&op1, &op2, shared), expected.code);
    if (expected.record.array[0] == kGuard) continue;
    const std::size_t size = 2 + length_of(expected.record.precision);
    EXPECT_EQ(bytes_of(*shared).substr(0, size), bytes_of(expected.record).substr(0, size));
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
    const CS_NUMERIC a = numeric(row[0]), b = numeric(row[1]);
    EXPECT_EQ(comn_numcmp(&a, &b), number(row[6]));
    EXPECT_EQ(comn_numcmp(&b, &a), -number(row[6]));
  });
}

struct Call {
  constant *a, *b;
  CS_INT argument;
  constant *target, *rest;
};

// The length that is left goes where a division leaves its remainder.
CS_INT divide_by_10(const Call& c) {
  const CS_INT digit = com__exctnume_divby10(c.target);
  const auto length = static_cast<std::size_t>(c.rest->len);
  std::ranges::copy(magnitude_of(std::to_string(c.target->len), length), c.rest->value);
  return digit;
}

#define KERNEL(row, name, ...)                                           \
  {                                                                      \
    row, [](const Call& c) { return com__exctnume_##name(__VA_ARGS__); } \
  }
const std::map<std::string, CS_INT (*)(const Call&)> kKernel = {
    KERNEL("intadd", intadd, c.a, c.b, c.target),
    KERNEL("intsub", intsub, c.a, c.b, c.target),
    KERNEL("intmul", intmul, c.a, c.b, c.target),
    KERNEL("intdiv", intdiv, c.a, c.b, c.target, c.rest),
    KERNEL("intquotient", intdiv, c.a, c.b, c.target, nullptr),
    KERNEL("addorsub", addorsub, c.a, c.b, c.target, c.argument),
    KERNEL("mul", mul, c.a, c.b, c.target),
    KERNEL("div", div, c.a, c.b, c.target, nullptr),
    KERNEL("divrem", div, c.a, c.b, c.target, c.rest),
    KERNEL("scale", scale, c.a, c.target, c.argument),
    KERNEL("scale_in_place", scale, c.target, nullptr, c.argument),
    KERNEL("round", round, c.a, c.argument, c.target),
    KERNEL("ceilingfloor", ceilingfloor, c.a, c.target, c.argument),
    KERNEL("inc", inc, c.target),
    KERNEL("needsbyte", needsbyte, c.target),
    KERNEL("mulby10_add", mulby10_add, c.target, c.argument),
    {"divby10", divide_by_10},
    KERNEL("copy", copy, c.a, c.target),
    KERNEL("checkprecision", checkprecision, c.a),
    KERNEL("intcmp", intcmp, c.a, c.argument),
    KERNEL("cmp", cmp, c.a, c.b, c.argument),
};

TEST(NumericVectors, Kernel) {
  for_each_line("kernel", [](const Fields& row) {
    const std::string rest_length = row[0] == "divrem" ? row[4] : "133";
    Record a(row[1]), b(row[2]), result(row[3]), rest(rest_length + ",77,0,0");
    const std::string operands = a.value() + b.value(), before = result.value();
    const CS_INT status =
        kKernel.at(row[0])({&a.record, &b.record, number(row[4]), &result.record, &rest.record});
    EXPECT_EQ(status, number(row[5]));
    const std::string held = result.value();
    EXPECT_EQ(held, row[6].empty() ? before : magnitude_of(row[6], held.size()));
    if (!row[7].empty()) rest.expect(row[7]);
    EXPECT_EQ(a.value() + b.value(), operands) << "an operand changed";
  });
}

TEST(NumericVectors, Texts) {
  for_each_line("texts", [](const Fields& row) {
    const std::string text = table::text_of(row[0]);
    Record record = Record::sized(row[1] + "," + row[2]);
    const CS_INT status = com__subchartoexctnume(text.data(), static_cast<CS_INT>(text.size()),
                                                 &record.record, number(row[3]));
    EXPECT_EQ(status, number(row[4]));
    record.expect(row[5]);
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

TEST(NumericVectors, Doubles) {
  const auto bits_of = [](const std::string& hex) { return std::stoull(hex, nullptr, 16); };
  for_each_line("doubles", [&](const Fields& row) {
    Record record = Record::sized(row[1]);
    const auto value = std::bit_cast<CS_FLOAT>(bits_of(row[0]));
    EXPECT_EQ(com__doubletoexctnume(value, &record.record), number(row[2]));
    record.expect(row[3]);
  });
  for_each_line("to_doubles", [&](const Fields& row) {
    const CS_NUMERIC source = numeric(row[0]);
    const constant record = record_of(source);
    CS_FLOAT value = 0;
    EXPECT_EQ(com__subexctnumetoflt8(&record, &value), 0);
    EXPECT_EQ(std::bit_cast<unsigned long long>(value), bits_of(row[1]));
  });
}

// --- tables

TEST(NumericTables, FollowTheirRules) {
  EXPECT_EQ(Com__Nume_Prec_To_Len[0], 2);
  for (const auto& [precision, length] :
       {std::pair{1, 2}, {2, 2}, {3, 3}, {4, 3}, {5, 4}, {19, 9}, {38, 17}, {77, 33}})
    EXPECT_EQ(comn_num_getlen(precision), length) << precision;
  for (const auto& [length, precision] :
       {std::pair{0, 0}, {1, 0}, {2, 2}, {3, 4}, {4, 7}, {5, 9}, {6, 12}, {7, 14}, {33, 77}})
    EXPECT_EQ(comn_num_getprec(length), precision) << length;
  for (const std::size_t length : {34, 35, 36}) EXPECT_EQ(Com__Nume_Len_To_Prec[length - 2], 255);
}

// --- text

// What a numeric prints into some room, and whether that fits.
std::string printed(const CS_NUMERIC& value, CS_INT room = 80) {
  const constant record = record_of(value);
  std::string buffer(81, '#');
  CS_INT length = -1;
  if (com__subexctnumetochar(&record, buffer.data(), room, &length) != kExactOk)
    return buffer[0] == '#' && length == 0 ? "no room" : "spoilt";
  const bool ended = length == room || buffer[static_cast<std::size_t>(length)] == '\0';
  EXPECT_EQ(ended ? length + (length < room) : 0, static_cast<CS_INT>(buffer.find('#')));
  return buffer.substr(0, static_cast<std::size_t>(length));
}

// Precision, scale and value of a text, or what was left in them by the status of a failure.
std::string parsed(const std::string& text, CS_BYTE precision, CS_BYTE scale, bool rounding) {
  CS_NUMERIC value = numeric("99,99");
  const CS_INT status = parse_numeric(text, precision, scale, rounding, value);
  const std::string size = std::to_string(value.precision) + ',' + std::to_string(value.scale);
  return status == kExactOk ? size + ',' + printed(value)
                            : "status " + std::to_string(status) + ": " + size;
}

TEST(NumericText, WithMarkers) {
  const auto given = [](const std::string& field) {
    return field.empty() ? kFromText : static_cast<CS_BYTE>(number(field));
  };
  table::for_each_line("exact/data/numeric_literals.txt", [&](const Fields& line) {
    EXPECT_EQ(line[4],
              parsed(table::text_of(line[0]), given(line[1]), given(line[2]), line[3] == "yes"));
  });
  // More than any magnitude has room for.
  EXPECT_EQ("status 1: 99,99", parsed(std::string(2000, '9'), kFromText, kFromText, false));
}

TEST(NumericText, Printing) {
  EXPECT_EQ("0.00007", printed(numeric("1,5,7"))) << "scale above the precision";
  EXPECT_EQ("-0.00", printed(numeric("5,2,-0")));
  CS_NUMERIC widest{255, 77, {}};
  std::fill_n(widest.array, sizeof widest.array, CS_BYTE{255});
  EXPECT_EQ(80u, printed(widest).size());
  for (const CS_INT room : {-1, 4, 5, 6})  // with five there is no room for the NUL
    EXPECT_EQ(room < 5 ? "no room" : "-12.5", printed(numeric("3,1,-125"), room)) << room;
}

TEST(NumericText, LongIntegers) {
  Record wide = Record::sized("19,0"), narrow = Record::sized("10,0");
  EXPECT_EQ(com__longlongtoexctnume(INT64_MIN, &wide.record), kExactOk);
  wide.expect("-9223372036854775808");
  EXPECT_EQ(com__longlongtoexctnume(INT64_MAX, &narrow.record), kExactOverflow);
  EXPECT_EQ(com__longtoexctnume(INT32_MIN, &narrow.record), kExactOk);
  narrow.expect("-2147483648");
}

// --- stops

TEST(LimbsDeathTest, BrokenPreconditionsStop) {
  Magnitude one, two, full, result;
  one.assign(std::uint64_t{1});
  two.assign(std::uint64_t{2});
  full.assign(Limbs(std::array<Limb, Magnitude::kCapacity>{}));
  EXPECT_DEATH(add(full, one, result), "assertion failed");
  EXPECT_DEATH(subtract(one, two, result), "assertion failed");
  EXPECT_DEATH(multiply(one, two, one), "assertion failed");
  EXPECT_DEATH(multiply(full, one, result), "assertion failed");
  EXPECT_DEATH(multiply_add(full, 1, 1), "assertion failed");
  EXPECT_DEATH(divide(one, result, full, two), "assertion failed");
  EXPECT_DEATH(divide(one, two, two, result), "assertion failed");
  EXPECT_DEATH(scale_up(one, CS_MAX_PREC + 1), "assertion failed");
  EXPECT_DEATH(scale_down(one, -1), "assertion failed");
}

TEST(NumericDeathTest, BrokenPreconditionsStop) {
  CS_NUMERIC value = numeric("1,0,1"), result{};
  std::array<CS_BYTE, kMaxRecordLength + 1> bytes{};
  constant long_record{kMaxRecordLength + 1, 77, 0, bytes.data()};
  const constant empty_record{0, 77, 0, bytes.data()};
  EXPECT_DEATH(comn_num_getlen(0), "assertion failed");
  EXPECT_DEATH(comn_num_getlen(78), "assertion failed");
  EXPECT_DEATH(comn_num_getprec(-1), "assertion failed");
  EXPECT_DEATH(comn_num_getprec(34), "assertion failed");
  EXPECT_DEATH(comn_num_addorsub(&value, &value, &result, 2), "assertion failed");
  EXPECT_DEATH(com__exctnume_inc(&long_record), "assertion failed");
  EXPECT_DEATH(com__exctnume_needsbyte(&empty_record), "assertion failed");
  EXPECT_DEATH(comn_numadd(nullptr, &value, &result), "Invalid pointer");
  EXPECT_DEATH(comn_numsub(nullptr, &value, &result), "Invalid pointer");
  EXPECT_DEATH(comn_num_addorsub(nullptr, &value, &result, 0), "Invalid pointer");
  EXPECT_DEATH(comn_nummul(&value, nullptr, &result), "Invalid pointer");
  EXPECT_DEATH(comn_numdivide(&value, &value, nullptr), "Invalid pointer");
  EXPECT_DEATH(comn_numcmp(&value, nullptr), "Invalid pointer");
}

}  // namespace
