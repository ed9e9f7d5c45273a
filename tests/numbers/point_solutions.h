#ifndef ZULTAV_TESTS_NUMBERS_POINT_SOLUTIONS_H
#define ZULTAV_TESTS_NUMBERS_POINT_SOLUTIONS_H

#include <gtest/gtest.h>
#include <mpfr.h>

#include <algorithm>
#include <bit>
#include <cfenv>
#include <cmath>
#include <random>

#include "framework/intervals/ZULTavIntervals.h"
#include "numbers/ZULTavAngle.h"
#include "numbers/ZULTavIntervalInteger.h"
#include "numbers/ZULTavIntervalReal.h"
#include "numbers/ZULTavSingleInteger.h"
#include "numbers/ZULTavSingleReal.h"

inline std::ostream& operator<<(std::ostream& out, const RealInterval& set) {
  return out << std::hexfloat << '[' << set.lower << ", " << set.upper << ']';
}

// Narrowing of interval reals against known solutions: random points r = f(x, y), computed by
// MPFR, random domains of all classes around them, and every direction of the operation. There is
// no tolerance: the point must survive.
namespace points {

using IR = ZULTavIntervalReal;

/// The typed call and the one through abstract arguments, made from one generic lambda.
struct Call {
  int (*typed)(IR&, IR&, IR&) = nullptr;
  int (*generic)(ZULTaVoReal&, ZULTaVoAny&, ZULTaVoAny&) = nullptr;
};
template <class Abstract, class Lambda>
Call MakeCall(Lambda call) {
  return {call, [](ZULTaVoReal& r, ZULTaVoAny& x, ZULTaVoAny& y) {
            return Lambda{}(r, static_cast<Abstract&>(x), static_cast<Abstract&>(y));
          }};
}
#define NUMBER_CALL(call) \
  points::MakeCall<ZULTaVoNumber>([](auto& r, auto& x, [[maybe_unused]] auto& y) { return r.call; })
#define REAL_CALL(call) \
  points::MakeCall<ZULTaVoReal>([](auto& r, auto& x, [[maybe_unused]] auto& y) { return r.call; })

#define ORACLE(call)                                            \
  [](mpfr_ptr r, mpfr_srcptr x, [[maybe_unused]] mpfr_srcptr y, \
     [[maybe_unused]] mpfr_rnd_t rounding) { call; }

struct Operation {
  const char* name;
  /// r := f(x, y) rounded as told; NaN where there is no value.
  void (*oracle)(mpfr_ptr r, mpfr_srcptr x, mpfr_srcptr y, mpfr_rnd_t);
  Call narrowing[3];  // of r, x, y
  bool integersToo = true;
  bool exponent = false;   // y means another operation when its class is one of integers
  bool hasSliver = false;  // x just below zero counts as zero
};

class PointSolutions {
 public:
  PointSolutions() {
    mpfr_set_emin(mpfr_get_emin_min());
    mpfr_set_emax(mpfr_get_emax_max());
    mpfr_inits2(300, mLow, mHigh, mX, mY, static_cast<mpfr_ptr>(nullptr));
  }
  ~PointSolutions() { mpfr_clears(mLow, mHigh, mX, mY, static_cast<mpfr_ptr>(nullptr)); }
  PointSolutions(const PointSolutions&) = delete;
  PointSolutions& operator=(const PointSolutions&) = delete;

  /// Half ordinary numbers, half anything within ±1e18.
  double Draw() {
    constexpr double kSpecial[] = {
        0,        0.5,    1,    2,     3.141592653589793, 1.5707963267948966,
        1e-300,   5e-324, 1e15, 1e-14, 2147483646,        0.1,
        1 + 1e-9, 6};
    const double sign = Below(2) == 0 ? 1 : -1;
    switch (Below(6)) {
      case 0:
        return sign * kSpecial[Below(std::size(kSpecial))];
      case 1:
        return sign * static_cast<double>(Below(9));
      case 2:
        return sign * std::ldexp(static_cast<double>(Below(4000)), -3);
      case 3:
        return sign * std::ldexp(static_cast<double>(mRandom()), static_cast<int>(Below(90)) - 95);
      default:
        return sign * std::ldexp(static_cast<double>(mRandom()), -60);
    }
  }

  void Check(const Operation& operation, int draws) {
    int points = 0;
    for (int i = 0; i < draws && !testing::Test::HasFailure(); ++i) {
      const double x = Draw(), y = Draw();
      if (operation.hasSliver && x < 0 && x > -1e-14) continue;
      mpfr_set_d(mX, x, MPFR_RNDN);
      mpfr_set_d(mY, y, MPFR_RNDN);
      operation.oracle(mLow, mX, mY, MPFR_RNDD);
      operation.oracle(mHigh, mX, mY, MPFR_RNDU);
      if (mpfr_number_p(mLow) == 0 || mpfr_number_p(mHigh) == 0) continue;
      ++points;
      for (int narrowed = 0; narrowed < 3; ++narrowed) {
        if (operation.narrowing[narrowed].typed != nullptr) CheckPoint(operation, narrowed, x, y);
      }
    }
    EXPECT_TRUE(testing::Test::HasFailure() || points > draws / 4) << operation.name;
  }

 private:
  std::uint64_t Below(std::uint64_t limit) { return mRandom() % limit; }

  double Widened(double bound, double direction) {
    switch (Below(6)) {
      case 0:
        return direction * SubdefReal::sMaxValue;
      case 1:
        return std::nextafter(bound, direction * HUGE_VAL);
      case 2:
        return bound + direction * std::fabs(bound) * 0x1p-10;
      case 3:
      case 4:
        return bound + direction * std::ldexp(static_cast<double>(Below(1000)), -6);
      default:
        return bound;
    }
  }
  SubdefReal Around(double low, double high) { return {Widened(low, -1), Widened(high, 1)}; }

  /// A domain that holds a number, of a random class that can hold it.
  class Domain {
   public:
    Domain(PointSolutions& draw, double value, bool integersToo) {
      const bool isInteger =
          integersToo && value == std::rint(value) && std::fabs(value) <= 2147483646;
      mKind = static_cast<int>(draw.Below(isInteger ? 6 : 4));
      const SubdefReal set = draw.Around(value, value);
      const bool fixed = draw.Below(3) != 0;
      switch (mKind) {
        case 0:
        case 1:
          mInterval.SetSubdef(set);
          break;
        case 2:
          mAngle.SetSubdef(set);
          break;
        case 3:
          if (fixed) mSingle.SetExactValue(value);
          break;
        case 4:
          mIntegers.GetSubdef() = SubdefInt(set);
          break;
        default:
          if (fixed) mInteger.SetExactValue(static_cast<long>(value));
      }
      mConverted.Assign(Value());
    }
    ZULTaVoAny& Value() {
      ZULTaVoAny* const values[] = {&mInterval, &mInterval, &mAngle,
                                    &mSingle,   &mIntegers, &mInteger};
      return *values[mKind];
    }
    bool IsInterval() const { return mKind < 3; }
    bool IsInteger() const { return mKind > 3; }
    const IR& Converted() const { return mConverted; }
    SubdefReal Bounds() {
      IR set;
      set.Assign(Value());
      return set.GetSubdef();
    }

   private:
    int mKind;
    IR mInterval, mConverted;
    ZULTavAngle mAngle;
    ZULTavSingleReal mSingle;
    ZULTavIntervalInteger mIntegers;
    ZULTavSingleInteger mInteger;
  };

  /// Whether `set`, a domain of r, x or y, holds the point.
  bool Holds(const SubdefReal& set, int which) const {
    const double max = SubdefReal::sMaxValue;
    const auto low = which == 0 ? mLow : which == 1 ? mX : mY;
    const auto high = which == 0 ? mHigh : low;
    return !set.IsEmpty() && (set.lower <= -max || mpfr_cmp_d(high, set.lower) >= 0) &&
           (set.upper >= max || mpfr_cmp_d(low, set.upper) <= 0);
  }

  void CheckPoint(const Operation& operation, int narrowed, double x, double y) {
    IR r;
    r.SetSubdef(Around(mpfr_get_d(mLow, MPFR_RNDD), mpfr_get_d(mHigh, MPFR_RNDU)));
    Domain a(*this, x, operation.integersToo), b(*this, y, operation.integersToo);
    const auto target = [&] {
      return narrowed == 0 ? r.GetSubdef() : narrowed == 1 ? a.Bounds() : b.Bounds();
    };
    const SubdefReal before = target();
    SCOPED_TRACE(testing::Message()
                 << operation.name << ", narrowing "
                 << "rxy"[narrowed] << " around x = " << std::hexfloat << x << ", y = " << y
                 << ": r " << r.GetSubdef() << ", x " << a.Bounds() << ", y " << b.Bounds());
    IR typed[] = {r, a.Converted(), b.Converted()};

    SDRaiseError();  // somebody else's: neither heeded nor left behind
    const int answer = operation.narrowing[narrowed].generic(r, a.Value(), b.Value());
    const SubdefReal after = target();
    ASSERT_EQ(SDCheckError(), 0);
    ASSERT_EQ(std::fegetround(), FE_TONEAREST);
    ASSERT_TRUE(Holds(after, narrowed)) << after;
    ASSERT_EQ(answer, !(after == before)) << after;

    if (operation.exponent && b.IsInteger()) return;
    const int typedAnswer = operation.narrowing[narrowed].typed(typed[0], typed[1], typed[2]);
    ASSERT_TRUE(Holds(typed[narrowed].GetSubdef(), narrowed)) << typed[narrowed].GetSubdef();
    if (narrowed == 0 || (narrowed == 1 ? a : b).IsInterval()) {
      ASSERT_EQ(typed[narrowed].GetSubdef(), after);
      ASSERT_EQ(typedAnswer, answer);
    }
  }

  std::mt19937_64 mRandom{20240611};
  mpfr_t mLow, mHigh, mX, mY;  // r lies between low and high
};

}  // namespace points

#endif
