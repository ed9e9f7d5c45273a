#ifndef ZULTAV_ENGINE_REALS_REAL_RELATIONS_H
#define ZULTAV_ENGINE_REALS_REAL_RELATIONS_H

#include <cstdint>
#include <memory>
#include <vector>

#include "framework/engine/Engine.h"
#include "framework/engine/reals/RealEvaluation.h"
#include "framework/engine/reals/RealSystem.h"

namespace zultav::engine {

/// The relations of modules between reals, of which a system says nothing itself.
class RealRelations {
 public:
  RealRelations(const Engine& engine, const RealSystem& system);
  ~RealRelations();

  /// Whether all of them hold wherever in the evaluated box its terms are, with integers that the
  /// engine has fixed: their propagators find nothing to narrow there, and no need to look again.
  bool AreEntailed(const RealEvaluation& evaluation);

 private:
  struct Member;
  bool IsEntailed(Member& member, const RealEvaluation& evaluation) const;

  const Engine& mEngine;
  std::vector<Member> mMembers;
};

}  // namespace zultav::engine

#endif
