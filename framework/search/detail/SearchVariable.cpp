#include "framework/search/detail/SearchVariable.h"

#include <algorithm>
#include <cmath>

#include "framework/solver/SingleValue.h"

namespace zultav::detail {

namespace {

SearchVariable::Kind KindOf(const ZULTaVoAny& value) {
  if (value.IsDerivedFrom(ZULTaVoInteger::sIdent)) return SearchVariable::Kind::kInteger;
  if (value.IsDerivedFrom(ZULTaVoBoolean::sIdent)) return SearchVariable::Kind::kBoolean;
  if (value.IsDerivedFrom(ZULTaVoReal::sIdent)) return SearchVariable::Kind::kReal;
  return SearchVariable::Kind::kOther;
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
  if (selection == ZULTaVoAny::kLeastValue) return ZULTaVoAny::kLowerHalf;
  if (selection == ZULTaVoAny::kGreatestValue) return ZULTaVoAny::kUpperHalf;
  return selection;
}

}  // namespace zultav::detail
