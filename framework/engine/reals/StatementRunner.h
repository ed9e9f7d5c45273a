#ifndef ZULTAV_ENGINE_REALS_STATEMENT_RUNNER_H
#define ZULTAV_ENGINE_REALS_STATEMENT_RUNNER_H

#include <cstdint>
#include <vector>

#include "framework/engine/Export.h"
#include "framework/engine/reals/RealSystem.h"

namespace zultav::engine {

class Engine;

/// Runs the statements over reals on an engine's slots: forward and backward through the functions
/// of one statement (HC4). Keeps nothing from one run to the next.
class ZULTAV_ENGINE_API StatementRunner {
 public:
  explicit StatementRunner(const RealSystem& system);

  /// As a rule of the engine that is running. False when there is no solution.
  bool Run(Engine& engine, std::uint32_t index);

 private:
  bool EvaluateForward(const Engine& engine, const RealSystem::Statement& statement);
  bool Decide(Engine& engine, const RealSystem::Statement& statement);
  bool Relate(const RealSystem::Claim& claim);
  bool ProjectBack(const RealSystem::Statement& statement);
  bool Store(Engine& engine, const RealSystem::Statement& statement);
  RealRange& Operand(std::uint32_t term, RealRange& copy);

  const RealSystem& mSystem;
  std::vector<RealRange> mValues, mForward;  // of terms
  std::vector<bool> mGiven;                  // constants
  std::vector<Slot> mSharedSlots;            // of terms; kNone where none is kept
};

}  // namespace zultav::engine

#endif
