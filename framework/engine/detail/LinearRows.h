#ifndef ZULTAV_ENGINE_DETAIL_LINEAR_ROWS_H
#define ZULTAV_ENGINE_DETAIL_LINEAR_ROWS_H

#include <cstdint>
#include <utility>
#include <vector>

#include "framework/engine/detail/Draft.h"

namespace zultav::engine {

/// The linear equations and comparisons over integers of a draft, with sums of sums made one: a
/// hidden value that a row defines gives way to its definition, if no other row but one needs it or
/// it is another value moved or mirrored.
class LinearRows {
 public:
  struct Term {
    Slot slot;
    std::int64_t factor;
  };
  /// c1 x1 + … + cn xn relation constant, or exactly where `truth` holds.
  struct Row {
    std::vector<Term> terms;
    std::int64_t constant = 0;
    Relation relation = Relation::kEqual;
    Slot truth = kNone;
    bool isAlive = true;
  };

  /// Takes the formulas and comparisons that are linear. What else the draft says stays as it is.
  /// @param[out] isTaken  of each formula, then of each comparison: whether a row says it
  LinearRows(Draft& draft, std::vector<bool>& isTaken);

  /// Substitutes. May find out that values are fixed or narrower.
  /// @param isNeeded  of each slot: whether anything beside the rows asks for it
  void Eliminate(const std::vector<bool>& isNeeded);
  /// The rows that are left, each with distinct slots and without a common factor.
  const std::vector<Row>& GetRows() const { return mRows; }
  std::vector<Row> TakeRows() { return std::move(mRows); }

 private:
  struct Use {
    std::uint32_t row, next;
  };
  bool ReadFormula(const Formula& formula, Row& row);
  bool ReadComparison(const Comparison& comparison, Row& row);
  bool Add(Row& row, Slot slot, std::int64_t factor);
  void Append(Row&& row);
  bool CanGiveWay(Slot slot) const;
  std::uint32_t FindRow(std::uint32_t row);
  void CollectRows(Slot slot);
  void EliminateSlot(Slot slot, bool isNeeded);
  std::int64_t FactorOf(const Row& row, Slot slot) const;
  bool Substitute(Slot slot, std::uint32_t definition, std::uint32_t target, bool keepsDefinition);
  void Normalize(Row& row);
  static void Mirror(Row& row);
  void Conclude(Row& row);

  Draft& mDraft;
  std::vector<Row> mRows;
  std::vector<std::uint32_t> mMerged;    // of each row: the one that it has become part of
  std::vector<std::uint32_t> mFirstUse;  // of each slot
  std::vector<Use> mUses;
  std::vector<std::uint32_t> mFound;  // the rows with the slot that is to give way
  bool mIsOnce = false;               // in each of which it stands once
};

}  // namespace zultav::engine

#endif
