// The operations that every domain inherits: width, disequality, and the decision whether a
// relation holds. They read domains through the abstract interfaces only.

#include <algorithm>
#include <cmath>

#include "framework/solver/LocalCopy.h"
#include "framework/solver/SingleValue.h"
#include "framework/solver/ZULTaVoBoolean.h"
#include "framework/solver/ZULTaVoInteger.h"
#include "framework/solver/ZULTaVoReal.h"

using zultav::IsSingleValue;
using zultav::LocalCopy;

namespace {

struct Bounds {
  double lower = 0;
  double upper = 0;
};

Bounds GetBounds(const ZULTaVoAny& x) {
  if (const auto* integer = ZULTaVoCast<ZULTaVoInteger>(&x))
    return {static_cast<double>(integer->GetLowerBound()),
            static_cast<double>(integer->GetUpperBound())};
  if (const auto* real = ZULTaVoCast<ZULTaVoReal>(&x))
    return {real->GetLowerBound(), real->GetUpperBound()};
  if (const auto* boolean = ZULTaVoCast<ZULTaVoBoolean>(&x))
    return {boolean->IsTrue() ? 1.0 : 0.0, boolean->IsFalse() ? 0.0 : 1.0};
  return {};
}

bool IsBoolean(const ZULTaVoAny& x) { return x.IsDerivedFrom(ZULTaVoBoolean::sIdent) != 0; }
bool IsNumber(const ZULTaVoAny& x) { return x.IsDerivedFrom(ZULTaVoNumber::sIdent) != 0; }
bool AreComparable(const ZULTaVoAny& x, const ZULTaVoAny& y) {
  return IsNumber(x) ? IsNumber(y) : IsBoolean(x) && IsBoolean(y);
}

int Remove(ZULTaVoAny& x, double value) {
  if (auto* integer = ZULTaVoCast<ZULTaVoInteger>(&x))
    return value == std::trunc(value) && std::fabs(value) <= 2147483647.0
               ? integer->RemoveExactValue(static_cast<long>(value))
               : 0;
  if (auto* real = ZULTaVoCast<ZULTaVoReal>(&x)) return real->RemoveExactValue(value);
  return static_cast<ZULTaVoBoolean&>(x).RemoveExactValue(value != 0);
}

/// Narrows x for x <> y.
int ImposeUnequal(ZULTaVoAny& x, const ZULTaVoAny& y) {
  const bool single = IsSingleValue(y);
  if ((!single && !y.IsNil()) || x.IsNil() || !AreComparable(x, y)) return 0;
  if (single) return Remove(x, GetBounds(y).lower);
  x.SetNil();
  return 1;
}

/// Narrows `truth` to whether the relation holds between x and y: each of the relation and its
/// negation is imposed on a copy of x; what survives decides. Where both survive between single
/// values, which tolerances allow, `holds` compares the values exactly.
template <class Impose, class Deny, class Holds>
int Decide(const ZULTaVoAny& x, const ZULTaVoAny& y, ZULTaVoBoolean& truth, Impose impose,
           Deny deny, Holds holds) {
  if (truth.IsNil()) return 0;
  if (x.IsNil() || y.IsNil()) {
    truth.SetNil();
    return 1;
  }
  LocalCopy related(x);
  LocalCopy negated(x);
  if (!related || !negated) return 0;
  impose(*related);
  deny(*negated);
  const bool possible = !related->IsNil();
  const bool deniable = !negated->IsNil();
  if (possible != deniable) return possible ? truth.SetTrue() : truth.SetFalse();
  if (!possible || !AreComparable(x, y) || !IsSingleValue(x) || !IsSingleValue(y)) return 0;
  return holds(GetBounds(x).lower, GetBounds(y).lower) ? truth.SetTrue() : truth.SetFalse();
}

int DecideEqual(const ZULTaVoAny& x, const ZULTaVoAny& y, ZULTaVoBoolean& truth) {
  return Decide(
      x, y, truth, [&](ZULTaVoAny& copy) { copy.CalcEqualValue(y); },
      [&](ZULTaVoAny& copy) { copy.CalcUnequalValue(y); },
      [](double a, double b) { return a == b; });
}

int DecideLessOrEqual(const ZULTaVoAny& x, const ZULTaVoAny& y, ZULTaVoBoolean& truth) {
  return Decide(
      x, y, truth, [&](ZULTaVoAny& copy) { copy.CalcLessOrEqualValue(y); },
      [&](ZULTaVoAny& copy) { copy.CalcNotLessAndUnequalValue(y); },
      [](double a, double b) { return a <= b; });
}

int DecideLess(const ZULTaVoScalar& x, const ZULTaVoScalar& y, ZULTaVoBoolean& truth) {
  return Decide(
      x, y, truth, [&](ZULTaVoAny& copy) { static_cast<ZULTaVoScalar&>(copy).CalcLessValue(y); },
      [&](ZULTaVoAny& copy) { static_cast<ZULTaVoScalar&>(copy).CalcNotLessValue(y); },
      [](double a, double b) { return a < b; });
}

}  // namespace

bool zultav::IsSingleValue(const ZULTaVoAny& x) {
  if (x.GetCardinality() != 1) return false;
  if (x.IsDerivedFrom(ZULTaVoInteger::sIdent)) return true;
  const auto* real = ZULTaVoCast<ZULTaVoReal>(&x);  // a narrow interval counts as one value, too
  return real == nullptr || IsSingleValue(*real);
}

double ZULTaVoAny::GetWidth() const {
  if (IsNil()) return 0;
  const Bounds bounds = GetBounds(*this);
  return bounds.upper - bounds.lower;
}

double ZULTaVoAny::GetRelativeWidth(double scale) const {
  const double width = GetWidth();
  if (width == 0) return 0;
  const Bounds bounds = GetBounds(*this);
  return width / std::max({scale, std::fabs(bounds.lower), std::fabs(bounds.upper)});
}

double ZULTaVoReal::GetRelativeWidth(double scale) const {
  if (IsNil()) return 0;
  const double lower = GetLowerBound();
  const double upper = GetUpperBound();
  return upper == lower ? 0
                        : (upper - lower) / std::max({scale, std::fabs(lower), std::fabs(upper)});
}

#define ZULTAV_VALUE_OPERATIONS(CLASS)                                                        \
  int CLASS::CalcUnequalValue(const ZULTaVoAny& y) { return ImposeUnequal(*this, y); }        \
  int CLASS::CalcInverseUnequalValue(ZULTaVoAny& y) const { return ImposeUnequal(y, *this); } \
  int CLASS::CalcIsEqual(const ZULTaVoAny& y, ZULTaVoBoolean& truth) const {                  \
    return DecideEqual(*this, y, truth);                                                      \
  }                                                                                           \
  int CLASS::CalcIsLessOrEqual(const ZULTaVoAny& y, ZULTaVoBoolean& truth) const {            \
    return DecideLessOrEqual(*this, y, truth);                                                \
  }                                                                                           \
  int CLASS::CalcIsLess(const ZULTaVoScalar& y, ZULTaVoBoolean& truth) const {                \
    return DecideLess(*this, y, truth);                                                       \
  }

ZULTAV_VALUE_OPERATIONS(ZULTaVoInteger)
ZULTAV_VALUE_OPERATIONS(ZULTaVoReal)
ZULTAV_VALUE_OPERATIONS(ZULTaVoBoolean)
#undef ZULTAV_VALUE_OPERATIONS
