#include "framework/engine/detail/Conditions.h"

namespace zultav::engine {

Conditions::Conditions(Draft& draft, const LinearRows& linear, const ClauseList& clauses,
                       const Flags& isNeeded)
    : mAbsorbed(clauses.GetSize(), false) {
  if (clauses.GetSize() == 0) return;
  const std::vector<LinearRows::Row>& rows = linear.GetRows();
  mConditions.resize(rows.size());
  struct Uses {
    std::uint32_t rows = 0, clauses = 0, clause = 0;
  };
  std::vector<Uses> uses(draft.slots.size());
  for (const LinearRows::Row& row : rows)
    if (row.truth != kNone) ++uses[row.truth].rows;
  for (std::uint32_t i = 0; i < clauses.GetSize(); ++i)
    for (const Literal& literal : clauses[i]) {
      ++uses[literal.slot].clauses;
      uses[literal.slot].clause = i;
    }
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const LinearRows::Row& row = rows[i];
    if (row.truth == kNone || isNeeded[row.truth] || draft.IsFixed(row.truth)) continue;
    const Uses& use = uses[row.truth];
    if (use.rows != 1 || use.clauses != 1 || clauses[use.clause].size() != 2 ||
        mAbsorbed[use.clause])
      continue;
    const std::span<const Literal> clause = clauses[use.clause];
    const Literal &own = clause[clause[0].slot == row.truth ? 0 : 1],
                  &other = clause[clause[0].slot == row.truth ? 1 : 0];
    bool canMirror = true;
    linear.ForEachTerm(row, [&](Slot, std::int64_t factor) {
      canMirror = canMirror && factor != IntegerRange::kMin;
    });
    if (own.negated && !canMirror) continue;
    mConditions[i] = {
        {other.slot, !other.negated},
        own.negated
    };
    mAbsorbed[use.clause] = true;
  }
}

}  // namespace zultav::engine
