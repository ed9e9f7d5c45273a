#ifndef ZULTAV_SEARCH_DETAIL_SEARCH_VARIABLE_H
#define ZULTAV_SEARCH_DETAIL_SEARCH_VARIABLE_H

#include <new>

#include "framework/solver/ZULTavAbstractTypes.h"

namespace zultav::detail {

/// How narrow a real domain must be to count as decided: either bound suffices.
struct WidthLimit {
  double absolute;
  double relative;

  bool Holds(double lower, double upper) const;
};

/// Saves the value before the search changes it. Throws std::bad_alloc when memory ran out.
inline void SaveOrThrow(ZULTaVoNetwork& network, ZULTaVoAny& value) {
  if (!network.SaveValue(&value)) throw std::bad_alloc();
}

/// A value of the network as the search sees it. Kinds are told apart once, not per node.
class SearchVariable {
 public:
  enum class Kind { kInteger, kBoolean, kReal, kOther };

  SearchVariable(ZULTaVoAny* value, const ZULTaVoObjectDescriptor* type);

  ZULTaVoAny* GetValue() const { return mValue; }
  const ZULTaVoObjectDescriptor* GetType() const { return mType; }
  Kind GetKind() const { return mKind; }
  bool IsDiscrete() const { return mKind == Kind::kInteger || mKind == Kind::kBoolean; }

  /// Exactly one value.
  bool IsSingle() const;
  /// Whether the search may still split the domain. A single-value type that is Any cannot be.
  bool IsOpen(const WidthLimit& limit) const;
  /// Whether one domain of the variable lies within another; where it is no real, whether both are
  /// the same single value.
  bool IsWithin(const ZULTaVoAny& inner, const ZULTaVoAny& outer) const;
  /// Whether a domain of the variable is one of reals and has a bound where its type has none.
  bool IsUnbounded(const ZULTaVoAny& domain) const;
  /// Upper minus lower bound, 1 for an undecided boolean.
  double GetWidth() const { return mValue->GetWidth(); }
  /// The selection that loses nothing, for the end points of a real are no values of their own, and
  /// that leaves the half without a bound for later.
  ZULTaVoAny::ValueSelection Adapt(ZULTaVoAny::ValueSelection selection) const;

  const ZULTaVoInteger& AsInteger() const { return static_cast<const ZULTaVoInteger&>(*mValue); }
  const ZULTaVoBoolean& AsBoolean() const { return static_cast<const ZULTaVoBoolean&>(*mValue); }
  const ZULTaVoReal& AsReal() const { return static_cast<const ZULTaVoReal&>(*mValue); }

 private:
  ZULTaVoAny* mValue;
  const ZULTaVoObjectDescriptor* mType;
  Kind mKind;
};

}  // namespace zultav::detail

#endif
