#ifndef ZULTAV_ENGINE_DETAIL_RELATIONS_H
#define ZULTAV_ENGINE_DETAIL_RELATIONS_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "framework/engine/Engine.h"
#include "framework/solver/ZULTaVoPropagator.h"

namespace zultav::engine {

/// The propagators of modules' relations, which see and narrow the slots of an engine.
class Relations {
 public:
  // Of programs: what a rule says of its propagator.
  static std::unique_ptr<ZULTaVoPropagator> MakePropagator(const ZULTaVoNetwork& network,
                                                           std::uint32_t constraint);
  /// When an argument calls for a run, and whether its set of values is kept, as a number.
  static std::int64_t CallOf(const ZULTaVoPropagator& propagator, std::uint32_t argument);
  static bool WantsValues(std::int64_t call);
  static unsigned int EventsOf(std::int64_t call, bool keepsValues);
  static Cost CostOf(const ZULTaVoPropagator& propagator);

  static std::size_t CountStateWords(const Program& program);
  /// @param stateWords  of the engine: the first one of propagators
  Relations(Engine& engine, std::size_t stateWords);
  ~Relations();
  bool Run(Engine& engine, std::uint32_t rule);
  std::size_t GetMemoryUsed() const;

 private:
  class Domains;
  struct Member;

  std::vector<Member> mMembers;
  std::vector<std::uint32_t> mMemberOfRule;
};

}  // namespace zultav::engine

#endif
