#ifndef ZULTAV_SEARCH_ZULTAV_SEARCH_H
#define ZULTAV_SEARCH_ZULTAV_SEARCH_H

#include <atomic>
#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

#include "framework/search/Export.h"
#include "framework/search/ZULTavFrontier.h"
#include "framework/search/ZULTavSolution.h"
#include "framework/solver/ZULTaVoNetwork.h"

/// Depth-first search for the solutions of a network, by propagation and bisection. The network is
/// compiled for each run; its constraints mean what is true of numbers, whatever its types can
/// hold.
///
/// Declared integers and booleans are split until each is one value, reals until they are narrow,
/// or until all that is said of them goes beyond the range of doubles; a single-value type that
/// propagation leaves Any stays Any. Then hidden integers and booleans are split too, so that no
/// box is reported that propagation would still refute, but each assignment of the declared
/// variables is reported once. Boxes of reals that lie side by side are merged where the width
/// limit allows. Boxes that a proof assigns to a solution found before are dropped, and those
/// without a proof that reach to infinity reported last. Where the sign of a real does not matter,
/// only one half is searched and each box reported with its mirror images. The same network and
/// options give the same solutions in the same order. Nothing here throws.
///
/// A search is for one thread at a time, except for Stop; different searches may run in different
/// threads, each in a network of its own. The network's precision and trigonometric window hold
/// for the thread while it searches, in the callbacks, too.
class ZULTAV_UTILITIES_API ZULTavSearch {
 public:
  enum class VariableChoice {
    /// The integer or boolean of the fewest values for the trouble that it has made, then the real
    /// whose splitting promises most.
    kAdaptive,
    kByKind,     ///< the first undecided integer or boolean, then the next undecided real
    kFirst,      ///< the first undecided variable, as declared
    kLargest,    ///< the widest domain; the first of equals
    kSmallest,   ///< the narrowest domain; the first of equals
    kRoundRobin  ///< the next undecided variable after the one split last
  };
  static constexpr int kVariableChoices = static_cast<int>(VariableChoice::kRoundRobin) + 1;
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
  using Statistics = ZULTavFrontier::Statistics;
  static constexpr std::uint64_t kUnlimited = std::numeric_limits<std::uint64_t>::max();

  /// When a run ends, at the latest.
  struct Limits {
    std::uint64_t solutions = 1;
    std::uint64_t nodes = kUnlimited;
    double seconds = std::numeric_limits<double>::infinity();
  };
  /// Called between two nodes while a run is under way; each may be empty, none may throw.
  struct Events {
    /// About twice a second.
    std::function<void(const Statistics&)> progress;
    /// Every savePeriod seconds, for WriteState.
    std::function<void()> save;
    double savePeriod = std::numeric_limits<double>::infinity();
  };

  /// What is optimised.
  struct Objective {
    std::size_t observed = 0;  ///< its number among the observed values; an integer or a real
    bool isMaximized = false;
    /// A solution counts only if it is better than the best one by more than the first number, and
    /// by more than the second one times the magnitude of the objective; of integers at least by
    /// one. Without it: 0 of integers, 1e-6 both of reals.
    std::optional<std::pair<double, double>> gap;
    /// Solutions that are worse are none.
    std::optional<double> limit;
  };

  /// How to search. Limits and events may differ from run to run; all else decides what is
  /// reported, and in which order.
  struct Options {
    VariableChoice choice = VariableChoice::kAdaptive;
    /// Which part of a domain is explored first. Reals are always halved.
    ZULTaVoAny::ValueSelection selection = ZULTaVoAny::kLowerHalf;
    /// A real is decided when its width is at most absoluteWidth or at most relativeWidth times
    /// its greatest magnitude, or when no double lies between its bounds. An absoluteWidth below
    /// 0 stands for the solver's precision.
    double absoluteWidth = -1;
    double relativeWidth = 1e-14;
    /// Splits of hidden variables allowed per assignment of the declared ones; then the
    /// assignment is reported unproven.
    std::uint64_t hiddenNodes = 10000;
    /// Whether a run that ends early keeps boxes that later ones may join for the run that goes
    /// on; otherwise it reports them.
    bool resumable = false;
    /// After how many fails a search over integers and booleans begins anew, with what it has
    /// learnt; later it is more patient. 0: never. Nothing is explored or reported twice, but the
    /// order of the solutions is another one.
    std::uint64_t restartAfter = 0;
    /// Reports each solution that is better than all before, as soon as it is found and proven, and
    /// ends when none is better by more than the gap.
    std::optional<Objective> objective;
    /// Whether, where all values are discrete, the others that are as good as the best one follow.
    bool allOptima = false;
    Limits limits;
    Events events;
  };

  /// Receives a solution as soon as it is certain to be final; false ends the search. Must not
  /// throw.
  using SolutionCallback = std::function<bool(const ZULTavSolution&)>;

  /// @param declared  objects of the network whose values make up a solution, without repetition
  /// @param observed  results of operators that are told with each solution: they range over all
  ///                  numbers, and the search does not split them
  ZULTavSearch(ZULTaVoNetwork& network, std::vector<ZULTaVoAny*> declared, const Options& options,
               std::vector<ZULTaVoAny*> observed = {});
  ZULTavSearch(const ZULTavSearch&) = delete;
  ZULTavSearch& operator=(const ZULTavSearch&) = delete;

  /// Searches from the network's present values and leaves them as they were.
  Outcome Run(const SolutionCallback& report);
  /// Propagates only, within the time limit, and narrows the declared values.
  /// @param[out] verdict  what is known afterwards
  /// @return kExhausted at the fixpoint, else what ended the propagation before
  Outcome Propagate(Verdict& verdict);

  /// Ends the search soon. May be called from a signal handler or another thread.
  void Stop() noexcept { mInterrupt.store(true, std::memory_order_relaxed); }

  const Statistics& GetStatistics() const { return mFrontier.statistics; }
  /// Within events, or after a Run with an objective: a range that certainly holds the objective of
  /// the best solution of all, if there is a solution.
  ZULTavObserved GetObjectiveBounds() const;
  /// After a Run with an objective that was exhausted: whether no solution is better than the best
  /// one by more than the gap.
  bool IsOptimumCertain() const { return mFrontier.optimum.isCertain; }
  /// Whether solutions were found with objectives as good as a real can be, beyond 1e19.
  bool IsUnbounded() const { return mFrontier.optimum.isUnbounded; }
  /// Within Events::save, or after a Run: what is left to do, and how far the run came.
  const ZULTavFrontier& GetFrontier() const { return mFrontier; }

  /// Within Events::save, or after a Run with Options::resumable: writes the frontier.
  void WriteState(ZULopstream& out) const { mFrontier.Write(out); }
  /// Makes the next Run go on where an earlier one over an equal network and with equal options
  /// was: together they report what one uninterrupted run reports. False when the bytes are no such
  /// state: in.Reason() says why.
  bool ReadState(ZULipstream& in);
  /// A solution of this search's types, for ZULTavSolution::Read. Throws std::bad_alloc when memory
  /// ran out.
  ZULTavSolution MakeSolution() const;

 private:
  template <class Step>
  Outcome WithCompiled(Step step);

  ZULTaVoNetwork& mNetwork;
  std::vector<ZULTaVoAny*> mDeclared, mObserved;
  Options mOptions;
  ZULTavFrontier mFrontier;
  std::atomic<bool> mInterrupt{false};
};

#endif
