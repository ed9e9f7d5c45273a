#include "framework/search/detail/CompiledSearch.h"

namespace zultav::detail {

CompiledSearch::CompiledSearch(ZULTaVoNetwork& network, std::span<ZULTaVoAny* const> declared,
                               std::span<ZULTaVoAny* const> observed,
                               const std::atomic<bool>& interrupt,
                               ZULTavFrontier::Statistics& statistics)
    : mSettings(network.GetRealSettings()),
      mBegin(Clock::now()),
      mStatistics(statistics),
      mProgram(network, declared, observed),
      mEngine(mProgram, &network),
      mNewton(mEngine),
      mSpace(network, mProgram, declared) {
  mStatistics = {};
  mEngine.SetInterrupt(&interrupt);
  mEngine.SetNarrowingFraction(network.GetNarrowingFraction());
  mEngine.SetRunLimit(network.GetFilterLimit());
  mEngine.ScheduleAll();
}

CompiledSearch::~CompiledSearch() { UpdateStatistics(); }

double CompiledSearch::GetSeconds() const {
  return std::chrono::duration<double>(Clock::now() - mBegin).count();
}

void CompiledSearch::UpdateStatistics() {
  mStatistics.narrowings = mEngine.GetStatistics().narrowings;
  mStatistics.propagations = mEngine.GetStatistics().runs;
  mStatistics.seconds = GetSeconds();
}

}  // namespace zultav::detail
