#include "framework/engine/detail/Clauses.h"

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

Clauses::Clauses(const Program& program)
    : mFirst(2 * program.GetNumberOfSlots(), kNone), mClauseOf(program.GetRules().size(), kNone) {
  for (std::uint32_t i = 0; i < program.GetRules().size(); ++i) {
    const Rule& rule = program.GetRules()[i];
    if (rule.code != Code::kClause) continue;
    mClauseOf[i] = static_cast<std::uint32_t>(mWatches.size() / 2);
    for (std::uint32_t position = 0; position < 2; ++position) {
      mWatches.push_back({i, position < rule.count ? position : 0, kNone, kNone});
      if (rule.count != 0) Enter(program, static_cast<std::uint32_t>(mWatches.size() - 1));
    }
  }
}

bool Clauses::Run(Engine& engine, const Rule& rule, std::uint32_t index) {
  if (rule.count == 0) return false;
  const View clause(engine, rule);
  const std::uint32_t first = 2 * mClauseOf[index];
  std::uint32_t &one = mWatches[first].position, &two = mWatches[first + 1].position;
  if (clause.IsTrue(one) || clause.IsTrue(two)) return true;
  for (std::uint32_t at = first; at < first + 2; ++at) {
    Watch& watch = mWatches[at];
    const std::uint32_t other = at == first ? two : one;
    if (!clause.IsFalse(watch.position) && watch.position != other) continue;
    const std::uint32_t found = clause.FindOther(watch.position, other);
    if (found == watch.position)  // the other one is the last that may be true
      return engine.Fix(clause.slots[other], clause.negated[other] != 0 ? 0 : 1);
    Leave(engine.GetProgram(), at);
    watch.position = found;
    Enter(engine.GetProgram(), at);
  }
  return true;
}

std::uint32_t& Clauses::FirstOf(const Program& program, const Watch& watch) {
  const Rule& rule = program.GetRules()[watch.rule];
  return mFirst[IndexOf(program.GetArguments(rule)[watch.position],
                        program.GetNumbers(rule)[watch.position] != 0)];
}

void Clauses::Enter(const Program& program, std::uint32_t watch) {
  std::uint32_t& first = FirstOf(program, mWatches[watch]);
  mWatches[watch].next = first;
  mWatches[watch].last = kNone;
  if (first != kNone) mWatches[first].last = watch;
  first = watch;
}

void Clauses::Leave(const Program& program, std::uint32_t watch) {
  const Watch& left = mWatches[watch];
  (left.last == kNone ? FirstOf(program, left) : mWatches[left.last].next) = left.next;
  if (left.next != kNone) mWatches[left.next].last = left.last;
}

std::size_t Clauses::GetMemoryUsed() const {
  return (mFirst.capacity() + mClauseOf.capacity()) * sizeof(std::uint32_t) +
         mWatches.capacity() * sizeof(Watch);
}

}  // namespace zultav::engine
