#ifndef ZULTAV_SEARCH_ZULTAV_SEARCH_H
#define ZULTAV_SEARCH_ZULTAV_SEARCH_H

#include <atomic>
#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <limits>
#include <memory>
#include <vector>

#include "framework/search/Export.h"
#include "framework/search/ZULTavSolution.h"
#include "framework/solver/ZULTaVoNetwork.h"

class MirrorImages;
class PendingBoxes;
class SearchTree;
class ZULTavProof;

/// Depth-first search for the solutions of a network, by propagation and bisection.
///
/// Declared integers and booleans are split until each is one value, reals until they are narrow;
/// a single-value type that propagation leaves Any stays Any. Then hidden integers and booleans
/// are split too, so that no box is reported that propagation would still refute, but each
/// assignment of the declared variables is reported once. Boxes of reals that touch are merged
/// where the width limit allows. Where the sign of a real does not matter, only one half is
/// searched and each box reported with its mirror images. The same network and options give the
/// same solutions in the same order. Nothing here throws.
class ZULTAV_UTILITIES_API ZULTavSearch {
 public:
  enum class VariableChoice {
    kByKind,     ///< the first undecided integer or boolean, then the next undecided real
    kFirst,      ///< the first undecided variable, as declared
    kLargest,    ///< the widest domain; the first of equals
    kSmallest,   ///< the narrowest domain; the first of equals
    kRoundRobin  ///< the next undecided variable after the one split last
  };
  enum class Outcome {
    kExhausted,      ///< every solution was reported
    kSolutionLimit,  ///< as many solutions as asked for were reported; there may be more
    kNodeLimit,
    kTimeLimit,
    kPropagationLimit,  ///< of Propagate only: the network's limit on filter calls
    kStopped,           ///< by Stop or by the callback
    kBadModel,          ///< a constraint cannot work on its arguments
    kOutOfMemory
  };
  /// What propagation alone found out.
  enum class Verdict {
    kOpen,           ///< the values may hold solutions
    kContradiction,  ///< there is none
    kSolved          ///< the values certainly hold one
  };
  static constexpr std::uint64_t kUnlimited = std::numeric_limits<std::uint64_t>::max();

  struct Statistics {
    std::uint64_t solutions = 0;     ///< reported to the callback
    std::uint64_t nodes = 0;         ///< nodes entered, the root included
    std::uint64_t fails = 0;         ///< nodes that were refuted
    std::uint64_t narrowings = 0;    ///< domain changes made by constraints
    std::uint64_t propagations = 0;  ///< filter calls
    std::uint64_t peakDepth = 0;     ///< decisions on the longest path
    double seconds = 0;              ///< wall-clock time
  };

  struct Options {
    VariableChoice choice = VariableChoice::kByKind;
    /// Which part of a domain is explored first. Reals are always halved.
    ZULTaVoAny::ValueSelection selection = ZULTaVoAny::kLowerHalf;
    std::uint64_t solutions = 1;
    std::uint64_t nodes = kUnlimited;
    double seconds = std::numeric_limits<double>::infinity();
    /// A real is decided when its width is at most absoluteWidth or at most relativeWidth times
    /// its greatest magnitude, or when no double lies between its bounds. An absoluteWidth below
    /// 0 stands for the solver's precision.
    double absoluteWidth = -1;
    double relativeWidth = 1e-14;
    /// Splits of hidden variables allowed per assignment of the declared ones; then the
    /// assignment is reported unproven.
    std::uint64_t hiddenNodes = 10000;
    /// Asked about boxes of reals; not owned, may be null.
    ZULTavProof* proof = nullptr;
    /// Called about twice a second while the search runs; may be empty.
    std::function<void(const Statistics&)> progress;
    /// Called every savePeriod seconds between two nodes, for WriteState; may be empty.
    std::function<void()> save;
    double savePeriod = std::numeric_limits<double>::infinity();
    /// Whether a run that ends early keeps boxes that later ones may join for the run that goes
    /// on; otherwise it reports them.
    bool resumable = false;
  };

  /// One split on the path from the root: which variable (declared ones first, then hidden ones),
  /// how, and whether the second part has been entered. A path without `second` steps open
  /// halves; so it stands for all that is not explored yet.
  struct Decision {
    std::uint32_t variable = 0;
    ZULTaVoAny::ValueSelection selection = ZULTaVoAny::kLowerHalf;
    bool second = false;

    friend bool operator==(const Decision&, const Decision&) = default;
  };

  /// Receives a solution as soon as it is certain to be final; false ends the search. Must not
  /// throw.
  using SolutionCallback = std::function<bool(const ZULTavSolution&)>;

  /// @param declared  objects of the network whose values make up a solution, without repetition
  ZULTavSearch(ZULTaVoNetwork& network, std::vector<ZULTaVoAny*> declared, const Options& options);
  ~ZULTavSearch();
  ZULTavSearch(const ZULTavSearch&) = delete;
  ZULTavSearch& operator=(const ZULTavSearch&) = delete;

  /// Searches from the network's present values and leaves them as they were.
  Outcome Run(const SolutionCallback& report);
  /// Propagates only, within the time limit, and keeps the narrowed values.
  /// @param[out] verdict  what is known afterwards
  /// @return kExhausted at the fixpoint, else what ended the propagation before
  Outcome Propagate(Verdict& verdict);

  /// Ends the search soon. May be called from a signal handler or another thread.
  void Stop() noexcept { mInterrupt.store(true, std::memory_order_relaxed); }

  const Statistics& GetStatistics() const { return mStatistics; }
  /// After a Run that ended early: the path to the node where the search would go on.
  const std::vector<Decision>& GetOpenPath() const { return mOpenPath; }

  /// Within Options::save, or after a Run with Options::resumable: writes what the next Run needs
  /// to go on, the path and the boxes not reported yet.
  void WriteState(ZULopstream& out) const;
  /// Makes the next Run go on where an earlier one over an equal network and with equal options
  /// was: together they report what one uninterrupted run reports. False when the bytes are no such
  /// state: in.Reason() says why.
  bool ReadState(ZULipstream& in);
  /// A solution of this search's types, for ZULTavSolution::Read. Throws std::bad_alloc when memory
  /// ran out.
  ZULTavSolution MakeSolution() const;

 private:
  enum class Visit { kBranched, kRefuted, kDone, kEnded };

  void Explore(SearchTree& tree, PendingBoxes& pending, const SolutionCallback& report);
  bool Replay(SearchTree& tree);
  Visit VisitNode(SearchTree& tree, PendingBoxes& pending);
  Visit Fixpoint(bool again);
  Visit Settle();
  Visit Branch(SearchTree& tree, std::uint32_t variable, ZULTaVoAny::ValueSelection selection);
  bool IsProven(const SearchTree& tree, ZULTavSolution* box) const;
  void Flush(const SearchTree& tree, PendingBoxes& pending, const SolutionCallback& report);
  bool HasEmptyValue() const;
  bool LimitReached();
  bool HasEnough() const { return mStatistics.solutions >= mOptions.solutions; }
  void ReportRest(PendingBoxes& pending, const SolutionCallback& report);
  bool Report(ZULTavSolution box, PendingBoxes& pending, const SolutionCallback& report);
  void SaveIfDue(SearchTree& tree, PendingBoxes& pending);
  void UpdateStatistics();
  void Begin();

  ZULTaVoNetwork& mNetwork;
  std::vector<ZULTaVoAny*> mDeclared;
  Options mOptions;
  Statistics mStatistics;
  // Where the next run goes on.
  std::vector<Decision> mOpenPath;
  std::deque<ZULTavSolution> mKept;  // boxes not reported yet
  std::uint64_t mHiddenNodes = 0;
  bool mExplored = false;  // only boxes are left

  std::atomic<bool> mInterrupt{false};
  std::atomic<bool> mTimeUp{false};
  Outcome mOutcome = Outcome::kExhausted;
  bool mAtFixpoint = false;
  bool mSettled = false;  // every constraint has accepted the present values
  ZULTavSolution mCandidate;
  std::unique_ptr<MirrorImages> mImages;  // of the present run
  std::chrono::steady_clock::time_point mBegin, mNextProgress, mNextSave;
  std::chrono::steady_clock::duration mSavePeriod{};
  ZULTaVoNetwork::Statistics mBefore;
};

#endif
