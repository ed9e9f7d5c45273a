#include "framework/search/detail/SearchVariable.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "framework/solver/LocalCopy.h"
#include "framework/solver/SingleValue.h"

namespace zultav::detail {

namespace {

// Solutions further out than this are looked for last, unless the search is told where to begin:
// doubles are so far apart there that few of them can be told from their neighbours, or proven.
constexpr double kFar = 1e8;

SearchVariable::Kind KindOf(const ZULTaVoAny& value) {
  if (value.IsDerivedFrom(ZULTaVoInteger::sIdent)) return SearchVariable::Kind::kInteger;
  if (value.IsDerivedFrom(ZULTaVoBoolean::sIdent)) return SearchVariable::Kind::kBoolean;
  if (value.IsDerivedFrom(ZULTaVoReal::sIdent)) return SearchVariable::Kind::kReal;
  return SearchVariable::Kind::kOther;
}

/// Whether a domain of reals has no lower bound, and no upper one, but those of its type.
std::pair<bool, bool> FindUnbounded(const ZULTaVoAny& domain) {
  const LocalCopy any(domain);
  if (!any) return {false, false};
  any->SetAny();
  const auto& x = static_cast<const ZULTaVoReal&>(domain);
  const auto& all = static_cast<const ZULTaVoReal&>(*any);
  return {x.GetLowerBound() <= all.GetLowerBound(), x.GetUpperBound() >= all.GetUpperBound()};
}

}  // namespace

bool WidthLimit::Holds(double lower, double upper) const {
  const double width = upper - lower;
  return width <= absolute || width <= relative * std::max(std::fabs(lower), std::fabs(upper));
}

SearchVariable::SearchVariable(ZULTaVoAny* value, const ZULTaVoObjectDescriptor* type)
    : mValue(value), mType(type), mKind(KindOf(*value)) {}

bool SearchVariable::IsSingle() const {
  switch (mKind) {
    case Kind::kInteger:
      return zultav::IsSingleValue(AsInteger());
    case Kind::kBoolean:
      return zultav::IsSingleValue(AsBoolean());
    case Kind::kReal:
      return zultav::IsSingleValue(AsReal());
    case Kind::kOther:
      break;
  }
  return zultav::IsSingleValue(*mValue);
}

bool SearchVariable::IsWithin(const ZULTaVoAny& inner, const ZULTaVoAny& outer) const {
  if (mKind == Kind::kReal) {
    const auto& x = static_cast<const ZULTaVoReal&>(inner);
    const auto& y = static_cast<const ZULTaVoReal&>(outer);
    return y.GetLowerBound() <= x.GetLowerBound() && x.GetUpperBound() <= y.GetUpperBound();
  }
  if (mKind == Kind::kInteger) {
    const auto& x = static_cast<const ZULTaVoInteger&>(inner);
    const auto& y = static_cast<const ZULTaVoInteger&>(outer);
    return x.GetLowerBound() == y.GetLowerBound() && x.GetUpperBound() == y.GetUpperBound();
  }
  return inner.GetCardinality() == 1 && outer.GetCardinality() == 1 && inner.IsIntersected(outer);
}

bool SearchVariable::IsUnbounded(const ZULTaVoAny& domain) const {
  if (mKind != Kind::kReal) return false;
  const auto [down, up] = FindUnbounded(domain);
  return down || up;
}

bool SearchVariable::IsOpen(const WidthLimit& limit) const {
  if (IsSingle()) return false;
  if (mKind == Kind::kBoolean) return true;
  if (mKind == Kind::kReal) {
    const double lower = AsReal().GetLowerBound(), upper = AsReal().GetUpperBound();
    const double middle = (lower + upper) * 0.5;
    if (limit.Holds(lower, upper) || !(lower < middle && middle < upper)) return false;
  }
  return mValue->GetCardinality() != zultav::kSingleAny;
}

ZULTaVoAny::ValueSelection SearchVariable::Adapt(ZULTaVoAny::ValueSelection selection) const {
  if (mKind != Kind::kReal) return selection;
  const double lower = AsReal().GetLowerBound(), upper = AsReal().GetUpperBound();
  const auto [down, up] = FindUnbounded(*mValue);
  const bool isFar = selection == ZULTaVoAny::kLowerHalf && std::max(-lower, upper) > kFar;
  if ((isFar && -lower != upper) || down != up)
    return -lower > upper ? ZULTaVoAny::kUpperHalf : ZULTaVoAny::kLowerHalf;
  if (selection == ZULTaVoAny::kLeastValue) return ZULTaVoAny::kLowerHalf;
  if (selection == ZULTaVoAny::kGreatestValue) return ZULTaVoAny::kUpperHalf;
  return selection;
}

}  // namespace zultav::detail
