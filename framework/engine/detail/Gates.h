#ifndef ZULTAV_ENGINE_DETAIL_GATES_H
#define ZULTAV_ENGINE_DETAIL_GATES_H

#include <cstdint>
#include <initializer_list>
#include <span>
#include <vector>

#include "framework/engine/detail/Draft.h"

namespace zultav::engine {

/// Clauses, of each of which one literal holds, one behind the other.
class ClauseList {
 public:
  std::size_t GetSize() const { return mEnds.size(); }
  std::span<const Literal> operator[](std::size_t i) const {
    const std::size_t first = i == 0 ? 0 : mEnds[i - 1];
    return {mLiterals.data() + first, mEnds[i] - first};
  }
  /// Makes room for as many as there are in another list.
  void ReserveFor(const ClauseList& other) {
    mLiterals.reserve(other.mLiterals.size());
    mEnds.reserve(other.mEnds.size());
  }
  void Add(std::span<const Literal> clause) {
    mLiterals.insert(mLiterals.end(), clause.begin(), clause.end());
    mEnds.push_back(mLiterals.size());
  }
  void Add(std::initializer_list<Literal> clause) { Add(std::span(clause.begin(), clause.size())); }
  /// The literals of all clauses.
  std::span<Literal> GetLiterals() { return mLiterals; }

 private:
  std::vector<Literal> mLiterals;
  std::vector<std::size_t> mEnds;  // of each clause
};

/// What a draft says of truth values alone, as clauses. Connectives of connectives become one, and
/// a hidden value that is another one's negation gives way to it.
class Gates {
 public:
  explicit Gates(Draft& draft) : mDraft(draft) {}

  /// Takes the formulas and comparisons between truth values that are not taken yet.
  /// @param[in,out] isTaken   of each formula, then of each comparison
  /// @param isNeeded          of each slot: whether anything beside formulas and comparisons
  ///                          between truth values asks for it
  void Take(Flags& isTaken, const Flags& isNeeded);

  const ClauseList& GetClauses() const { return mClauses; }

 private:
  /// `output` holds exactly where one of the inputs does.
  struct Gate {
    Literal output;
    std::vector<Literal> inputs;
    bool isAlive = true;
  };
  bool IsTruth(Slot x) const { return mDraft.slots[x].isBoolean; }
  Literal LiteralOf(Slot x, bool negated = false) const;
  void ReadNegations(Flags& isTaken, const Flags& isNeeded);
  void ReadFormulas(Flags& isTaken);
  void ReadComparisons(Flags& isTaken);
  void AddGate(Literal output, Literal first, Literal second);
  void AddEquivalence(const Literal* truth, Literal first, Literal second);
  void Flatten(const Flags& isNeeded);
  void Emit(Gate& gate);
  void AddClause(std::span<const Literal> clause);

  Draft& mDraft;
  std::vector<Literal> mLiterals;      // of each slot: itself, or what it is the negation of
  std::vector<std::uint32_t> mGateOf;  // of each slot: the one whose output it is
  std::vector<Gate> mGates;
  ClauseList mClauses;
  std::vector<Literal> mClause;  // to work with
};

}  // namespace zultav::engine

#endif
