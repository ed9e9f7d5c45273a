#include "framework/search/ZULTavSearch.h"

#include <algorithm>
#include <new>
#include <utility>

#include "framework/base/ZULipstream.h"
#include "framework/base/ZULopstream.h"
#include "framework/search/MirrorImages.h"
#include "framework/search/PendingBoxes.h"
#include "framework/search/SearchTimer.h"
#include "framework/search/SearchTree.h"
#include "framework/search/ZULTavProof.h"

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds kProgressPeriod{500};
// A contractor that never has enough must not keep the search at one node.
constexpr int kContractions = 100;
// Integers settle within a round or two; reals may go on by less and less.
constexpr int kSettlings = 4;

WidthLimit LimitOf(const ZULTavSearch::Options& options) {
  return {options.absoluteWidth < 0 ? ZULTaVoReal::GetPrecision() : options.absoluteWidth,
          options.relativeWidth};
}

}  // namespace

ZULTavSearch::ZULTavSearch(ZULTaVoNetwork& network, std::vector<ZULTaVoAny*> declared,
                           const Options& options)
    : mNetwork(network), mDeclared(std::move(declared)), mOptions(options) {}

ZULTavSearch::~ZULTavSearch() { mNetwork.SetInterrupt(nullptr); }

void ZULTavSearch::Begin() {
  mBegin = Clock::now();
  mNextProgress = mBegin + kProgressPeriod;
  constexpr double kLongest = 1e9;  // seconds that a clock can surely count
  mSavePeriod = std::chrono::duration_cast<Clock::duration>(
      std::chrono::duration<double>(std::min(mOptions.savePeriod, kLongest)));
  mNextSave = mBegin + mSavePeriod;
  mBefore = mNetwork.GetStatistics();
  mStatistics = {};
  if (mTimeUp.exchange(false)) mInterrupt = false;  // an earlier run's time, not a call of Stop
  mOutcome = Outcome::kExhausted;
  mNetwork.SetInterrupt(&mInterrupt);
  mNetwork.ScheduleAll();
}

void ZULTavSearch::UpdateStatistics() {
  mStatistics.narrowings = mNetwork.GetStatistics().narrowings - mBefore.narrowings;
  mStatistics.propagations = mNetwork.GetStatistics().filters - mBefore.filters;
  mStatistics.seconds = std::chrono::duration<double>(Clock::now() - mBegin).count();
}

ZULTavSearch::Outcome ZULTavSearch::Propagate(Verdict& verdict) {
  Begin();
  verdict = Verdict::kOpen;
  try {
    const SearchTimer timer(mOptions.seconds, mTimeUp, mInterrupt);
    const Visit visit = HasEmptyValue() ? Visit::kRefuted : Settle();
    if (visit == Visit::kRefuted) verdict = Verdict::kContradiction;
    if (visit == Visit::kDone && !mAtFixpoint) mOutcome = Outcome::kPropagationLimit;
    if (visit == Visit::kDone && IsProven(SearchTree(mNetwork, mDeclared), nullptr))
      verdict = Verdict::kSolved;
  } catch (const std::bad_alloc&) {
    mOutcome = Outcome::kOutOfMemory;
  }
  UpdateStatistics();
  mNetwork.SetInterrupt(nullptr);
  return mOutcome;
}

ZULTavSearch::Outcome ZULTavSearch::Run(const SolutionCallback& report) {
  Begin();
  const std::size_t depth = mNetwork.GetDepth();
  try {
    mNetwork.PushState();
    const SearchTimer timer(mOptions.seconds, mTimeUp, mInterrupt);
    SearchTree tree(mNetwork, mDeclared);
    PendingBoxes pending(tree.GetDeclared(), LimitOf(mOptions));
    mImages = std::make_unique<MirrorImages>(
        mNetwork, tree.GetDeclared(),
        mOptions.proof != nullptr ? mOptions.proof->FindSignless() : std::vector<std::uint32_t>(),
        LimitOf(mOptions));
    pending.GetBoxes().swap(mKept);
    mExplored = mExplored || HasEmptyValue();
    if (!mExplored) Explore(tree, pending, report);
    if (mExplored || !mOptions.resumable) ReportRest(pending, report);
    if (mOptions.resumable) pending.GetBoxes().swap(mKept);
    mExplored = mExplored && mOptions.resumable;
  } catch (const std::bad_alloc&) {
    mOutcome = Outcome::kOutOfMemory;
  }
  while (mNetwork.GetDepth() > depth) mNetwork.PopState();
  UpdateStatistics();
  mNetwork.SetInterrupt(nullptr);
  return mOutcome;
}

void ZULTavSearch::ReportRest(PendingBoxes& pending, const SolutionCallback& report) {
  while (pending.GetSize() != 0 && mOutcome != Outcome::kStopped) {
    if (HasEnough()) {
      mOutcome = Outcome::kSolutionLimit;
      return;
    }
    if (Report(pending.TakeFirst(), pending, report)) continue;
    if (pending.GetSize() != 0 && mOutcome != Outcome::kTimeLimit) mOutcome = Outcome::kStopped;
    return;
  }
}

/// Reports the images of the box, as many as are asked for; the next one waits where the first
/// was. False when the callback wants no more, or when time is up between two images: there may be
/// 2^n of them.
bool ZULTavSearch::Report(ZULTavSolution box, PendingBoxes& pending,
                          const SolutionCallback& report) {
  mImages->JoinAtZero(box);
  bool goOn = true;
  while (!HasEnough()) {
    ++mStatistics.solutions;
    goOn = report(box);
    if (!mImages->Next(box)) return goOn;
    if (mInterrupt.load(std::memory_order_relaxed)) {
      mOutcome = mTimeUp ? Outcome::kTimeLimit : Outcome::kStopped;
      goOn = false;
    }
    if (!goOn) break;
  }
  pending.GetBoxes().push_front(std::move(box));
  return goOn;
}

void ZULTavSearch::Explore(SearchTree& tree, PendingBoxes& pending,
                           const SolutionCallback& report) {
  if (!Replay(tree)) return;
  while (!LimitReached()) {
    SaveIfDue(tree, pending);
    const Visit visit = VisitNode(tree, pending);
    if (visit == Visit::kEnded) break;
    ++mStatistics.nodes;
    mStatistics.peakDepth = std::max<std::uint64_t>(mStatistics.peakDepth, tree.GetDepth());
    if (visit == Visit::kBranched) continue;
    if (visit == Visit::kRefuted) ++mStatistics.fails;
    // While the halves beside this node are still open: they decide which boxes are final.
    if (visit == Visit::kDone) Flush(tree, pending, report);
    if (!tree.Backtrack()) {
      if (mOutcome == Outcome::kSolutionLimit && pending.GetSize() == 0)
        mOutcome = Outcome::kExhausted;
      mExplored = true;
      break;
    }
    if (mOutcome != Outcome::kExhausted) break;
  }
  mOpenPath = tree.GetPath();
}

/// Goes down the stored path. What lies beside it is either open or explored already.
bool ZULTavSearch::Replay(SearchTree& tree) {
  for (const Decision& decision : mOpenPath) {
    Visit visit = Fixpoint(false);
    if (visit == Visit::kDone && tree.IsHidden(decision.variable)) visit = Settle();
    if (visit == Visit::kEnded) return false;
    if (visit == Visit::kRefuted) {
      mNetwork.ScheduleAll();  // so that the visit to come refutes the node once more
      break;
    }
    if (decision.variable >= tree.GetVariables().size()) {
      mOutcome = Outcome::kBadModel;
      return false;
    }
    if (Branch(tree, decision.variable, decision.selection) == Visit::kEnded) return false;
    if (decision.second) tree.TakeSecond();
  }
  return true;
}

bool ZULTavSearch::LimitReached() {
  if (mStatistics.nodes >= mOptions.nodes) {
    mOutcome = Outcome::kNodeLimit;
    return true;
  }
  const Clock::time_point now = Clock::now();
  if (std::chrono::duration<double>(now - mBegin).count() >= mOptions.seconds) {
    mOutcome = Outcome::kTimeLimit;
    return true;
  }
  if (mOptions.progress && now >= mNextProgress) {
    UpdateStatistics();
    mOptions.progress(mStatistics);
    mNextProgress = Clock::now() + kProgressPeriod;
  }
  if (mInterrupt.load(std::memory_order_relaxed)) {
    mOutcome = mTimeUp ? Outcome::kTimeLimit : Outcome::kStopped;
    return true;
  }
  return false;
}

/// A value that no constraint looks at may be empty from the start.
bool ZULTavSearch::HasEmptyValue() const {
  for (std::size_t i = 0; i < mNetwork.GetNumberOfObjects(); ++i)
    if (mNetwork.GetObject(i)->IsNil()) return true;
  return false;
}

/// Contracts and propagates in turn until neither narrows. kDone when nothing was refuted.
ZULTavSearch::Visit ZULTavSearch::Fixpoint(bool again) {
  for (int round = 0;; ++round) {
    const bool contracted = mOptions.proof != nullptr && round < kContractions &&
                            mOptions.proof->Contract(mNetwork, again || round > 0) != 0;
    const ZULTaVoNetwork::Status status = mNetwork.Propagate();
    mAtFixpoint = status == ZULTaVoNetwork::Status::kConsistent;
    switch (status) {
      case ZULTaVoNetwork::Status::kConsistent:
        break;
      // What was narrowed is sound; splitting goes on from here.
      case ZULTaVoNetwork::Status::kLimit:
        return Visit::kDone;
      case ZULTaVoNetwork::Status::kContradiction:
        return Visit::kRefuted;
      case ZULTaVoNetwork::Status::kInterrupted:
        mOutcome = mTimeUp ? Outcome::kTimeLimit : Outcome::kStopped;
        return Visit::kEnded;
      case ZULTaVoNetwork::Status::kBadArguments:
        mOutcome = Outcome::kBadModel;
        return Visit::kEnded;
    }
    if (!contracted) return Visit::kDone;
  }
}

/// Gives every constraint its say on the values that remain: those that were passive when values
/// narrowed, and those to which small narrowings were not passed on.
ZULTavSearch::Visit ZULTavSearch::Settle() {
  mSettled = false;
  for (int round = 0; round < kSettlings && !mSettled; ++round) {
    const std::uint64_t before = mNetwork.GetStatistics().narrowings;
    mNetwork.ScheduleAll();
    if (const Visit visit = Fixpoint(true); visit != Visit::kDone) return visit;
    if (!mAtFixpoint) break;
    mSettled = mNetwork.GetStatistics().narrowings == before;
  }
  return Visit::kDone;
}

ZULTavSearch::Visit ZULTavSearch::VisitNode(SearchTree& tree, PendingBoxes& pending) {
  if (const Visit visit = Fixpoint(false); visit != Visit::kDone) return visit;
  const WidthLimit limit = LimitOf(mOptions);
  if (!tree.InHidden()) {
    const std::uint32_t variable = tree.ChooseDeclared(mOptions.choice, limit);
    if (variable != SearchTree::kNone) return Branch(tree, variable, mOptions.selection);
  }

  if (const Visit visit = Settle(); visit != Visit::kDone) return visit;
  const std::uint32_t hidden = tree.ChooseHidden(limit);
  if (!tree.InHidden()) mHiddenNodes = 0;
  if (hidden != SearchTree::kNone && mHiddenNodes < mOptions.hiddenNodes) {
    ++mHiddenNodes;
    return Branch(tree, hidden, mOptions.selection);
  }
  if (!tree.InHidden()) mCandidate = ZULTavSolution(tree.GetDeclared());
  mCandidate.SetProven(IsProven(tree, &mCandidate));
  pending.Add(std::exchange(mCandidate, ZULTavSolution()));
  tree.LeaveHidden();
  return Visit::kDone;
}

ZULTavSearch::Visit ZULTavSearch::Branch(SearchTree& tree, std::uint32_t variable,
                                         ZULTaVoAny::ValueSelection selection) {
  // Splits of hidden variables narrow the declared ones, so the assignment is taken before them.
  if (tree.IsHidden(variable) && !tree.InHidden()) mCandidate = ZULTavSolution(tree.GetDeclared());
  if (tree.Branch(variable, selection)) return Visit::kBranched;
  mOutcome = Outcome::kOutOfMemory;
  return Visit::kEnded;
}

bool ZULTavSearch::IsProven(const SearchTree& tree, ZULTavSolution* box) const {
  if (!mAtFixpoint || (!mSettled && !tree.HasContinuousValues())) return false;
  if (tree.HasContinuousValues())
    return mOptions.proof != nullptr && mOptions.proof->Proves(mNetwork, box);
  const auto variables = tree.GetVariables();
  return std::all_of(variables.begin(), variables.end(),
                     [](const SearchVariable& variable) { return variable.IsSingle(); });
}

/// Reports what no later box can touch, or everything once enough was found.
void ZULTavSearch::Flush(const SearchTree& tree, PendingBoxes& pending,
                         const SolutionCallback& report) {
  // What is kept for a run that goes on need not be cut short.
  const bool enough =
      !mOptions.resumable && mStatistics.solutions + pending.GetSize() >= mOptions.solutions;
  const auto final = [&](const ZULTavSolution& box) {
    return enough || !tree.ReachesOpenHalf(box);
  };
  if (enough) mOutcome = Outcome::kSolutionLimit;
  ZULTavSolution solution;
  while (!HasEnough() && pending.TakeIf(final, solution)) {
    if (Report(std::move(solution), pending, report)) continue;
    if (mOutcome != Outcome::kTimeLimit) mOutcome = Outcome::kStopped;
    return;
  }
  if (mOutcome == Outcome::kExhausted && HasEnough()) mOutcome = Outcome::kSolutionLimit;
}

void ZULTavSearch::SaveIfDue(SearchTree& tree, PendingBoxes& pending) {
  if (!mOptions.save) return;
  const Clock::time_point now = Clock::now();
  if (now < mNextSave) return;
  mOpenPath = tree.GetPath();
  UpdateStatistics();
  pending.GetBoxes().swap(mKept);
  mOptions.save();
  pending.GetBoxes().swap(mKept);
  mNextSave = Clock::now() + mSavePeriod;
}

void ZULTavSearch::WriteState(ZULopstream& out) const {
  out.WriteUnsigned(mExplored);
  out.WriteUnsigned(mHiddenNodes);
  out.WriteUnsigned(mOpenPath.size());
  for (const Decision& decision : mOpenPath) {
    out.WriteUnsigned(decision.variable);
    out.WriteUnsigned(static_cast<std::uint64_t>(decision.selection));
    out.WriteUnsigned(decision.second);
  }
  out.WriteUnsigned(mKept.size());
  for (const ZULTavSolution& box : mKept) box.Write(out);
}

bool ZULTavSearch::ReadState(ZULipstream& in) {
  std::uint64_t explored = 0, count = 0;
  in.ReadUnsigned(explored, 1);
  in.ReadUnsigned(mHiddenNodes);
  mExplored = explored != 0;
  mOpenPath.clear();
  mKept.clear();
  in.ReadUnsigned(count);
  for (; count > 0 && in.Good(); --count) {
    std::uint64_t variable = 0, selection = 0, second = 0;
    in.ReadUnsigned(variable, mNetwork.GetNumberOfObjects());
    in.ReadUnsigned(selection, ZULTaVoAny::kGreatestValue);
    in.ReadUnsigned(second, 1);
    mOpenPath.push_back({static_cast<std::uint32_t>(variable),
                         static_cast<ZULTaVoAny::ValueSelection>(selection), second != 0});
  }
  in.ReadUnsigned(count);
  for (; count > 0 && in.Good(); --count) {
    ZULTavSolution box = MakeSolution();
    if (box.Read(in)) mKept.push_back(std::move(box));
  }
  return in.Good();
}

ZULTavSolution ZULTavSearch::MakeSolution() const {
  std::vector<SearchVariable> variables;
  for (ZULTaVoAny* value : mDeclared) variables.emplace_back(value, mNetwork.GetType(value));
  return ZULTavSolution(variables);
}
