// Integer scanners: one scan into sign and magnitude, one range check for each width.
#include "conv/chscan.h"

#include <cstring>
#include <limits>

#include "chars/text.h"
#include "diag/diag.h"

namespace comnlib {
namespace {

// Represents every magnitude that is larger than any integer's.
constexpr std::uint64_t kSaturated = std::numeric_limits<std::uint64_t>::max();

std::uint64_t append_digit(std::uint64_t magnitude, unsigned digit) {
  constexpr std::uint64_t kLastSafe = (kSaturated - 9) / 10;
  return magnitude > kLastSafe ? kSaturated : magnitude * 10 + digit;
}

// Reads the digits that come next, in one register as long as it can hold them.
template <class Reader>
[[gnu::always_inline]] inline std::uint64_t scan_digits(Reader& reader, bool& any) {
  const auto next = [&reader] {
    return reader.done() ? 10U : static_cast<unsigned>(reader.ascii() - '0');
  };
  constexpr std::uint32_t kNarrow = (std::numeric_limits<std::uint32_t>::max() - 9) / 10;
  std::uint32_t head = 0;
  unsigned digit = next();
  any = digit <= 9;
  for (; digit <= 9 && head <= kNarrow; digit = next()) {
    head = head * 10 + digit;
    reader.skip();
  }
  std::uint64_t magnitude = head;
  for (; digit <= 9; digit = next()) {
    magnitude = append_digit(magnitude, digit);
    reader.skip();
  }
  return magnitude;
}

struct Scanned {
  bool valid;
  bool negative;
  std::uint64_t magnitude;
};

// Inlined, so that the reader stays in registers.
template <class Reader>
[[gnu::always_inline]] inline Scanned scan(Reader reader) {
  Scanned result{false, false, 0};
  skip_blanks(reader);
  if (!reader.done() && (reader.ascii() == '-' || reader.ascii() == '+')) {
    result.negative = reader.ascii() == '-';
    reader.skip();
  }
  result.magnitude = scan_digits(reader, result.valid);
  skip_blanks(reader);
  result.valid = result.valid && reader.done();
  return result;
}

template <class Int>
CS_INT scan_checked(const char_attrib* attrib, const CS_CHAR* text, CS_INT length, Int* value) {
  check_pointer(text);
  check_pointer(value);
  require(length >= 0);
  const auto* bytes = reinterpret_cast<const CS_BYTE*>(text);
  Int result;
  const ScanStatus status =
      scan_integer<Int>({{bytes, static_cast<std::size_t>(length)}, attrib}, result);
  if (status != kNoInteger) std::memcpy(value, &result, sizeof result);
  return status;
}

}  // namespace

template <class Int>
ScanStatus scan_integer(const Text& text, Int& value) {
  const Scanned scanned = with_reader(text, [](auto reader) { return scan(reader); });
  if (!scanned.valid) return kNoInteger;

  using Limits = std::numeric_limits<Int>;
  constexpr auto kMax = static_cast<std::uint64_t>(Limits::max());
  constexpr std::uint64_t kMinMagnitude = Limits::is_signed ? kMax + 1 : 0;
  const std::uint64_t limit = scanned.negative ? kMinMagnitude : kMax;
  const bool fits = scanned.magnitude <= limit;
  const std::uint64_t magnitude = fits ? scanned.magnitude : limit;
  value = static_cast<Int>(scanned.negative ? std::uint64_t{0} - magnitude : magnitude);
  return fits ? kScanned : kOutOfRange;
}

template ScanStatus scan_integer(const Text&, CS_TINYINT&);
template ScanStatus scan_integer(const Text&, CS_SMALLINT&);
template ScanStatus scan_integer(const Text&, CS_INT&);
template ScanStatus scan_integer(const Text&, std::int64_t&);

}  // namespace comnlib

CS_INT com__chtoi1_mb(const char_attrib* attrib, const CS_CHAR* text, CS_INT length,
                      CS_TINYINT* value) {
  return comnlib::scan_checked(attrib, text, length, value);
}

CS_INT com__chtoi2_mb(const char_attrib* attrib, const CS_CHAR* text, CS_INT length,
                      CS_SMALLINT* value) {
  return comnlib::scan_checked(attrib, text, length, value);
}

CS_INT com__chtoi4_mb(const char_attrib* attrib, const CS_CHAR* text, CS_INT length,
                      CS_INT* value) {
  return comnlib::scan_checked(attrib, text, length, value);
}
