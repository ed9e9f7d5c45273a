// Any values in any slot of any domain, and under any operator: domains only narrow, stay sets of
// numbers, and the answers tell what changed.

#include <algorithm>
#include <array>
#include <climits>
#include <tuple>

#include "tests/fuzz/any_value.h"

namespace {

using Any = ZULTaVoAny;
using Scalar = ZULTaVoScalar;
using Number = ZULTaVoNumber;
using Real = ZULTaVoReal;
using Boolean = ZULTaVoBoolean;
using Pool = std::array<ZULTaVoAny*, 3>;

double Double(Bytes& bytes) {
  const std::uint8_t form = bytes.Below(4);
  if (form == 0) return bytes.Take<double>();
  const double whole = form == 1 ? bytes.Take<std::int8_t>() : bytes.Take<std::int32_t>();
  return form == 3 ? whole * 1.5707963267948966 : whole;
}

/// Any value of the domain; bounds that are no numbers or in disorder are tried as well.
void Fill(ZULTaVoAny& value, Bytes& bytes) {
  const std::uint8_t form = bytes.Below(8);
  value.SetAny();
  if (form == 0) return;
  if (form == 1) return value.SetNil();
  if (auto* boolean = ZULTaVoCast<ZULTaVoBoolean>(&value)) {
    boolean->SetExactValue(form % 2);
  } else if (auto* integer = ZULTaVoCast<ZULTaVoInteger>(&value)) {
    const long bound = form % 2 ? bytes.Take<std::int32_t>() : bytes.Take<std::int8_t>();
    if (form < 4) return integer->SetExactValue(bound);
    integer->SetLowerBound(bound);
    const std::int64_t upper = std::int64_t{bound} + bytes.Take<std::uint8_t>();
    integer->SetUpperBound(static_cast<long>(std::min<std::int64_t>(upper, LONG_MAX)));
  } else if (auto* real = ZULTaVoCast<ZULTaVoReal>(&value)) {
    const double bound = Double(bytes);
    if (form < 4) return real->SetExactValue(bound);
    real->SetLowerBound(bound);
    real->SetUpperBound(form < 6 ? bound + std::fabs(Double(bytes)) : Double(bytes));
  }
  RequireValue(value);
}

template <class Domain>
bool HasBoundsWithin(const Domain& inner, const ZULTaVoAny& outer) {
  const auto& around = static_cast<const Domain&>(outer);
  return around.GetLowerBound() <= inner.GetLowerBound() &&
         inner.GetUpperBound() <= around.GetUpperBound();
}

bool IsWithin(const ZULTaVoAny& inner, const ZULTaVoAny& outer) {
  if (inner.IsNil() || outer.IsAny()) return true;
  if (const auto* real = ZULTaVoCast<ZULTaVoReal>(&inner)) return HasBoundsWithin(*real, outer);
  if (const auto* integer = ZULTaVoCast<ZULTaVoInteger>(&inner))
    return HasBoundsWithin(*integer, outer);
  return RecordOf(inner) == RecordOf(outer);
}

bool HasNil(const Pool& values) {
  return std::any_of(values.begin(), values.end(), [](const Any* v) { return v->IsNil(); });
}

/// Values before an operation, to be compared with those after it.
class Before {
 public:
  explicit Before(const Pool& values) : mValues(values) {
    for (std::size_t i = 0; i < values.size(); ++i)
      mCopies[i] = mNetwork.AddObject(values[i]->GetDescriptor(), values[i]);
  }
  bool IsChanged() const {
    return !std::equal(
        mValues.begin(), mValues.end(), mCopies.begin(),
        [](const Any* now, const Any* then) { return RecordOf(*now) == RecordOf(*then); });
  }
  void RequireNarrower(const char* operation) const {
    for (std::size_t i = 0; i < mValues.size(); ++i) {
      RequireValue(*mValues[i]);
      REQUIRE(IsWithin(*mValues[i], *mCopies[i]), operation, "widens" + Text());
    }
  }
  std::string Text() const {
    std::string text;
    for (std::size_t i = 0; i < mValues.size(); ++i)
      text += "\n  " + TextOf(*mCopies[i]) + " -> " + TextOf(*mValues[i]);
    return text;
  }

 private:
  const Pool& mValues;
  ZULTaVoNetwork mNetwork;
  Pool mCopies;
};

// --- Slots ------------------------------------------------------------------------------------

/// Calls on the values where their kinds fit; else answers -1.
template <class C, class... A, class Slot, std::size_t... I>
int Call(Slot slot, const Pool& values, std::index_sequence<I...>) {
  C* const receiver = ZULTaVoCast<C>(values[0]);
  [[maybe_unused]] const auto arguments =
      std::make_tuple(ZULTaVoCast<std::remove_cvref_t<A>>(values[1 + I])...);
  if (receiver == nullptr || ((std::get<I>(arguments) == nullptr) || ...)) return -1;
  return (receiver->*slot)(*std::get<I>(arguments)...);
}
template <class C, class... A>
int Apply(int (C::*slot)(A...), const Pool& values) {
  return Call<C, A...>(slot, values, std::index_sequence_for<A...>());
}
template <class C, class... A>
int Apply(int (C::*slot)(A...) const, const Pool& values) {
  return Call<C, A...>(slot, values, std::index_sequence_for<A...>());
}

struct Slot {
  const char* name;
  int (*apply)(const Pool& values);
};

// The slots that have overloads, by their arguments.
constexpr int (Any::*kMin)() = &Any::CalcMinValue;
constexpr int (Any::*kMax)() = &Any::CalcMaxValue;
constexpr int (Scalar::*kLesser)(const Scalar&, const Scalar&) = &Scalar::CalcMinValue;
constexpr int (Scalar::*kGreater)(const Scalar&, const Scalar&) = &Scalar::CalcMaxValue;

// clang-format off
#define SLOT(MEMBER) {#MEMBER, [](const Pool& values) { return Apply(MEMBER, values); }}
#define BOTH(CLASS, NAME) SLOT(&CLASS::Calc##NAME##Value), SLOT(&CLASS::CalcInverse##NAME##Value)
const Slot kSlots[] = {
    SLOT(kMin),
    SLOT(kMax),
    SLOT(kLesser),
    SLOT(kGreater),
    SLOT(&Any::Intersect),
    BOTH(Any, Equal), BOTH(Any, Unequal),
    SLOT(&Any::CalcIsEqual),
    BOTH(Any, LessOrEqual), BOTH(Any, NotLessAndUnequal),
    SLOT(&Any::CalcIsLessOrEqual),
    SLOT(&Scalar::CalcFirstInverseMinValue),
    SLOT(&Scalar::CalcFirstInverseMaxValue),
    BOTH(Scalar, Less), BOTH(Scalar, NotLess),
    SLOT(&Scalar::CalcIsLess),
    BOTH(Scalar, Next),
    SLOT(&Number::CalcZeroValue),
    SLOT(&Number::CalcOneValue),
    BOTH(Number, Absolute), BOTH(Number, Negative), BOTH(Number, Signum),
    SLOT(&Number::CalcSumValue), SLOT(&Number::CalcFirstInverseSumValue),
    SLOT(&Number::CalcProdValue), SLOT(&Number::CalcFirstInverseProdValue),
    SLOT(&Number::CalcModValue), SLOT(&Number::CalcFirstInverseModValue),
    SLOT(&Number::CalcSecondInverseModValue),
    SLOT(&Number::CalcPowerValue), SLOT(&Number::CalcFirstInversePowerValue),
    SLOT(&Number::CalcSecondInversePowerValue),
    SLOT(&Real::CalcPiValue),
    SLOT(&Real::CalcEValue),
    BOTH(Real, Exp), BOTH(Real, Sqrt), BOTH(Real, Sin), BOTH(Real, Cos), BOTH(Real, Tan),
    BOTH(Real, Floor), BOTH(Real, Ceil), BOTH(Real, Round), BOTH(Boolean, Negative),
};
#undef BOTH
#undef SLOT
// clang-format on

void TrySlot(Bytes& bytes) {
  const Slot& slot = kSlots[bytes.Below(std::size(kSlots))];
  ZULTaVoNetwork network;
  Pool pool, values;
  for (ZULTaVoAny*& value : pool) {
    value = network.AddObject(ValueTypes()[bytes.Below(ValueTypes().size())]);
    Fill(*value, bytes);
  }
  for (ZULTaVoAny*& value : values) value = pool[bytes.Below(pool.size())];
  const Before before(values);
  const int answer = slot.apply(values);
  before.RequireNarrower(slot.name);
  // Some contradictions are reported again of a domain that was Nil already.
  const bool changed = before.IsChanged();
  REQUIRE(answer > 0 ? changed || HasNil(values) : !changed, slot.name,
          "answers wrongly" + before.Text());
}

// --- Operators --------------------------------------------------------------------------------

const std::vector<const ZULTaVoOperatorDescriptor*>& Operators() {
  static const auto operators = [] {
    std::vector<const ZULTaVoOperatorDescriptor*> found;
    for (const ZULTaVoObjectDescriptor* descriptor : Numbers().GetDescriptors())
      if (descriptor->GetKind() == ZULTaVoObjectDescriptor::Kind::kOperator)
        found.push_back(static_cast<const ZULTaVoOperatorDescriptor*>(descriptor));
    return found;
  }();
  return operators;
}

void TryOperator(Bytes& bytes) {
  const auto& op = *Operators()[bytes.Take<std::uint16_t>() % Operators().size()];
  ZULTaVoNetwork network;
  Pool values;
  const auto add = [&](const ZULTaVoObjectDescriptor* wanted) {
    std::size_t choice = bytes.Below(ValueTypes().size());
    const auto fits = [&] { return wanted->IsMatched(ValueTypes()[choice]); };
    while (!fits()) choice = (choice + 1) % ValueTypes().size();
    ZULTaVoAny* const value = network.AddObject(ValueTypes()[choice]);
    Fill(*value, bytes);
    return value;
  };
  values.fill(add(op.GetResultType()));
  ZULTaVoObject* operands[2] = {};
  for (unsigned i = 0; i < op.GetNumberOfArguments(); ++i)
    operands[i] = values[i] = add(op.GetOperandType(i));
  const Before before(values);
  REQUIRE(op.Post(network, operands, values[2]) == 1, "operators take their types", op.GetName());
  network.SetFilterLimit(200);
  const auto status = network.Propagate();
  before.RequireNarrower(op.GetName());
  REQUIRE(status != ZULTaVoNetwork::Status::kBadArguments, "operators know their types",
          op.GetName());
  REQUIRE(!HasNil(values) || status == ZULTaVoNetwork::Status::kContradiction,
          "Nil is a contradiction", op.GetName() + before.Text());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Bytes bytes(data, size);
  (bytes.Below(2) ? TrySlot : TryOperator)(bytes);
  return 0;
}
