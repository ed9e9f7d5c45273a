#include "framework/engine/detail/Clauses.h"

#include <algorithm>
#include <numeric>

namespace zultav::engine {

namespace {

/// A clause and what is known of its literals.
struct View {
  View(const Engine& e, const Rule& rule)
      : engine(e),
        slots(e.GetProgram().GetArguments(rule)),
        negated(e.GetProgram().GetNumbers(rule)) {}

  bool IsTrue(std::uint32_t at) const {
    return negated[at] != 0 ? engine.IsFalse(slots[at]) : engine.IsTrue(slots[at]);
  }
  bool IsFalse(std::uint32_t at) const {
    return negated[at] != 0 ? engine.IsTrue(slots[at]) : engine.IsFalse(slots[at]);
  }
  /// A literal that is not false beside the two, searched for onward from the first; that one where
  /// there is none.
  std::uint32_t FindOther(std::uint32_t from, std::uint32_t other) const {
    const auto count = static_cast<std::uint32_t>(slots.size());
    for (std::uint32_t at = from + 1 == count ? 0 : from + 1; at != from;
         at = at + 1 == count ? 0 : at + 1)
      if (at != other && !IsFalse(at)) return at;
    return from;
  }

  const Engine& engine;
  std::span<const Slot> slots;
  const std::int64_t* negated;
};

}  // namespace

std::size_t Clauses::CountStateWords(const Program& program) {
  return static_cast<std::size_t>(
      std::count_if(program.GetRules().begin(), program.GetRules().end(),
                    [](const Rule& rule) { return rule.code == Code::kClause; }));
}

Clauses::Clauses(Engine& engine, std::size_t firstWord) : mFirstWord(firstWord) {
  const Program& program = engine.GetProgram();
  mFirst.resize(2 * program.GetNumberOfSlots() + 1);
  mClauseOf.resize(program.GetRules().size(), kNone);
  const auto literalOf = [&](const Rule& rule, std::uint32_t position) {
    return IndexOf(program.GetArguments(rule)[position], program.GetNumbers(rule)[position] != 0);
  };
  for (std::uint32_t i = 0; i < program.GetRules().size(); ++i) {
    const Rule& rule = program.GetRules()[i];
    if (rule.code != Code::kClause) continue;
    mClauseOf[i] = static_cast<std::uint32_t>(mRules.size());
    mRules.push_back(i);
    engine.mWords[mFirstWord + mClauseOf[i]] =
        std::bit_cast<std::int64_t>(Watched{0, rule.count > 1 ? 1u : 0u});
    for (std::uint32_t k = 0; k < rule.count; ++k) ++mFirst[literalOf(rule, k)];
  }
  std::inclusive_scan(mFirst.begin(), mFirst.end(), mFirst.begin());
  mOccurrences.resize(mFirst.back());
  for (auto clause = static_cast<std::uint32_t>(mRules.size()); clause-- > 0;) {
    const Rule& rule = program.GetRules()[mRules[clause]];
    for (std::uint32_t k = rule.count; k-- > 0;)
      mOccurrences[--mFirst[literalOf(rule, k)]] = {clause, k};
  }
}

bool Clauses::Run(Engine& engine, const Rule& rule, std::uint32_t index) {
  if (rule.count == 0) return false;
  const View clause(engine, rule);
  auto [one, two] = GetWatched(engine, mClauseOf[index]);
  if (clause.IsTrue(one) || clause.IsTrue(two)) return true;
  bool moved = false;
  for (std::uint32_t* watch : {&one, &two}) {
    const std::uint32_t other = watch == &one ? two : one;
    if (!clause.IsFalse(*watch) && *watch != other) continue;
    const std::uint32_t found = clause.FindOther(*watch, other);
    if (found == *watch)  // the other one is the last that may be true
      return engine.Fix(clause.slots[other], clause.negated[other] != 0 ? 0 : 1);
    *watch = found;
    moved = true;
  }
  if (moved)
    engine.Set(mFirstWord + mClauseOf[index], std::bit_cast<std::int64_t>(Watched{one, two}));
  return true;
}

std::size_t Clauses::GetMemoryUsed() const {
  return (mFirst.capacity() + mRules.capacity() + mClauseOf.capacity()) * sizeof(std::uint32_t) +
         mOccurrences.capacity() * sizeof(Occurrence);
}

}  // namespace zultav::engine
