#include "relations/Relations.h"
#include "relations/detail/Order.h"

namespace zultav::relations {

namespace {

/// Integers of which none is less than the one before it; strictly: each is greater. Domain
/// consistent.
class Increasing final : public ZULTaVoPropagator {
 public:
  Increasing(std::uint32_t count, bool strictly) : mCount(count), mStrictly(strictly) {}
  Wake GetWake(std::uint32_t) const override { return Wake::kOnBounds; }
  Outcome Propagate(ZULTaVoDomains& domains) override;

 private:
  bool IsTwice(const ZULTaVoDomains& domains, std::uint32_t i) const;

  std::uint32_t mCount;
  bool mStrictly;
};

ZULTaVoPropagator::Outcome Increasing::Propagate(ZULTaVoDomains& domains) {
  // Lower bounds are final after the way up, upper ones after the way down.
  for (std::uint32_t i = 1; i < mCount; ++i)
    if (!NarrowToOrder(domains, i - 1, i, mStrictly)) return Outcome::kFailed;
  for (std::uint32_t i = mCount; i-- > 1;)
    if (!NarrowToOrder(domains, i - 1, i, mStrictly)) return Outcome::kFailed;
  bool isInOrder = true;
  for (std::uint32_t i = 1; i < mCount; ++i) {
    if (mStrictly && IsTwice(domains, i)) return Outcome::kFailed;
    isInOrder = isInOrder && IsInOrder(domains, i - 1, i, mStrictly);
  }
  return isInOrder ? Outcome::kEntailed : Outcome::kFixpoint;
}

/// Bounds that are not in order after all stand in two places of the list, and would go on for
/// ever.
bool Increasing::IsTwice(const ZULTaVoDomains& domains, std::uint32_t i) const {
  const auto isAbove = [](std::int64_t first, std::int64_t second) {
    return first >= second && first != ZULTaVoDomains::kNoUpper &&
           second != ZULTaVoDomains::kNoLower;
  };
  return isAbove(domains.GetLower(i - 1), domains.GetLower(i)) ||
         isAbove(domains.GetUpper(i - 1), domains.GetUpper(i));
}

template <bool Strictly>
std::unique_ptr<ZULTaVoPropagator> Make(Arguments arguments) {
  return std::make_unique<Increasing>(arguments[0].columns, Strictly);
}

}  // namespace

Definition DescribeIncreasing() {
  return {.name = "increasing",
          .meaning = "no value is less than the one before it",
          .parameters = {{.name = "list", .size = "n"}},
          .make = &Make<false>};
}

Definition DescribeStrictlyIncreasing() {
  return {.name = "strictly_increasing",
          .meaning = "each value is greater than the one before it",
          .parameters = {{.name = "list", .size = "n"}},
          .make = &Make<true>};
}

}  // namespace zultav::relations
