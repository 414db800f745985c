// Products and quotients of magnitudes, and scaling by powers of ten.
#include "exact/limbs.h"

namespace comnlib {
namespace {

constexpr int kLimbDigits = 9;  // the largest power of ten in a limb

// The sum of the products of one column, in three limbs.
class Column {
 public:
  void add_product(Limb a, Limb b) {
    Limb high;
    __asm__("mull %[b]\n\taddl %[a], %[low]\n\tadcl %[high], %[middle]\n\tadcl $0, %[top]"
            : [a] "+a"(a), [high] "=&d"(high), [low] "+r"(low_), [middle] "+r"(middle_),
              [top] "+rm"(top_)
            : [b] "rm"(b)
            : "cc");
  }

  // Takes off the lowest limb.
  Limb shift() {
    const Limb low = low_;
    low_ = middle_;
    middle_ = top_;
    top_ = 0;
    return low;
  }

 private:
  Limb low_ = 0;
  Limb middle_ = 0;
  Limb top_ = 0;
};

// Subtracts factor * divisor from the limbs at `from`, one more than the divisor's; whether that
// borrowed beyond them.
bool subtract_product(Limb* from, const Limb* divisor, std::size_t size, Limb factor) {
  Limb carry = 0;
  for (std::size_t at = 0; at < size; ++at) {
    const Wide product = Wide{divisor[at]} * factor + carry;
    const Limb low = static_cast<Limb>(product);
    carry = static_cast<Limb>(product >> 32) + (from[at] < low);
    from[at] -= low;
  }
  const bool borrow = from[size] < carry;
  from[size] -= carry;
  return borrow;
}

void add_back(Limb* to, const Limb* divisor, std::size_t size) {
  Limb carry = 0;
  for (std::size_t at = 0; at < size; ++at) {
    const Wide sum = Wide{to[at]} + divisor[at] + carry;
    to[at] = static_cast<Limb>(sum);
    carry = static_cast<Limb>(sum >> 32);
  }
  to[size] += carry;
}

// out := value * 2^shift in size + 1 limbs, for shifts of 0 to 31.
void shift_left(Limbs value, int shift, Limb* out) {
  Limb carry = 0;
  for (std::size_t at = 0; at < value.size(); ++at) {
    const Wide wide = Wide{value[at]} << shift | carry;
    out[at] = static_cast<Limb>(wide);
    carry = static_cast<Limb>(wide >> 32);
  }
  out[value.size()] = carry;
}

void shift_right(Limb* value, std::size_t size, int shift) {
  for (std::size_t at = 0; at + 1 < size; ++at)
    value[at] = static_cast<Limb>((Wide{value[at + 1]} << 32 | value[at]) >> shift);
  value[size - 1] >>= shift;
}

// A quotient digit of at most one too many, from the top three limbs at `top` (most significant at
// top[2]) and the top two of the divisor, whose highest bit is set.
Limb estimate(const Limb* top, Limb divisor_high, Limb divisor_next) {
  Limb digit;
  Limb rest;
  if (top[2] >= divisor_high) {
    digit = ~Limb{0};
    rest = top[1] + divisor_high;
    if (rest < divisor_high) return digit;
  } else {
    digit = divide_wide(top[2], top[1], divisor_high, rest);
  }
  while (Wide{digit} * divisor_next > (Wide{rest} << 32 | top[0])) {
    --digit;
    rest += divisor_high;
    if (rest < divisor_high) break;
  }
  return digit;
}

}  // namespace

// Column by column, so that the carries of a column are added up before it is stored.
void multiply(Limbs a, Limbs b, Magnitude& product) {
  if (a.empty() || b.empty()) {
    product.trim(0);
    return;
  }
  const Limb* const a_end = a.data() + a.size();
  const Limb* const b_last = &b.back();
  // A column's limbs of `a` from `left` up to `end`, those of `b` from `right` downwards.
  const Limb* left = a.data();
  const Limb* end = left + 1;
  const Limb* right = b.data();
  Limb* out = product.data();
  Column sum;
  for (; left != a_end; ++out) {
    const Limb* x = left;
    const Limb* y = right;
    do {
      sum.add_product(*x, *y--);
    } while (++x != end);
    *out = sum.shift();
    if (end != a_end) ++end;
    right != b_last ? ++right : ++left;
  }
  *out = sum.shift();
  product.trim(a.size() + b.size());
}

// Long division in base 2^32 (Knuth, The Art of Computer Programming, volume 2, 4.3.1, algorithm
// D): the divisor is shifted until its top bit is set, then each estimated digit is at most one too
// many, which shows as a borrow and is corrected by adding the divisor back.
void divide(Limbs dividend, Limbs divisor, Magnitude& quotient, Magnitude& remainder) {
  if (compare(dividend, divisor) < 0) {
    quotient.trim(0);
    remainder.assign(dividend);
    return;
  }
  if (divisor.size() == 1) {
    quotient.assign(dividend);
    remainder.assign(Wide{divide_by(quotient, divisor[0])});
    return;
  }
  const std::size_t size = divisor.size();
  const std::size_t digits = dividend.size() - size + 1;
  const int shift = std::countl_zero(divisor.back());
  Magnitude normal;
  shift_left(divisor, shift, normal.data());
  const Limb* const by = normal.data();
  Limb* const rest = remainder.data();
  shift_left(dividend, shift, rest);

  Limb* const out = quotient.data();
  for (std::size_t at = digits; at-- > 0;) {
    Limb digit = estimate(rest + at + size - 2, by[size - 1], by[size - 2]);
    if (subtract_product(rest + at, by, size, digit)) {
      --digit;
      add_back(rest + at, by, size);
    }
    out[at] = digit;
  }
  quotient.trim(digits);
  shift_right(rest, size, shift);
  remainder.trim(size);
}

void scale_up(Magnitude& value, int exponent) {
  if (exponent <= kLimbDigits) {
    multiply_add(value, power_of_ten(exponent)[0], 0);
    return;
  }
  Magnitude factor;
  factor.assign(Limbs(value));
  multiply(factor, power_of_ten(exponent), value);
}

bool scale_down(Magnitude& value, int exponent) {
  if (value.is_zero()) return false;
  bool dropped = false;
  for (; exponent > CS_MAX_SCALE; exponent -= CS_MAX_SCALE)
    dropped |= scale_down(value, CS_MAX_SCALE);
  if (exponent <= kLimbDigits) return (divide_by(value, power_of_ten(exponent)[0]) != 0) | dropped;
  Magnitude dividend;
  Magnitude remainder;
  dividend.assign(Limbs(value));
  divide(dividend, power_of_ten(exponent), value, remainder);
  return !remainder.is_zero() || dropped;
}

}  // namespace comnlib
