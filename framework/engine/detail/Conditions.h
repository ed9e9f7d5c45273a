#ifndef ZULTAV_ENGINE_DETAIL_CONDITIONS_H
#define ZULTAV_ENGINE_DETAIL_CONDITIONS_H

#include <optional>
#include <vector>

#include "framework/engine/detail/Gates.h"
#include "framework/engine/detail/LinearRows.h"

namespace zultav::engine {

/// Hidden truths of rows that nothing but a clause of two literals asks for, as in `p -> x <= y`.
/// Such a row holds wherever the other literal is false, and need not say when it does not hold:
/// half a rule does for the truth, the clause and the row.
class Conditions {
 public:
  /// @param isNeeded  of each slot: whether anything beside clauses and the truths of rows asks
  ///                  for it
  Conditions(Draft& draft, const LinearRows& linear, const ClauseList& clauses,
             const Flags& isNeeded);

  struct Condition {
    Literal literal;  // where it is true, the row holds
    bool isOpposite;  // the opposite of the row, rather
  };
  std::optional<Condition> GetCondition(std::size_t row) const {
    return mConditions.empty() ? std::nullopt : mConditions[row];
  }
  bool IsAbsorbed(std::size_t clause) const { return mAbsorbed[clause]; }

 private:
  std::vector<std::optional<Condition>> mConditions;  // of each row; empty where none has one
  Flags mAbsorbed;                                    // of each clause
};

}  // namespace zultav::engine

#endif
