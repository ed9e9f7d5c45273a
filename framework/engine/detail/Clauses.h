#ifndef ZULTAV_ENGINE_DETAIL_CLAUSES_H
#define ZULTAV_ENGINE_DETAIL_CLAUSES_H

#include <cstdint>
#include <vector>

#include "framework/engine/Engine.h"

namespace zultav::engine {

/// The clauses of a program, with two watched literals each: as long as neither is false, nothing
/// can follow from the clause, and nobody looks at it. Which literals are watched need not be taken
/// back, for what was not false is not false again after Pop.
class Clauses {
 public:
  explicit Clauses(const Program& program);

  /// Calls for every clause that watches the literal which x has just made false.
  template <class Use>
  void ForEachAffected(Slot x, bool isTrue, Use use) const {
    for (std::uint32_t at = mFirst[IndexOf(x, isTrue)]; at != kNone; at = mWatches[at].next)
      use(mWatches[at].rule);
  }
  bool Run(Engine& engine, const Rule& rule, std::uint32_t index);
  std::size_t GetMemoryUsed() const;

 private:
  /// Watch 2i and 2i + 1 belong to clause i.
  struct Watch {
    std::uint32_t rule;
    std::uint32_t position;    // of the literal in the clause
    std::uint32_t next, last;  // of the same literal
  };
  static std::size_t IndexOf(Slot x, bool negated) {
    return 2 * std::size_t{x} + (negated ? 1 : 0);
  }
  std::uint32_t& FirstOf(const Program& program, const Watch& watch);
  void Enter(const Program& program, std::uint32_t watch);
  void Leave(const Program& program, std::uint32_t watch);

  std::vector<std::uint32_t> mFirst;     // of each literal: the first watch
  std::vector<std::uint32_t> mClauseOf;  // of each rule
  std::vector<Watch> mWatches;
};

}  // namespace zultav::engine

#endif
