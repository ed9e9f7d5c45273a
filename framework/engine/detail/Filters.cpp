#include "framework/engine/detail/Filters.h"

#include <algorithm>

#include "framework/solver/SingleValue.h"
#include "framework/solver/ZULTaVoNetwork.h"

namespace zultav::engine {

namespace {

IntegerRange BoundsOf(const ZULTaVoInteger& x) { return {x.GetLowerBound(), x.GetUpperBound()}; }
RealRange BoundsOf(const ZULTaVoReal& x) { return {x.GetLowerBound(), x.GetUpperBound()}; }
IntegerRange BoundsOf(const ZULTaVoBoolean& x) {
  return {x.IsTrue() != 0 ? 1 : 0, x.IsFalse() != 0 ? 0 : 1};
}

template <class Object, class Range>
void SetBounds(Object& x, const Range& range) {
  using Value = decltype(x.GetLowerBound());
  const auto lower = static_cast<Value>(range.lower), upper = static_cast<Value>(range.upper);
  if (lower == upper) {
    x.SetExactValue(lower);
  } else if (x.IsAny() == 0 || x.GetCardinality() != kSingleAny) {
    x.SetLowerBound(lower);
    x.SetUpperBound(upper);
  }
}
void SetBounds(ZULTaVoBoolean& x, const IntegerRange& range) {
  if (range.lower == range.upper) x.SetExactValue(range.lower != 0 ? 1 : 0);
}

/// Narrows the object to what is known; what its type cannot hold, to the bound that is nearest.
/// Answers its bounds.
template <class Object, class Range>
Range ShowBounds(const Range& known, Object& x) {
  const Range range = BoundsOf(x);
  if (range.IsEmpty() || (known.lower <= range.lower && known.upper >= range.upper)) return range;
  SetBounds(x, Range(std::clamp(known.lower, range.lower, range.upper),
                     std::clamp(known.upper, range.lower, range.upper)));
  return BoundsOf(x);
}

/// What the filter has narrowed; a side that it has left says nothing.
template <class Object, class Range>
Range FindNarrowed(const Object& x, const Range& shown) {
  const Range now = BoundsOf(x);
  Range narrowed;
  if (now.lower > shown.lower) narrowed.lower = now.lower;
  if (now.upper < shown.upper) narrowed.upper = now.upper;
  return narrowed;
}

Engine::Status StatusOf(ZULTaVoNetwork::Status status) {
  switch (status) {
    case ZULTaVoNetwork::Status::kContradiction:
      return Engine::Status::kFailed;
    case ZULTaVoNetwork::Status::kBadArguments:
      return Engine::Status::kBadArguments;
    case ZULTaVoNetwork::Status::kOutOfMemory:
      return Engine::Status::kOutOfMemory;
    default:
      return Engine::Status::kFixpoint;
  }
}

}  // namespace

Filters::Filters(const Program& program) {
  std::size_t most = 0;
  for (const Rule& rule : program.GetRules())
    if (rule.code == Code::kFilter) most = std::max<std::size_t>(most, rule.count);
  mShown.resize(most);
}

Engine::Status Filters::Run(Engine& engine, ZULTaVoNetwork& network, const Rule& rule) {
  const std::span<const Slot> slots = engine.GetProgram().GetArguments(rule);
  const auto objectAt = [&](std::size_t i) {
    return static_cast<ZULTaVoAny*>(network.GetArguments(rule.data)[i]);
  };
  for (std::size_t i = 0; i < slots.size(); ++i) {
    if (!network.SaveValue(objectAt(i))) return Engine::Status::kOutOfMemory;
    Show(engine, slots[i], *objectAt(i), mShown[i]);
  }
  const std::uint64_t narrowings = network.GetStatistics().narrowings;
  const Engine::Status status = StatusOf(network.FilterOnce(rule.data));
  if (status != Engine::Status::kFixpoint) return status;
  const bool narrowed = network.GetStatistics().narrowings != narrowings;
  for (std::size_t i = 0; i < slots.size(); ++i) {
    if (objectAt(i)->IsNil() != 0 || !Take(engine, slots[i], *objectAt(i), mShown[i]))
      return Engine::Status::kFailed;
    if (narrowed && engine.GetProgram().GetSlot(slots[i]).kind == Kind::kOpaque)
      engine.TellChanged(slots[i]);
  }
  return status;
}

void Filters::Show(const Engine& engine, Slot slot, ZULTaVoAny& x, Shown& shown) {
  if (engine.GetProgram().GetSlot(slot).kind == Kind::kOpaque) return;
  if (auto* integer = ZULTaVoCast<ZULTaVoInteger>(&x))
    shown.integers = ShowBounds(engine.GetIntegers(slot), *integer);
  else if (auto* boolean = ZULTaVoCast<ZULTaVoBoolean>(&x))
    shown.integers = ShowBounds(engine.GetIntegers(slot), *boolean);
  else if (auto* real = ZULTaVoCast<ZULTaVoReal>(&x))
    shown.reals = ShowBounds(engine.GetReals(slot), *real);
}

bool Filters::Take(Engine& engine, Slot slot, const ZULTaVoAny& x, const Shown& shown) {
  if (engine.GetProgram().GetSlot(slot).kind == Kind::kOpaque) return true;
  if (const auto* integer = ZULTaVoCast<ZULTaVoInteger>(&x))
    return engine.Narrow(slot, FindNarrowed(*integer, shown.integers));
  if (const auto* boolean = ZULTaVoCast<ZULTaVoBoolean>(&x))
    return engine.Narrow(slot, FindNarrowed(*boolean, shown.integers));
  const auto* real = ZULTaVoCast<ZULTaVoReal>(&x);
  return real == nullptr || engine.Narrow(slot, FindNarrowed(*real, shown.reals));
}

}  // namespace zultav::engine
