// Numerics: what reads as a value is printed and read again as the same value.
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
  check(com__subexctnumetochar(&record, buffer.data(), CS_INT{80}, &length) == kExactOk);
  return {buffer.data(), static_cast<std::size_t>(length)};
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
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
  if (status != kExactOk && status != kExactTruncated) return 0;

  std::array<char, 80> first;
  std::array<char, 80> second;
  const std::string_view printed = print(value, first);
  CS_NUMERIC again{};
  check(parse_numeric(printed, value.precision, value.scale, false, again) == kExactOk);
  check(print(again, second) == printed);
  check(comn_numcmp(&value, &again) == 0);
  return 0;
}
