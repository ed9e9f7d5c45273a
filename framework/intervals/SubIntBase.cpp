#include "framework/intervals/SubIntBase.h"

#include <algorithm>

#include "framework/intervals/IntervalControl.h"
#include "framework/intervals/SubdefInt.h"

namespace {

// Wide enough for every sum and product of two 32-bit numbers.
std::int64_t Operand(long value) { return SubIntBase(value); }

long Checked(std::int64_t exact) {
  const std::int64_t limit = SubdefInt::sMaxValue;
  if (exact < -limit || exact > limit) SDRaiseError();
  return static_cast<long>(std::clamp(exact, -limit, limit));
}

}  // namespace

long SubIntBase::base_plus(long x, long y) { return Checked(Operand(x) + Operand(y)); }
long SubIntBase::base_minus(long x, long y) { return Checked(Operand(x) - Operand(y)); }
long SubIntBase::base_mult(long x, long y) { return Checked(Operand(x) * Operand(y)); }

long SubIntBase::base_div(long x, long y) {
  if (y == 0) {
    SDRaiseError();
    return 0;
  }
  return Checked(Operand(x) / Operand(y));
}
