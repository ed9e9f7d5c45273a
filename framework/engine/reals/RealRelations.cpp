#include "framework/engine/reals/RealRelations.h"

#include <algorithm>
#include <span>

#include "framework/engine/detail/Relations.h"
#include "framework/solver/ZULTaVoLocalDomains.h"

namespace zultav::engine {

struct RealRelations::Member {
  struct Argument {
    Slot slot;
    std::uint32_t term;  // of a real
  };
  std::vector<Argument> arguments;
  std::unique_ptr<ZULTaVoPropagator> propagator;
  std::unique_ptr<ZULTaVoLocalDomains> domains;
};

RealRelations::RealRelations(const Engine& engine, const RealSystem& system) : mEngine(engine) {
  const Program& program = engine.GetProgram();
  if (program.IsComplete()) return;
  std::vector<std::uint32_t> termOf(program.GetNumberOfSlots(), kNone);
  for (std::uint32_t term = 0; term < system.GetTerms().size(); ++term)
    if (const Slot slot = system.GetTerms()[term].slot; slot != kNone) termOf[slot] = term;
  for (const Rule& rule : program.GetRules()) {
    const auto slots = program.GetArguments(rule);
    if (rule.code != Code::kRelation || std::ranges::none_of(slots, [&](Slot slot) {
          return program.GetSlot(slot).kind == Kind::kReal;
        }))
      continue;
    Member& member = mMembers.emplace_back();
    for (const Slot slot : slots) member.arguments.push_back({slot, termOf[slot]});
    member.propagator = Relations::MakePropagator(
        program.GetNetwork(), static_cast<std::uint32_t>(program.GetNumbers(rule)[0]));
    member.domains = std::make_unique<ZULTaVoLocalDomains>(static_cast<std::uint32_t>(slots.size()),
                                                           member.propagator->GetStateSize());
  }
}

RealRelations::~RealRelations() = default;

bool RealRelations::AreEntailed(const RealEvaluation& evaluation) {
  return std::ranges::all_of(mMembers,
                             [&](Member& member) { return IsEntailed(member, evaluation); });
}

bool RealRelations::IsEntailed(Member& member, const RealEvaluation& evaluation) const {
  ZULTaVoLocalDomains& domains = *member.domains;
  for (std::uint32_t x = 0; x < member.arguments.size(); ++x) {
    const auto [slot, term] = member.arguments[x];
    if (mEngine.GetProgram().GetSlot(slot).kind != Kind::kReal) {
      if (!mEngine.IsFixedInteger(slot)) return false;
      domains.SetIntegers(x, mEngine.GetLower(slot), mEngine.GetUpper(slot));
    } else if (term == kNone) {
      return false;
    } else {
      const RealRange& range = evaluation.GetValue(term);
      domains.SetReals(x, range.lower, range.upper);
    }
  }
  domains.ForgetState();
  domains.ForgetNarrowing();
  return member.propagator->Propagate(domains) == ZULTaVoPropagator::Outcome::kEntailed &&
         !domains.HasNarrowed();
}

}  // namespace zultav::engine
