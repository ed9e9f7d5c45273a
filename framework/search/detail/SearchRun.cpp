#include "framework/search/detail/SearchRun.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace zultav::detail {

namespace {

using Clock = std::chrono::steady_clock;
constexpr double kProgressPeriod = 0.5;  // seconds

WidthLimit LimitOf(const ZULTavSearch::Options& options) {
  return {options.absoluteWidth < 0 ? ZULTaVoReal::GetPrecision() : options.absoluteWidth,
          options.relativeWidth};
}

/// Fails until the next restart, after so many of them.
std::uint64_t PatienceAfter(std::uint64_t restarts, std::uint64_t first) {
  constexpr double kGrowth = 1.3, kGreatest = 1e15;
  const double patience =
      static_cast<double>(first) *
      std::pow(kGrowth, static_cast<double>(std::min<std::uint64_t>(restarts, 200)));
  return static_cast<std::uint64_t>(std::min(patience, kGreatest));
}

}  // namespace

SearchRun::SearchRun(CompiledSearch& compiled, const ZULTavSearch::Options& options,
                     const ZULTavSearch::SolutionCallback& report, ZULTavFrontier& frontier,
                     std::atomic<bool>& interrupt)
    : mCompiled(compiled),
      mEngine(compiled.GetEngine()),
      mSpace(compiled.GetSpace()),
      mOptions(options),
      mReport(report),
      mFrontier(frontier),
      mStatistics(frontier.statistics),
      mInterrupt(interrupt),
      mTimer(options.limits.seconds, interrupt),
      mProgress(kProgressPeriod),
      mSave(options.events.savePeriod),
      mWidthLimit(LimitOf(options)),
      mRestarts(options.restartAfter != 0 && !mSpace.HasContinuousValues()),
      mNogoods(frontier.experience.nogoods, mSpace),
      mReasoner(mEngine, compiled.GetNewton(), mSpace, mNogoods),
      mTree(mEngine, mSpace, frontier.path),
      mChooser(mEngine, compiled.GetNewton(), mSpace, options.choice, mWidthLimit,
               frontier.experience),
      mPending(frontier.boxes, mSpace, mWidthLimit),
      mUnbounded(frontier.unbounded, mSpace, mWidthLimit),
      mSolved(frontier.solved, mSpace),
      mImages(mEngine, mSpace, compiled.GetNewton().FindSignless(), mWidthLimit),
      mIncumbent(options, mSpace, frontier.optimum) {}

SearchRun::Outcome SearchRun::Execute() {
  if (!mFrontier.explored && mReasoner.HasEmptyValue()) {
    mFrontier.explored = true;
    Count(NodeState::kRefuted);
  }
  Outcome outcome = mFrontier.explored ? Outcome::kExhausted : Explore();
  mIncumbent.UpdateBound(mEngine, mFrontier);
  if (mFrontier.explored || !mOptions.resumable) outcome = ReportRest(outcome);
  if (!mOptions.resumable) {
    mFrontier.boxes.clear();
    mFrontier.unbounded.clear();
    mFrontier.solved.clear();
    mFrontier.experience = {};
    mFrontier.explored = false;
  }
  return outcome;
}

SearchRun::Outcome SearchRun::Explore() {
  mReasoner.LimitRuns();
  mImages.Restrict(mEngine, mSpace);
  if (mRestarts || mIncumbent.IsSought()) {  // there is something to go back to
    mIsEmpty = mEngine.Propagate() == Engine::Status::kFailed;
    mEngine.Push();
  }
  if (const End end = Replay()) return *end;
  for (;;) {
    if (const End end = CheckLimits()) return *end;
    SaveIfDue();
    const NodeState state = VisitNode();
    if (const End end = EndAfter(state)) return *end;
    Count(state);
    End end = ReportImprovement();
    if (state == NodeState::kBranched) {
      if (end) return *end;
      continue;
    }
    // While the halves beside this node are still open: they decide which boxes are final.
    if (state == NodeState::kFound) end = ReportFinal();
    if (!mTree.Backtrack()) {
      mFrontier.explored = true;
      if (!end && Collect()) continue;
      const bool isLast = mPending.GetSize() + mUnbounded.GetSize() == 0;
      const bool all = !end || (*end == Outcome::kSolutionLimit && isLast);
      return all ? Outcome::kExhausted : *end;
    }
    mIsEmpty = false;
    if (end) return *end;
    if (IsTimeToRestart()) Restart();
  }
}

/// Goes down the frontier's path. What lies beside it is either open or explored already.
SearchRun::End SearchRun::Replay() {
  while (const SearchTree::Decision* ahead = mTree.GetAhead()) {
    if (!mIncumbent.RestrictAsBefore(mEngine, mTree.GetDepth())) mIsEmpty = true;
    NodeState state = mIsEmpty ? NodeState::kRefuted : mReasoner.Enter();
    if (IsOpen(state) && mSpace.IsHidden(ahead->first.variable)) state = mReasoner.Settle();
    if (const End end = EndAfter(state)) return end;
    if (state == NodeState::kRefuted) {
      mIsEmpty = true;
      mTree.EndHere();
      break;
    }
    mIncumbent.NoteReplay(mEngine, mTree.GetDepth());
    if (mSpace.IsHidden(ahead->first.variable)) KeepCandidate();
    mIsEmpty = !mTree.Replay();
  }
  return {};
}

SearchRun::End SearchRun::CheckLimits() {
  if (mStatistics.nodes >= mOptions.limits.nodes) return Outcome::kNodeLimit;
  if (mCompiled.GetSeconds() >= mOptions.limits.seconds) return Outcome::kTimeLimit;
  if (mOptions.events.progress && mProgress.IsDue(Clock::now())) {
    mCompiled.UpdateStatistics();
    mIncumbent.UpdateBound(mEngine, mFrontier);
    mOptions.events.progress(mStatistics);
    mProgress.Restart();
  }
  if (mInterrupt.load(std::memory_order_relaxed)) return WhyInterrupted();
  return {};
}

void SearchRun::SaveIfDue() {
  if (!mOptions.events.save || !mSave.IsDue(Clock::now())) return;
  mCompiled.UpdateStatistics();
  mIncumbent.UpdateBound(mEngine, mFrontier);
  mOptions.events.save();
  mSave.Restart();
}

SearchRun::End SearchRun::EndAfter(NodeState state) const {
  if (state == NodeState::kInterrupted) return WhyInterrupted();
  if (state == NodeState::kBadArguments) return Outcome::kBadModel;
  return {};
}

NodeState SearchRun::VisitNode() {
  if (mIsEmpty || !mIncumbent.Restrict(mEngine)) return NodeState::kRefuted;
  if (const NodeState state = mReasoner.Enter(); !IsOpen(state)) return state;
  // What was found there counts from the next node on: a run that goes on comes here by one way.
  if (mIncumbent.WantsPoint() && !mTree.InHidden()) TryPoint();
  if (mSolved.HoldPresentValues(mEngine)) return NodeState::kRefuted;
  if (!mTree.InHidden()) {
    const std::uint32_t variable = mChooser.ChooseDeclared(mTree);
    if (variable != VariableChooser::kNone) {
      Branch(variable);
      return NodeState::kBranched;
    }
  }

  const NodeState state = mReasoner.Settle();
  if (!IsOpen(state)) return state;
  const std::uint32_t hidden = mChooser.ChooseHidden(mTree);
  if (!mTree.InHidden()) mFrontier.hiddenNodes = 0;
  KeepCandidate();
  if (hidden != VariableChooser::kNone && mFrontier.hiddenNodes < mOptions.hiddenNodes) {
    Branch(hidden);
    ++mFrontier.hiddenNodes;
    return NodeState::kBranched;
  }
  return Conclude(state);
}

void SearchRun::Branch(std::uint32_t variable) {
  const Half half = mSpace.Split(mEngine, variable, mOptions.selection);
  mIncumbent.NoteSplit(mEngine, mTree.GetDepth());
  mIsEmpty = !mTree.Branch(mIncumbent.Prefers(half) ? half : mSpace.OppositeOf(half));
}

/// Looks for a better solution in the middle of what is left.
void SearchRun::TryPoint() {
  mEngine.Push();
  ZULTavBox box, region;
  if (const NodeState state = FixMiddle();
      IsOpen(state) && mReasoner.Prove(state, box, region) >= NodeReasoner::Finding::kSolution)
    mIncumbent.Improve(box);
  mEngine.Pop();
}

/// Takes the middle of the widest value, then of the next, without a way back.
NodeState SearchRun::FixMiddle() {
  for (;;) {
    const std::uint32_t variable = mChooser.ChooseLargest();
    if (variable == VariableChooser::kNone) return mReasoner.Settle();
    const Half half = mSpace.Split(mEngine, variable, mOptions.selection);
    bool isLeft = mSpace.Enter(mEngine, half);
    if (!mSpace[variable].IsDiscrete())
      isLeft = isLeft && mSpace.Enter(mEngine, mSpace.OppositeOf(half));
    const NodeState state = isLeft ? mReasoner.Enter() : NodeState::kRefuted;
    if (!IsOpen(state)) return state;
  }
}

/// The candidate, or the solution in it, becomes a box of the frontier, unless there is none, or
/// only one that was found before.
NodeState SearchRun::Conclude(NodeState state) {
  using Finding = NodeReasoner::Finding;
  ZULTavBox box, region;
  const Finding finding = mReasoner.Prove(state, box, region);
  if (finding == Finding::kNoSolution) return NodeState::kRefuted;
  if (mIncumbent.IsCollecting() && mIncumbent.IsBest(mCandidate)) return NodeState::kRefuted;
  if (mIncumbent.IsSought() && !mIncumbent.IsCollecting()) return ConcludeOptimum(finding, box);
  // The candidate may hold other solutions for other hidden values.
  const bool isOnly = finding == Finding::kOnlySolution && !mTree.InHidden();
  if (isOnly && mSolved.Hold(box)) return NodeState::kRefuted;
  const bool isProven =
      isOnly || (finding != Finding::kNothing && mTree.KeepsToPath(box, mCandidate));
  if (isOnly) mCandidate = std::move(box);
  mCandidate.isProven = isProven;
  const bool comesLast = !isProven && IsUnbounded(mCandidate);
  (comesLast ? mUnbounded : mPending).Add(std::exchange(mCandidate, ZULTavBox()));
  if (isOnly) mSolved.Add(std::move(region));
  mTree.LeaveHidden();
  return NodeState::kFound;
}

/// What is better than the best solution is kept; what may be is noted, and waits for the end where
/// nothing else was found.
NodeState SearchRun::ConcludeOptimum(NodeReasoner::Finding finding, const ZULTavBox& box) {
  ZULTavBox present = mSpace.Capture(mEngine);
  if (finding >= NodeReasoner::Finding::kSolution)
    mIncumbent.Improve(mSpace.HasContinuousValues() ? box : present);
  mIncumbent.NoteRest(present);
  if (!mIncumbent.HasBest()) mUnbounded.Add(std::move(present));
  return NodeState::kRefuted;
}

bool SearchRun::IsUnbounded(const ZULTavBox& box) const {
  for (std::uint32_t i = 0; i < mSpace.GetNumberOfDeclared(); ++i)
    if (mSpace[i].kind == Kind::kReal && !box.ranges[i].GetReals().IsBounded()) return true;
  return false;
}

/// Lets unbounded boxes be reported, all but so many.
void SearchRun::ReleaseUnbounded(std::size_t kept) {
  for (auto& boxes = mFrontier.unbounded; boxes.size() > kept;)
    mFrontier.boxes.splice(mFrontier.boxes.end(), boxes, boxes.begin());
}

/// Splits of hidden variables narrow the declared ones, so the assignment is taken before them.
void SearchRun::KeepCandidate() {
  if (!mTree.InHidden()) mCandidate = mSpace.Capture(mEngine);
}

void SearchRun::Count(NodeState state) {
  ++mStatistics.nodes;
  mStatistics.peakDepth = std::max<std::uint64_t>(mStatistics.peakDepth, mTree.GetDepth());
  if (state != NodeState::kRefuted) return;
  ++mStatistics.fails;
  ++mFrontier.experience.fails;
  if (!mIsEmpty) mChooser.Learn(mReasoner.GetFailed());
}

bool SearchRun::IsTimeToRestart() const {
  const ZULTavFrontier::Experience& experience = mFrontier.experience;
  return mRestarts && !mTree.InHidden() &&
         experience.fails >= PatienceAfter(experience.restarts, mOptions.restartAfter);
}

/// Begins anew, with what was learnt, and without what was explored. As a run that goes on begins:
/// nothing is left of the way here.
void SearchRun::Restart() {
  mNogoods.Learn(mFrontier.path);
  BeginAnew();
  mFrontier.experience.fails = 0;
  ++mFrontier.experience.restarts;
  ++mStatistics.restarts;
}

void SearchRun::BeginAnew() {
  mTree.LeaveAll();
  mEngine.Pop();
  mEngine.Push();
  mIsEmpty = false;
}

/// Begins to look for all solutions as good as the best one, where that is wanted.
bool SearchRun::Collect() {
  mIncumbent.UpdateBound(mEngine, mFrontier);
  if (!mIncumbent.Collect()) return false;
  mFrontier.explored = false;
  mNogoods.Forget();
  BeginAnew();
  return true;
}

SearchRun::End SearchRun::ReportImprovement() {
  if (!mIncumbent.TakeNews()) return {};
  // What may be a solution is worth nothing beside one that is.
  mFrontier.boxes.clear();
  mFrontier.unbounded.clear();
  if (mSolution.GetSize() == 0) mSolution = mSpace.MakeSolution();
  ++mStatistics.solutions;
  mSpace.Fill(mIncumbent.GetBest(), mSolution);
  if (!mReport(mSolution)) return Outcome::kStopped;
  if (HasEnough()) return Outcome::kSolutionLimit;
  return {};
}

/// Reports what no later box can touch, or everything once enough was found.
SearchRun::End SearchRun::ReportFinal() {
  ReleaseUnbounded(PendingBoxes::kCapacity);
  // What is kept for a run that goes on need not be cut short.
  const bool enough = !mOptions.resumable &&
                      mStatistics.solutions + mPending.GetSize() >= mOptions.limits.solutions;
  const auto final = [&](const ZULTavBox& box) { return enough || !mTree.ReachesOpenHalf(box); };
  mSolved.DropUnless([&](const ZULTavBox& box) { return mTree.ReachesOpenHalf(box); });
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
  ZULTavBox& box = mPending.GetFirst();
  if (mSolution.GetSize() == 0) mSolution = mSpace.MakeSolution();
  mImages.JoinAtZero(box);
  mSpace.Fill(box, mSolution);
  while (!HasEnough()) {
    ++mStatistics.solutions;
    const bool goOn = mReport(mSolution);
    const auto changed = mImages.Next(box);
    if (changed.empty()) {
      mPending.RemoveFirst();
      return goOn ? Reported::kGoOn : Reported::kRefused;
    }
    if (mInterrupt.load(std::memory_order_relaxed)) return Reported::kInterrupted;
    if (!goOn) return Reported::kRefused;
    mSpace.Fill(box, changed, mSolution);
  }
  return Reported::kGoOn;
}

}  // namespace zultav::detail
