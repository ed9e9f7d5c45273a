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
  /// c1 x1 + … + cn xn relation constant, or exactly where `truth` holds.
  struct Row {
    std::int64_t constant = 0;
    Slot truth = kNone;
    Relation relation = Relation::kEqual;
    bool isAlive = true;
    std::uint32_t count = 0;                    // of terms
    std::uint32_t first = kNone, last = kNone;  // of the list of terms, which ForEachTerm follows
  };

  /// Takes the formulas and comparisons that are linear. What else the draft says stays as it is.
  /// @param[out] isTaken  of each formula, then of each comparison: whether a row says it
  LinearRows(Draft& draft, Flags& isTaken);

  /// Substitutes. May find out that values are fixed or narrower.
  /// @param isNeeded  of each slot: whether anything beside the rows asks for it
  void Eliminate(const Flags& isNeeded);
  /// The rows that are left, each with distinct slots and without a common factor.
  const std::vector<Row>& GetRows() const { return mRows; }
  /// Forgets them.
  void Clear() {
    mRows = std::vector<Row>();
    mTerms = std::vector<Term>();
  }
  /// Calls use(slot, factor) for each term.
  template <class Use>
  void ForEachTerm(const Row& row, Use use) const {
    for (std::uint32_t at = row.first; at != kNone; at = mTerms[at].next)
      if (const Term term = mTerms[at]; term.factor != 0) use(term.slot, term.factor);
  }

 private:
  /// A link of two lists: the terms of its row, and those of its slot. What is removed stays there
  /// with the factor 0.
  struct Term {
    std::int64_t factor;
    Slot slot;
    std::uint32_t row;  // or one that has become part of the row
    std::uint32_t next, nextOfSlot;
  };
  /// A row in which the slot stands that is to give way.
  struct Place {
    std::uint32_t row;
    std::uint32_t begin, end;  // its terms of the slot, in mFound
    std::int64_t factor;       // their sum; IntegerRange::kMin where that is too large
  };

  bool ReadFormula(const Formula& formula, Row& row);
  bool ReadComparison(const Comparison& comparison, Row& row);
  bool ReadCount(const Group& group, Row& row);
  bool Add(Row& row, Slot slot, std::int64_t factor);
  void AddTerm(Slot slot, std::int64_t factor) {
    mTerms.push_back({factor, slot, kNone, kNone, kNone});
  }
  void Link(std::size_t from, std::uint32_t index);
  bool CanGiveWay(Slot slot) const;
  std::uint32_t FindRow(std::uint32_t row);
  void FindPlaces(Slot slot);
  void EliminateSlot(Slot slot, bool isNeeded);
  bool Substitute(const Place& definition, const Place& target, bool keepsDefinition);
  void CopyTerms(const Place& definition, std::uint32_t target, std::int64_t scale);
  void MoveTerms(const Place& definition, std::uint32_t target, std::int64_t scale);
  void Remove(const Place& place);
  void Normalize(Row& row);
  void SetTerms(Row& row);
  void Mirror(Row& row);
  void Conclude(Row& row);

  Draft& mDraft;
  std::vector<Row> mRows;
  std::vector<Term> mTerms;
  std::vector<std::uint32_t> mMerged;       // of each row: the one that it has become part of
  std::vector<std::uint32_t> mFirstOfSlot;  // the first term of each slot
  // To work with.
  std::vector<std::pair<std::uint32_t, std::uint32_t>> mFound;  // rows and terms
  std::vector<Place> mPlaces;
  std::vector<std::pair<Slot, std::int64_t>> mSorted;
};

}  // namespace zultav::engine

#endif
