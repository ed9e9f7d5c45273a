#ifndef ZULTAV_SEARCH_DETAIL_NOGOODS_H
#define ZULTAV_SEARCH_DETAIL_NOGOODS_H

#include <cstdint>
#include <vector>

#include "framework/search/detail/SearchSpace.h"

namespace zultav::detail {

/// What a search over integers keeps of the parts that it has explored when it begins anew.
///
/// Where it was in the second half of a decision, the first half is done: together with the first
/// halves that led there it is a nogood, which holds no solution that was not reported. At least
/// one half of each nogood is left, and that is what nodes are narrowed by. The nogoods belong to
/// the frontier.
class Nogoods {
 public:
  using Nogood = ZULTavFrontier::Nogood;

  Nogoods(std::vector<Nogood>& nogoods, const SearchSpace& space);

  /// Keeps what has been explored beside the path.
  void Learn(const ZULTavFrontier::Path& path);

  void Forget() {
    mNogoods.clear();
    mWatched.clear();
  }

  enum class Answer { kNothing, kNarrowed, kFailed };
  /// Leaves those halves of which all others hold. What it does depends on the present values
  /// alone.
  Answer Narrow(Engine& engine);

 private:
  /// Of a nogood, by number: two halves that did not hold when they were looked at last. As long as
  /// that is so, it says nothing.
  struct Watched {
    std::uint32_t first = 0, second = 0;
  };

  std::vector<Nogood>& mNogoods;
  const SearchSpace& mSpace;
  std::vector<Watched> mWatched;  // of each nogood
};

}  // namespace zultav::detail

#endif
