#ifndef ZULTAV_TESTS_INTERVALS_MPFR_ORACLE_H
#define ZULTAV_TESTS_INTERVALS_MPFR_ORACLE_H

#define MPFR_USE_INTMAX_T
#include <mpfr.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <random>
#include <utility>

#include "framework/intervals/SubdefReal.h"

/// A number of 400 bits.
class Mpfr {
 public:
  Mpfr(double x = 0) {
    mpfr_init2(mValue, 400);
    mpfr_set_d(mValue, x, MPFR_RNDN);
  }
  Mpfr(const Mpfr& other) : Mpfr() { mpfr_set(mValue, other.mValue, MPFR_RNDN); }
  Mpfr& operator=(const Mpfr& other) {
    mpfr_set(mValue, other.mValue, MPFR_RNDN);
    return *this;
  }
  ~Mpfr() { mpfr_clear(mValue); }
  operator mpfr_ptr() { return mValue; }
  operator mpfr_srcptr() const { return mValue; }

 private:
  mpfr_t mValue;
};

/// The doubles next to f, which fills a number in the rounding direction it is given; brought
/// between ±SubdefReal::sMaxValue. Rounding down twice is rounding down once.
template <class Fill>
SubdefReal Tightest(Fill f) {
  const double max = SubdefReal::sMaxValue;
  const auto rounded = [&](mpfr_rnd_t direction) {
    Mpfr y;
    f(static_cast<mpfr_ptr>(y), direction);
    return std::clamp(mpfr_get_d(y, direction), -max, max);
  };
  return SubdefReal(rounded(MPFR_RNDD), rounded(MPFR_RNDU));
}

/// Doubles that are hard in one way or another; fixed seed, so that a failure repeats.
class HardDoubles {
 public:
  explicit HardDoubles(std::uint64_t seed) : mRandom(seed) {}

  std::uint64_t Below(std::uint64_t n) { return mRandom() % n; }

  /// Of magnitude up to `max`: any bit pattern, subnormal, ordinary, small whole numbers and
  /// eighths, next to 1, next to multiples of pi/2.
  double Draw(double max) {
    for (;;) {
      const double x = DrawAny();
      if (std::fabs(x) <= max) return x;
    }
  }
  SubdefReal DrawInterval(double max) {
    const double a = Draw(max);
    const double b =
        Below(2) ? Draw(max) : a + std::ldexp(Fraction(), -static_cast<int>(Below(30)));
    return SubdefReal(std::min(a, b), std::max(a, b));
  }
  /// In (-1, 1).
  double Fraction() { return std::ldexp(static_cast<double>(mRandom() >> 10), -53) - 1; }

 private:
  double DrawAny() {
    switch (Below(8)) {
      case 0:
        return std::bit_cast<double>(mRandom());
      case 1:
        return std::bit_cast<double>(mRandom() & 0x800fffffffffffff);
      case 2:
        return std::ldexp(Fraction(), static_cast<int>(Below(64)));
      case 3:
        return std::ldexp(Fraction(), -static_cast<int>(Below(64)));
      case 4:
        return static_cast<double>(Below(201)) - 100;
      case 5:
        return (static_cast<double>(Below(201)) - 100) / 8;
      case 6:
        return 1 + std::ldexp(Fraction(), -static_cast<int>(Below(53)));
      default:
        return NearMultipleOfHalfPi();
    }
  }
  double NearMultipleOfHalfPi() {
    // Those that come nearest of all, up to 2^-60.5.
    constexpr double kNearest[] = {0x1.6c6cbc45dc8dep+5,  0x1.b951f1572eba5p+23,
                                   0x1.065c829d68730p+39, 0x1.7512069b7430dp+47,
                                   0x1.921fb54442d18p+0,  0x1.921fb54442d18p+1};
    if (Below(4) == 0) return kNearest[Below(6)] * static_cast<double>(std::int64_t{1} << Below(9));
    Mpfr x;
    mpfr_const_pi(x, MPFR_RNDN);
    mpfr_mul_d(x, x, std::floor(std::ldexp(Fraction(), static_cast<int>(Below(62)))) / 2,
               MPFR_RNDN);
    return mpfr_get_d(x, Below(2) ? MPFR_RNDU : MPFR_RNDD);
  }

  std::mt19937_64 mRandom;
};

#endif
