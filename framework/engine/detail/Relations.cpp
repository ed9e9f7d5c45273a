#include "framework/engine/detail/Relations.h"

#include <array>

#include "framework/solver/ZULTaVoNetwork.h"
#include "framework/solver/ZULTaVoRelation.h"

namespace zultav::engine {

namespace {

constexpr std::int64_t kKeepsValues = 16;  // in a call, beside its events

constexpr Cost kCostOf[] = {kCostOfPair, kCostOfSum, kCostOfBounds, kCostOfPrimality};

}  // namespace

/// The arguments of one relation, which are slots of the engine.
class Relations::Domains final : public ZULTaVoDomains {
 public:
  Domains(Engine& engine, const Rule& rule, std::size_t state) : mEngine(engine) {
    mWords = engine.mWords.data();
    mSlots = engine.GetProgram().GetArguments(rule).data();
    mState = state;
  }

 private:
  bool HasValue(std::uint32_t slot, std::int64_t value) const override {
    return mEngine.Contains(slot, value);
  }
  std::int64_t FindNext(std::uint32_t slot, std::int64_t value) const override {
    return mEngine.GetNext(slot, value);
  }
  std::int64_t FindPrevious(std::uint32_t slot, std::int64_t value) const override {
    return mEngine.GetPrevious(slot, value);
  }
  std::uint64_t CountValues(std::uint32_t slot) const override { return mEngine.GetSize(slot); }
  const std::uint64_t* FindBits(std::uint32_t slot, std::int64_t& base) const override {
    const SlotInfo& info = mEngine.GetProgram().GetSlot(slot);
    if (info.holes == kNone) return nullptr;
    base = mEngine.GetProgram().GetInitialIntegers(slot).lower;
    return reinterpret_cast<const std::uint64_t*>(mWords + mEngine.mHoleWords + info.holes);
  }
  bool RaiseLower(std::uint32_t slot, std::int64_t bound) override {
    return mEngine.RaiseLower(slot, bound);
  }
  bool DropUpper(std::uint32_t slot, std::int64_t bound) override {
    return mEngine.DropUpper(slot, bound);
  }
  bool RemoveWithin(std::uint32_t slot, std::int64_t value) override {
    return mEngine.RemoveWithin(slot, value);
  }
  bool NarrowReals(std::uint32_t slot, double lower, double upper) override {
    return mEngine.NarrowReal(slot, {lower, upper}, false);
  }
  void SaveState(std::size_t word, std::int64_t value) override { mEngine.Set(word, value); }

  Engine& mEngine;
};

struct Relations::Member {
  std::unique_ptr<ZULTaVoPropagator> propagator;
  Domains domains;
};

std::unique_ptr<ZULTaVoPropagator> Relations::MakePropagator(const ZULTaVoNetwork& network,
                                                             std::uint32_t constraint) {
  return static_cast<const ZULTaVoRelation&>(network.GetConstraint(constraint)).MakePropagator();
}

std::int64_t Relations::CallOf(const ZULTaVoPropagator& propagator, std::uint32_t argument) {
  constexpr unsigned int kEventsOf[] = {kFixed, kBoundMoved, kAnyChange};
  const std::int64_t events = kEventsOf[static_cast<std::size_t>(propagator.GetWake(argument))];
  return propagator.WantsValues(argument) ? events | kKeepsValues : events;
}

bool Relations::WantsValues(std::int64_t call) { return (call & kKeepsValues) != 0; }

unsigned int Relations::EventsOf(std::int64_t call, bool keepsValues) {
  const auto events = static_cast<unsigned int>(call & kAnyChange);
  return keepsValues ? events : events & kBoundMoved;
}

Cost Relations::CostOf(const ZULTaVoPropagator& propagator) {
  return kCostOf[static_cast<std::size_t>(propagator.GetCost())];
}

std::size_t Relations::CountStateWords(const Program& program) {
  std::size_t words = 0;
  for (const Rule& rule : program.GetRules())
    if (rule.code == Code::kRelation)
      words += static_cast<std::size_t>(program.GetNumbers(rule)[1]);
  return words;
}

Relations::Relations(Engine& engine, std::size_t stateWords) {
  const Program& program = engine.GetProgram();
  mMemberOfRule.assign(program.GetRules().size(), kNone);
  for (std::size_t i = 0; i < program.GetRules().size(); ++i) {
    const Rule& rule = program.GetRules()[i];
    if (rule.code != Code::kRelation) continue;
    const std::int64_t* numbers = program.GetNumbers(rule);
    mMemberOfRule[i] = static_cast<std::uint32_t>(mMembers.size());
    mMembers.push_back(
        {MakePropagator(program.GetNetwork(), static_cast<std::uint32_t>(numbers[0])),
         Domains(engine, rule, stateWords)});
    stateWords += static_cast<std::size_t>(numbers[1]);
  }
}

Relations::~Relations() = default;

bool Relations::Run(Engine& engine, std::uint32_t rule) {
  Member& member = mMembers[mMemberOfRule[rule]];
  switch (member.propagator->Propagate(member.domains)) {
    case ZULTaVoPropagator::Outcome::kFailed:
      return false;
    case ZULTaVoPropagator::Outcome::kAgain:
      engine.RunAgain();
      break;
    case ZULTaVoPropagator::Outcome::kEntailed:
      engine.Retire();
      break;
    case ZULTaVoPropagator::Outcome::kFixpoint:
      break;
  }
  return true;
}

std::size_t Relations::GetMemoryUsed() const {
  return mMembers.capacity() * sizeof(Member) + mMemberOfRule.capacity() * sizeof(std::uint32_t);
}

}  // namespace zultav::engine
