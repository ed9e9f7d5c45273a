#include "framework/solver/detail/KeepBetween.h"

#include <algorithm>

#include "framework/solver/SingleValue.h"

namespace zultav::detail {

namespace {

template <class Object, class Value>
bool Keep(Object& x, Value lower, Value upper) {
  const Value least = std::max(lower, x.GetLowerBound());
  const Value greatest = std::min(upper, x.GetUpperBound());
  if (least == x.GetLowerBound() && greatest == x.GetUpperBound()) return false;
  if (x.GetCardinality() == kSingleAny && least != greatest) return false;
  if (least > greatest) {
    x.SetNil();
  } else if (least == greatest) {
    x.SetExactValue(least);
  } else {
    x.SetLowerBound(least);
    x.SetUpperBound(greatest);
  }
  return true;
}

}  // namespace

bool KeepBetween(ZULTaVoInteger& x, long lower, long upper) { return Keep(x, lower, upper); }
bool KeepBetween(ZULTaVoReal& x, double lower, double upper) { return Keep(x, lower, upper); }

}  // namespace zultav::detail
