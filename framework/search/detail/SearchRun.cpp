#include "framework/search/detail/SearchRun.h"

#include <algorithm>
#include <utility>

namespace zultav::detail {

namespace {

using Clock = std::chrono::steady_clock;
constexpr double kProgressPeriod = 0.5;  // seconds

WidthLimit LimitOf(const ZULTavSearch::Options& options) {
  return {options.absoluteWidth < 0 ? ZULTaVoReal::GetPrecision() : options.absoluteWidth,
          options.relativeWidth};
}

std::vector<std::uint32_t> FindSignless(const ZULTavSymmetries* symmetries) {
  return symmetries != nullptr ? symmetries->FindSignless() : std::vector<std::uint32_t>();
}

}  // namespace

// --- NetworkUse -------------------------------------------------------------------------------

NetworkUse::NetworkUse(ZULTaVoNetwork& network, const std::atomic<bool>& interrupt,
                       ZULTavSearch::Statistics& statistics)
    : mSettings(network.GetRealSettings()),
      mNetwork(network),
      mDepth(network.GetDepth()),
      mBefore(network.GetStatistics()),
      mStatistics(statistics),
      mBegin(Clock::now()) {
  mStatistics = {};
  mNetwork.SetInterrupt(&interrupt);
  mNetwork.ScheduleAll();
}

NetworkUse::~NetworkUse() {
  while (mNetwork.GetDepth() > mDepth) mNetwork.PopState();
  UpdateStatistics();
  mNetwork.SetInterrupt(nullptr);
}

double NetworkUse::GetSeconds() const {
  return std::chrono::duration<double>(Clock::now() - mBegin).count();
}

void NetworkUse::UpdateStatistics() {
  mStatistics.narrowings = mNetwork.GetStatistics().narrowings - mBefore.narrowings;
  mStatistics.propagations = mNetwork.GetStatistics().filters - mBefore.filters;
  mStatistics.seconds = GetSeconds();
}

// --- SearchRun --------------------------------------------------------------------------------

SearchRun::SearchRun(ZULTaVoNetwork& network, const std::vector<ZULTaVoAny*>& declared,
                     const ZULTavSearch::Options& options,
                     const ZULTavSearch::SolutionCallback& report, ZULTavFrontier& frontier,
                     NetworkUse& use, std::atomic<bool>& interrupt)
    : mNetwork(network),
      mOptions(options),
      mReport(report),
      mFrontier(frontier),
      mStatistics(frontier.statistics),
      mUse(use),
      mInterrupt(interrupt),
      mTimer(options.limits.seconds, interrupt),
      mProgress(kProgressPeriod),
      mSave(options.events.savePeriod),
      mWidthLimit(LimitOf(options)),
      mReasoner(network, options.reasoning),
      mTree(network, declared, frontier.path),
      mPending(frontier.boxes, mTree.GetDeclared(), mWidthLimit),
      mUnbounded(frontier.unbounded, mTree.GetDeclared(), mWidthLimit),
      mSolved(frontier.solved, mTree.GetDeclared()),
      mImages(network, mTree.GetDeclared(), FindSignless(options.reasoning.symmetries),
              mWidthLimit) {}

SearchRun::Outcome SearchRun::Execute() {
  mFrontier.explored = mFrontier.explored || mReasoner.HasEmptyValue();
  Outcome outcome = mFrontier.explored ? Outcome::kExhausted : Explore();
  if (mFrontier.explored || !mOptions.resumable) outcome = ReportRest(outcome);
  if (!mOptions.resumable) {
    mFrontier.boxes.clear();
    mFrontier.unbounded.clear();
    mFrontier.solved.clear();
    mFrontier.explored = false;
  }
  return outcome;
}

SearchRun::Outcome SearchRun::Explore() {
  if (const End end = Replay()) return *end;
  for (;;) {
    if (const End end = CheckLimits()) return *end;
    SaveIfDue();
    const NodeState state = VisitNode();
    if (const End end = EndAfter(state)) return *end;
    Count(state);
    if (state == NodeState::kBranched) continue;
    // While the halves beside this node are still open: they decide which boxes are final.
    End end;
    if (state == NodeState::kFound) end = ReportFinal();
    if (!mTree.Backtrack()) {
      mFrontier.explored = true;
      const bool isLast = mPending.GetSize() + mUnbounded.GetSize() == 0;
      const bool all = !end || (*end == Outcome::kSolutionLimit && isLast);
      return all ? Outcome::kExhausted : *end;
    }
    if (end) return *end;
  }
}

/// Goes down the frontier's path. What lies beside it is either open or explored already.
SearchRun::End SearchRun::Replay() {
  while (const SearchTree::Decision* ahead = mTree.GetAhead()) {
    NodeState state = mReasoner.ReachFixpoint(false);
    if (IsOpen(state) && mTree.IsHidden(ahead->variable)) state = mReasoner.Settle();
    if (const End end = EndAfter(state)) return end;
    if (state == NodeState::kRefuted) {
      mNetwork.ScheduleAll();  // so that the visit to come refutes the node once more
      mTree.EndHere();
      break;
    }
    if (ahead->variable >= mTree.GetVariables().size()) return Outcome::kBadModel;
    if (mTree.IsHidden(ahead->variable)) KeepCandidate();
    mTree.Replay();
  }
  return {};
}

SearchRun::End SearchRun::CheckLimits() {
  if (mStatistics.nodes >= mOptions.limits.nodes) return Outcome::kNodeLimit;
  if (mUse.GetSeconds() >= mOptions.limits.seconds) return Outcome::kTimeLimit;
  if (mOptions.events.progress && mProgress.IsDue(Clock::now())) {
    mUse.UpdateStatistics();
    mOptions.events.progress(mStatistics);
    mProgress.Restart();
  }
  if (mInterrupt.load(std::memory_order_relaxed)) return WhyInterrupted();
  return {};
}

void SearchRun::SaveIfDue() {
  if (!mOptions.events.save || !mSave.IsDue(Clock::now())) return;
  mUse.UpdateStatistics();
  mOptions.events.save();
  mSave.Restart();
}

SearchRun::End SearchRun::EndAfter(NodeState state) const {
  if (state == NodeState::kInterrupted) return WhyInterrupted();
  if (state == NodeState::kBadArguments) return Outcome::kBadModel;
  return {};
}

NodeState SearchRun::VisitNode() {
  if (const NodeState state = mReasoner.ReachFixpoint(false); !IsOpen(state)) return state;
  if (mSolved.HoldPresentValues()) return NodeState::kRefuted;
  if (!mTree.InHidden()) {
    const std::uint32_t variable = mTree.ChooseDeclared(mOptions.choice, mWidthLimit);
    if (variable != SearchTree::kNone) {
      mTree.Branch(variable, mOptions.selection);
      return NodeState::kBranched;
    }
  }

  const NodeState state = mReasoner.Settle();
  if (!IsOpen(state)) return state;
  const std::uint32_t hidden = mTree.ChooseHidden(mWidthLimit);
  if (!mTree.InHidden()) mFrontier.hiddenNodes = 0;
  KeepCandidate();
  if (hidden != SearchTree::kNone && mFrontier.hiddenNodes < mOptions.hiddenNodes) {
    mTree.Branch(hidden, mOptions.selection);
    ++mFrontier.hiddenNodes;
    return NodeState::kBranched;
  }
  return Conclude(state);
}

/// The candidate, or the solution in it, becomes a box of the frontier, unless there is none, or
/// only one that was found before.
NodeState SearchRun::Conclude(NodeState state) {
  using Finding = ZULTavProver::Finding;
  ZULTavSolution box, region;
  const Finding finding = mReasoner.Prove(state, mTree, box, region);
  if (finding == Finding::kNoSolution) return NodeState::kRefuted;
  // The candidate may hold other solutions for other hidden values.
  const bool isOnly = finding == Finding::kOnlySolution && !mTree.InHidden();
  if (isOnly && mSolved.Hold(box)) return NodeState::kRefuted;
  const bool isProven =
      isOnly || (finding != Finding::kNothing && mTree.KeepsToPath(box, mCandidate));
  if (isOnly) mCandidate = std::move(box);
  mCandidate.SetProven(isProven);
  const bool comesLast = !isProven && IsUnbounded(mCandidate);
  (comesLast ? mUnbounded : mPending).Add(std::exchange(mCandidate, ZULTavSolution()));
  if (isOnly) mSolved.Add(std::move(region));
  mTree.LeaveHidden();
  return NodeState::kFound;
}

bool SearchRun::IsUnbounded(const ZULTavSolution& box) const {
  const auto declared = mTree.GetDeclared();
  for (std::size_t i = 0; i < declared.size(); ++i)
    if (declared[i].IsUnbounded(box.GetValue(i))) return true;
  return false;
}

/// Lets unbounded boxes be reported, all but so many.
void SearchRun::ReleaseUnbounded(std::size_t kept) {
  for (auto& boxes = mFrontier.unbounded; boxes.size() > kept; boxes.pop_front())
    mFrontier.boxes.push_back(std::move(boxes.front()));
}

/// Splits of hidden variables narrow the declared ones, so the assignment is taken before them.
void SearchRun::KeepCandidate() {
  if (!mTree.InHidden()) mCandidate = ZULTavSolution(mTree.GetDeclared());
}

void SearchRun::Count(NodeState state) {
  ++mStatistics.nodes;
  if (state == NodeState::kRefuted) ++mStatistics.fails;
  mStatistics.peakDepth = std::max<std::uint64_t>(mStatistics.peakDepth, mTree.GetDepth());
}

/// Reports what no later box can touch, or everything once enough was found.
SearchRun::End SearchRun::ReportFinal() {
  ReleaseUnbounded(PendingBoxes::kCapacity);
  // What is kept for a run that goes on need not be cut short.
  const bool enough = !mOptions.resumable &&
                      mStatistics.solutions + mPending.GetSize() >= mOptions.limits.solutions;
  const auto final = [&](const ZULTavSolution& box) {
    return enough || !mTree.ReachesOpenHalf(box);
  };
  mSolved.DropUnless([&](const ZULTavSolution& box) { return mTree.ReachesOpenHalf(box); });
  while (!HasEnough() && mPending.BringForward(final)) {
    const Reported reported = ReportFirst();
    if (reported == Reported::kRefused) return Outcome::kStopped;
    if (reported == Reported::kInterrupted) return WhyInterrupted();
  }
  if (enough || HasEnough()) return Outcome::kSolutionLimit;
  return {};
}

/// Reports all boxes that wait, and answers the outcome, which was another one before.
SearchRun::Outcome SearchRun::ReportRest(Outcome outcome) {
  ReleaseUnbounded(0);
  while (mPending.GetSize() != 0 && outcome != Outcome::kStopped) {
    if (HasEnough()) return Outcome::kSolutionLimit;
    const Reported reported = ReportFirst();
    if (reported == Reported::kInterrupted) return WhyInterrupted();
    if (reported == Reported::kGoOn) continue;
    const bool isOver = mPending.GetSize() == 0 || outcome == Outcome::kTimeLimit;
    return isOver ? outcome : Outcome::kStopped;
  }
  return outcome;
}

/// Reports the images of the first box, as many as are asked for; then the box is removed, or the
/// next image waits in its place. There may be 2^n of them, so time may be up between two.
SearchRun::Reported SearchRun::ReportFirst() {
  ZULTavSolution& box = mPending.GetFirst();
  mImages.JoinAtZero(box);
  while (!HasEnough()) {
    ++mStatistics.solutions;
    const bool goOn = mReport(box);
    if (!mImages.Next(box)) {
      mPending.RemoveFirst();
      return goOn ? Reported::kGoOn : Reported::kRefused;
    }
    if (mInterrupt.load(std::memory_order_relaxed)) return Reported::kInterrupted;
    if (!goOn) return Reported::kRefused;
  }
  return Reported::kGoOn;
}

}  // namespace zultav::detail
