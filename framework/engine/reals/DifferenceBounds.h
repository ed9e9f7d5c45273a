#ifndef ZULTAV_ENGINE_REALS_DIFFERENCE_BOUNDS_H
#define ZULTAV_ENGINE_REALS_DIFFERENCE_BOUNDS_H

#include <cstdint>
#include <vector>

#include "framework/engine/Program.h"

namespace zultav::engine {

/// Bounds x - y <= c or x - y < c on differences of terms. Narrowing by one of them after the other
/// would follow a cycle forever, a step of nothing or a constant at a time.
class DifferenceBounds {
 public:
  void AddRelation(Relation relation, std::uint32_t x, std::uint32_t y);
  /// result = x + c for a number c of the range.
  void AddShift(std::uint32_t result, std::uint32_t x, const RealRange& c);

  /// Whether some bounds add up to 0 < 0 or less, as far as a limited effort finds out.
  bool Contradict() const;

 private:
  /// greater - less <= bound, or < bound.
  struct Edge {
    std::uint32_t less, greater;
    double bound;
    bool isStrict;
  };
  bool HasContradictingCycle(const std::vector<std::uint32_t>& edgeOf) const;
  bool IsContradiction(const std::vector<std::uint32_t>& edgeOf, std::uint32_t term) const;

  std::vector<Edge> mEdges;
  std::uint32_t mTerms = 0;
  bool mHasInequality = false;
};

}  // namespace zultav::engine

#endif
