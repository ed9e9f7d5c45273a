#ifndef ZULTAV_SEARCH_ZULTAV_FRONTIER_H
#define ZULTAV_SEARCH_ZULTAV_FRONTIER_H

#include <cstdint>
#include <deque>
#include <span>
#include <vector>

#include "framework/search/Export.h"
#include "framework/search/ZULTavSolution.h"
#include "framework/solver/ZULTaVoAny.h"

class ZULipstream;
class ZULopstream;
namespace zultav::detail {
class SearchVariable;
}

/// What is left of a search, and how far it came: all that another run needs to go on, over an
/// equal network with equal options. Between any two steps of a run it is whole.
struct ZULTAV_UTILITIES_API ZULTavFrontier {
  /// One split on the path from the root to the present node.
  struct Decision {
    /// What has become of the half that is explored last.
    enum class Second : std::uint8_t {
      kOpen,    ///< nothing yet: the path goes through the first half
      kEntered  ///< the path goes through it, and the first half is done
    };

    std::uint32_t variable = 0;  ///< the declared ones first, then the hidden ones
    ZULTaVoAny::ValueSelection selection = ZULTaVoAny::kLowerHalf;  ///< how it was split
    Second second = Second::kOpen;
  };

  using Path = std::vector<Decision>;

  struct Statistics {
    std::uint64_t solutions = 0;     ///< reported to the callback
    std::uint64_t nodes = 0;         ///< nodes entered, the root included
    std::uint64_t fails = 0;         ///< nodes that were refuted
    std::uint64_t narrowings = 0;    ///< domain changes made by constraints
    std::uint64_t propagations = 0;  ///< filter calls
    std::uint64_t peakDepth = 0;     ///< decisions on the longest path
    double seconds = 0;              ///< wall-clock time

    /// Adds what another run, or another part of the search, has counted.
    Statistics& operator+=(const Statistics& other);
  };

  /// Writes all but the statistics, which are those of one run.
  void Write(ZULopstream& out) const;
  /// False when the bytes are none of a search for the declared variables, over a network of so
  /// many objects: in.Reason() says why. Throws std::bad_alloc when memory ran out.
  bool Read(ZULipstream& in, std::span<const zultav::detail::SearchVariable> declared,
            std::size_t objects);

  /// The open halves beside it are all that is not explored yet.
  Path path;
  /// Found, but not reported: a box to come may join them.
  std::deque<ZULTavSolution> boxes;
  /// Boxes without a proof that reach to infinity: they are reported when nothing else is left.
  std::deque<ZULTavSolution> unbounded;
  /// What need not be searched: no solutions lie there but such as boxes found before hold.
  std::deque<ZULTavSolution> solved;
  /// Splits of hidden variables under the present assignment of the declared ones.
  std::uint64_t hiddenNodes = 0;
  /// Only boxes are left.
  bool explored = false;
  /// Of the present run, or the last one.
  Statistics statistics;
};

#endif
