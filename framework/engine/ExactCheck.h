#ifndef ZULTAV_ENGINE_EXACT_CHECK_H
#define ZULTAV_ENGINE_EXACT_CHECK_H

#include <cstdint>
#include <vector>

#include "framework/engine/Engine.h"

namespace zultav::engine {

/// Whether integers and truth values are a solution where 64 bits do not hold all that is computed
/// from them, so that the rules cannot say it.
class ZULTAV_ENGINE_API ExactCheck {
 public:
  explicit ExactCheck(const Program& program);

  enum class Verdict {
    kHolds,  ///< all that is said of integers and truth values alone
    kFails,
    kUnknown  ///< numbers are too long, or not given by those that are fixed
  };
  /// To be called at a fixpoint at which all slots that are searched are fixed. Throws
  /// std::bad_alloc when memory ran out.
  Verdict Check(const Engine& engine) const;

 private:
  class Evaluation;

  const Program& mProgram;
  std::vector<Slot> mSlots;  // the integers and truth values of the rules over these
  bool mIsNeeded;            // there are numbers that no rule adds up or compares
};

}  // namespace zultav::engine

#endif
