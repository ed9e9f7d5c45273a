// The network's own costs.

#include <benchmark/benchmark.h>

#include "bench/fixture.h"

namespace {

/// Opens both modules, registers all descriptors and closes the modules. It runs before any other
/// benchmark has opened a module, since managers share what is open.
void StartUp(benchmark::State& state) {
  for (auto _ : state) {
    ZULTaVoModuleManager manager;
    if (manager.OpenModule("ZULTavNumbers") == nullptr) state.SkipWithError("no module");
  }
}
BENCHMARK(StartUp)->Unit(benchmark::kMillisecond);

/// x[i+1] = x[i] + 1 for all i, x[0] = 0: built through the network's own interface, propagated
/// to the last variable, destroyed.
void Chain(benchmark::State& state) {
  ZULTaVoModule& numbers = bench::OpenNumbers();
  const ZULTaVoObjectDescriptor* type = numbers.FindType("interval int");
  const auto* addition =
      static_cast<const ZULTaVoConstraintDescriptor*>(ZULTaVoAdditionConstraint::sDescriptor);
  double bytes = 0;
  for (auto _ : state) {
    ZULTaVoNetwork network;
    const auto fixed = [&](long value) {
      auto* constant = static_cast<ZULTaVoInteger*>(network.AddObject(type));
      constant->SetExactValue(value);
      network.SetConstant(constant);
      return constant;
    };
    ZULTaVoAny* one = fixed(1);
    ZULTaVoAny* last = fixed(0);
    for (std::int64_t i = 0; i < state.range(0); ++i) {
      ZULTaVoAny* next = network.AddObject(type);
      ZULTaVoObject* arguments[] = {next, last, one};
      network.AddConstraint(addition, arguments, 3);
      last = next;
    }
    if (network.Propagate() != ZULTaVoNetwork::Status::kConsistent ||
        static_cast<ZULTaVoInteger*>(last)->GetUpperBound() != state.range(0))
      state.SkipWithError("wrong answer");
    bytes = static_cast<double>(network.GetMemoryUsed()) / static_cast<double>(state.range(0));
  }
  state.counters["bytes/variable"] = bytes;
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(Chain)->RangeMultiplier(10)->Range(1000, 1000000)->Unit(benchmark::kMillisecond);

}  // namespace
