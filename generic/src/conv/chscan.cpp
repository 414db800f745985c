// Integer scanners: one scan into sign and magnitude, one range check for each width.
#include "conv/chscan.h"

#include <cstring>
#include <limits>

#include "chars/text.h"
#include "diag/diag.h"

namespace comnlib {
namespace {

enum ScanStatus : CS_INT { kScanned = 0, kOutOfRange = 1, kNoInteger = 2 };

// A magnitude stops growing once it is larger than any integer's.
constexpr uint64_t kSaturated = std::numeric_limits<uint64_t>::max();

uint64_t append_digit(uint64_t magnitude, unsigned digit) {
  constexpr uint64_t kLastSafe = (kSaturated - 9) / 10;
  return magnitude > kLastSafe ? kSaturated : magnitude * 10 + digit;
}

struct Scanned {
  bool valid;
  bool negative;
  uint64_t magnitude;
};

template <class Reader>
Scanned scan(Reader reader) {
  Scanned result{false, false, 0};
  skip_blanks(reader);
  if (!reader.done() && (reader.ascii() == '-' || reader.ascii() == '+')) {
    result.negative = reader.ascii() == '-';
    reader.skip();
  }
  while (!reader.done()) {
    const auto digit = static_cast<unsigned>(reader.ascii() - '0');
    if (digit > 9) break;
    result.magnitude = append_digit(result.magnitude, digit);
    result.valid = true;
    reader.skip();
  }
  skip_blanks(reader);
  result.valid = result.valid && reader.done();
  return result;
}

Scanned scan_text(const char_attrib* attrib, const CS_CHAR* text, CS_INT length) {
  check_pointer(text);
  require(length >= 0);
  const Text source{{reinterpret_cast<const CS_BYTE*>(text), static_cast<std::size_t>(length)},
                    attrib};
  return with_reader(source, [](auto reader) { return scan(reader); });
}

template <class Int>
CS_INT scan_integer(const char_attrib* attrib, const CS_CHAR* text, CS_INT length, Int* value) {
  check_pointer(value);
  const Scanned scanned = scan_text(attrib, text, length);
  if (!scanned.valid) return kNoInteger;

  using Limits = std::numeric_limits<Int>;
  constexpr uint64_t kMax = static_cast<uint64_t>(Limits::max());
  constexpr uint64_t kMinMagnitude = Limits::is_signed ? kMax + 1 : 0;
  const uint64_t limit = scanned.negative ? kMinMagnitude : kMax;
  const bool fits = scanned.magnitude <= limit;
  const uint64_t magnitude = fits ? scanned.magnitude : limit;
  const auto result = static_cast<Int>(scanned.negative ? uint64_t{0} - magnitude : magnitude);
  std::memcpy(value, &result, sizeof result);
  return fits ? kScanned : kOutOfRange;
}

}  // namespace

CS_INT scan_int64(const char_attrib* attrib, const CS_CHAR* text, CS_INT length, int64_t* value) {
  return scan_integer(attrib, text, length, value);
}

}  // namespace comnlib

CS_INT com__chtoi1_mb(const char_attrib* attrib, const CS_CHAR* text, CS_INT length,
                      CS_TINYINT* value) {
  return comnlib::scan_integer(attrib, text, length, value);
}

CS_INT com__chtoi2_mb(const char_attrib* attrib, const CS_CHAR* text, CS_INT length,
                      CS_SMALLINT* value) {
  return comnlib::scan_integer(attrib, text, length, value);
}

CS_INT com__chtoi4_mb(const char_attrib* attrib, const CS_CHAR* text, CS_INT length,
                      CS_INT* value) {
  return comnlib::scan_integer(attrib, text, length, value);
}
