// Prints a hash of the bits of many results, to be compared between the builds of the library for
// different instruction sets.

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <initializer_list>

#include "framework/intervals/ZULTavIntervals.h"
#include "tests/intervals/mpfr_oracle.h"

namespace {

/// An interval like x, or one of those that need another way: empty, unbounded, around 0.
SubdefReal Varied(const SubdefReal& x, std::uint64_t kind) {
  switch (kind) {
    case 0:
      return {x.upper, x.lower};
    case 1:
      return {-SubdefReal::sMaxValue, x.upper};
    case 2:
      return {x.lower, HUGE_VAL};
    case 3:
      return {-0.0, x.upper};
    case 4:
      return {x.lower, -0.0};
    default:
      return x;
  }
}

}  // namespace

int main() {
  std::uint64_t hash = 14695981039346656037u;
  const auto add = [&hash](const auto& y) {
    for (const double bound : {y.lower, y.upper})
      hash = (hash ^ std::bit_cast<std::uint64_t>(bound)) * 1099511628211u;
  };
  HardDoubles doubles(7);
  for (int i = 0; i < 100000; ++i) {
    // Half of them with room for products that are almost too great.
    const double max = i % 2 ? 1e300 : 1e19;
    InitIntervals(2147483646, max, -1e19, 1e19, 1e-6);
    const SubdefReal x = Varied(doubles.DrawInterval(max), doubles.Below(32));
    const SubdefReal y = Varied(doubles.DrawInterval(max), doubles.Below(32));
    const SubdefReal near = doubles.DrawInterval(8);
    for (const auto operation : {&RealInterval::AddIntToInt, &RealInterval::SubIntFromInt,
                                 &RealInterval::MultIntByInt, &RealInterval::DivIntByInt})
      add((x.*operation)(y));
    using Function = SubdefReal(const SubdefReal&);
    for (Function* const f :
         std::initializer_list<Function*>{exp, log, sqrt, sqr, sin, cos, tan, atan})
      for (const SubdefReal& argument : {x, near}) add(f(argument));
    add(asin(near, x));
    add(acos(near, x));
    add(atan(y, x));
    add(pow(near, y));
    add(base(x, near));

    using namespace zultav;
    const RealRange a(x.lower, x.upper), b(y.lower, y.upper), c(near.lower, near.upper);
    for (const RealRange& z : {a + b,
                               a - b,
                               a * b,
                               a / b,
                               Square(a),
                               Sqrt(a),
                               Exp(a),
                               Log(a),
                               Sin(c),
                               Atan(a),
                               Power(a, 3),
                               Power(c, b),
                               Quotients(a, b, c),
                               InverseCos(c, a, RealRange()),
                               InversePower(a, RealRange(), 5),
                               InverseExponent(a, c, b),
                               Remainder(a, c),
                               Asin(c),
                               Acos(c),
                               Atan2(a, b),
                               InverseAtan2(c, a, b),
                               Hypot(a, b),
                               InverseHypot(a, b, c),
                               Sinh(c),
                               Cosh(c),
                               Tanh(c),
                               Asinh(a),
                               Acosh(a),
                               Atanh(c),
                               Log2(a),
                               Log10(a)})
      add(z);
  }
  std::printf("%016llx\n", static_cast<unsigned long long>(hash));
}
