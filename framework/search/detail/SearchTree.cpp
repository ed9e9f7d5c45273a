#include "framework/search/detail/SearchTree.h"

#include <algorithm>
#include <functional>
#include <new>

namespace zultav::detail {

SearchTree::SearchTree(ZULTaVoNetwork& network, const std::vector<ZULTaVoAny*>& declared,
                       Path& path)
    : mNetwork(network), mDeclared(declared.size()), mPath(path) {
  for (ZULTaVoAny* value : declared) mVariables.emplace_back(value, network.GetType(value));
  std::vector<const ZULTaVoObject*> known(declared.begin(), declared.end());
  std::sort(known.begin(), known.end(), std::less<>());
  for (std::size_t i = 0; i < network.GetNumberOfObjects(); ++i) {
    ZULTaVoAny* value = network.GetObject(i);
    if (network.IsConstant(value)) continue;
    const SearchVariable variable(value, network.GetType(value));
    mContinuous = mContinuous || !variable.IsDiscrete();
    if (variable.IsDiscrete() &&
        !std::binary_search(known.begin(), known.end(), value, std::less<>())) {
      mVariables.push_back(variable);
    }
  }
}

SearchTree::~SearchTree() {
  for (; !mHalves.empty(); mHalves.pop_back()) Close();
}

std::uint32_t SearchTree::FirstOpen(std::size_t from, std::size_t to,
                                    const WidthLimit& limit) const {
  for (std::size_t i = from; i < to; ++i) {
    if (mVariables[i].IsOpen(limit)) return static_cast<std::uint32_t>(i);
  }
  return kNone;
}

/// A real is rarely decided by narrowing it alone, so that reals take turns; integers come first,
/// for they decide which constraints hold.
std::uint32_t SearchTree::ChooseByKind(const WidthLimit& limit) const {
  const auto first = [&](bool discrete, std::size_t from, std::size_t to) {
    while (from < to &&
           !(mVariables[from].IsDiscrete() == discrete && mVariables[from].IsOpen(limit)))
      ++from;
    return from < to ? static_cast<std::uint32_t>(from) : kNone;
  };
  // Once a real was split no integer was open, and before an integer no other one.
  const std::size_t last = GetDepth() == 0 ? 0 : Last().variable;
  const bool takesTurns = GetDepth() != 0 && !mVariables[last].IsDiscrete();
  const std::uint32_t discrete = takesTurns ? kNone : first(true, last, mDeclared);
  if (discrete != kNone) return discrete;
  const std::size_t next = takesTurns ? last + 1 : 0;
  const std::uint32_t real = first(false, next, mDeclared);
  return real != kNone ? real : first(false, 0, next);
}

std::uint32_t SearchTree::ChooseDeclared(ZULTavSearch::VariableChoice choice,
                                         const WidthLimit& limit) const {
  using Choice = ZULTavSearch::VariableChoice;
  // Nothing before the variable split last was open then, so nothing before it is open now.
  const std::size_t last = GetDepth() == 0 ? 0 : Last().variable;
  if (choice == Choice::kByKind) return ChooseByKind(limit);
  if (choice == Choice::kFirst) return FirstOpen(last, mDeclared, limit);
  if (choice == Choice::kRoundRobin) {
    const std::size_t next = GetDepth() == 0 ? 0 : std::min(last + 1, mDeclared);
    const std::uint32_t found = FirstOpen(next, mDeclared, limit);
    return found != kNone ? found : FirstOpen(0, next, limit);
  }
  std::uint32_t best = kNone;
  double bestWidth = 0;
  for (std::size_t i = 0; i < mDeclared; ++i) {
    if (!mVariables[i].IsOpen(limit)) continue;
    const double width = mVariables[i].GetWidth();
    if (best == kNone || (choice == Choice::kLargest ? width > bestWidth : width < bestWidth)) {
      best = static_cast<std::uint32_t>(i);
      bestWidth = width;
    }
  }
  return best;
}

std::uint32_t SearchTree::ChooseHidden(const WidthLimit& limit) const {
  return FirstOpen(InHidden() ? Last().variable : mDeclared, mVariables.size(), limit);
}

void SearchTree::Branch(std::uint32_t index, ZULTaVoAny::ValueSelection selection) {
  mPath.push_back({index, selection});
  Descend();
}

void SearchTree::Replay() {
  const bool wasSecond = mPath[GetDepth()].second == Decision::Second::kEntered;
  Descend();
  if (wasSecond) TakeSecond();
}

/// Enters the first half of the decision ahead.
void SearchTree::Descend() {
  Decision& decision = mPath[GetDepth()];
  const SearchVariable& variable = mVariables[decision.variable];
  mHalves.push_back({nullptr, mArena.GetMark()});
  void* place = mArena.Allocate(variable.GetType()->GetObjectSize());
  auto* kept = static_cast<ZULTaVoAny*>(variable.GetType()->InitObject(place, variable.GetValue()));
  if (kept == nullptr) throw std::bad_alloc();
  mHalves.back().value = kept;
  if (!mNetwork.PushState()) throw std::bad_alloc();
  SaveOrThrow(mNetwork, *variable.GetValue());
  // The copy is split, and the network's own value receives the half that is explored first.
  decision.selection = variable.Adapt(decision.selection);
  kept->Bisect(*variable.GetValue(), decision.selection);
  mNetwork.PropagateValue(variable.GetValue());
}

/// Enters the second half of the last decision, whose first half is open. False when that half is
/// empty.
bool SearchTree::TakeSecond() {
  Decision& decision = Last();
  ZULTaVoAny* value = mVariables[decision.variable].GetValue();
  mNetwork.PopState();
  decision.second = Decision::Second::kEntered;
  const bool empty = mHalves.back().value->IsNil();
  if (!empty) {
    SaveOrThrow(mNetwork, *value);
    value->Assign(*mHalves.back().value);
    mNetwork.PropagateValue(value);
  }
  Close();
  return !empty;
}

bool SearchTree::Backtrack() {
  while (GetDepth() != 0) {
    if (Last().second == Decision::Second::kOpen && TakeSecond()) return true;
    mHalves.pop_back();
    mPath.pop_back();
  }
  return false;
}

/// Gives the last half back, if it is still there.
void SearchTree::Close() {
  Half& half = mHalves.back();
  if (half.value == nullptr) return;
  mVariables[Last().variable].GetType()->DestroyObject(half.value);
  half.value = nullptr;
  mArena.Release(half.mark);
}

void SearchTree::LeaveHidden() {
  while (InHidden()) {
    if (Last().second == Decision::Second::kOpen) mNetwork.PopState();
    Close();
    mHalves.pop_back();
    mPath.pop_back();
  }
}

bool SearchTree::KeepsToPath(const ZULTavSolution& solution, const ZULTavSolution& reached) const {
  return std::all_of(mPath.begin(), mPath.end(), [&](const Decision& decision) {
    const SearchVariable& variable = mVariables[decision.variable];
    return variable.IsDiscrete() || variable.IsWithin(solution.GetValue(decision.variable),
                                                      reached.GetValue(decision.variable));
  });
}

bool SearchTree::ReachesOpenHalf(const ZULTavSolution& solution) const {
  for (std::size_t i = 0; i < mHalves.size(); ++i) {
    const std::uint32_t variable = mPath[i].variable;
    if (mHalves[i].value != nullptr && !IsHidden(variable) &&
        mHalves[i].value->IsIntersected(solution.GetValue(variable)))
      return true;
  }
  return false;
}

}  // namespace zultav::detail
