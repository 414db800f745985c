// Numerics as text. Up to 19 digits become text in a register, with the point among them, and go
// from there to their destination.
#pragma once

#include <emmintrin.h>

#include <algorithm>
#include <array>
#include <bit>
#include <string_view>

#include "chars/decimal.h"
#include "chars/short_bytes.h"
#include "conv/placement.h"
#include "exact/word_text.h"

namespace comnlib {

// What a precision and a scale say of the text of their values. Most values of a column have the
// same precision and scale, so this is kept from value to value.
class NumericShape {
 public:
  explicit NumericShape(const Conversion&) {}

  // Takes the shape of a value. False when the value is not valid.
  [[gnu::always_inline]] bool take(const CS_NUMERIC& value) {
    const int taken = value.precision | value.scale << 8;
    if (taken == taken_) [[likely]]
      return true;
    if (!Numeric::contains(value)) return false;
    taken_ = taken;
    set(value);
    return true;
  }

  // Whether ShortNumericText writes its values.
  bool is_short() const { return is_short_; }

 private:
  friend class ShortNumericText;

  static constexpr int kDigits = sizeof(__m128i);

  // Tables from which a register is loaded, beginning at the place of the point.
  static constexpr auto kMoved = [] {
    std::array<CS_BYTE, 2 * kDigits> bytes{};
    std::fill_n(bytes.begin(), kDigits - 1, CS_BYTE{0xFF});
    return bytes;
  }();
  static constexpr auto kMost = [] {
    std::array<CS_BYTE, 2 * kDigits> bytes{};
    bytes.fill(0xFF);
    bytes[kDigits - 1] = '.';
    return bytes;
  }();

  static __m128i taken_from(const std::array<CS_BYTE, 2 * kDigits>& bytes, int place) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes.data() + place));
  }

  [[gnu::always_inline]] void set(const CS_NUMERIC& value) {
    is_short_ = value.precision <= kShortPrecision && value.scale <= kDigits;
    if (!is_short_) return;
    length_ = bytes_of_precision(value.precision);
    mask_ = first_quarter_mask(static_cast<std::size_t>(length_));
    decimals_ = value.scale;
    units_bit_ = decimals_ == kDigits ? 1 : 1U << (kDigits - 1) >> decimals_;
    const int place = decimals_ == 0 ? kDigits : decimals_;
    moved_ = taken_from(kMoved, place);
    most_ = taken_from(kMost, place);
  }

  int taken_ = -1;
  bool is_short_ = false;
  int length_ = 0;          // of the magnitude
  std::uint32_t mask_ = 0;  // of its first bytes
  int decimals_ = 0;
  unsigned units_bit_ = 0;  // of the digit before the point, which is always written
  __m128i moved_{};         // ones where a digit moves to make room for the point
  __m128i most_{};          // the point, and ones elsewhere
};

// The text of a short value, not yet written.
class ShortNumericText {
 public:
  [[gnu::always_inline]] ShortNumericText(const CS_NUMERIC& value, const NumericShape& shape) {
    const CS_BYTE* const end = value.array + 1 + shape.length_;
    std::uint32_t leading = 0;
    Eights last;
    if (shape.length_ <= 4) {
      last = in_eights(load_quarter(end - 4) & shape.mask_);
    } else {
      std::uint64_t magnitude =
          std::uint64_t{load_quarter(end - 8) & shape.mask_} << 32 | load_quarter(end - 4);
      leading = take_leading_digits(magnitude);
      last = in_eights(magnitude);
    }
    digits_ = sixteen_digits(last);
    const int zeros = _mm_movemask_epi8(_mm_cmpeq_epi8(digits_, _mm_set1_epi8('0')));
    const __m128i change = _mm_xor_si128(_mm_srli_si128(digits_, 1), digits_);
    text_ = _mm_min_epu8(_mm_xor_si128(_mm_and_si128(change, shape.moved_), digits_), shape.most_);
    negative_ = value.array[0] != 0 ? 1 : 0;
    points_ = shape.decimals_ != 0 ? 1 : 0;
    first_ = std::countr_zero(~static_cast<unsigned>(zeros) | shape.units_bit_) - points_;
    size_ = negative_ + kDigits - first_;
    if (leading != 0 || first_ < 0) add_head(leading, shape.decimals_ == kDigits);
  }

  std::size_t size() const { return static_cast<std::size_t>(size_); }

  [[gnu::always_inline]] void write(CS_BYTE* dest) const {
    const auto put = [](CS_BYTE* to, __m128i bytes) {
      _mm_storeu_si128(reinterpret_cast<__m128i*>(to), bytes);
    };
    *dest = '-';
    dest += negative_;
    if (first_ >= 0) {
      std::array<CS_BYTE, kDigits> bytes;
      put(bytes.data(), text_);
      copy_few(dest, bytes.data() + first_, static_cast<std::size_t>(kDigits - first_));
    } else {
      store(dest, head_);
      put(dest + head_size_, digits_);
      put(dest + head_size_ + points_, text_);
    }
  }

 private:
  static constexpr int kDigits = NumericShape::kDigits;

  [[gnu::always_inline]] void add_head(std::uint32_t leading, bool has_decimals_only) {
    first_ = -1;
    if (leading != 0 || has_decimals_only) {
      head_ = four_digits(leading);
      const int zeros = std::countr_zero((head_ ^ 0x30303030) | 0x80000000) / 8;
      head_ >>= 8 * zeros;
      head_size_ = 4 - zeros;
    }
    if (has_decimals_only)
      digits_ = _mm_min_epu8(digits_, NumericShape::taken_from(NumericShape::kMost, kDigits - 1));
    size_ = negative_ + head_size_ + points_ + kDigits;
  }

  int size_;
  int negative_;  // 1 or 0, as is the next
  int points_;
  int first_;               // where the text begins in its register; -1 for a text that is longer
  int head_size_ = 0;       // digits before those in the register
  std::uint32_t head_ = 0;  // these digits as they are in memory; after them any bytes
  __m128i digits_;
  __m128i text_;
};

// A numeric where it is: its text is made before a destination that shares its bytes is written.
struct NumericInPlace : Numeric {
  struct Value {
    const CS_NUMERIC* numeric;
    const NumericShape* shape;
  };
  using Setup = NumericShape;
  [[gnu::always_inline]] static CS_RETCODE read(const Conversion& call, Value& value,
                                                NumericShape& shape) {
    value = {static_cast<const CS_NUMERIC*>(call.src), &shape};
    return shape.take(*value.numeric) ? CS_SUCCEED : CS_CVT_DOMAIN;
  }
};

struct NumericText {
  static constexpr bool kCut = false;
  using Buffer = NumericBuffer;
  [[gnu::always_inline]] static std::string_view of(const NumericInPlace::Value& value,
                                                    const CS_DATAFMT&, Buffer& buffer) {
    if (!value.shape->is_short()) return long_text(*value.numeric, buffer);
    const ShortNumericText text(*value.numeric, *value.shape);
    text.write(reinterpret_cast<CS_BYTE*>(buffer.data()));
    return {buffer.data(), text.size()};
  }
};

struct NumericToCharacter : Character {
  using Setup = CharacterSetup;
  [[gnu::always_inline]] static CS_RETCODE convert(const NumericInPlace::Value& value,
                                                   const Conversion& call, const Setup& setup) {
    if (value.shape->is_short()) {
      const ShortNumericText text(*value.numeric, *value.shape);
      if (setup.room.takes(static_cast<CS_INT>(text.size()))) [[likely]]
        return setup.room.place(text, call);
    }
    NumericBuffer buffer;
    return place<NumericText::kCut>(long_text(*value.numeric, buffer), call, setup.room);
  }
};

struct NumericToVarchar : Varchar {
  [[gnu::always_inline]] static CS_RETCODE convert(const NumericInPlace::Value& value,
                                                   const Conversion& call) {
    if (!value.shape->is_short()) {
      NumericBuffer buffer;
      return place_varchar(long_text(*value.numeric, buffer), call.dest, call.destlen);
    }
    const ShortNumericText text(*value.numeric, *value.shape);
    text.write(record_bytes(call.dest));
    complete_varchar(text.size(), call.dest, call.destlen);
    return CS_SUCCEED;
  }
};

}  // namespace comnlib
