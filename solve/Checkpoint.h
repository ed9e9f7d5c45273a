#ifndef ZULTAV_SOLVE_CHECKPOINT_H
#define ZULTAV_SOLVE_CHECKPOINT_H

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <sstream>
#include <string>
#include <utility>

#include "framework/base/ZULopstream.h"
#include "framework/calculator/ZULTavModel.h"
#include "framework/search/ZULTavSearch.h"
#include "solve/Options.h"

/// A run of the search as a file: what it searches, how, how far it came, and what it found.
///
/// The file is an object stream (docs/streams.md) of fixed-width numbers followed by its checksum,
/// the same for every width of `long`.
class Checkpoint {
 public:
  /// What was found before this run, and by it. Solutions are kept as bytes, ready to be saved.
  class Found {
   public:
    Found() : mOut(mBytes) {}
    void Add(const ZULTavSolution& solution) { solution.Write(mOut); }
    std::string GetBytes() const { return mBytes.str(); }

   private:
    std::ostringstream mBytes;
    ZULopstream mOut;
  };

  /// Begins a checkpoint of a new run. Call it before any propagation.
  Checkpoint(const Options& options, const ZULTavModel& model);
  /// Reads the file; answers null, with the reason, when it is no whole checkpoint.
  static std::unique_ptr<Checkpoint> Read(const std::string& file, std::string& reason);

  /// The options of the run: how it searches, with which module, how many solutions are still
  /// wanted unless the command line says so.
  void Restore(Options& options) const;
  /// The model, and the search that goes on; null and false, with the reason, when the bytes are
  /// not of these modules.
  std::unique_ptr<ZULTavModel> MakeModel(std::span<const ZULTaVoModule* const> modules,
                                         std::string& reason) const;
  bool RestoreSearch(ZULTavSearch& search, std::string& reason);
  /// Calls `use` for each solution found before. False, with the reason, when the bytes are bad.
  bool ForEachFound(const ZULTavSearch& search, std::string& reason,
                    const std::function<void(const ZULTavSolution&)>& use) const;

  Found& GetFound() { return *mFound; }
  /// Of all runs before this one.
  const ZULTavSearch::Statistics& GetBefore() const { return mBefore; }
  /// The sum of those and of the present run.
  ZULTavSearch::Statistics Total(const ZULTavSearch::Statistics& present) const;
  bool IsFinished() const { return mFinished; }

  /// Saves what the search needs to go on. The file is replaced as a whole or left as it was; then
  /// the answer is false and `reason` says why.
  bool Save(const std::string& file, const ZULTavSearch& search, bool finished,
            std::string& reason) const;

 private:
  Checkpoint() : mFound(std::make_unique<Found>()) {}
  template <class Self, class Stream>
  static void ForEachField(Self& self, Stream& stream);

  std::string mModelFile, mModule;
  std::optional<double> mPrecision, mRatio;
  std::optional<std::pair<double, double>> mTrigLimits;
  ZULTavSearch::Options mOptions;
  ZULTavSearch::Statistics mBefore;
  bool mFinished = false;
  std::string mModel, mState, mFoundBytes;  // streams within the stream
  std::unique_ptr<Found> mFound;
};

#endif
