// Nanoseconds per narrowing operation of the integer domains: typed calls, and calls through the
// slots that the solver uses. Every operation runs on fresh copies of 1024 random operands.

#include <benchmark/benchmark.h>

#include <array>
#include <random>

#include "bench/fixture.h"
#include "numbers/ZULTavNumbers.h"

namespace {

constexpr std::size_t kCount = 1024;

struct Operands {
  std::array<ZULTavIntervalInteger, kCount> result, a, b;

  Operands() {
    std::mt19937 random(20240611);
    const auto draw = [&](long reach) {
      const long x = static_cast<long>(random() % 2000) - 1000;
      return ZULTavIntervalInteger(x, x + static_cast<long>(random() % 100) % reach);
    };
    for (std::size_t i = 0; i < kCount; ++i) {
      result[i] = ZULTavIntervalInteger(-2000000, 2000000);
      a[i] = draw(100);
      b[i] = draw(20);
    }
  }
};

/// Runs `operation(result, a, b)` over all operands; the copies are part of the time.
template <class Operation>
void Measure(benchmark::State& state, Operation operation) {
  bench::OpenNumbers();
  static const Operands operands;
  for (auto _ : state) {
    int changed = 0;
    for (std::size_t i = 0; i < kCount; ++i) {
      ZULTavIntervalInteger result = operands.result[i];
      ZULTavIntervalInteger a = operands.a[i];
      ZULTavIntervalInteger b = operands.b[i];
      changed += operation(result, a, b);
      benchmark::DoNotOptimize(result);
      benchmark::DoNotOptimize(a);
    }
    benchmark::DoNotOptimize(changed);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kCount));
}

using II = ZULTavIntervalInteger;

/// The same operation twice: on the class itself and through the abstract type's slot.
#define BENCH_BOTH(NAME, CALL)                                                        \
  void NAME##_typed(benchmark::State& state) {                                        \
    Measure(state, [](II& result, II& a, II& b) {                                     \
      (void)b;                                                                        \
      return CALL;                                                                    \
    });                                                                               \
  }                                                                                   \
  BENCHMARK(NAME##_typed);                                                            \
  void NAME##_slot(benchmark::State& state) {                                         \
    Measure(state, [](ZULTaVoInteger& result, ZULTaVoInteger& a, ZULTaVoInteger& b) { \
      (void)b;                                                                        \
      return CALL;                                                                    \
    });                                                                               \
  }                                                                                   \
  BENCHMARK(NAME##_slot);

BENCH_BOTH(Sum, result.CalcSumValue(a, b))
BENCH_BOTH(Product, result.CalcProdValue(a, b))
BENCH_BOTH(InverseProduct, result.CalcFirstInverseProdValue(a, b))
BENCH_BOTH(Modulo, result.CalcModValue(a, b))
BENCH_BOTH(Less, result.CalcLessValue(a))

}  // namespace
