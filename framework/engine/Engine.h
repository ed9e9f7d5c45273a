#ifndef ZULTAV_ENGINE_ENGINE_H
#define ZULTAV_ENGINE_ENGINE_H

#include <array>
#include <atomic>
#include <bit>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "framework/engine/Export.h"
#include "framework/engine/Program.h"

class ZULTaVoNetwork;

namespace zultav::engine {

class AllDifferent;
class Clauses;
class Filters;
class Relations;
class StatementRunner;

/// The state of a search over a program: what every slot may still be, and propagation.
///
/// All state that a search changes and takes back is an array of words with one trail: bounds, sets
/// of values, what rules remember. Propagation and undoing allocate nothing but where the trail
/// grows. What is computed depends on the program and the calls alone.
class ZULTAV_ENGINE_API Engine {
 public:
  enum class Status {
    kFixpoint,
    kFailed,        ///< no solution is left
    kLimit,         ///< the limit on runs was reached; what was narrowed is sound
    kInterrupted,   ///< the interrupt flag was seen; what was narrowed is sound
    kBadArguments,  ///< a filter could not use its arguments
    kOutOfMemory    ///< what was narrowed is sound
  };
  struct Statistics {
    std::uint64_t runs = 0;        ///< of rules
    std::uint64_t narrowings = 0;  ///< changes of slots
  };

  /// Throws std::bad_alloc when memory ran out. The network is that of the program: where the
  /// program has filters, its values follow those of the engine, and are what they were when the
  /// engine is gone. Null: filters do nothing.
  Engine(const Program& program, ZULTaVoNetwork* network);
  ~Engine();
  Engine(const Engine&) = delete;
  Engine& operator=(const Engine&) = delete;

  const Program& GetProgram() const { return mProgram; }

  // --- What slots may be ---------------------------------------------------------------------

  // Of integers.
  std::int64_t GetLower(Slot x) const { return mWords[2 * std::size_t{x}]; }
  std::int64_t GetUpper(Slot x) const { return mWords[2 * std::size_t{x} + 1]; }
  IntegerRange GetIntegers(Slot x) const { return {GetLower(x), GetUpper(x)}; }
  bool Contains(Slot x, std::int64_t value) const;
  /// How many values are left, at most UINT64_MAX.
  std::uint64_t GetSize(Slot x) const;
  /// The least value above, or the greatest one below, that is left; where there is none, a number
  /// beyond the bound.
  std::int64_t GetNext(Slot x, std::int64_t value) const;
  std::int64_t GetPrevious(Slot x, std::int64_t value) const;
  bool IsTrue(Slot x) const { return GetLower(x) > 0; }
  bool IsFalse(Slot x) const { return GetUpper(x) <= 0; }

  /// Of integers and reals; integers of more digits than a double has, outward.
  RealRange GetReals(Slot x) const {
    if (mProgram.GetSlot(x).kind != Kind::kReal) [[unlikely]]
      return GetIntegersAsReals(x);
    return {std::bit_cast<double>(GetLower(x)), std::bit_cast<double>(GetUpper(x))};
  }
  /// Exactly one value: equal bounds, none of them infinite; of an opaque slot, as its object says.
  bool IsFixed(Slot x) const;
  /// The same, of an integer.
  bool IsFixedInteger(Slot x) const {
    const std::int64_t lower = GetLower(x);
    // An end of the scale that is met by both bounds says that the value lies beyond it.
    return lower == GetUpper(x) && static_cast<std::uint64_t>(lower) - kEndOfScale > 1;
  }

  // --- Narrowing. Each answers false when nothing is left. --------------------------------------

  bool SetLower(Slot x, std::int64_t bound) { return bound <= GetLower(x) || RaiseLower(x, bound); }
  bool SetUpper(Slot x, std::int64_t bound) { return bound >= GetUpper(x) || DropUpper(x, bound); }
  bool Fix(Slot x, std::int64_t value) {
    return Contains(x, value) && SetLower(x, value) && SetUpper(x, value);
  }
  /// Where no set of values is kept, only at a bound.
  bool Remove(Slot x, std::int64_t value) {
    return value < GetLower(x) || value > GetUpper(x) || RemoveWithin(x, value);
  }
  bool Narrow(Slot x, const IntegerRange& range) {
    return SetLower(x, range.lower) && SetUpper(x, range.upper);
  }
  /// Of integers and reals. A real that loses little keeps what it has lost, but nobody is told.
  bool Narrow(Slot x, const RealRange& range);
  /// The same, and everybody who watches is told, however little it is.
  bool NarrowAndTell(Slot x, const RealRange& range);
  bool NarrowAndTell(Slot x, const IntegerRange& range);

  /// The object of an opaque slot was narrowed from outside, after the network's SaveValue: whoever
  /// watches is told.
  void TellChanged(Slot x);

  // --- Propagation -----------------------------------------------------------------------------

  /// Runs what is scheduled to the fixpoint. After a failure nothing is scheduled.
  Status Propagate();
  /// Everything is scheduled at the beginning. Schedules every rule that is not retired.
  void ScheduleAll();
  void Schedule(std::uint32_t rule);
  /// The rule that has failed last.
  std::uint32_t GetFailed() const { return mFailed; }
  bool IsRetired(std::uint32_t rule) const { return mWords[mRuleWords + rule] == kRetired; }

  // Of the running rule:
  /// It holds for all that is left, and need not run again before Pop.
  void Retire();
  /// It has stopped before its fixpoint.
  void RunAgain() { mRunAgain = true; }
  /// A number from 0 up, 0 at the beginning, that Pop takes back.
  std::int64_t GetMemory() const { return mWords[mRuleWords + mRunning]; }
  void SetMemory(std::int64_t memory);

  /// Opens a level: Pop brings every slot back to what it was here. Throws std::bad_alloc when
  /// memory ran out.
  void Push();
  void Pop();
  std::size_t GetDepth() const { return mLevels.size(); }
  /// Calls use(slot) for each slot whose bounds have changed since the last Push, once or twice.
  template <class Use>
  void ForEachChanged(Use use) const {
    for (std::size_t i = mLevels.back().trail; i < mTrail.size(); ++i)
      if (mTrail[i].word < mHoleWords) use(static_cast<Slot>(mTrail[i].word / 2));
  }

  /// A narrowing of a real, or of an integer with more than 2^16 values, that removes less than
  /// this fraction of its width since the last time others were told is not passed on. Default
  /// 0.01: coarse enough that slow convergence ends after some hundred steps per decade, fine
  /// enough that the search rarely splits what propagation would still have narrowed.
  void SetNarrowingFraction(double fraction) { mFraction = fraction; }
  double GetNarrowingFraction() const { return mFraction; }
  /// Passes on what was kept back since the last Push and is enough for the present fraction.
  void TellKeptBack();
  /// Runs allowed per propagation; 0: 2000 for each rule and 1000000 more.
  void SetRunLimit(std::uint64_t limit) { mRunLimit = limit; }
  std::uint64_t GetRunLimit() const { return mRunLimit; }
  void SetInterrupt(const std::atomic<bool>* flag) { mInterrupt = flag; }
  const Statistics& GetStatistics() const { return mStatistics; }
  std::size_t GetMemoryUsed() const;

  /// The object of an opaque slot.
  const ZULTaVoAny& GetObject(Slot x) const;

 private:
  // Which keep words of their own among the others.
  friend class AllDifferent;
  friend class Clauses;
  friend class Relations;
  struct Saved {
    std::uint32_t word;
    std::uint32_t stamp;  // of the word before
    std::int64_t value;
  };
  struct Level {
    std::size_t trail;
    bool open;  // the fixpoint was not reached
  };
  struct Queue {
    std::uint32_t head, tail;
  };
  struct RuleState {
    std::uint32_t next = kNone;  // behind it in its queue
    std::uint8_t cost = 0;
    bool isQueued = false;
    bool isSmall = false;  // its sums cannot overflow
  };
  static constexpr std::int64_t kRetired = -1;
  static constexpr std::uint64_t kEndOfScale = IntegerRange::kMax;

  void Save(std::size_t word) {
    if (mStamps[word] == mLevels.size()) return;
    mTrail.push_back({static_cast<std::uint32_t>(word), mStamps[word], mWords[word]});
    mStamps[word] = static_cast<std::uint32_t>(mLevels.size());
  }
  void Set(std::size_t word, std::int64_t value) {
    Save(word);
    mWords[word] = value;
  }
  RealRange GetIntegersAsReals(Slot x) const;
  bool RaiseLower(Slot x, std::int64_t bound);
  bool DropUpper(Slot x, std::int64_t bound);
  bool RemoveWithin(Slot x, std::int64_t value);
  bool NarrowReal(Slot x, const RealRange& range, bool always);
  bool IsWorthTelling(const RealRange& told, const RealRange& now) const;
  void TellBounds(Slot x, unsigned int events);
  unsigned int TakeUntold(Slot x, unsigned int events, bool always);
  void Tell(Slot x, unsigned int events);

  std::size_t FindHoleWord(const SlotInfo& info, std::uint64_t bit) const {
    return mHoleWords + info.holes + static_cast<std::size_t>(bit / 64);
  }
  std::uint64_t GetBit(Slot x, std::int64_t value) const {
    return static_cast<std::uint64_t>(value) -
           static_cast<std::uint64_t>(mProgram.GetInitialIntegers(x).lower);
  }
  std::int64_t FindAbove(Slot x, const SlotInfo& info, std::int64_t value) const;
  std::int64_t FindBelow(Slot x, const SlotInfo& info, std::int64_t value) const;

  Status RunScheduled();
  Status Run(const Rule& rule, RuleState& state);
  void Enqueue(std::uint32_t rule);
  std::uint32_t TakeNext();
  void ClearQueues();

  const Program& mProgram;
  ZULTaVoNetwork* mNetwork;
  std::vector<std::int64_t> mWords;
  std::vector<std::uint32_t> mStamps;  // of each word: the depth at which it was saved
  std::size_t mHoleWords, mRuleWords, mToldWords;
  std::vector<Saved> mTrail;
  std::vector<Level> mLevels;
  std::vector<RuleState> mRules;
  std::array<Queue, kCosts> mQueues;
  std::uint32_t mScheduled = 0;  // a bit for each queue that is not empty
  bool mRunAgain = false;
  bool mHasWide = false;  // integers of which little is not told at once
  std::uint32_t mRunning = kNone, mFailed = kNone;
  std::unique_ptr<Clauses> mClauses;  // null where there are none
  std::unique_ptr<AllDifferent> mAllDifferent;
  std::unique_ptr<Filters> mFilters;
  std::unique_ptr<Relations> mRelations;
  std::unique_ptr<StatementRunner> mStatements;
  double mFraction = 0.01;
  std::uint64_t mRunLimit = 0;
  const std::atomic<bool>* mInterrupt = nullptr;
  Statistics mStatistics;
};

}  // namespace zultav::engine

#endif
