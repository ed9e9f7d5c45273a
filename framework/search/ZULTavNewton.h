#ifndef ZULTAV_SEARCH_ZULTAV_NEWTON_H
#define ZULTAV_SEARCH_ZULTAV_NEWTON_H

#include <memory>
#include <span>

#include "framework/search/ZULTavReasoning.h"
#include "framework/solver/ZULTaVoAny.h"

/// The interval Newton method for the equations over reals of a network.
///
/// Contract narrows by the single equations, shaves, and makes Hansen-Sengupta steps with slopes,
/// preconditioned by the inverse of the midpoint matrix. Prove applies the Krawczyk operator to a
/// small box around an approximate solution, tests every other constraint on it, and looks for a
/// larger box in which regular slopes leave room for no second solution. A proof
/// holds for the model over the true reals, without any tolerance; decimal fractions and Pi are
/// true numbers, too.
///
/// Networks without equations over reals cost nothing. Large systems are narrowed in windows of
/// unknowns that were declared near each other, at a cost that grows linearly; the dense matrix of
/// a proof limits proofs to kMaxProven unknowns.
class ZULTAV_UTILITIES_API ZULTavNewton final : public ZULTavContractor,
                                                public ZULTavProver,
                                                public ZULTavSymmetries {
 public:
  static constexpr std::size_t kMaxProven = 1000;

  /// To be made before the first propagation, when the network is complete; must not outlive it.
  ZULTavNewton(const ZULTaVoNetwork& network, std::span<ZULTaVoAny* const> declared);
  ~ZULTavNewton() override;

  /// All that it does for a search.
  ZULTavReasoning GetReasoning() { return {this, this, this}; }

  int Contract(ZULTaVoNetwork& network, bool again) override;
  Finding Prove(const ZULTaVoNetwork& network, ZULTavSolution& box,
                ZULTavSolution& region) override;
  std::vector<std::uint32_t> FindSignless() const override;

 private:
  class Work;
  std::unique_ptr<Work> mWork;
};

#endif
