#include "framework/engine/reals/DifferenceBounds.h"

#include <algorithm>

namespace zultav::engine {

namespace {

// Of bounds looked at. Cycles show themselves soon; long chains without one need not be followed.
constexpr std::size_t kEffort = 10'000'000;

}  // namespace

void DifferenceBounds::AddRelation(Relation relation, std::uint32_t x, std::uint32_t y) {
  if (relation == Relation::kUnequal) return;
  mTerms = std::max({mTerms, x + 1, y + 1});
  mEdges.push_back({y, x, 0, relation == Relation::kLess});
  if (relation == Relation::kEqual)
    mEdges.push_back({x, y, 0, false});
  else
    mHasInequality = true;
}

void DifferenceBounds::AddShift(std::uint32_t result, std::uint32_t x, const RealRange& c) {
  mTerms = std::max({mTerms, x + 1, result + 1});
  mEdges.push_back({x, result, c.upper, false});
  mEdges.push_back({result, x, -c.lower, false});
}

/// The algorithm of Bellman and Ford from all terms at once. Its sums are rounded to nearest: they
/// only point to cycles, which are then added up outward.
bool DifferenceBounds::Contradict() const {
  if (!mHasInequality) return false;
  struct Bound {
    double value = 0;
    std::size_t strict = 0;  // how many strict bounds have led here
  };
  std::vector<Bound> bounds(mTerms);
  std::vector<std::uint32_t> edgeOf(mTerms, kNone);  // that has led here
  for (std::size_t effort = 0; effort <= kEffort; effort += mEdges.size() + mTerms) {
    bool changed = false;
    for (std::uint32_t i = 0; i < mEdges.size(); ++i) {
      const Edge& edge = mEdges[i];
      const Bound& less = bounds[edge.less];
      Bound& greater = bounds[edge.greater];
      const Bound sum = {less.value + edge.bound, less.strict + (edge.isStrict ? 1 : 0)};
      if (sum.value > greater.value || (sum.value == greater.value && sum.strict <= greater.strict))
        continue;
      greater = sum;
      edgeOf[edge.greater] = i;
      changed = true;
    }
    if (!changed) return false;
    if (HasContradictingCycle(edgeOf)) return true;
  }
  return false;
}

bool DifferenceBounds::HasContradictingCycle(const std::vector<std::uint32_t>& edgeOf) const {
  std::vector<std::uint32_t> walkOf(mTerms, kNone);  // the walk on which a term was met first
  for (std::uint32_t start = 0; start < mTerms; ++start) {
    std::uint32_t term = start;
    while (walkOf[term] == kNone && edgeOf[term] != kNone) {
      walkOf[term] = start;
      term = mEdges[edgeOf[term]].less;
    }
    const bool isCycle = walkOf[term] == start && edgeOf[term] != kNone;
    if (isCycle && IsContradiction(edgeOf, term)) return true;
  }
  return false;
}

bool DifferenceBounds::IsContradiction(const std::vector<std::uint32_t>& edgeOf,
                                       std::uint32_t term) const {
  RealRange sum = {0, 0};
  bool isStrict = false;
  std::uint32_t at = term;
  do {
    const Edge& edge = mEdges[edgeOf[at]];
    sum = sum + RealRange::Point(edge.bound);
    isStrict = isStrict || edge.isStrict;
    at = edge.less;
  } while (at != term);
  return sum.upper < 0 || (sum.upper == 0 && isStrict);
}

}  // namespace zultav::engine
