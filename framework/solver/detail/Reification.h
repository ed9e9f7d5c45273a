#ifndef ZULTAV_SOLVER_DETAIL_REIFICATION_H
#define ZULTAV_SOLVER_DETAIL_REIFICATION_H

#include <memory>
#include <vector>

#include "framework/solver/ZULTaVoLocalDomains.h"

namespace zultav::detail {

/// The truth of a relation, which is an argument behind its own: runs the relation's propagator
/// where the truth is true, and elsewhere finds out on a copy what would follow if it were.
class Reification final : public ZULTaVoPropagator {
 public:
  /// @param isReal  of each argument of the relation
  Reification(std::unique_ptr<ZULTaVoPropagator> relation, std::vector<bool> isReal);

  Wake GetWake(std::uint32_t argument) const override;
  bool WantsValues(std::uint32_t argument) const override;
  Cost GetCost() const override { return mRelation->GetCost(); }
  std::uint32_t GetStateSize() const override { return mRelation->GetStateSize(); }
  Outcome Propagate(ZULTaVoDomains& domains) override;

 private:
  enum class Truth { kOpen, kTrue, kFalse };
  static constexpr std::uint32_t kNone = 0xffffffff;

  std::uint32_t GetCount() const { return mSupposed.GetNumberOfValues(); }
  bool IsFixed(const ZULTaVoDomains& domains, std::uint32_t x) const;
  Truth Decide(const ZULTaVoDomains& domains);
  bool HoldsAt(const ZULTaVoDomains& domains, std::uint32_t x, std::int64_t value);
  Outcome Suppose();
  Outcome Deny(ZULTaVoDomains& domains);

  std::unique_ptr<ZULTaVoPropagator> mRelation;
  std::vector<bool> mIsReal;
  ZULTaVoLocalDomains mSupposed;
};

}  // namespace zultav::detail

#endif
