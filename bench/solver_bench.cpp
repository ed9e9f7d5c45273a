// The costs of the network and the engine themselves.

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <new>
#include <random>

#include "bench/fixture.h"
#include "framework/engine/ZULTavEngine.h"
#include "framework/search/ZULTavUtilities.h"

namespace {

/// Bytes that are allocated by `new` now, and the most there were since the peak was last set.
std::size_t gBytes = 0, gPeak = 0;

}  // namespace

[[gnu::noinline]] void* operator new(std::size_t size) {
  void* place = std::malloc(size);
  if (place == nullptr) throw std::bad_alloc();
  gPeak = std::max(gPeak, gBytes += malloc_usable_size(place));
  return place;
}

[[gnu::noinline]] void operator delete(void* place) noexcept {
  gBytes -= malloc_usable_size(place);
  std::free(place);
}
[[gnu::noinline]] void operator delete(void* place, std::size_t) noexcept {
  operator delete(place);
}

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

/// x[i+1] = x[i] + 1 for all i, x[0] = 0: built through the network's own interface.
struct Chain {
  ZULTaVoNetwork network;
  std::vector<ZULTaVoAny*> values;

  explicit Chain(std::int64_t steps) {
    const ZULTaVoObjectDescriptor* type = bench::OpenNumbers().FindType("interval int");
    const auto* addition =
        static_cast<const ZULTaVoConstraintDescriptor*>(ZULTaVoAdditionConstraint::sDescriptor);
    const auto fixed = [&](long value) {
      auto* constant = static_cast<ZULTaVoInteger*>(network.AddObject(type));
      constant->SetExactValue(value);
      network.SetConstant(constant);
      return constant;
    };
    ZULTaVoAny* one = fixed(1);
    values.push_back(fixed(0));
    for (std::int64_t i = 0; i < steps; ++i) {
      ZULTaVoAny* next = network.AddObject(type);
      ZULTaVoObject* arguments[] = {next, values.back(), one};
      network.AddConstraint(addition, arguments, 3);
      values.push_back(next);
    }
  }
};

double PerStep(std::size_t bytes, const benchmark::State& state) {
  return static_cast<double>(bytes) / static_cast<double>(state.range(0));
}

/// Built, propagated by its filters to the last variable, destroyed.
void ChainOfFilters(benchmark::State& state) {
  for (auto _ : state) {
    Chain chain(state.range(0));
    if (chain.network.Propagate() != ZULTaVoNetwork::Status::kConsistent ||
        static_cast<ZULTaVoInteger*>(chain.values.back())->GetUpperBound() != state.range(0))
      state.SkipWithError("wrong answer");
    state.counters["bytes/variable"] = PerStep(chain.network.GetMemoryUsed(), state);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(ChainOfFilters)->RangeMultiplier(10)->Range(1000, 1000000)->Unit(benchmark::kMillisecond);

/// Built, compiled with every value declared, propagated by the engine, destroyed.
void ChainInEngine(benchmark::State& state) {
  for (auto _ : state) {
    Chain chain(state.range(0));
    const std::size_t before = gPeak = gBytes;
    const zultav::engine::Program program(chain.network, chain.values);
    zultav::engine::Engine engine(program, nullptr);
    if (engine.Propagate() != zultav::engine::Engine::Status::kFixpoint ||
        engine.GetIntegers(program.GetDeclared().back()) !=
            zultav::IntegerRange::Only(state.range(0)))
      state.SkipWithError("wrong answer");
    state.counters["bytes/step"] = PerStep(gBytes - before, state);
    state.counters["peak/step"] = PerStep(gPeak - before, state);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(ChainInEngine)->RangeMultiplier(10)->Range(1000, 1000000)->Unit(benchmark::kMillisecond);

/// So many rows, of which each begins with its number from 1 on and goes on with random numbers up
/// to 1000, or with none, in which case the number is random itself.
std::string DrawRows(std::int64_t rows, bool isTable) {
  std::mt19937 draw(1);
  std::string data = "{\"rows\": [";
  for (std::int64_t row = 1; row <= rows; ++row) {
    const auto number = [&](std::int64_t most) {
      return std::to_string(static_cast<std::int64_t>(draw()) % most + 1);
    };
    data += isTable ? "[" + std::to_string(row) + "," + number(1000) + "," + number(1000) + "]"
                    : number(rows);
    if (row < rows) data += ',';
  }
  return data + "]}";
}

/// Made of data that are in memory, searched for all solutions, destroyed.
void SolveRows(benchmark::State& state, const char* text, bool isTable) {
  const std::string data = DrawRows(state.range(0), isTable);
  for (auto _ : state) {
    const std::size_t before = gPeak = gBytes;
    const auto read = bench::Read(text, {}, data);
    state.counters["peak of reading/row"] = PerStep(gPeak - before, state);
    const std::size_t model = gPeak = gBytes;
    ZULTavSearch::Options options;
    options.limits.solutions = ZULTavSearch::kUnlimited;
    ZULTavSearch search(read->Network(), bench::ValuesOf(*read), options);
    if (search.Run([](const ZULTavSolution&) { return true; }) != ZULTavSearch::Outcome::kExhausted)
      state.SkipWithError("not searched to the end");
    state.counters["peak of search/row"] = PerStep(gPeak - model, state);
    state.counters["model/row"] = PerStep(model - before, state);
    state.counters["nodes"] = static_cast<double>(search.GetStatistics().nodes);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK_CAPTURE(SolveRows, Table,
                  "let rows; x : int; y, z : int = [1, 1000]; table([x, y, z], rows);"
                  "y = z; x mod 7 = 3;",
                  true)
    ->RangeMultiplier(10)
    ->Range(1000, 100000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(SolveRows, Element, "let rows; i, x : int; x = element(i, rows); i = 2 * x;",
                  false)
    ->RangeMultiplier(10)
    ->Range(1000, 1000000)
    ->Unit(benchmark::kMillisecond);

}  // namespace
