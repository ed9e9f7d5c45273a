// Nanoseconds per interval operation, on arrays of 4096 random intervals of both signs and mixed
// widths, beside Boost.Interval (arithmetic and square root; its elementary functions are not
// rigorous), MPFI at 53 bits and bare doubles.

#include <benchmark/benchmark.h>
#include <mpfi.h>

#include <boost/numeric/interval.hpp>
#include <cmath>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "framework/intervals/ZULTavIntervals.h"

using zultav::RealRange;

namespace {

constexpr std::size_t kCount = 4096;

using Reals = std::vector<SubdefReal>;

/// Half of the intervals are about as wide as the range, half narrow; none is wider than `widest`.
Reals Draw(double low, double high, std::uint64_t seed, double widest = HUGE_VAL) {
  std::mt19937_64 random(seed);
  std::uniform_real_distribution<double> bound(low, high);
  Reals intervals;
  while (intervals.size() < kCount) {
    const double a = bound(random);
    const double width = std::fabs(bound(random)) * (random() % 2 ? 1 : 1e-3);
    intervals.emplace_back(a, std::min(a + std::min(width, widest), high));
  }
  return intervals;
}

template <class Set, class Result = Set>
struct Operands {
  std::vector<Set> x, y;
  std::vector<Result> z;
};

/// The same operands in another library's type.
template <class Set, class Make>
Operands<Set> Convert(const Reals& x, const Reals& y, Make make) {
  Operands<Set> operands;
  for (const SubdefReal& a : x) operands.x.push_back(make(a));
  for (const SubdefReal& b : y) operands.y.push_back(make(b));
  operands.z = operands.x;
  return operands;
}

struct Nothing {};

/// Registers a loop that computes operation(z, x, y) for all operands while a Hold lives.
template <class Hold = Nothing, class Set, class Result, class Operation>
void Register(const std::string& name, Operands<Set, Result> operands, Operation operation) {
  benchmark::RegisterBenchmark(
      name.c_str(), [operands, operation](benchmark::State& state) mutable {
        [[maybe_unused]] const Hold hold;
        for (auto _ : state) {
          for (std::size_t i = 0; i < kCount; ++i)
            operation(operands.z[i], operands.x[i], operands.y[i]);
          benchmark::ClobberMemory();
        }
        state.counters["ns/op"] =
            benchmark::Counter(static_cast<double>(state.iterations()) * kCount * 1e-9,
                               benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
      });
}

class Mpfi {
 public:
  explicit Mpfi(const SubdefReal& x) {
    mpfi_init2(mValue, 53);
    mpfi_interv_d(mValue, x.lower, x.upper);
  }
  Mpfi(const Mpfi& other) {
    mpfi_init2(mValue, 53);
    mpfi_set(mValue, other.mValue);
  }
  Mpfi& operator=(const Mpfi& other) {
    mpfi_set(mValue, other.mValue);
    return *this;
  }
  ~Mpfi() { mpfi_clear(mValue); }
  operator mpfi_ptr() { return mValue; }
  operator mpfi_srcptr() const { return mValue; }

 private:
  mpfi_t mValue;
};

using BoostDefault = boost::numeric::interval<double>;
/// Leaves the rounding mode to whoever holds it around a loop.
using BoostHeld = boost::numeric::interval_lib::unprotect<BoostDefault>::type;

template <class Result, class Operation>
void RegisterOurs(const std::string& name, const Reals& x, const Reals& y, Operation operation) {
  Register(
      name + "/zultav", Operands<SubdefReal, Result>{x, y, std::vector<Result>(x.begin(), x.end())},
      [operation](Result& z, const SubdefReal& a, const SubdefReal& b) { z = operation(a, b); });
}

template <class Operation>
void RegisterRange(const std::string& name, const Reals& x, const Reals& y, Operation operation) {
  Register(
      name + "/range",
      Convert<RealRange>(x, y, [](const SubdefReal& a) { return RealRange(a.lower, a.upper); }),
      [operation](RealRange& z, const RealRange& a, const RealRange& b) { z = operation(a, b); });
}

template <class Operation>
void RegisterDouble(const std::string& name, const Reals& x, const Reals& y, Operation operation) {
  Register(name + "/double", Convert<double>(x, y, [](const SubdefReal& a) { return a.upper; }),
           [operation](double& z, double a, double b) { z = operation(a, b); });
}

template <class Operation>
void RegisterMpfi(const std::string& name, const Reals& x, const Reals& y, Operation operation) {
  Register(name + "/mpfi", Convert<Mpfi>(x, y, [](const SubdefReal& a) { return Mpfi(a); }),
           operation);
}

template <class Operation>
void RegisterBoost(const std::string& name, const Reals& x, const Reals& y, Operation operation) {
  Register(name + "/boost",
           Convert<BoostDefault>(
               x, y, [](const SubdefReal& a) { return BoostDefault(a.lower, a.upper); }),
           operation);
  Register<BoostDefault::traits_type::rounding>(
      name + "/boost_held",
      Convert<BoostHeld>(x, y, [](const SubdefReal& a) { return BoostHeld(a.lower, a.upper); }),
      operation);
}

template <class OurOperation, class BoostOperation, class DoubleOperation>
void Arithmetic(const std::string& name, OurOperation ours, BoostOperation boostOperation,
                int (*mpfi)(mpfi_ptr, mpfi_srcptr, mpfi_srcptr), DoubleOperation plain,
                bool positiveDivisor) {
  const Reals x = Draw(-100, 100, 1);
  const Reals y = positiveDivisor ? Draw(0.5, 100, 2) : Draw(-100, 100, 2);
  RegisterOurs<RealInterval>(name, x, y, ours);
  RegisterRange(name, x, y, boostOperation);
  RegisterBoost(name, x, y, [boostOperation](auto& z, const auto& a, const auto& b) {
    z = boostOperation(a, b);
  });
  RegisterMpfi(name, x, y, [mpfi](Mpfi& z, const Mpfi& a, const Mpfi& b) { mpfi(z, a, b); });
  RegisterDouble(name, x, y, plain);
}

template <class OurFunction, class RangeFunction, class DoubleFunction>
void Function(const std::string& name, const Reals& x, OurFunction ours, RangeFunction range,
              int (*mpfi)(mpfi_ptr, mpfi_srcptr), DoubleFunction plain) {
  RegisterOurs<SubdefReal>(name, x, x,
                           [ours](const SubdefReal& a, const SubdefReal&) { return ours(a); });
  RegisterRange(name, x, x, [range](const RealRange& a, const RealRange&) { return range(a); });
  RegisterMpfi(name, x, x, [mpfi](Mpfi& z, const Mpfi& a, const Mpfi&) { mpfi(z, a); });
  RegisterDouble(name, x, x, [plain](double a, double) { return plain(a); });
}

/// The function on both kinds of intervals, of MPFI and of <cmath>.
#define ALL(name, Name)                                                                    \
  [](const SubdefReal& a) { return name(a); }, [](const RealRange& a) { return Name(a); }, \
      mpfi_##name, [](double a) { return std::name(a); }

void RegisterAll() {
  Arithmetic(
      "add", [](auto& a, auto& b) { return a.AddIntToInt(b); },
      [](auto& a, auto& b) { return a + b; }, mpfi_add, [](double a, double b) { return a + b; },
      false);
  Arithmetic(
      "mul", [](auto& a, auto& b) { return a.MultIntByInt(b); },
      [](auto& a, auto& b) { return a * b; }, mpfi_mul, [](double a, double b) { return a * b; },
      false);
  Arithmetic(
      "div", [](auto& a, auto& b) { return a.DivIntByInt(b); },
      [](auto& a, auto& b) { return a / b; }, mpfi_div, [](double a, double b) { return a / b; },
      true);
  const Reals mixed = Draw(-100, 100, 3);
  const Reals positive = Draw(1e-3, 100, 3);
  Function(
      "sqr", mixed, [](const SubdefReal& a) { return sqr(a); },
      [](const RealRange& a) { return Square(a); }, mpfi_sqr, [](double a) { return a * a; });
  for (const long n : {3L, 4L, 9L}) {
    const std::string exponent = std::to_string(n);
    RegisterOurs<SubdefReal>(
        "pow" + exponent, mixed, mixed,
        [n](const SubdefReal& a, const SubdefReal&) { return pow(a, SubIntBase(n)); });
    RegisterRange("pow" + exponent, mixed, mixed,
                  [n](const RealRange& a, const RealRange&) { return Power(a, n); });
    RegisterOurs<SubdefReal>(
        "root" + exponent, mixed, mixed,
        [n](const SubdefReal& a, const SubdefReal& b) { return base(a, b, SubIntBase(n)); });
    RegisterRange("root" + exponent, mixed, mixed,
                  [n](const RealRange& a, const RealRange& b) { return InversePower(a, b, n); });
  }
  RegisterBoost("sqr", mixed, mixed, [](auto& z, auto& a, auto&) { z = square(a); });
  Function("sqrt", positive, ALL(sqrt, Sqrt));
  RegisterBoost("sqrt", positive, positive, [](auto& z, auto& a, auto&) { z = sqrt(a); });
  Function("exp", Draw(-40, 40, 3), ALL(exp, Exp));
  Function("log", positive, ALL(log, Log));
  Function("atan", Draw(-20, 20, 3), ALL(atan, Atan));
  for (const double reach : {10.0, 1e14}) {
    const std::string to = reach > 10 ? "_to_1e14" : "";
    const Reals angles = Draw(-reach, reach, 3, 3);
    Function("sin" + to, angles, ALL(sin, Sin));
    Function("cos" + to, angles, ALL(cos, Cos));
    Function("tan" + to, angles, ALL(tan, Tan));
  }
}

const bool kRegistered = (RegisterAll(), true);

}  // namespace
