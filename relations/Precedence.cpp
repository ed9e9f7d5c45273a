#include "relations/Relations.h"

namespace zultav::relations {

namespace {

using Outcome = ZULTaVoPropagator::Outcome;

/// No member of the list is `second` unless one before it is `first`; arguments: the list.
///
/// Domain consistent where sets of values are kept.
class Precedence final : public ZULTaVoPropagator {
 public:
  /// Two different values.
  Precedence(std::size_t size, std::int64_t first, std::int64_t second)
      : mSize(static_cast<std::uint32_t>(size)), mFirst(first), mSecond(second) {}
  Wake GetWake(std::uint32_t /*argument*/) const override { return Wake::kOnValues; }
  Outcome Propagate(ZULTaVoDomains& domains) override;

 private:
  std::uint32_t mSize;
  std::int64_t mFirst, mSecond;
};

ZULTaVoPropagator::Outcome Precedence::Propagate(ZULTaVoDomains& domains) {
  // Nothing up to the first member that can be `first` is `second`.
  std::uint32_t earliest = 0;
  bool isGone = true;
  for (; earliest < mSize; ++earliest) {
    if (!domains.Remove(earliest, mSecond)) return Outcome::kFailed;
    isGone = isGone && !domains.Contains(earliest, mSecond);
    if (domains.Contains(earliest, mFirst)) break;
  }
  if (earliest == mSize) return isGone ? Outcome::kEntailed : Outcome::kFixpoint;
  // It is the one, if no other can be before the first that is `second`.
  std::uint32_t x = earliest + 1;
  while (x < mSize && !domains.Contains(x, mFirst) &&
         !(domains.IsFixed(x) && domains.GetLower(x) == mSecond))
    ++x;
  if (x < mSize && domains.IsFixed(x) && domains.GetLower(x) == mSecond &&
      !domains.Fix(earliest, mFirst))
    return Outcome::kFailed;
  return domains.IsFixed(earliest) && domains.GetLower(earliest) == mFirst && isGone
             ? Outcome::kEntailed
             : Outcome::kFixpoint;
}

std::unique_ptr<ZULTaVoPropagator> MakePrecedence(Arguments arguments) {
  return std::make_unique<Precedence>(arguments[2].GetSize(), arguments[0].integers[0],
                                      arguments[1].integers[0]);
}

}  // namespace

Definition DescribePrecedence() {
  return {
      .name = "value_precede",
      .meaning = "nothing in the list is the second value before something is the first",
      .parameters = {{.name = "first", .given = Given::kKnown},
                     {.name = "second", .given = Given::kKnown},
                     {.name = "list", .size = "n"}},
      .make = &MakePrecedence,
      .check = [](Arguments arguments) -> std::string {
        return arguments[0].integers[0] == arguments[1].integers[0]
                   ? "'first' and 'second' are the same"
                   : "";
                     }
  };
}

}  // namespace zultav::relations
