#ifndef ZULTAV_ENGINE_DETAIL_GATES_H
#define ZULTAV_ENGINE_DETAIL_GATES_H

#include <cstdint>
#include <vector>

#include "framework/engine/detail/Draft.h"

namespace zultav::engine {

/// What a draft says of truth values alone, as clauses. Connectives of connectives become one, and
/// a hidden value that is another one's negation gives way to it.
class Gates {
 public:
  /// Takes the formulas and comparisons between truth values that are not taken yet.
  /// @param[in,out] isTaken   of each formula, then of each comparison
  /// @param isNeeded          of each slot: whether anything beside formulas and comparisons
  ///                          between truth values asks for it
  Gates(Draft& draft, std::vector<bool>& isTaken, const std::vector<bool>& isNeeded);

  /// One of the literals of each holds.
  const std::vector<std::vector<Literal>>& GetClauses() const { return mClauses; }

 private:
  /// `output` holds exactly where one of the inputs does.
  struct Gate {
    Literal output;
    std::vector<Literal> inputs;
    bool isAlive = true;
  };
  bool IsTruth(Slot x) const { return mDraft.slots[x].isBoolean; }
  Literal LiteralOf(Slot x, bool negated = false) const;
  void ReadNegations(std::vector<bool>& isTaken, const std::vector<bool>& isNeeded);
  void ReadFormulas(std::vector<bool>& isTaken);
  void ReadComparisons(std::vector<bool>& isTaken);
  void AddGate(Literal output, Literal first, Literal second);
  void AddEquivalence(const Literal* truth, Literal first, Literal second);
  void Flatten(const std::vector<bool>& isNeeded);
  void Emit(const Gate& gate);
  void AddClause(std::vector<Literal> literals);

  Draft& mDraft;
  std::vector<Literal> mLiterals;      // of each slot: itself, or what it is the negation of
  std::vector<std::uint32_t> mGateOf;  // of each slot: the one whose output it is
  std::vector<Gate> mGates;
  std::vector<std::vector<Literal>> mClauses;
};

}  // namespace zultav::engine

#endif
