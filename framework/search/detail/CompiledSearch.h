#ifndef ZULTAV_SEARCH_DETAIL_COMPILED_SEARCH_H
#define ZULTAV_SEARCH_DETAIL_COMPILED_SEARCH_H

#include <atomic>
#include <chrono>
#include <span>

#include "framework/engine/reals/Newton.h"
#include "framework/search/detail/SearchSpace.h"

namespace zultav::detail {

/// A network compiled for one run: the network's settings hold, it can be interrupted, and what it
/// does is counted. Throws std::bad_alloc when memory ran out.
class CompiledSearch {
 public:
  CompiledSearch(ZULTaVoNetwork& network, std::span<ZULTaVoAny* const> declared,
                 std::span<ZULTaVoAny* const> observed, const std::atomic<bool>& interrupt,
                 ZULTavFrontier::Statistics& statistics);
  ~CompiledSearch();
  CompiledSearch(const CompiledSearch&) = delete;
  CompiledSearch& operator=(const CompiledSearch&) = delete;

  Engine& GetEngine() { return mEngine; }
  engine::Newton& GetNewton() { return mNewton; }
  const SearchSpace& GetSpace() const { return mSpace; }
  /// Since the run began.
  double GetSeconds() const;
  void UpdateStatistics();

 private:
  using Clock = std::chrono::steady_clock;

  ZULTaVoRealScope mSettings;
  Clock::time_point mBegin;
  ZULTavFrontier::Statistics& mStatistics;
  Program mProgram;
  Engine mEngine;
  engine::Newton mNewton;
  SearchSpace mSpace;
};

}  // namespace zultav::detail

#endif
