#include <vector>

#include "relations/Relations.h"

namespace zultav::relations {

namespace {

using Outcome = ZULTaVoPropagator::Outcome;

/// x[i] = j exactly where y[j] = i, of two lists of the same size; arguments: x, y.
///
/// A value goes from one list exactly where its mirror image goes from the other. Looks at those
/// alone that have lost values since it last did.
class Inverse final : public ZULTaVoPropagator {
 public:
  /// @param firstOfX, firstOfY  the index of each list's first member
  Inverse(std::size_t size, std::int64_t firstOfX, std::int64_t firstOfY)
      : mSize(static_cast<std::uint32_t>(size)), mFirst{firstOfX, firstOfY} {}
  Wake GetWake(std::uint32_t /*argument*/) const override { return Wake::kOnValues; }
  Cost GetCost() const override { return Cost::kQuadratic; }
  std::uint32_t GetStateSize() const override { return 2 * mSize; }
  Outcome Propagate(ZULTaVoDomains& domains) override;

 private:
  bool Mirror(ZULTaVoDomains& domains, std::uint32_t x);

  std::uint32_t mSize;
  std::int64_t mFirst[2];
};

ZULTaVoPropagator::Outcome Inverse::Propagate(ZULTaVoDomains& domains) {
  const auto size = static_cast<std::int64_t>(mSize);
  for (std::uint32_t x = 0; x < 2 * mSize; ++x) {
    const std::int64_t first = mFirst[x < mSize ? 1 : 0];
    if (!domains.SetLower(x, first) || !domains.SetUpper(x, first + size - 1))
      return Outcome::kFailed;
  }
  // The state is one less than the number of values, where that was seen.
  bool isNew = true, areFixed = true;
  while (isNew) {
    isNew = false;
    areFixed = true;
    for (std::uint32_t x = 0; x < 2 * mSize; ++x) {
      const auto left = static_cast<std::int64_t>(domains.GetSize(x));
      areFixed = areFixed && left == 1;
      if (domains.GetState(x) == left) continue;
      domains.SetState(x, left);
      isNew = true;
      if (!Mirror(domains, x)) return Outcome::kFailed;
    }
  }
  return areFixed ? Outcome::kEntailed : Outcome::kFixpoint;
}

/// What one member has lost is lost by the members that it would lead to; where it has one value
/// left, that member leads back.
bool Inverse::Mirror(ZULTaVoDomains& domains, std::uint32_t x) {
  const bool isFirst = x < mSize;
  const std::uint32_t others = isFirst ? mSize : 0;
  const std::int64_t first = mFirst[isFirst ? 1 : 0];
  const std::int64_t self = mFirst[isFirst ? 0 : 1] + (isFirst ? x : x - mSize);
  for (std::uint32_t i = 0; i < mSize; ++i)
    if (!domains.Contains(x, first + i) && !domains.Remove(others + i, self)) return false;
  return !domains.IsFixed(x) ||
         domains.Fix(others + static_cast<std::uint32_t>(domains.GetLower(x) - first), self);
}

std::unique_ptr<ZULTaVoPropagator> MakeInverse(Arguments arguments) {
  return std::make_unique<Inverse>(arguments[0].GetSize(), arguments[0].firstIndex,
                                   arguments[1].firstIndex);
}

}  // namespace

Definition DescribeInverse() {
  return {
      .name = "inverse",
      .meaning = "x[i] = j exactly where y[j] = i",
      .parameters = {{.name = "x", .size = "n"}, {.name = "y", .size = "n"}},
      .make = &MakeInverse
  };
}

}  // namespace zultav::relations
