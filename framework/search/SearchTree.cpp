#include "framework/search/SearchTree.h"

#include <algorithm>
#include <functional>

SearchTree::SearchTree(ZULTaVoNetwork& network, const std::vector<ZULTaVoAny*>& declared)
    : mNetwork(network), mDeclared(declared.size()) {
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
  const std::size_t last = mPath.empty() ? 0 : mPath.back().decision.variable;
  const bool takesTurns = !mPath.empty() && !mVariables[last].IsDiscrete();
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
  const std::size_t last = mPath.empty() ? 0 : mPath.back().decision.variable;
  if (choice == Choice::kByKind) return ChooseByKind(limit);
  if (choice == Choice::kFirst) return FirstOpen(last, mDeclared, limit);
  if (choice == Choice::kRoundRobin) {
    const std::size_t next = mPath.empty() ? 0 : std::min(last + 1, mDeclared);
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
  return FirstOpen(InHidden() ? mPath.back().decision.variable : mDeclared, mVariables.size(),
                   limit);
}

bool SearchTree::Branch(std::uint32_t index, ZULTaVoAny::ValueSelection selection) {
  const SearchVariable& variable = mVariables[index];
  const Arena::Mark mark = mArena.GetMark();
  void* place = mArena.Allocate(variable.GetType()->GetObjectSize());
  auto* kept = static_cast<ZULTaVoAny*>(variable.GetType()->InitObject(place, variable.GetValue()));
  if (kept == nullptr) return false;
  selection = variable.Adapt(selection);
  mPath.push_back({
      {index, selection, false},
      kept, mark
  });
  mNetwork.PushState();
  mNetwork.SaveValue(variable.GetValue());
  // The copy is split, and the network's own value receives the half that is explored first.
  kept->Bisect(*variable.GetValue(), selection);
  mNetwork.PropagateValue(variable.GetValue());
  return true;
}

bool SearchTree::TakeSecond() {
  Step& step = mPath.back();
  ZULTaVoAny* value = mVariables[step.decision.variable].GetValue();
  mNetwork.PopState();
  const bool empty = step.kept->IsNil();
  if (!empty) {
    mNetwork.SaveValue(value);
    value->Assign(*step.kept);
    mNetwork.PropagateValue(value);
  }
  Close(step);
  step.decision.second = true;
  return !empty;
}

bool SearchTree::Backtrack() {
  while (!mPath.empty()) {
    if (!mPath.back().decision.second && TakeSecond()) return true;
    mPath.pop_back();
  }
  return false;
}

void SearchTree::Close(Step& step) {
  mVariables[step.decision.variable].GetType()->DestroyObject(step.kept);
  step.kept = nullptr;
  mArena.Release(step.mark);
}

void SearchTree::RemoveLast() {
  if (Step& step = mPath.back(); !step.decision.second) {
    mNetwork.PopState();
    Close(step);
  }
  mPath.pop_back();
}

void SearchTree::LeaveHidden() {
  while (InHidden()) RemoveLast();
}

void SearchTree::Clear() {
  while (!mPath.empty()) RemoveLast();
}

std::vector<ZULTavSearch::Decision> SearchTree::GetPath() const {
  std::vector<ZULTavSearch::Decision> path;
  path.reserve(mPath.size());
  for (const Step& step : mPath) path.push_back(step.decision);
  return path;
}

bool SearchTree::ReachesOpenHalf(const ZULTavSolution& solution) const {
  return std::any_of(mPath.begin(), mPath.end(), [&](const Step& step) {
    return step.kept != nullptr && !IsHidden(step.decision.variable) &&
           step.kept->IsIntersected(solution.GetValue(step.decision.variable));
  });
}
