// Exact numerics against vectors from arbitrary-precision integers.
#include <cstdint>

#include "comnlib/convert.h"
#include "comnlib/numeric.h"
#include "exact/numemath.h"
#include "exact/numeric.h"
#include "vectors.h"

using namespace comnlib;
using namespace vectors;

namespace {

using Operation = CS_RETCODE (*)(const CS_NUMERIC*, const CS_NUMERIC*, CS_NUMERIC*);

void check_operation(Operation operation, const Fields& row, std::size_t column) {
  const CS_NUMERIC a = numeric(row.at(0));
  const CS_NUMERIC b = numeric(row.at(1));
  const Expected expected(row.at(column));
  CS_NUMERIC op1 = a;
  CS_NUMERIC op2 = b;
  CS_NUMERIC result = untouched();
  EXPECT_EQ(operation(&op1, &op2, &result), expected.code) << "column " << column;
  EXPECT_EQ(hex(result), hex(expected.record)) << "column " << column;
  EXPECT_EQ(hex(op1) + hex(op2), hex(a) + hex(b)) << "an operand changed";

  // The result over either operand; bytes that are not written are the operand's.
  for (CS_NUMERIC* const shared : {&op1, &op2}) {
    op1 = a;
    op2 = b;
    EXPECT_EQ(operation(&op1, &op2, shared), expected.code);
    if (expected.record.array[0] == kGuard) continue;
    const std::size_t size = 2 + length_of(expected.record.precision);
    EXPECT_EQ(hex(shared, size), hex(&expected.record, size)) << "column " << column << ", shared";
  }
}

TEST(NumericVectors, Operations) {
  for_each_line("operations", [](const Fields& row) {
    check_operation(comn_numadd, row, 2);
    check_operation(comn_numsub, row, 3);
    check_operation(comn_nummul, row, 4);
    check_operation(comn_numdivide, row, 5);
    const CS_NUMERIC a = numeric(row.at(0));
    const CS_NUMERIC b = numeric(row.at(1));
    EXPECT_EQ(comn_numcmp(&a, &b), number(row.at(6)));
    EXPECT_EQ(comn_numcmp(&b, &a), -number(row.at(6)));
  });
}

CS_INT run_kernel(const std::string& name, constant* a, constant* b, CS_INT argument,
                  constant* result, constant* rest) {
  if (name == "intadd") return com__exctnume_intadd(a, b, result);
  if (name == "intsub") return com__exctnume_intsub(a, b, result);
  if (name == "intmul") return com__exctnume_intmul(a, b, result);
  if (name == "intdiv") return com__exctnume_intdiv(a, b, result, rest);
  if (name == "addorsub") return com__exctnume_addorsub(a, b, result, argument);
  if (name == "mul") return com__exctnume_mul(a, b, result);
  if (name == "div") return com__exctnume_div(a, b, result, nullptr);
  if (name == "scale") return com__exctnume_scale(a, result, argument);
  if (name == "round") return com__exctnume_round(a, argument, result);
  if (name == "ceilingfloor") return com__exctnume_ceilingfloor(a, result, argument);
  ADD_FAILURE() << "no such function: " << name;
  return -1;
}

TEST(NumericVectors, Kernel) {
  for_each_line("kernel", [](const Fields& row) {
    Record a(row.at(1));
    Record b(row.at(2).empty() ? "2,1,0,0" : row[2]);
    Record result(row.at(3));
    Record rest("133,77,0,0");
    const std::string operands = a.value() + b.value();
    const std::string before = result.value();
    const CS_INT status = run_kernel(row.at(0), &a.record, &b.record, number(row.at(4)),
                                     &result.record, &rest.record);
    EXPECT_EQ(status, number(row.at(5)));
    EXPECT_EQ(result.value(), row.at(6).empty() ? before : bytes_of(row[6], result.record.len));
    if (!row.at(7).empty()) {
      EXPECT_EQ(rest.value(), bytes_of(row[7], rest.record.len));
    }
    EXPECT_EQ(a.value() + b.value(), operands) << "an operand changed";
    EXPECT_TRUE(result.guarded());
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
    const CS_DATAFMT format = to;
    const CS_NUMERIC source = numeric(row.at(0));
    const Expected expected(row.at(2));
    CS_NUMERIC result = untouched();
    CS_INT length = -1;
    EXPECT_EQ(comn_numtonum(&context, &from, &source, &to, &result, &length), expected.code);
    EXPECT_EQ(hex(result), hex(expected.record));
    const bool written = expected.record.precision != kGuard;
    EXPECT_EQ(length, written ? static_cast<CS_INT>(length_of(result.precision)) + 2 : 0);
    EXPECT_EQ(std::memcmp(&format, &to, sizeof to), 0) << "the format changed";
  });
}

TEST(NumericVectors, Texts) {
  for_each_line("texts", [](const Fields& row) {
    std::string text = row.at(0);
    for (std::size_t at; (at = text.find("\\t")) != text.npos;) text.replace(at, 2, "\t");
    const int precision = number(row.at(1));
    Record record(std::to_string(length_of(precision)) + "," + row[1] + "," + row.at(2) + ",0");
    const CS_INT status = com__subchartoexctnume(text.data(), static_cast<CS_INT>(text.size()),
                                                 &record.record, number(row.at(3)));
    EXPECT_EQ(status, number(row.at(4)));
    EXPECT_EQ(record.value(), bytes_of(row.at(5), record.record.len));
    EXPECT_TRUE(record.guarded());

    // What was stored prints as text that gives the same value.
    std::array<char, 80> printed;
    CS_INT length = 0;
    ASSERT_EQ(com__subexctnumetochar(&record.record, printed.data(), printed.size(), &length), 0);
    Record again(std::to_string(length_of(precision)) + "," + row[1] + "," + row[2] + ",0");
    EXPECT_EQ(com__subchartoexctnume(printed.data(), length, &again.record, 0), 0);
    EXPECT_EQ(again.value(), record.value()) << std::string_view(printed.data(), 80);
  });
}

CS_FLOAT float_of(const std::string& bits) {
  std::uint64_t raw = 0;
  std::from_chars(bits.data(), bits.data() + bits.size(), raw, 16);
  CS_FLOAT value;
  std::memcpy(&value, &raw, sizeof value);
  return value;
}

TEST(NumericVectors, Doubles) {
  for_each_line("doubles", [](const Fields& row) {
    const CS_NUMERIC size = numeric(row.at(1));
    Record record(std::to_string(length_of(size.precision)) + "," + row[1] + ",0");
    EXPECT_EQ(com__doubletoexctnume(float_of(row.at(0)), &record.record), number(row.at(2)));
    EXPECT_EQ(record.value(), bytes_of(row.at(3), record.record.len));
  });
  for_each_line("to_doubles", [](const Fields& row) {
    const CS_NUMERIC source = numeric(row.at(0));
    const constant record = record_of(source);
    CS_FLOAT value = 0;
    EXPECT_EQ(com__subexctnumetoflt8(&record, &value), 0);
    EXPECT_EQ(hex(&value, sizeof value), [&] {
      const CS_FLOAT expected = float_of(row.at(1));
      return hex(&expected, sizeof expected);
    }());
  });
}

}  // namespace
