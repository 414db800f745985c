// Products and quotients of magnitudes, and scaling by powers of ten.
#include "exact/limbs.h"

namespace comnlib {
namespace {

// Subtracts factor * divisor from the limbs at `from`, one more than the divisor has; returns
// whether that borrowed beyond them.
bool subtract_product(Limb* from, const Limb* divisor, std::size_t size, Limb factor) {
  Limb carry = 0;
  for (std::size_t at = 0; at < size; ++at) {
    const Limb low = multiply_step(divisor[at], factor, carry);
    carry += from[at] < low;
    from[at] -= low;
  }
  const bool borrow = from[size] < carry;
  from[size] -= carry;
  return borrow;
}

void add_back(Limb* to, const Limb* divisor, std::size_t size) {
  unsigned char carry = 0;
  for (std::size_t at = 0; at < size; ++at) to[at] = add_with_carry(to[at], divisor[at], carry);
  to[size] += carry;
}

// out := value * 2^shift in size + 1 limbs, for shifts below a limb's bits.
void shift_left(Limbs value, int shift, Limb* out) {
  Limb carry = 0;
  for (std::size_t at = 0; at < value.size(); ++at) {
    const Wide wide = Wide{value[at]} << shift | carry;
    out[at] = static_cast<Limb>(wide);
    carry = static_cast<Limb>(wide >> kLimbBits);
  }
  out[value.size()] = carry;
}

void shift_right(Limb* value, std::size_t size, int shift) {
  for (std::size_t at = 0; at + 1 < size; ++at)
    value[at] = static_cast<Limb>((Wide{value[at + 1]} << kLimbBits | value[at]) >> shift);
  value[size - 1] >>= shift;
}

bool are_apart(Limbs operand, Magnitude& result) {
  return operand.data() != result.data();
}

}  // namespace

// Column by column, so that the carries of a column are added up before it is stored.
void multiply(Limbs a, Limbs b, Magnitude& product) {
  require(are_apart(a, product) && are_apart(b, product));
  require(a.size() + b.size() <= Magnitude::kCapacity);
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
  ColumnSum sum;
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

// Long division by limbs (Knuth, The Art of Computer Programming, volume 2, 4.3.1, algorithm D):
// the divisor is shifted until its top bit is set, then each estimated digit is at most one too
// large. That shows as a borrow and is corrected by adding the divisor back.
void divide(Limbs dividend, Limbs divisor, Magnitude& quotient, Magnitude& remainder) {
  require(!divisor.empty() && dividend.size() < Magnitude::kCapacity);
  require(are_apart(dividend, quotient) && are_apart(divisor, quotient) &&
          are_apart(dividend, remainder) && are_apart(divisor, remainder));
  if (compare(dividend, divisor) < 0) {
    quotient.trim(0);
    remainder.assign(dividend);
    return;
  }
  if (divisor.size() == 1) {
    quotient.assign(dividend);
    remainder.assign(std::uint64_t{divide_by(quotient, divisor[0])});
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
    Limb digit = estimate_digit(rest + at + size - 2, by[size - 1], by[size - 2]);
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
  const Limbs power = power_of_ten(exponent);
  if (power.size() == 1) {
    multiply_add(value, power[0], 0);
    return;
  }
  Magnitude factor;
  factor.assign(Limbs(value));
  multiply(factor, power, value);
}

bool scale_down(Magnitude& value, int exponent) {
  require(exponent >= 0);
  if (value.is_zero()) return false;
  bool dropped = false;
  for (; exponent > CS_MAX_SCALE; exponent -= CS_MAX_SCALE)
    dropped |= scale_down(value, CS_MAX_SCALE);
  const Limbs power = power_of_ten(exponent);
  if (power.size() == 1) return (divide_by(value, power[0]) != 0) | dropped;
  Magnitude dividend;
  Magnitude remainder;
  dividend.assign(Limbs(value));
  divide(dividend, power, value, remainder);
  return !remainder.is_zero() || dropped;
}

}  // namespace comnlib
