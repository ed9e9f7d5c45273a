// The solver as a whole: searches beside Gecode on the same models with the same branching, and
// the network's own costs.

#include <benchmark/benchmark.h>

#include <gecode/int.hh>
#include <gecode/minimodel.hh>
#include <gecode/search.hh>
#include <memory>
#include <string>
#include <vector>

#include "bench/fixture.h"
#include "framework/calculator/ZULTavCalculator.h"
#include "framework/search/ZULTavUtilities.h"

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

constexpr char kQueens[] = R"(
let n = 8;
q[1..n] : interval int = [1, 8];
for i in 1..n, j in i+1..n : q[i] <> q[j];
for i in 1..n, j in i+1..n : q[i] + i <> q[j] + j;
for i in 1..n, j in i+1..n : q[i] - i <> q[j] - j;
)";

constexpr char kSendMore[] = R"(
s, m : interval int = [1, 9];
e, n, d, o, r, y : interval int = [0, 9];
l[1..8] : interval int = [0, 9];
l[1] = s; l[2] = e; l[3] = n; l[4] = d; l[5] = m; l[6] = o; l[7] = r; l[8] = y;
alldifferent(l);
1000*s + 100*e + 10*n + d + 1000*m + 100*o + 10*r + e
  = 10000*m + 1000*o + 100*n + 10*e + y;
)";

std::unique_ptr<ZULTavModel> Read(const char* text) {
  std::vector<ZULTavDiagnostic> errors;
  auto model = ZULTavCalculator({&bench::OpenNumbers()}).Read(text, "bench", {}, errors);
  for (const ZULTavDiagnostic& error : errors) error.Print(std::cerr);
  if (model == nullptr) std::exit(1);
  return model;
}

void Report(benchmark::State& state, double nodes, double propagations, double solutions) {
  using benchmark::Counter;
  state.counters["nodes/s"] = Counter(nodes, Counter::kIsRate);
  state.counters["propagations/s"] = Counter(propagations, Counter::kIsRate);
  state.counters["nodes"] = Counter(nodes, Counter::kAvgIterations);
  state.counters["propagations"] = Counter(propagations, Counter::kAvgIterations);
  state.counters["solutions"] = Counter(solutions, Counter::kAvgIterations);
}

void Solve(benchmark::State& state, const char* text) {
  double nodes = 0, propagations = 0, solutions = 0;
  for (auto _ : state) {
    state.PauseTiming();
    const auto model = Read(text);
    std::vector<ZULTaVoAny*> values;
    for (const auto& variable : model->Variables())
      values.insert(values.end(), variable.values.begin(), variable.values.end());
    ZULTavSearch::Options options;
    options.limits.solutions = ZULTavSearch::kUnlimited;
    ZULTavSearch search(model->Network(), values, options);
    state.ResumeTiming();
    search.Run([](const ZULTavSolution&) { return true; });
    nodes += static_cast<double>(search.GetStatistics().nodes);
    propagations += static_cast<double>(search.GetStatistics().propagations);
    solutions += static_cast<double>(search.GetStatistics().solutions);
  }
  Report(state, nodes, propagations, solutions);
}

/// Bounds propagation and splitting of the first undecided variable, lower half first.
class Peer : public Gecode::Space {
 public:
  explicit Peer(int count, int low, int high) : x(*this, count, low, high) {}
  Peer(Peer& other) : Gecode::Space(other) { x.update(*this, other.x); }
  Gecode::Space* copy() override { return new Peer(*this); }
  void Branch() { Gecode::branch(*this, x, Gecode::INT_VAR_NONE(), Gecode::INT_VAL_SPLIT_MIN()); }

  Gecode::IntVarArray x;
};

std::unique_ptr<Peer> PeerQueens() {
  using namespace Gecode;
  auto space = std::make_unique<Peer>(8, 1, 8);
  IntVarArray& q = space->x;
  for (int i = 0; i < 8; ++i)
    for (int j = i + 1; j < 8; ++j) {
      rel(*space, q[i] != q[j], IPL_BND);
      rel(*space, q[i] + i != q[j] + j, IPL_BND);
      rel(*space, q[i] - i != q[j] - j, IPL_BND);
    }
  space->Branch();
  return space;
}

std::unique_ptr<Peer> PeerSendMore() {
  using namespace Gecode;
  auto space = std::make_unique<Peer>(8, 0, 9);
  IntVarArray& l = space->x;  // s e n d m o r y
  rel(*space, l[0] >= 1);
  rel(*space, l[4] >= 1);
  for (int i = 0; i < 8; ++i)
    for (int j = i + 1; j < 8; ++j) rel(*space, l[i] != l[j], IPL_BND);
  rel(*space,
      1000 * l[0] + 100 * l[1] + 10 * l[2] + l[3] + 1000 * l[4] + 100 * l[5] + 10 * l[6] + l[1] ==
          10000 * l[4] + 1000 * l[5] + 100 * l[2] + 10 * l[1] + l[7],
      IPL_BND);
  space->Branch();
  return space;
}

void SolvePeer(benchmark::State& state, std::unique_ptr<Peer> (*make)()) {
  double nodes = 0, propagations = 0, solutions = 0;
  for (auto _ : state) {
    state.PauseTiming();
    const auto root = make();
    state.ResumeTiming();
    Gecode::DFS<Peer> search(root.get());
    while (Peer* solution = search.next()) {
      delete solution;
      ++solutions;
    }
    nodes += static_cast<double>(search.statistics().node);
    propagations += static_cast<double>(search.statistics().propagate);
  }
  Report(state, nodes, propagations, solutions);
}

BENCHMARK_CAPTURE(Solve, queens8, kQueens)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(SolvePeer, queens8, &PeerQueens)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Solve, sendmore, kSendMore)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(SolvePeer, sendmore, &PeerSendMore)->Unit(benchmark::kMillisecond);

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
