#include "framework/solver/ZULTaVoMembership.h"

#include <algorithm>
#include <span>

#include "framework/solver/ZULTaVoPropagator.h"

namespace {

using Arguments = ZULTaVoRelationDescriptor::Arguments;
using Range = ZULTaVoMembership::Range;

/// The ranges of the set, two numbers each.
class Ranges {
 public:
  explicit Ranges(const ZULTaVoRelationArgument& set) : mNumbers(set.integers) {}
  std::size_t GetSize() const { return mNumbers.size() / 2; }
  Range operator[](std::size_t i) const { return {mNumbers[2 * i], mNumbers[2 * i + 1]}; }
  /// The first range that reaches up to the value, or GetSize().
  std::size_t Find(std::int64_t value) const {
    std::size_t low = 0;
    for (std::size_t high = GetSize(); low < high;) {
      const std::size_t middle = low + (high - low) / 2;
      if ((*this)[middle].high < value)
        low = middle + 1;
      else
        high = middle;
    }
    return low;
  }

 private:
  std::span<const std::int64_t> mNumbers;
};

class Membership final : public ZULTaVoPropagator {
 public:
  explicit Membership(const ZULTaVoRelationArgument& set) : mRanges(set) {}
  Wake GetWake(std::uint32_t) const override { return Wake::kOnBounds; }
  bool WantsValues(std::uint32_t) const override { return true; }
  Cost GetCost() const override { return Cost::kConstant; }

  Outcome Propagate(ZULTaVoDomains& domains) override {
    std::size_t first = 0, last = 0;
    if (!NarrowBounds(domains, first, last)) return Outcome::kFailed;
    if (first == last) return Outcome::kEntailed;
    std::int64_t base = 0;
    if (domains.GetBits(0, base) == nullptr) return Outcome::kFixpoint;
    for (std::size_t i = first; i < last; ++i)
      for (std::int64_t gone = mRanges[i].high + 1; gone < mRanges[i + 1].low; ++gone)
        if (!domains.Remove(0, gone)) return Outcome::kFailed;
    return Outcome::kEntailed;
  }

 private:
  /// A bound that moves to a value may move on where that value is left out already. Answers the
  /// ranges in which the bounds are.
  bool NarrowBounds(ZULTaVoDomains& domains, std::size_t& first, std::size_t& last) const {
    while (true) {
      first = mRanges.Find(domains.GetLower(0));
      if (first == mRanges.GetSize()) return false;
      if (mRanges[first].low <= domains.GetLower(0)) break;
      if (!domains.SetLower(0, mRanges[first].low)) return false;
    }
    while (true) {
      last = mRanges.Find(domains.GetUpper(0));
      if (last < mRanges.GetSize() && mRanges[last].low <= domains.GetUpper(0)) return true;
      if (last-- == 0 || !domains.SetUpper(0, mRanges[last].high)) return false;
    }
  }

  Ranges mRanges;
};

std::unique_ptr<ZULTaVoPropagator> MakePropagator(Arguments arguments) {
  return std::make_unique<Membership>(arguments[1]);
}

std::string CheckSet(Arguments arguments) {
  const Ranges ranges(arguments[1]);
  if (arguments[1].columns != 2) return "a range has two ends";
  for (std::size_t i = 0; i < ranges.GetSize(); ++i)
    if (ranges[i].low > ranges[i].high || (i > 0 && ranges[i].low <= ranges[i - 1].high))
      return "the ranges of a set ascend";
  return {};
}

}  // namespace

const ZULTaVoRelationDescriptor* ZULTaVoMembership::sDescriptor = nullptr;

ZULTaVoRelationDescriptor::Definition ZULTaVoMembership::Describe() {
  using Given = ZULTaVoRelationDescriptor::Given;
  return {
      .name = "in",
      .meaning = "the value is in the set of the ranges, written 'x in {1, 3, 5..9}'",
      .parameters = {{.name = "value"}, {.name = "ranges", .size = "m n", .given = Given::kKnown}},
      .make = &MakePropagator,
      .check = &CheckSet
  };
}

ZULTaVoRelation::Part ZULTaVoMembership::MakeSet(const std::vector<Range>& ranges) {
  std::vector<std::int64_t> numbers;
  numbers.reserve(2 * ranges.size());
  for (const Range& range : ranges) numbers.insert(numbers.end(), {range.low, range.high});
  ZULTaVoRelation::Part part;
  part.rows = static_cast<std::uint32_t>(ranges.size());
  part.columns = 2;
  part.isKnown = true;
  part.integers = std::make_shared<const std::vector<std::int64_t>>(std::move(numbers));
  return part;
}

ZULTaVoRelation ZULTaVoMembership::Make(const ZULTaVoRelation::Part& set) {
  return {
      sDescriptor, {ZULTaVoRelation::Part(), set},
       false
  };
}
