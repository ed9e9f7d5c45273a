#ifndef ZULTAV_SEARCH_DETAIL_SEARCH_RUN_H
#define ZULTAV_SEARCH_DETAIL_SEARCH_RUN_H

#include <atomic>
#include <chrono>
#include <optional>

#include "framework/search/ZULTavSearch.h"
#include "framework/search/detail/MirrorImages.h"
#include "framework/search/detail/NodeReasoner.h"
#include "framework/search/detail/PendingBoxes.h"
#include "framework/search/detail/SearchTimer.h"
#include "framework/search/detail/SearchTree.h"
#include "framework/search/detail/SolvedRegions.h"

namespace zultav::detail {

/// The network in the hands of one run: its settings hold, it can be interrupted, what it does is
/// counted, and in the end the levels that were opened are closed.
class NetworkUse {
 public:
  NetworkUse(ZULTaVoNetwork& network, const std::atomic<bool>& interrupt,
             ZULTavSearch::Statistics& statistics);
  ~NetworkUse();
  NetworkUse(const NetworkUse&) = delete;
  NetworkUse& operator=(const NetworkUse&) = delete;

  /// Since the run began.
  double GetSeconds() const;
  void UpdateStatistics();

 private:
  ZULTaVoRealScope mSettings;
  ZULTaVoNetwork& mNetwork;
  std::size_t mDepth;
  ZULTaVoNetwork::Statistics mBefore;
  ZULTavSearch::Statistics& mStatistics;
  std::chrono::steady_clock::time_point mBegin;
};

/// One run of a search, from where the frontier is until all is explored or a limit is reached.
class SearchRun {
 public:
  using Outcome = ZULTavSearch::Outcome;

  /// Narrows values of the network, to be restored by whoever `use` belongs to. Throws
  /// std::bad_alloc, as does Execute, when memory ran out.
  SearchRun(ZULTaVoNetwork& network, const std::vector<ZULTaVoAny*>& declared,
            const ZULTavSearch::Options& options, const ZULTavSearch::SolutionCallback& report,
            ZULTavFrontier& frontier, NetworkUse& use, std::atomic<bool>& interrupt);

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
  void KeepCandidate();
  void Count(NodeState state);
  End ReportFinal();
  Outcome ReportRest(Outcome outcome);
  Reported ReportFirst();
  bool IsUnbounded(const ZULTavSolution& box) const;
  void ReleaseUnbounded(std::size_t kept);

  bool HasEnough() const { return mStatistics.solutions >= mOptions.limits.solutions; }
  Outcome WhyInterrupted() const { return mTimer.IsUp() ? Outcome::kTimeLimit : Outcome::kStopped; }
  End EndAfter(NodeState state) const;

  ZULTaVoNetwork& mNetwork;
  const ZULTavSearch::Options& mOptions;
  const ZULTavSearch::SolutionCallback& mReport;
  ZULTavFrontier& mFrontier;
  ZULTavSearch::Statistics& mStatistics;  // of the frontier
  NetworkUse& mUse;
  const std::atomic<bool>& mInterrupt;
  SearchTimer mTimer;
  Period mProgress, mSave;
  WidthLimit mWidthLimit;
  NodeReasoner mReasoner;
  SearchTree mTree;
  PendingBoxes mPending, mUnbounded;
  SolvedRegions mSolved;
  MirrorImages mImages;
  ZULTavSolution mCandidate;  // the declared values before hidden ones are split
};

}  // namespace zultav::detail

#endif
