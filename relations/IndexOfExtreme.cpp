#include <algorithm>
#include <cmath>
#include <limits>

#include "relations/Relations.h"

namespace zultav::relations {

namespace {

using Outcome = ZULTaVoPropagator::Outcome;

enum class Extreme : std::uint8_t { kLeast, kGreatest };

/// result = the index of the least, or of the greatest, member of a list; of equal ones the first.
/// Arguments: result, list.
///
/// Removes each index that the bounds of the list rule out; bounds consistent on lists of integers.
class IndexOfExtreme final : public ZULTaVoPropagator {
 public:
  /// @param first  the index of the first member
  IndexOfExtreme(Extreme extreme, bool isReal, std::size_t size, std::int64_t first)
      : mExtreme(extreme),
        mIsReal(isReal),
        mSize(static_cast<std::uint32_t>(size)),
        mFirst(first) {}
  Wake GetWake(std::uint32_t argument) const override {
    return argument == 0 ? Wake::kOnValues : Wake::kOnBounds;
  }
  Outcome Propagate(ZULTaVoDomains& domains) override;

 private:
  template <class View>
  Outcome Narrow(ZULTaVoDomains& domains) const;

  Extreme mExtreme;
  bool mIsReal;
  std::uint32_t mSize;
  std::int64_t mFirst;
};

struct Integers {
  using Number = std::int64_t;
  static constexpr Number kGreatest = ZULTaVoDomains::kNoUpper;
  static bool IsOpen(Number bound) { return bound == ~kGreatest || bound == kGreatest; }
  static Number Above(Number bound) { return IsOpen(bound) ? bound : bound + 1; }
  static Number Below(Number bound) { return IsOpen(bound) ? bound : bound - 1; }
  static Number Lower(const ZULTaVoDomains& domains, std::uint32_t x) {
    return domains.GetLower(x);
  }
  static Number Upper(const ZULTaVoDomains& domains, std::uint32_t x) {
    return domains.GetUpper(x);
  }
  static bool SetLower(ZULTaVoDomains& domains, std::uint32_t x, Number bound) {
    return domains.SetLower(x, bound);
  }
  static bool SetUpper(ZULTaVoDomains& domains, std::uint32_t x, Number bound) {
    return domains.SetUpper(x, bound);
  }
  static Number Mirror(Number value) { return ~value; }  // which takes one open end to the other
};

struct Reals {
  using Number = double;
  static constexpr Number kGreatest = std::numeric_limits<double>::infinity();
  static bool IsOpen(Number bound) { return std::isinf(bound); }
  static Number Above(Number bound) { return bound; }
  static Number Below(Number bound) { return bound; }
  static Number Lower(const ZULTaVoDomains& domains, std::uint32_t x) {
    return domains.GetRealLower(x);
  }
  static Number Upper(const ZULTaVoDomains& domains, std::uint32_t x) {
    return domains.GetRealUpper(x);
  }
  static bool SetLower(ZULTaVoDomains& domains, std::uint32_t x, Number bound) {
    return domains.Intersect(x, bound, kGreatest);
  }
  static bool SetUpper(ZULTaVoDomains& domains, std::uint32_t x, Number bound) {
    return domains.Intersect(x, -kGreatest, bound);
  }
  static Number Mirror(Number value) { return -value; }
};

/// The greatest is the least of the mirror images.
template <class Kind>
struct Mirrored : Kind {
  using Number = typename Kind::Number;
  static Number Lower(const ZULTaVoDomains& domains, std::uint32_t x) {
    return Kind::Mirror(Kind::Upper(domains, x));
  }
  static Number Upper(const ZULTaVoDomains& domains, std::uint32_t x) {
    return Kind::Mirror(Kind::Lower(domains, x));
  }
  static bool SetLower(ZULTaVoDomains& domains, std::uint32_t x, Number bound) {
    return Kind::SetUpper(domains, x, Kind::Mirror(bound));
  }
  static bool SetUpper(ZULTaVoDomains& domains, std::uint32_t x, Number bound) {
    return Kind::SetLower(domains, x, Kind::Mirror(bound));
  }
};

Outcome IndexOfExtreme::Propagate(ZULTaVoDomains& domains) {
  if (mExtreme == Extreme::kLeast)
    return mIsReal ? Narrow<Reals>(domains) : Narrow<Integers>(domains);
  return mIsReal ? Narrow<Mirrored<Reals>>(domains) : Narrow<Mirrored<Integers>>(domains);
}

template <class View>
Outcome IndexOfExtreme::Narrow(ZULTaVoDomains& domains) const {
  using Number = typename View::Number;
  constexpr std::uint32_t kResult = 0;
  const auto indexOf = [this](std::uint32_t x) { return mFirst + x - 1; };
  if (!domains.SetLower(kResult, indexOf(1)) || !domains.SetUpper(kResult, indexOf(mSize)))
    return Outcome::kFailed;
  Number greatest = View::kGreatest;  // that the least can be
  for (std::uint32_t x = 1; x <= mSize; ++x) greatest = std::min(greatest, View::Upper(domains, x));
  // The members that can be the first of the least ones, and where the least of their bounds is.
  std::uint32_t firstLeft = 0, lastLeft = 0, lowest = 0;
  Number before = View::kGreatest;  // the least upper bound of those in front
  for (std::uint32_t x = 1; x <= mSize; ++x) {
    const Number lower = View::Lower(domains, x);
    const bool isPossible = lower <= greatest && (lower < before || View::IsOpen(lower));
    before = std::min(before, View::Upper(domains, x));
    if (!isPossible) {
      if (!domains.Remove(kResult, indexOf(x))) return Outcome::kFailed;
    } else if (domains.Contains(kResult, indexOf(x))) {
      if (firstLeft == 0) firstLeft = x;
      lastLeft = x;
      if (lowest == 0 || lower < View::Lower(domains, lowest)) lowest = x;
    }
  }
  if (firstLeft == 0 || !domains.SetLower(kResult, indexOf(firstLeft)) ||
      !domains.SetUpper(kResult, indexOf(lastLeft)))
    return Outcome::kFailed;
  const Number least = View::Lower(domains, lowest);
  bool isCertain = firstLeft == lastLeft;
  if (isCertain) {
    before = View::kGreatest;
    for (std::uint32_t x = 1; x < lowest; ++x) before = std::min(before, View::Upper(domains, x));
    if (!View::SetUpper(domains, lowest, std::min(View::Below(before), greatest)))
      return Outcome::kFailed;
  }
  const Number most = View::Upper(domains, lowest);
  for (std::uint32_t x = 1; x <= mSize; ++x) {
    if (x == lowest) continue;
    if (!View::SetLower(domains, x, x < lowest ? View::Above(least) : least))
      return Outcome::kFailed;
    const Number lower = View::Lower(domains, x);
    isCertain = isCertain && (x < lowest ? most < lower : most <= lower);
  }
  return isCertain ? Outcome::kEntailed : Outcome::kFixpoint;
}

template <Extreme Which>
std::unique_ptr<ZULTaVoPropagator> MakeIndexOf(Arguments arguments) {
  return std::make_unique<IndexOfExtreme>(Which, arguments[1].isReal, arguments[1].GetSize(),
                                          arguments[1].firstIndex);
}

template <Extreme Which>
Definition DescribeIndexOf(const char* name, const char* meaning) {
  return {.name = name,
          .meaning = meaning,
          .parameters = {{.name = "list", .element = Element::kNumber, .size = "n"}},
          .result = Parameter{.name = "index"},
          .make = &MakeIndexOf<Which>,
          .check = [](Arguments arguments) { return RefuseEmpty(arguments[1]); }};
}

}  // namespace

Definition DescribeIndexOfMinimum() {
  return DescribeIndexOf<Extreme::kLeast>("minimum_index",
                                          "the index of the least member, of equal ones the first");
}

Definition DescribeIndexOfMaximum() {
  return DescribeIndexOf<Extreme::kGreatest>(
      "maximum_index", "the index of the greatest member, of equal ones the first");
}

}  // namespace zultav::relations
