#ifndef ZULTAV_ENGINE_DETAIL_CLAUSES_H
#define ZULTAV_ENGINE_DETAIL_CLAUSES_H

#include <bit>
#include <cstdint>
#include <vector>

#include "framework/engine/Engine.h"

namespace zultav::engine {

/// The clauses of a program, with two watched literals each: as long as neither is false, nothing
/// can follow from the clause, and it does not run.
///
/// Pop need not take back which literals are watched, for what was not false is not false again.
/// That it does makes the order in which clauses run depend on the path alone.
class Clauses {
 public:
  /// @param firstWord  of the engine: one for each clause
  Clauses(Engine& engine, std::size_t firstWord);
  static std::size_t CountStateWords(const Program& program);

  /// Calls for every clause that watches the literal which x has just made false.
  template <class Use>
  void ForEachAffected(const Engine& engine, Slot x, bool isTrue, Use use) const {
    const std::size_t literal = IndexOf(x, isTrue);
    for (std::uint32_t i = mFirst[literal]; i < mFirst[literal + 1]; ++i) {
      const auto [clause, position] = mOccurrences[i];
      const Watched watched = GetWatched(engine, clause);
      if (watched.one == position || watched.two == position) use(mRules[clause]);
    }
  }
  bool Run(Engine& engine, const Rule& rule, std::uint32_t index);
  std::size_t GetMemoryUsed() const;

 private:
  /// Positions of literals in their clause: a word of the engine.
  struct Watched {
    std::uint32_t one, two;
  };
  struct Occurrence {
    std::uint32_t clause, position;
  };
  static std::size_t IndexOf(Slot x, bool negated) {
    return 2 * std::size_t{x} + (negated ? 1 : 0);
  }
  Watched GetWatched(const Engine& engine, std::uint32_t clause) const {
    return std::bit_cast<Watched>(engine.mWords[mFirstWord + clause]);
  }

  std::size_t mFirstWord;
  std::vector<std::uint32_t> mFirst;  // of each literal: where its occurrences begin
  std::vector<Occurrence> mOccurrences;
  std::vector<std::uint32_t> mRules;     // of each clause
  std::vector<std::uint32_t> mClauseOf;  // of each rule
};

}  // namespace zultav::engine

#endif
