#ifndef ZULTAV_SEARCH_DETAIL_SEARCH_RUN_H
#define ZULTAV_SEARCH_DETAIL_SEARCH_RUN_H

#include <atomic>
#include <optional>

#include "framework/search/ZULTavSearch.h"
#include "framework/search/detail/CompiledSearch.h"
#include "framework/search/detail/Incumbent.h"
#include "framework/search/detail/MirrorImages.h"
#include "framework/search/detail/NodeReasoner.h"
#include "framework/search/detail/PendingBoxes.h"
#include "framework/search/detail/SearchTimer.h"
#include "framework/search/detail/SearchTree.h"
#include "framework/search/detail/SolvedRegions.h"
#include "framework/search/detail/VariableChooser.h"

namespace zultav::detail {

/// One run of a search, from where the frontier is until all is explored or a limit is reached.
class SearchRun {
 public:
  using Outcome = ZULTavSearch::Outcome;

  /// Throws std::bad_alloc, as does Execute, when memory ran out.
  SearchRun(CompiledSearch& compiled, const ZULTavSearch::Options& options,
            const ZULTavSearch::SolutionCallback& report, ZULTavFrontier& frontier,
            std::atomic<bool>& interrupt);

  Outcome Execute();

 private:
  /// What ends the run; nothing while it goes on.
  using End = std::optional<Outcome>;
  enum class Reported { kGoOn, kRefused, kInterrupted };

  Outcome Explore();
  End Replay();
  End CheckLimits();
  void SaveIfDue();
  NodeState VisitNode();
  NodeState Conclude(NodeState state);
  NodeState ConcludeOptimum(NodeReasoner::Finding finding, const ZULTavBox& box);
  void TryPoint();
  NodeState FixMiddle();
  void KeepCandidate();
  void Branch(std::uint32_t variable);
  void Count(NodeState state);
  bool IsTimeToRestart() const;
  void Restart();
  void BeginAnew();
  bool Collect();
  End ReportImprovement();
  End ReportFinal();
  Outcome ReportRest(Outcome outcome);
  Reported ReportFirst();
  bool IsUnbounded(const ZULTavBox& box) const;
  void ReleaseUnbounded(std::size_t kept);

  bool HasEnough() const { return mStatistics.solutions >= mOptions.limits.solutions; }
  Outcome WhyInterrupted() const { return mTimer.IsUp() ? Outcome::kTimeLimit : Outcome::kStopped; }
  End EndAfter(NodeState state) const;

  CompiledSearch& mCompiled;
  Engine& mEngine;
  const SearchSpace& mSpace;
  const ZULTavSearch::Options& mOptions;
  const ZULTavSearch::SolutionCallback& mReport;
  ZULTavFrontier& mFrontier;
  ZULTavSearch::Statistics& mStatistics;  // of the frontier
  const std::atomic<bool>& mInterrupt;
  SearchTimer mTimer;
  Period mProgress, mSave;
  WidthLimit mWidthLimit;
  bool mRestarts;
  Nogoods mNogoods;
  NodeReasoner mReasoner;
  SearchTree mTree;
  VariableChooser mChooser;
  PendingBoxes mPending, mUnbounded;
  SolvedRegions mSolved;
  MirrorImages mImages;
  Incumbent mIncumbent;
  bool mIsEmpty = false;     // the half that was entered last holds nothing
  ZULTavBox mCandidate;      // the declared values before hidden ones are split
  ZULTavSolution mSolution;  // the one that is being reported, made for the first of them
};

}  // namespace zultav::detail

#endif
