#include "framework/search/detail/RealFunction.h"

#include <cfloat>
#include <cmath>

#include "framework/intervals/ZULTavIntervals.h"
#include "framework/solver/ZULTaVoReal.h"

namespace zultav::detail {

namespace {

using Function = RealSystem::Function;

bool IsWhole(double value) { return value == std::floor(value); }

/// All that the rounding of a number in x may give.
template <double (*Round)(double)>
RealInterval Rounded(const RealInterval& x) {
  return x.IsEmpty() ? x : RealInterval(Round(x.lower), Round(x.upper));
}

double RoundDown(double x) { return std::floor(x); }
double RoundUp(double x) { return std::ceil(x); }
/// Halves away from zero.
double RoundNearest(double x) { return std::round(x); }

SubdefReal GetTrigWindow() {
  double low = 0, high = 0;
  ZULTaVoReal::GetTrigLimits(low, high);
  return {low, high};
}

SubdefReal Quotient(const SubdefReal& x, const SubdefReal& y) { return x.DivIntByInt(y); }

/// Whether rounding is one and the same for all of x and its neighbourhood.
bool IsRoundingContinuous(Function function, const SubdefReal& x) {
  // A bound at a jump lies on one side of it, but its neighbourhood does not.
  const double shift = function == Function::kRound ? 0.5 : 0;
  const RealInterval moved = x.AddNumToInt(shift);
  return std::floor(moved.lower) == std::floor(moved.upper) && !IsWhole(moved.lower) &&
         !IsWhole(moved.upper);
}

/// x^n, outward, for n > 0; [x, x]^n need not be the tightest enclosure.
RealInterval PowerOfPoint(double x, int n) {
  RealInterval result = {1, 1}, square = {x, x};
  for (; n > 1; n /= 2) {
    if (n % 2 != 0) result = result.MultIntByInt(square);
    square = square.MultIntByInt(square);
  }
  return result.MultIntByInt(square);
}

constexpr int kSmallPower = 16;

bool IsSmallPower(const SubdefReal& y) {
  return y.IsScalar() && IsWhole(y.lower) && y.lower > 1 && y.lower <= kSmallPower;
}

/// As pow, but cheaper: up to a few units in the last place wider.
SubdefReal SmallPower(const SubdefReal& x, int n) {
  if (x.IsEmpty()) return x;
  if (n % 2 != 0) return {PowerOfPoint(x.lower, n).lower, PowerOfPoint(x.upper, n).upper};
  const RealInterval magnitude = x.mf_Abs();
  return {PowerOfPoint(magnitude.lower, n).lower, PowerOfPoint(magnitude.upper, n).upper};
}

/// The root of z > 0 in nearest arithmetic, moved outward until its power shows that it is a
/// bound.
double RootDown(double z, int n) {
  double root = std::pow(z, 1.0 / n) * (1 - 4 * DBL_EPSILON);
  return PowerOfPoint(root, n).upper <= z ? root : 0;
}
double RootUp(double z, int n) {
  double root = std::pow(z, 1.0 / n) * (1 + 4 * DBL_EPSILON);
  return PowerOfPoint(root, n).lower >= z ? root : SubdefReal::sMaxValue;
}

/// The x >= 0 with x^n in z.
RealInterval PositiveRoots(const RealInterval& z, int n) {
  if (z.upper < 0) return {1, -1};
  return {z.lower > 0 ? RootDown(z.lower, n) : 0, z.upper >= SubdefReal::sMaxValue
                                                      ? SubdefReal::sMaxValue
                                                  : z.upper > 0 ? RootUp(z.upper, n)
                                                                : 0};
}

/// The part of x with x^n in z.
SubdefReal SmallRoots(const SubdefReal& z, const SubdefReal& x, int n) {
  SubdefReal right = PositiveRoots(z, n);
  const RealInterval mirrored = n % 2 != 0 ? RealInterval(-z.upper, -z.lower) : RealInterval(z);
  const RealInterval root = PositiveRoots(mirrored, n);
  SubdefReal left = {-root.upper, -root.lower};
  right.Intersect(x);
  left.Intersect(x);
  return left.mf_Union(right);
}

/// The part of x whose square lies in z.
SubdefReal SquareRoots(const SubdefReal& z, const SubdefReal& x) {
  SubdefReal root = sqrt(z);
  SubdefReal left = root.mf_Neg();
  root.Intersect(x);
  left.Intersect(x);
  return left.mf_Union(root);
}

SubdefReal Bases(const SubdefReal& z, const SubdefReal& x, const SubdefReal& y) {
  constexpr double kGreatest = 1000;  // exponent that is worth a root
  if (!y.IsScalar()) return x;
  if (IsSmallPower(y)) return SmallRoots(z, x, static_cast<int>(y.lower));
  if (!IsWhole(y.lower)) return base(z, y.lower);
  if (std::fabs(y.lower) > kGreatest) return x;
  return base(z, x, SubIntBase(static_cast<long>(y.lower)));
}

/// y with x + y = z, and the like.
bool Meet(SubdefReal& x, const RealInterval& other) {
  x.Intersect(other);
  return !x.IsEmpty();
}

}  // namespace

bool TruncatedQuotient(const SubdefReal& x, const SubdefReal& y, double& whole) {
  if (y.Contains(0)) return false;
  const SubdefReal quotient = Quotient(x, y);
  whole = std::trunc(quotient.lower);
  // Truncation is continuous inside of (-1, 1) and between other neighbours.
  return IsFinite(quotient) && whole == std::trunc(quotient.upper) &&
         (whole == 0 || (quotient.lower != whole && quotient.upper != whole));
}

namespace {

SubdefReal Remainder(const SubdefReal& x, const SubdefReal& y) {
  double whole = 0;
  if (TruncatedQuotient(x, y, whole)) return x.SubIntFromInt(y.MultIntByInt({whole, whole}));
  const SubdefReal magnitude = y.mf_Abs();
  SubdefReal result = {x.lower < 0 ? -magnitude.upper : 0, x.upper > 0 ? magnitude.upper : 0};
  result.Intersect({std::fmin(x.lower, 0), std::fmax(x.upper, 0)});
  return result;
}

}  // namespace

SubdefReal Evaluate(Function function, const SubdefReal& x, const SubdefReal& y) {
  switch (function) {
    case Function::kIdentity:
      return x;
    case Function::kSum:
      return x.AddIntToInt(y);
    case Function::kDifference:
      return x.SubIntFromInt(y);
    case Function::kProduct:
      return x.MultIntByInt(y);
    case Function::kQuotient:
      return Quotient(x, y);
    case Function::kNegative:
      return x.mf_Neg();
    case Function::kPower:
      if (IsSmallPower(y)) return SmallPower(x, static_cast<int>(y.lower));
      return y.IsScalar() ? pow(x, y.lower) : pow(x, y);
    case Function::kRemainder:
      return Remainder(x, y);
    case Function::kMinimum:
      return x.mf_Min(y);
    case Function::kMaximum:
      return x.mf_Max(y);
    case Function::kAbsolute:
      return x.mf_Abs();
    case Function::kExp:
      return exp(x);
    case Function::kLog:
      return log(x);
    case Function::kSquare:
      return sqr(x);
    case Function::kSqrt:
      return sqrt(x);
    case Function::kSine:
      return sin(x);
    case Function::kCosine:
      return cos(x);
    case Function::kTangent:
      return tan(x);
    case Function::kRound:
      return Rounded<RoundNearest>(x);
    case Function::kFloor:
      return Rounded<RoundDown>(x);
    case Function::kCeil:
      return Rounded<RoundUp>(x);
  }
  return {};
}

RealInterval QuotientsWithin(const RealInterval& x, const RealInterval& z, const RealInterval& y) {
  const auto part = [&](const RealInterval& divisor) {
    RealInterval result = z.DivIntByInt(divisor);
    result.Intersect(x);
    return result;
  };
  if (!(y.lower < 0 && y.upper > 0)) return part(y);
  if (z.Contains(0)) return x;
  return part({y.lower, 0}).mf_Union(part({0, y.upper}));
}

bool Project(Function function, const SubdefReal& z, SubdefReal& x, SubdefReal& y) {
  switch (function) {
    case Function::kIdentity:
      return Meet(x, z);
    case Function::kSum:
      return Meet(x, z.SubIntFromInt(y)) && Meet(y, z.SubIntFromInt(x));
    case Function::kDifference:
      return Meet(x, z.AddIntToInt(y)) && Meet(y, x.SubIntFromInt(z));
    case Function::kProduct:
      return Meet(x, QuotientsWithin(x, z, y)) && Meet(y, QuotientsWithin(y, z, x));
    case Function::kQuotient:
      return Meet(x, z.MultIntByInt(y)) && Meet(y, QuotientsWithin(y, x, z));
    case Function::kNegative:
      return Meet(x, z.mf_Neg());
    case Function::kPower:
      return Meet(x, Bases(z, x, y));
    case Function::kMinimum:
      return Meet(x, InverseMin(z, y)) && Meet(y, InverseMin(z, x));
    case Function::kMaximum:
      return Meet(x, InverseMax(z, y)) && Meet(y, InverseMax(z, x));
    case Function::kAbsolute:
      return Meet(x, InverseAbs(z, x));
    case Function::kExp:
      return Meet(x, log(z));
    case Function::kLog:
      return Meet(x, exp(z));
    case Function::kSquare:
      return Meet(x, SquareRoots(z, x));
    case Function::kSqrt:
      return Meet(x, sqr(z));
    case Function::kSine:
      return Meet(x, asin(z, x, GetTrigWindow()));
    case Function::kCosine:
      return Meet(x, acos(z, x, GetTrigWindow()));
    case Function::kTangent:
      return Meet(x, atan(z, x, GetTrigWindow()));
    case Function::kRemainder:
    case Function::kRound:
    case Function::kFloor:
    case Function::kCeil:
      return true;
  }
  return true;
}

bool IsPartial(Function function) {
  switch (function) {
    case Function::kQuotient:
    case Function::kPower:
    case Function::kLog:
    case Function::kSqrt:
      return true;
    default:
      return false;
  }
}

bool IsPowerContinuous(const SubdefReal& x, const SubdefReal& y) {
  if (!y.IsScalar() || !IsWhole(y.lower)) return x.lower > 0;
  return y.lower >= 0 || !x.Contains(0);
}

bool IsContinuous(Function function, const SubdefReal& x, const SubdefReal& y) {
  double whole = 0;
  switch (function) {
    case Function::kQuotient:
      return !y.Contains(0);
    case Function::kPower:
      return IsPowerContinuous(x, y);
    case Function::kRemainder:
      return TruncatedQuotient(x, y, whole);
    case Function::kLog:
      return x.lower > 0;
    case Function::kSqrt:
      return x.lower >= 0;
    case Function::kRound:
    case Function::kFloor:
    case Function::kCeil:
      return x.IsScalar() || IsRoundingContinuous(function, x);
    default:
      return true;
  }
}

bool IsMuchNarrower(const RealInterval& now, const RealInterval& before, double share) {
  if (now == before) return false;
  if (IsFinite(before)) return now.upper - now.lower <= (1 - share) * (before.upper - before.lower);
  const auto moved = [share](double bound, double old) {
    return bound != old && std::fabs(bound - old) >= share * std::fabs(old);
  };
  return moved(now.lower, before.lower) || moved(now.upper, before.upper);
}

}  // namespace zultav::detail
