#include "framework/search/detail/VariableChooser.h"

#include <algorithm>
#include <cmath>

namespace zultav::detail {

using Choice = ZULTavSearch::VariableChoice;

namespace {

// Of a variable before any rule about it has failed: a single fail must not decide much.
constexpr std::uint64_t kFirstWeight = 10;
// Of three splits of reals on a path one is of the widest, and of six one goes by all equations
// together: of the systems that were tried, no other mixture comes as near to the best rule on
// each.
constexpr std::size_t kLargestEach = 3, kSumEach = 6;

}  // namespace

VariableChooser::VariableChooser(const Engine& engine, engine::Newton& newton,
                                 const SearchSpace& space, Choice choice, const WidthLimit& limit,
                                 ZULTavFrontier::Experience& experience)
    : mEngine(engine),
      mNewton(newton),
      mSpace(space),
      mChoice(choice),
      mLimit(limit),
      mExperience(experience),
      mVariableOf(engine.GetProgram().GetNumberOfSlots(), kNone) {
  const auto variables = space.GetVariables();
  for (std::size_t i = variables.size(); i-- > 0;)
    mVariableOf[variables[i].slot] = static_cast<std::uint32_t>(i);
  if (mExperience.weights.empty()) mExperience.weights.assign(variables.size(), kFirstWeight);
}

std::uint32_t VariableChooser::FirstOpen(std::size_t from, std::size_t to) const {
  for (std::size_t i = from; i < to; ++i)
    if (IsOpen(static_cast<std::uint32_t>(i))) return static_cast<std::uint32_t>(i);
  return kNone;
}

std::uint32_t VariableChooser::ChooseDeclared(const SearchTree& tree) {
  const std::uint32_t chosen = ChooseByOption(tree);
  const bool isReal = chosen != kNone && mSpace[chosen].kind == Kind::kReal;
  return isReal && mNewton.IsBeyondDoubles() ? kNone : chosen;
}

std::uint32_t VariableChooser::ChooseByOption(const SearchTree& tree) {
  const ZULTavFrontier::Decision* last = tree.GetLast();
  switch (mChoice) {
    case Choice::kAdaptive:
      return ChooseAdaptively(tree);
    case Choice::kByKind:
      return ChooseByKind(tree);
    case Choice::kRoundRobin:
      return ChooseInTurn(tree);
    case Choice::kFirst:
      // Nothing before the variable split last was open then, so nothing before it is open now.
      return FirstOpen(last == nullptr ? 0 : last->first.variable, mSpace.GetNumberOfDeclared());
    case Choice::kLargest:
      return ChooseLargest();
    case Choice::kSmallest:
      return FindBest([](double width, double best) { return width < best; });
  }
  return kNone;
}

/// The open variable of the best width; the first of equals.
template <class Better>
std::uint32_t VariableChooser::FindBest(Better better) const {
  std::uint32_t best = kNone;
  double bestWidth = 0;
  for (std::uint32_t i = 0; i < mSpace.GetNumberOfDeclared(); ++i) {
    if (!IsOpen(i)) continue;
    const double width = mSpace.GetWidth(mEngine, i);
    if (best != kNone && !better(width, bestWidth)) continue;
    best = i;
    bestWidth = width;
  }
  return best;
}

std::uint32_t VariableChooser::ChooseInTurn(const SearchTree& tree) const {
  const std::uint32_t count = mSpace.GetNumberOfDeclared();
  const ZULTavFrontier::Decision* last = tree.GetLast();
  const std::uint32_t next = last == nullptr ? 0 : std::min(last->first.variable + 1, count);
  const std::uint32_t found = FirstOpen(next, count);
  return found != kNone ? found : FirstOpen(0, next);
}

/// A real is rarely decided by narrowing it alone, so that reals take turns; integers come first,
/// for they decide which constraints hold.
std::uint32_t VariableChooser::ChooseByKind(const SearchTree& tree) const {
  const std::uint32_t count = mSpace.GetNumberOfDeclared();
  const auto first = [&](bool discrete, std::uint32_t from, std::uint32_t to) {
    while (from < to && !(mSpace[from].IsDiscrete() == discrete && IsOpen(from))) ++from;
    return from < to ? from : kNone;
  };
  // Once a real was split no integer was open, and before an integer no other one.
  const ZULTavFrontier::Decision* decision = tree.GetLast();
  const std::uint32_t last = decision == nullptr ? 0 : decision->first.variable;
  const bool takesTurns = decision != nullptr && !mSpace[last].IsDiscrete();
  const std::uint32_t discrete = takesTurns ? kNone : first(true, last, count);
  if (discrete != kNone) return discrete;
  const std::uint32_t next = takesTurns ? last + 1 : 0;
  const std::uint32_t real = first(false, next, count);
  return real != kNone ? real : first(false, 0, next);
}

std::uint32_t VariableChooser::ChooseAdaptively(const SearchTree& tree) {
  const std::uint32_t discrete = ChooseDiscrete();
  return discrete != kNone ? discrete : ChooseReal(tree);
}

/// The variable of the fewest values for its weight; the first of equals.
std::uint32_t VariableChooser::ChooseDiscrete() const {
  std::uint32_t best = kNone;
  double bestScore = HUGE_VAL;
  bool undecided = false;
  for (std::uint32_t i = 0; i < mSpace.GetVariables().size(); ++i) {
    if (!mSpace[i].IsDiscrete() || mSpace.IsHidden(i) || !IsOpen(i)) continue;
    undecided = undecided || !mSpace.IsDerived(i);
    const double score = static_cast<double>(mEngine.GetSize(mSpace[i].slot)) /
                         static_cast<double>(mExperience.weights[i]);
    if (score >= bestScore) continue;
    best = i;
    bestScore = score;
  }
  return undecided ? best : kNone;
}

/// By turns the widest one, and the one whose splitting promises most to all equations together or
/// to one of them: the first rule alone forgets the equations, and the others what the equations do
/// not see yet.
std::uint32_t VariableChooser::ChooseReal(const SearchTree& tree) {
  const std::size_t depth = tree.GetDepth();
  if (depth % kLargestEach == 0) return ChooseLargest();
  using Smears = engine::Newton::Smears;
  mSmears.resize(mSpace.GetNumberOfDeclared());
  mNewton.CalcSmears(depth % kSumEach == 2 ? Smears::kSum : Smears::kLargest, mSmears);
  std::uint32_t best = kNone;
  double bestSmear = 0;
  for (std::uint32_t i = 0; i < mSpace.GetNumberOfDeclared(); ++i) {
    if (!(mSmears[i] > bestSmear) || !IsOpen(i)) continue;
    best = i;
    bestSmear = mSmears[i];
  }
  return best != kNone ? best : ChooseLargest();
}

std::uint32_t VariableChooser::ChooseLargest() const {
  return FindBest([](double width, double best) { return width > best; });
}

std::uint32_t VariableChooser::ChooseHidden(const SearchTree& tree) const {
  return FirstOpen(tree.InHidden() ? tree.GetLast()->first.variable : mSpace.GetNumberOfDeclared(),
                   mSpace.GetHiddenEnd());
}

void VariableChooser::Learn(std::uint32_t rule) {
  if (rule == engine::kNone) return;
  const Program& program = mEngine.GetProgram();
  for (const Slot slot : program.GetArguments(program.GetRules()[rule]))
    if (mVariableOf[slot] != kNone) ++mExperience.weights[mVariableOf[slot]];
}

}  // namespace zultav::detail
