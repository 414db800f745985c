// Numerics: text to value to text to value, and arbitrary records through every operation. The
// first byte chooses.
#include <array>

#include "comnlib/numeric.h"
#include "exact/numemath.h"
#include "exact/numeric.h"
#include "fuzz.h"

using namespace comnlib;
using fuzz::check;

namespace {

std::string_view print(const CS_NUMERIC& value, std::array<char, 80>& buffer) {
  CS_INT length = 0;
  const constant record = record_of(value);
  check(com__subexctnumetochar(&record, buffer.data(), buffer.size(), &length) == kExactOk);
  return {buffer.data(), static_cast<std::size_t>(length)};
}

void round_trip(fuzz::Input& input) {
  const auto marker_or = [&](unsigned most) {
    const unsigned value = input.take_upto(most + 1);
    return static_cast<CS_BYTE>(value > most ? kFromText : value);
  };
  const CS_BYTE precision = marker_or(CS_MAX_PREC);
  const CS_BYTE scale = marker_or(CS_MAX_SCALE);
  const bool rounding = input.take_upto(1) != 0;
  const std::string_view text = input.text();
  CS_NUMERIC value{};
  const CS_INT status = parse_numeric(text, precision, scale, rounding, value);
  if (status != kExactOk && status != kExactTruncated) return;

  std::array<char, 80> first;
  std::array<char, 80> second;
  const std::string_view printed = print(value, first);
  CS_NUMERIC again{};
  check(parse_numeric(printed, value.precision, value.scale, false, again) == kExactOk);
  check(print(again, second) == printed);
  check(comn_numcmp(&value, &again) == 0);
}

void operate(fuzz::Input& input) {
  const auto a = input.take<CS_NUMERIC>();
  const auto b = input.take<CS_NUMERIC>();
  CS_NUMERIC result{};
  for (const auto operation : {comn_numadd, comn_numsub, comn_nummul, comn_numdivide}) {
    const CS_RETCODE code = operation(&a, &b, &result);
    const constant record = record_of(result);
    check(code != CS_SUCCEED || (is_precision(result.precision) && is_scale(result.scale) &&
                                 com__exctnume_checkprecision(&record) == 0));
  }
  check(comn_numcmp(&a, &b) == -comn_numcmp(&b, &a));
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  input.take_upto(1) == 0 ? round_trip(input) : operate(input);
  return 0;
}
