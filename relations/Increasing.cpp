#include "relations/Relations.h"

namespace zultav::relations {

namespace {

/// x1 <= x2 <= … or, with a gap of 1, x1 < x2 < …: domain consistent, by bounds alone.
class Increasing final : public ZULTaVoPropagator {
 public:
  Increasing(std::uint32_t first, std::uint32_t count, std::int64_t gap)
      : mFirst(first), mCount(count), mGap(gap) {}

  Wake GetWake(std::uint32_t) const override { return Wake::kOnBounds; }
  Outcome Propagate(ZULTaVoDomains& x) override {
    bool isDecided = true;
    for (std::uint32_t i = mFirst + 1; i < mFirst + mCount; ++i) {
      const std::int64_t lower = x.GetLower(i - 1);
      if (lower == ZULTaVoDomains::kNoLower) continue;
      if (lower > ZULTaVoDomains::kNoUpper - mGap || !x.SetLower(i, lower + mGap))
        return Outcome::kFailed;
    }
    for (std::uint32_t i = mFirst + mCount; i-- > mFirst + 1;) {
      const std::int64_t upper = x.GetUpper(i);
      if (upper != ZULTaVoDomains::kNoUpper &&
          (upper < ZULTaVoDomains::kNoLower + mGap || !x.SetUpper(i - 1, upper - mGap)))
        return Outcome::kFailed;
      const std::int64_t before = x.GetUpper(i - 1);
      isDecided =
          isDecided && before <= ZULTaVoDomains::kNoUpper - mGap && before + mGap <= x.GetLower(i);
    }
    return isDecided ? Outcome::kEntailed : Outcome::kFixpoint;
  }

 private:
  std::uint32_t mFirst, mCount;
  std::int64_t mGap;
};

template <std::int64_t Gap>
std::unique_ptr<ZULTaVoPropagator> Make(Arguments arguments) {
  return std::make_unique<Increasing>(arguments[0].first, arguments[0].columns, Gap);
}

}  // namespace

Definition DescribeIncreasing() {
  return {.name = "increasing",
          .meaning = "no value is less than the one before it",
          .parameters = {{.name = "list", .size = "n"}},
          .make = &Make<0>};
}

Definition DescribeStrictlyIncreasing() {
  return {.name = "strictly_increasing",
          .meaning = "each value is greater than the one before it",
          .parameters = {{.name = "list", .size = "n"}},
          .make = &Make<1>};
}

}  // namespace zultav::relations
