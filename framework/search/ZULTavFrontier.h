#ifndef ZULTAV_SEARCH_ZULTAV_FRONTIER_H
#define ZULTAV_SEARCH_ZULTAV_FRONTIER_H

#include <cstdint>
#include <limits>
#include <list>
#include <vector>

#include "framework/search/Export.h"
#include "framework/search/ZULTavBox.h"

class ZULipstream;
class ZULopstream;
namespace zultav::detail {
class SearchSpace;
}

/// What is left of a search, and how far it came: all that another run needs to go on, over an
/// equal network with equal options. Between any two steps of a run it is whole.
struct ZULTAV_UTILITIES_API ZULTavFrontier {
  /// One of the halves into which a variable was split: `variable <= bound`, or `>= bound`.
  struct Half {
    std::uint32_t variable = 0;  ///< the declared ones first, then the hidden ones
    bool isUpper = false;
    std::int64_t bound = 0;  ///< of a real: the bits of the double
  };
  /// One split on the path from the root to the present node.
  struct Decision {
    /// What has become of the half that is explored last.
    enum class Second : std::uint8_t {
      kOpen,    ///< nothing yet: the path goes through the first half
      kEntered  ///< the path goes through it, and the first half is done
    };

    Half first;
    Second second = Second::kOpen;
  };

  using Path = std::vector<Decision>;
  /// Halves of which no solution lies in all that was not reported before.
  using Nogood = std::vector<Half>;

  /// What the search has learnt of the model, by which it chooses.
  struct Experience {
    /// Of each variable: how often a rule about it has failed.
    std::vector<std::uint64_t> weights;
    std::uint64_t restarts = 0;
    std::uint64_t fails = 0;  ///< since the last restart
    std::vector<Nogood> nogoods;
  };

  /// How far an optimisation came. Costs are places in the order of all integers, or of all
  /// doubles; of what is maximised, of its opposite.
  struct Optimum {
    bool isFound = false;  ///< there is a best solution
    /// The best solution that was found and certainly lies within the box.
    ZULTavBox best;
    /// What boxes cost at least of which it is not known whether they hold a solution.
    std::int64_t unproven = std::numeric_limits<std::int64_t>::max();
    /// What the root costs at least: no stop on the way may matter to what is known at the end.
    std::int64_t root = std::numeric_limits<std::int64_t>::min();
    /// What all solutions certainly cost at least.
    std::int64_t bound = std::numeric_limits<std::int64_t>::min();
    /// No solution is better than the best one by more than the gap.
    bool isCertain = false;
    /// The best solution is beyond what counts as a number.
    bool isUnbounded = false;
    /// The optimum is known, and all solutions that are as good are looked for.
    bool isCollecting = false;
    /// Of each decision of the path: what solutions might cost that were looked for then.
    std::vector<std::int64_t> thresholds;
  };

  struct Statistics {
    std::uint64_t solutions = 0;     ///< reported to the callback
    std::uint64_t nodes = 0;         ///< nodes entered, the root included
    std::uint64_t fails = 0;         ///< nodes that were refuted
    std::uint64_t narrowings = 0;    ///< domain changes made by rules
    std::uint64_t propagations = 0;  ///< runs of rules
    std::uint64_t restarts = 0;      ///< from the root
    std::uint64_t peakDepth = 0;     ///< decisions on the longest path
    double seconds = 0;              ///< wall-clock time

    /// Adds what another run, or another part of the search, has counted.
    Statistics& operator+=(const Statistics& other);
  };

  /// Writes all but the statistics, which are those of one run.
  void Write(ZULopstream& out) const;
  /// False when the bytes are none of a search of the space: in.Reason() says why. Throws
  /// std::bad_alloc when memory ran out.
  bool Read(ZULipstream& in, const zultav::detail::SearchSpace& space);

  /// The open halves beside it are all that is not explored yet.
  Path path;
  /// Found, but not reported: a box to come may join them.
  std::list<ZULTavBox> boxes;
  /// Boxes without a proof that reach to infinity: they are reported when nothing else is left.
  std::list<ZULTavBox> unbounded;
  /// What need not be searched: no solutions lie there but such as boxes found before hold.
  std::list<ZULTavBox> solved;
  /// Splits of hidden variables under the present assignment of the declared ones.
  std::uint64_t hiddenNodes = 0;
  /// Only boxes are left.
  bool explored = false;
  Experience experience;
  Optimum optimum;
  /// Of the present run, or the last one.
  Statistics statistics;
};

#endif
