#ifndef ZULTAV_SOLVE_CHECKPOINT_H
#define ZULTAV_SOLVE_CHECKPOINT_H

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "framework/calculator/ZULTavModel.h"
#include "framework/search/ZULTavSearch.h"
#include "solve/Journal.h"
#include "solve/Options.h"

/// A run of the search as a file: what it searches, how, how far it came, and what it found.
///
/// The file is a journal (docs/streams.md) of fixed-width numbers, the same for every width of
/// `long`: the run once, then what was found and how far it came, as often as it is saved. So the
/// cost of saving does not depend on what was found before, which is kept nowhere else.
class Checkpoint {
 public:
  /// Begins a checkpoint of a new run, which is in the file from now on. Call it before any
  /// propagation. Null, with the reason, where the file can be none, is something else, or holds an
  /// unfinished run that the options do not give up.
  static std::unique_ptr<Checkpoint> Begin(const Options& options, const ZULTavModel& model,
                                           std::string& reason);
  /// Opens a checkpoint to look at it, or to go on with it. Null, with the reason, when it is none
  /// that can be used.
  static std::unique_ptr<Checkpoint> Open(const std::string& file, Journal::Access access,
                                          std::string& reason);
  ~Checkpoint();

  /// The options of the run: how it searches, with which module, how many solutions are still
  /// wanted unless the command line says so.
  void Restore(Options& options) const;
  /// The model, and the search that goes on; null and false, with the reason, when the bytes are
  /// not of these modules.
  std::unique_ptr<ZULTavModel> MakeModel(std::span<const ZULTaVoModule* const> modules,
                                         std::string& reason) const;
  bool RestoreSearch(ZULTavSearch& search, std::string& reason) const;
  /// Calls `use` for each solution found before. False, with the reason, when the bytes are bad.
  bool ForEachFound(const ZULTavSearch& search, std::string& reason,
                    const std::function<void(const ZULTavSolution&)>& use);

  /// Of all runs before this one.
  const ZULTavSearch::Statistics& GetBefore() const { return mState.total; }
  /// The sum of those and of the present run.
  ZULTavSearch::Statistics Total(const ZULTavSearch::Statistics& present) const;
  bool IsFinished() const { return mState.finished; }
  /// Whether something follows the last state that is whole.
  bool IsTorn() const { return mJournal->IsTorn(); }

  /// Keeps a solution for the next saving.
  void Add(const ZULTavSolution& solution);
  /// Saves what the search needs to go on. On failure what was saved last stays, the answer is
  /// false and `reason` says why.
  bool Save(const ZULTavSearch& search, bool finished, std::string& reason);

 private:
  class Found;
  struct State {
    ZULTavSearch::Statistics total;
    bool finished = false;
    std::string search;  // a stream within the stream
  };

  Checkpoint();
  template <class Self, class Stream>
  static void ForEachRunField(Self& self, Stream& stream);
  template <class AnyState, class Stream>
  static void ForEachStateField(AnyState& state, Stream& stream);
  bool Read(std::string& reason);
  bool ReadState(const Journal::Record& record, std::string& reason);
  bool AppendFound(std::string& reason);
  bool AppendState(const State& state, std::string& reason);
  void CountState(std::uint64_t begin);
  void DropSupersededStates();

  std::string mModelFile;
  std::vector<std::string> mModules;
  std::optional<double> mPrecision, mRatio;
  std::optional<std::pair<double, double>> mTrigLimits;
  ZULTavSearch::Options mOptions;
  ZULTavSearch::Objective mObjective;
  std::string mModel;  // a stream within the stream
  State mState;        // before this run
  std::unique_ptr<Journal> mJournal;
  std::unique_ptr<Found> mFound;  // not in the file yet
  // Where the last state begins, and how many bytes it takes, and those before it.
  std::uint64_t mStateBegin = 0, mStateSize = 0, mSupersededSize = 0;
  std::uint64_t mTolerated = std::uint64_t{1} << 20;
};

#endif
