#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "framework/intervals/RealRange.h"
#include "relations/Relations.h"

namespace zultav::relations {

namespace {

struct Point {
  RealRange x, y;  // enclosures of known numbers
};

Point PointAt(const Argument& points, std::size_t row) {
  const auto number = [&](std::size_t i) {
    return RealRange(points.reals[4 * row + 2 * i], points.reals[4 * row + 2 * i + 1]);
  };
  return {number(0), number(1)};
}

/// The line from one breakpoint to the next.
class Segment {
 public:
  Segment(const Point& from, const Point& to)
      : mFrom(from), mTo(to), mSlope((to.y - from.y) / (to.x - from.x)) {}

  const Point& GetFrom() const { return mFrom; }
  const Point& GetTo() const { return mTo; }
  RealRange GetReach() const { return {mFrom.x.lower, mTo.x.upper}; }
  /// The values for an x within the reach: exact at both breakpoints, as it is computed from each.
  RealRange Evaluate(const RealRange& x) const {
    const RealRange fromLeft = mFrom.y + (x - mFrom.x) * mSlope;
    const RealRange fromRight = mTo.y - (mTo.x - x) * mSlope;
    return Intersection(Intersection(fromLeft, fromRight), Hull(mFrom.y, mTo.y));
  }
  /// The part of an x within the reach that has a value in z.
  RealRange Project(const RealRange& z, const RealRange& x) const {
    if (Intersection(Evaluate(x), z).IsEmpty()) return RealRange::Empty();
    if (mSlope.Contains(0)) return x;
    const RealRange fromLeft = mFrom.x + (z - mFrom.y) / mSlope;
    const RealRange fromRight = mTo.x - (mTo.y - z) / mSlope;
    return Intersection(Intersection(fromLeft, fromRight), x);
  }

 private:
  Point mFrom, mTo;
  RealRange mSlope;
};

/// y = f(x), f linear between breakpoints, with no value outside of them: bounds consistent up to
/// the rounding of slopes.
class Piecewise final : public ZULTaVoPropagator {
 public:
  explicit Piecewise(const Argument& points) {
    for (std::size_t i = 0; i + 1 < points.rows; ++i)
      mSegments.emplace_back(PointAt(points, i), PointAt(points, i + 1));
  }

  Wake GetWake(std::uint32_t) const override { return Wake::kOnBounds; }
  Outcome Propagate(ZULTaVoDomains& values) override {
    RealRange x(values.GetRealLower(kX), values.GetRealUpper(kX));
    RealRange y = OverSegments(
        x, [](const Segment& segment, const RealRange& part) { return segment.Evaluate(part); });
    if (y.IsEmpty() || !values.Intersect(kY, y.lower, y.upper)) return Outcome::kFailed;
    y = {values.GetRealLower(kY), values.GetRealUpper(kY)};
    x = OverSegments(
        x, [&](const Segment& segment, const RealRange& part) { return segment.Project(y, part); });
    return !x.IsEmpty() && values.Intersect(kX, x.lower, x.upper) ? Outcome::kFixpoint
                                                                  : Outcome::kFailed;
  }

 private:
  static constexpr std::uint32_t kY = 0, kX = 1;

  /// The hull of what `use` answers for the parts of x.
  template <class Use>
  RealRange OverSegments(const RealRange& x, Use use) const {
    RealRange hull = RealRange::Empty();
    auto segment = std::partition_point(
        mSegments.begin(), mSegments.end(),
        [&](const Segment& before) { return before.GetReach().upper < x.lower; });
    for (; segment != mSegments.end() && segment->GetReach().lower <= x.upper; ++segment)
      hull = Hull(hull, use(*segment, Intersection(x, segment->GetReach())));
    return hull;
  }

  std::vector<Segment> mSegments;
};

std::unique_ptr<ZULTaVoPropagator> Make(Arguments arguments) {
  return std::make_unique<Piecewise>(arguments[2]);
}

std::string Check(Arguments arguments) {
  const Argument& points = arguments[2];
  if (points.columns != 2) return "'points' must have two columns, x and y";
  if (points.rows < 2) return "'points' must have two rows or more";
  for (std::size_t i = 1; i < points.rows; ++i)
    if (!(PointAt(points, i - 1).x.upper < PointAt(points, i).x.lower))
      return "the x of 'points' must increase, but that of row " + std::to_string(i + 1) +
             " does not";
  return {};
}

}  // namespace

Definition DescribePiecewise() {
  return {
      .name = "piecewise",
      .meaning = "y of the point at x on the lines from each given point to the next",
      .parameters =
          {{.name = "x", .element = Element::kReal},
                       {.name = "points", .element = Element::kReal, .size = "m n", .given = Given::kKnown}},
      .result = {{.name = "y", .element = Element::kReal}                                       },
      .make = &Make,
      .check = &Check,
      .rule = ZULTaVoRule::kPiecewise
  };
}

}  // namespace zultav::relations
