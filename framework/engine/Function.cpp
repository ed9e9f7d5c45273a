#include "framework/engine/Function.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <iterator>

#include "framework/solver/ZULTaVoReal.h"

namespace zultav::engine {

namespace {

using R = RealRange;
using I = IntegerRange;

constexpr R kZero = {0, 0};
constexpr R kOne = {1, 1};

bool IsWhole(double value) { return value == std::floor(value); }

/// Intersects in place; false when nothing is left.
template <class Range>
bool Meet(Range& x, const Range& other) {
  x.Intersect(other);
  return !x.IsEmpty();
}

/// The slopes of a function of one operand, or of several.
bool Give(Slopes& slopes, const R& first, const R& second = kZero) {
  slopes = {first, second};
  return true;
}

R TrigWindow() {
  double low = 0, high = 0;
  ZULTaVoReal::GetTrigLimits(low, high);
  return {low, high};
}

// --- Powers -----------------------------------------------------------------------------------

constexpr int kSmallPower = 16;

bool IsSmallPower(const R& y) {
  return y.IsScalar() && IsWhole(y.lower) && y.lower > 1 && y.lower <= kSmallPower;
}

/// x^n, outward, for a finite x and n > 0; the square of a point need not be a point.
R PowerOfPoint(double x, int n) {
  R result = kOne, square = {x, x};
  for (; n > 1; n /= 2) {
    if (n % 2 != 0) result = result * square;
    square = Square(square);
  }
  return result * square;
}
double PowerDown(double x, int n) { return std::isinf(x) ? x : PowerOfPoint(x, n).lower; }
double PowerUp(double x, int n) { return std::isinf(x) ? x : PowerOfPoint(x, n).upper; }

/// As Power, but cheaper: up to a few units in the last place wider.
R SmallPower(const R& x, int n) {
  if (x.IsEmpty()) return x;
  const R base = n % 2 != 0 ? x : Abs(x);
  return {PowerDown(base.lower, n), PowerUp(base.upper, n)};
}

/// The root of z > 0 in nearest arithmetic, moved outward until its power shows that it is a
/// bound.
double RootDown(double z, int n) {
  const double root = std::pow(z, 1.0 / n) * (1 - 4 * DBL_EPSILON);
  return PowerUp(root, n) <= z ? root : 0;
}
double RootUp(double z, int n) {
  const double root = std::pow(z, 1.0 / n) * (1 + 4 * DBL_EPSILON);
  return PowerDown(root, n) >= z ? root : HUGE_VAL;
}

/// The x >= 0 with x^n in z.
R PositiveRoots(const R& z, int n) {
  if (!(z.upper >= 0)) return R::Empty();
  return {z.lower > 0 ? RootDown(z.lower, n) : 0, z.upper > 0 ? RootUp(z.upper, n) : 0};
}

/// The part of x with x^n in z.
R SmallRoots(const R& z, const R& x, int n) {
  const R right = PositiveRoots(z, n);
  const R left = n % 2 != 0 ? -PositiveRoots(-z, n) : -right;
  return Hull(Intersection(left, x), Intersection(right, x));
}

/// Whether rounding is one and the same for all of x and its neighbourhood, where the jumps are at
/// whole numbers.
bool IsBetweenJumps(const R& x) {
  // A bound at a jump lies on one side of it, but its neighbourhood does not.
  return x.IsBounded() && std::floor(x.lower) == std::floor(x.upper) && !IsWhole(x.lower) &&
         !IsWhole(x.upper);
}

// --- The functions. Each says what differs from these: -----------------------------------------

struct Base {
  static constexpr bool kIsPartial = false, kIsEven = false, kIsCommutative = false;
  static constexpr bool kHasIntegers = true;  // EvaluateIntegers and ProjectIntegers
  static constexpr bool kHasInverse = false;
  static constexpr Function kInverse = Function::kIdentity;
  static bool IsContinuous(const R&, const R&) { return true; }
};
struct Unary : Base {
  static constexpr int kOperands = 1;
};
struct Binary : Base {
  static constexpr int kOperands = 2;
};
/// An operand is a function of the result and of the other operand.
template <Function Inverse, class Kind>
struct Invertible : Kind {
  static constexpr bool kHasInverse = true;
  static constexpr Function kInverse = Inverse;
};
/// Of reals; integers have hardly ever integer values.
struct Transcendental : Unary {
  static constexpr bool kHasIntegers = false;
};

struct Identity : Invertible<Function::kIdentity, Unary> {
  static constexpr const char* kName = "identity";
  static R Evaluate(const R& x, const R&) { return x; }
  static bool Project(const R& z, R& x, R&) { return Meet(x, z); }
  static I EvaluateIntegers(const I& x, const I&) { return x; }
  static bool ProjectIntegers(const I& z, I& x, I&) { return Meet(x, z); }
  static bool CalcSlopes(const SlopeArguments&, Slopes& slopes) { return Give(slopes, kOne); }
};

struct Sum : Invertible<Function::kDifference, Binary> {
  static constexpr const char* kName = "sum";
  static constexpr bool kIsCommutative = true;
  static R Evaluate(const R& x, const R& y) { return x + y; }
  static bool Project(const R& z, R& x, R& y) { return Meet(x, z - y) && Meet(y, z - x); }
  static I EvaluateIntegers(const I& x, const I& y) { return x + y; }
  static bool ProjectIntegers(const I& z, I& x, I& y) { return Meet(x, z - y) && Meet(y, z - x); }
  static bool CalcSlopes(const SlopeArguments&, Slopes& slopes) { return Give(slopes, kOne, kOne); }
};

struct Difference : Binary {
  static constexpr const char* kName = "difference";
  static R Evaluate(const R& x, const R& y) { return x - y; }
  static bool Project(const R& z, R& x, R& y) { return Meet(x, z + y) && Meet(y, x - z); }
  static I EvaluateIntegers(const I& x, const I& y) { return x - y; }
  static bool ProjectIntegers(const I& z, I& x, I& y) { return Meet(x, z + y) && Meet(y, x - z); }
  static bool CalcSlopes(const SlopeArguments&, Slopes& slopes) {
    return Give(slopes, kOne, -kOne);
  }
};

struct Product : Invertible<Function::kQuotient, Binary> {
  static constexpr const char* kName = "product";
  static constexpr bool kIsCommutative = true;
  static R Evaluate(const R& x, const R& y) { return x * y; }
  static bool Project(const R& z, R& x, R& y) {
    return Meet(x, Quotients(x, z, y)) && Meet(y, Quotients(y, z, x));
  }
  static I EvaluateIntegers(const I& x, const I& y) { return x * y; }
  static bool ProjectIntegers(const I& z, I& x, I& y) {
    return Meet(x, ExactQuotients(x, z, y)) && Meet(y, ExactQuotients(y, z, x));
  }
  static bool CalcSlopes(const SlopeArguments& at, Slopes& slopes) {
    return Give(slopes, at.yc, at.x);
  }
};

/// Has no value where the divisor is 0.
struct Quotient : Binary {
  static constexpr const char* kName = "quotient";
  static constexpr bool kIsPartial = true, kHasIntegers = false;
  static R Evaluate(const R& x, const R& y) { return x / y; }
  static bool Project(const R& z, R& x, R& y) {
    return Meet(x, z * y) && Meet(y, Quotients(y, x, z)) && !(y == kZero);
  }
  static bool CalcSlopes(const SlopeArguments& at, Slopes& slopes) {
    if (Hull(at.y, at.yc).Contains(0)) return false;
    const R inverse = kOne / at.y;
    return Give(slopes, inverse, -(at.zc * inverse));
  }
  static bool IsContinuous(const R&, const R& y) { return !y.Contains(0); }
};

struct Negative : Invertible<Function::kNegative, Unary> {
  static constexpr const char* kName = "negative";
  static R Evaluate(const R& x, const R&) { return -x; }
  static bool Project(const R& z, R& x, R&) { return Meet(x, -z); }
  static I EvaluateIntegers(const I& x, const I&) { return -x; }
  static bool ProjectIntegers(const I& z, I& x, I&) { return Meet(x, -z); }
  static bool CalcSlopes(const SlopeArguments&, Slopes& slopes) { return Give(slopes, -kOne); }
};

struct PowerFunction : Binary {
  static constexpr const char* kName = "power";
  static constexpr bool kIsPartial = true;
  static R Evaluate(const R& x, const R& y) {
    if (IsSmallPower(y)) return SmallPower(x, static_cast<int>(y.lower));
    return Power(x, y);
  }
  static bool Project(const R& z, R& x, R& y) {
    if (IsSmallPower(y)) return Meet(x, SmallRoots(z, x, static_cast<int>(y.lower)));
    return Meet(x, InversePower(z, x, y)) && (y.IsScalar() || Meet(y, InverseExponent(z, x, y)));
  }
  static I EvaluateIntegers(const I& x, const I& y) { return Power(x, y); }
  static bool ProjectIntegers(const I& z, I& x, I& y) {
    return Meet(x, PowerBases(z, x, y)) && Meet(y, PowerExponents(z, x, y));
  }
  /// x^y - xc^yc = (x^y - xc^y) + (xc^y - xc^yc).
  static bool CalcSlopes(const SlopeArguments& at, Slopes& slopes) {
    const R x = Hull(at.x, at.xc), y = Hull(at.y, at.yc);
    if (!IsContinuous(x, y)) return false;
    if (at.isSecondFixed && y == R(2, 2)) return Give(slopes, at.x + at.xc);
    if (at.isSecondFixed && y == kZero) return Give(slopes, kZero);
    const R first = y * Evaluate(x, y - kOne);
    if (at.isSecondFixed) return Give(slopes, first);
    return x.lower > 0 && Give(slopes, first, Power(at.xc, y) * Log(at.xc));
  }
  static bool IsContinuous(const R& x, const R& y) {
    if (!y.IsScalar() || !IsWhole(y.lower)) return x.lower > 0;
    return y.lower >= 0 || !x.Contains(0);
  }
};

struct RemainderFunction : Binary {
  static constexpr const char* kName = "remainder";
  static constexpr bool kIsPartial = true;
  static R Evaluate(const R& x, const R& y) { return Remainder(x, y); }
  static bool Project(const R& z, R& x, R& y) {
    return Meet(x, InverseRemainder(z, x, y)) && Meet(y, InverseRemainderDivisor(z, x, y));
  }
  static I EvaluateIntegers(const I& x, const I& y) { return Remainder(x, y); }
  static bool ProjectIntegers(const I& z, I& x, I& y) {
    return Meet(x, RemainderDividends(z, x, y)) && Meet(y, RemainderDivisors(z, x, y));
  }
  static bool CalcSlopes(const SlopeArguments& at, Slopes& slopes) {
    double whole = 0;
    return TruncatedQuotient(Hull(at.x, at.xc), Hull(at.y, at.yc), whole) &&
           Give(slopes, kOne, {-whole, -whole});
  }
  static bool IsContinuous(const R& x, const R& y) {
    double whole = 0;
    return TruncatedQuotient(x, y, whole);
  }
};

struct Minimum : Binary {
  static constexpr const char* kName = "minimum";
  static constexpr bool kIsCommutative = true;
  static R Evaluate(const R& x, const R& y) { return Min(x, y); }
  static bool Project(const R& z, R& x, R& y) {
    return Meet(x, InverseMin(z, y)) && Meet(y, InverseMin(z, x));
  }
  static I EvaluateIntegers(const I& x, const I& y) { return Min(x, y); }
  static bool ProjectIntegers(const I& z, I& x, I& y) {
    return Meet(x, MinArguments(z, x, y)) && Meet(y, MinArguments(z, y, x));
  }
  static bool CalcSlopes(const SlopeArguments& at, Slopes& slopes) {
    return OfLower(Hull(at.x, at.xc), Hull(at.y, at.yc), slopes);
  }
  /// Slopes where the operand with the lower value counts.
  static bool OfLower(const R& x, const R& y, Slopes& slopes) {
    if (x.upper <= y.lower) return Give(slopes, kOne, kZero);
    if (y.upper <= x.lower) return Give(slopes, kZero, kOne);
    return Give(slopes, {0, 1}, {0, 1});
  }
};

struct Maximum : Binary {
  static constexpr const char* kName = "maximum";
  static constexpr bool kIsCommutative = true;
  static R Evaluate(const R& x, const R& y) { return Max(x, y); }
  static bool Project(const R& z, R& x, R& y) {
    return Meet(x, InverseMax(z, y)) && Meet(y, InverseMax(z, x));
  }
  static I EvaluateIntegers(const I& x, const I& y) { return Max(x, y); }
  static bool ProjectIntegers(const I& z, I& x, I& y) {
    return Meet(x, MaxArguments(z, x, y)) && Meet(y, MaxArguments(z, y, x));
  }
  static bool CalcSlopes(const SlopeArguments& at, Slopes& slopes) {
    return Minimum::OfLower(-Hull(at.x, at.xc), -Hull(at.y, at.yc), slopes);
  }
};

struct Absolute : Unary {
  static constexpr const char* kName = "absolute";
  static constexpr bool kIsEven = true;
  static R Evaluate(const R& x, const R&) { return Abs(x); }
  static bool Project(const R& z, R& x, R&) { return Meet(x, InverseAbs(z, x)); }
  static I EvaluateIntegers(const I& x, const I&) { return Abs(x); }
  static bool ProjectIntegers(const I& z, I& x, I&) { return Meet(x, AbsArguments(z, x)); }
  static bool CalcSlopes(const SlopeArguments& at, Slopes& slopes) {
    const R x = Hull(at.x, at.xc);
    return Give(slopes, {x.lower >= 0 && x.upper > 0 ? 1.0 : -1.0,
                         x.upper <= 0 && x.lower < 0 ? -1.0 : 1.0});
  }
};

struct SignFunction : Unary {
  static constexpr const char* kName = "sign";
  static R Evaluate(const R& x, const R&) {
    const auto sign = [](double value) { return static_cast<double>((value > 0) - (value < 0)); };
    return x.IsEmpty() ? x : R(sign(x.lower), sign(x.upper));
  }
  /// Closed where the true sets are open at 0.
  static bool Project(const R& z, R& x, R&) {
    return Meet(x, R(z.lower > -1 ? 0 : -R::sMaxValue, z.upper < 1 ? 0 : R::sMaxValue));
  }
  static I EvaluateIntegers(const I& x, const I&) { return Sign(x); }
  static bool ProjectIntegers(const I& z, I& x, I&) { return Meet(x, SignArguments(z, x)); }
  static bool CalcSlopes(const SlopeArguments& at, Slopes& slopes) {
    return IsContinuous(Hull(at.x, at.xc), kZero) && Give(slopes, kZero);
  }
  static bool IsContinuous(const R& x, const R&) { return x.IsScalar() || !x.Contains(0); }
};

struct Exponential : Invertible<Function::kLog, Transcendental> {
  static constexpr const char* kName = "exp";
  static R Evaluate(const R& x, const R&) { return Exp(x); }
  static bool Project(const R& z, R& x, R&) { return Meet(x, Log(z)); }
  static bool CalcSlopes(const SlopeArguments& at, Slopes& slopes) {
    return Give(slopes, Exp(Hull(at.x, at.xc)));
  }
};

struct Logarithm : Invertible<Function::kExp, Transcendental> {
  static constexpr const char* kName = "log";
  static constexpr bool kIsPartial = true;
  static R Evaluate(const R& x, const R&) { return Log(x); }
  static bool Project(const R& z, R& x, R&) { return Meet(x, Exp(z)); }
  static bool CalcSlopes(const SlopeArguments& at, Slopes& slopes) {
    const R x = Hull(at.x, at.xc);
    return x.lower > 0 && Give(slopes, kOne / x);
  }
  static bool IsContinuous(const R& x, const R&) { return x.lower > 0; }
};

struct SquareFunction : Unary {
  static constexpr const char* kName = "square";
  static constexpr bool kIsEven = true;
  static R Evaluate(const R& x, const R&) { return Square(x); }
  static bool Project(const R& z, R& x, R&) { return Meet(x, InverseSquare(z, x)); }
  static I EvaluateIntegers(const I& x, const I&) { return Abs(x) * Abs(x); }
  static bool ProjectIntegers(const I& z, I& x, I&) { return Meet(x, PowerBases(z, x, kTwo)); }
  static bool CalcSlopes(const SlopeArguments& at, Slopes& slopes) {
    return Give(slopes, at.x + at.xc);
  }
  static constexpr I kTwo = {2, 2};
};

struct Root : Invertible<Function::kSquare, Transcendental> {
  static constexpr const char* kName = "sqrt";
  static constexpr bool kIsPartial = true;
  static R Evaluate(const R& x, const R&) { return Sqrt(x); }
  static bool Project(const R& z, R& x, R&) {
    return Meet(x, Square(Intersection(z, {0, R::sMaxValue})));
  }
  static bool CalcSlopes(const SlopeArguments& at, Slopes& slopes) {
    const R sum = at.z + at.zc;
    return Hull(at.x, at.xc).lower >= 0 && sum.lower > 0 && Give(slopes, kOne / sum);
  }
  static bool IsContinuous(const R& x, const R&) { return x.lower >= 0; }
};

struct Sine : Transcendental {
  static constexpr const char* kName = "sin";
  static R Evaluate(const R& x, const R&) { return Sin(x); }
  static bool Project(const R& z, R& x, R&) { return Meet(x, InverseSin(z, x, TrigWindow())); }
  static bool CalcSlopes(const SlopeArguments& at, Slopes& slopes) {
    return Give(slopes, Cos(Hull(at.x, at.xc)));
  }
};

struct Cosine : Transcendental {
  static constexpr const char* kName = "cos";
  static constexpr bool kIsEven = true;
  static R Evaluate(const R& x, const R&) { return Cos(x); }
  static bool Project(const R& z, R& x, R&) { return Meet(x, InverseCos(z, x, TrigWindow())); }
  static bool CalcSlopes(const SlopeArguments& at, Slopes& slopes) {
    return Give(slopes, -Sin(Hull(at.x, at.xc)));
  }
};

struct Tangent : Transcendental {
  static constexpr const char* kName = "tan";
  static R Evaluate(const R& x, const R&) { return Tan(x); }
  static bool Project(const R& z, R& x, R&) { return Meet(x, InverseTan(z, x, TrigWindow())); }
  static bool CalcSlopes(const SlopeArguments& at, Slopes& slopes) {
    const R tangent = Tan(Hull(at.x, at.xc));
    return tangent.IsBounded() && Give(slopes, kOne + Square(tangent));
  }
};

/// What is common to the roundings; their jumps are at whole numbers plus kShift.
template <class Self>
struct Rounding : Unary {
  static constexpr double kShift = 0;
  static I EvaluateIntegers(const I& x, const I&) { return x; }
  static bool ProjectIntegers(const I& z, I& x, I&) { return Meet(x, z); }
  static bool CalcSlopes(const SlopeArguments& at, Slopes& slopes) {
    return IsContinuous(Hull(at.x, at.xc), kZero) && Give(slopes, kZero);
  }
  static bool IsContinuous(const R& x, const R&) {
    return x.IsScalar() || IsBetweenJumps(x - R::Point(Self::kShift));
  }
};
struct RoundFunction : Rounding<RoundFunction> {
  static constexpr const char* kName = "round";
  static constexpr double kShift = 0.5;
  static R Evaluate(const R& x, const R&) { return Round(x); }
  static bool Project(const R& z, R& x, R&) { return Meet(x, InverseRound(z, x)); }
};
struct FloorFunction : Rounding<FloorFunction> {
  static constexpr const char* kName = "floor";
  static R Evaluate(const R& x, const R&) { return Floor(x); }
  static bool Project(const R& z, R& x, R&) { return Meet(x, InverseFloor(z, x)); }
};
struct CeilFunction : Rounding<CeilFunction> {
  static constexpr const char* kName = "ceil";
  static R Evaluate(const R& x, const R&) { return Ceil(x); }
  static bool Project(const R& z, R& x, R&) { return Meet(x, InverseCeil(z, x)); }
};

struct HyperbolicSine : Invertible<Function::kAsinh, Transcendental> {
  static constexpr const char* kName = "sinh";
  static R Evaluate(const R& x, const R&) { return Sinh(x); }
  static bool Project(const R& z, R& x, R&) { return Meet(x, Asinh(z)); }
  static bool CalcSlopes(const SlopeArguments& at, Slopes& slopes) {
    return Give(slopes, Cosh(Hull(at.x, at.xc)));
  }
};

struct HyperbolicCosine : Transcendental {
  static constexpr const char* kName = "cosh";
  static constexpr bool kIsEven = true;
  static R Evaluate(const R& x, const R&) { return Cosh(x); }
  static bool Project(const R& z, R& x, R&) { return Meet(x, InverseAbs(Acosh(z), x)); }
  static bool CalcSlopes(const SlopeArguments& at, Slopes& slopes) {
    return Give(slopes, Sinh(Hull(at.x, at.xc)));
  }
};

struct HyperbolicTangent : Invertible<Function::kAtanh, Transcendental> {
  static constexpr const char* kName = "tanh";
  static R Evaluate(const R& x, const R&) { return Tanh(x); }
  static bool Project(const R& z, R& x, R&) { return Meet(x, Atanh(z)); }
  static bool CalcSlopes(const SlopeArguments& at, Slopes& slopes) {
    return Give(slopes, kOne / Square(Cosh(Hull(at.x, at.xc))));
  }
};

struct AreaSine : Invertible<Function::kSinh, Transcendental> {
  static constexpr const char* kName = "asinh";
  static R Evaluate(const R& x, const R&) { return Asinh(x); }
  static bool Project(const R& z, R& x, R&) { return Meet(x, Sinh(z)); }
  static bool CalcSlopes(const SlopeArguments& at, Slopes& slopes) {
    return Give(slopes, kOne / Hypot(kOne, Hull(at.x, at.xc)));
  }
};

/// The branch that is not negative.
struct AreaCosine : Transcendental {
  static constexpr const char* kName = "acosh";
  static constexpr bool kIsPartial = true;
  static R Evaluate(const R& x, const R&) { return Acosh(x); }
  static bool Project(const R& z, R& x, R&) {
    return Meet(x, Cosh(Intersection(z, {0, R::sMaxValue})));
  }
  static bool CalcSlopes(const SlopeArguments& at, Slopes& slopes) {
    const R x = Hull(at.x, at.xc);
    return x.lower > 1 && Give(slopes, kOne / Sqrt((x - kOne) * (x + kOne)));
  }
  static bool IsContinuous(const R& x, const R&) { return x.lower >= 1; }
};

struct AreaTangent : Invertible<Function::kTanh, Transcendental> {
  static constexpr const char* kName = "atanh";
  static constexpr bool kIsPartial = true;
  static R Evaluate(const R& x, const R&) { return Atanh(x); }
  static bool Project(const R& z, R& x, R&) { return Meet(x, Tanh(z)); }
  static bool CalcSlopes(const SlopeArguments& at, Slopes& slopes) {
    const R x = Hull(at.x, at.xc);
    return IsContinuous(x, x) && Give(slopes, kOne / ((kOne - x) * (kOne + x)));
  }
  static bool IsContinuous(const R& x, const R&) { return x.lower > -1 && x.upper < 1; }
};

/// Exponential and logarithm to a base; Logarithm its natural one.
template <class Self, Function Inverse>
struct ExponentialTo : Invertible<Inverse, Transcendental> {
  static bool CalcSlopes(const SlopeArguments& at, Slopes& slopes) {
    return Give(slopes, Self::Evaluate(Hull(at.x, at.xc), kZero) * Self::kLogOfBase);
  }
};
template <class Self, Function Inverse>
struct LogarithmTo : Invertible<Inverse, Transcendental> {
  static constexpr bool kIsPartial = true;
  static bool CalcSlopes(const SlopeArguments& at, Slopes& slopes) {
    const R x = Hull(at.x, at.xc);
    return x.lower > 0 && Give(slopes, kOne / (x * Self::kLogOfBase));
  }
  static bool IsContinuous(const R& x, const R&) { return x.lower > 0; }
};
constexpr R kLogOfTwo = {0x1.62e42fefa39efp-1, 0x1.62e42fefa39f0p-1};
constexpr R kLogOfTen = {0x1.26bb1bbb55515p+1, 0x1.26bb1bbb55516p+1};

struct BinaryExponential : ExponentialTo<BinaryExponential, Function::kLog2> {
  static constexpr const char* kName = "exp2";
  static constexpr R kLogOfBase = kLogOfTwo;
  static R Evaluate(const R& x, const R&) { return Exp2(x); }
  static bool Project(const R& z, R& x, R&) { return Meet(x, Log2(z)); }
};
struct DecimalExponential : ExponentialTo<DecimalExponential, Function::kLog10> {
  static constexpr const char* kName = "exp10";
  static constexpr R kLogOfBase = kLogOfTen;
  static R Evaluate(const R& x, const R&) { return Exp10(x); }
  static bool Project(const R& z, R& x, R&) { return Meet(x, Log10(z)); }
};
struct BinaryLogarithm : LogarithmTo<BinaryLogarithm, Function::kExp2> {
  static constexpr const char* kName = "log2";
  static constexpr R kLogOfBase = kLogOfTwo;
  static R Evaluate(const R& x, const R&) { return Log2(x); }
  static bool Project(const R& z, R& x, R&) { return Meet(x, Exp2(z)); }
};
struct DecimalLogarithm : LogarithmTo<DecimalLogarithm, Function::kExp10> {
  static constexpr const char* kName = "log10";
  static constexpr R kLogOfBase = kLogOfTen;
  static R Evaluate(const R& x, const R&) { return Log10(x); }
  static bool Project(const R& z, R& x, R&) { return Meet(x, Exp10(z)); }
};

struct CubicRoot : Transcendental {
  static constexpr const char* kName = "cbrt";
  static R Evaluate(const R& x, const R&) { return Cbrt(x); }
  static bool Project(const R& z, R& x, R&) { return Meet(x, Power(z, 3)); }
  /// a^3 - b^3 = (a - b) (a^2 + a b + b^2).
  static bool CalcSlopes(const SlopeArguments& at, Slopes& slopes) {
    const R inverse = Square(at.z) + at.z * at.zc + Square(at.zc);
    return inverse.lower > 0 && Give(slopes, kOne / inverse);
  }
};

struct Hypotenuse : Binary {
  static constexpr const char* kName = "hypot";
  static constexpr bool kIsEven = true, kIsCommutative = true, kHasIntegers = false;
  static R Evaluate(const R& x, const R& y) { return Hypot(x, y); }
  static bool Project(const R& z, R& x, R& y) {
    return Meet(x, InverseHypot(z, x, y)) && Meet(y, InverseHypot(z, y, x));
  }
  /// Cosine and sine of the angle.
  static bool CalcSlopes(const SlopeArguments& at, Slopes& slopes) {
    const R x = Hull(at.x, at.xc), y = Hull(at.y, at.yc), z = Hull(at.z, at.zc);
    const R all = {-1, 1};
    if (z.lower == 0) return Give(slopes, all, all);
    return Give(slopes, Intersection(x / z, all), Intersection(y / z, all));
  }
};

/// What is common to the principal inverses of sine and cosine.
struct PrincipalArc : Transcendental {
  static constexpr bool kIsPartial = true;
  static bool GiveSlopes(const SlopeArguments& at, Slopes& slopes, double sign) {
    const R x = Hull(at.x, at.xc);
    return x.lower > -1 && x.upper < 1 &&
           Give(slopes, R::Point(sign) / Sqrt((kOne - x) * (kOne + x)));
  }
  static bool IsContinuous(const R& x, const R&) { return x.lower >= -1 && x.upper <= 1; }
};
struct ArcSine : PrincipalArc {
  static constexpr const char* kName = "arcsin";
  static R Evaluate(const R& x, const R&) { return Asin(x); }
  static bool Project(const R& z, R& x, R&) { return Meet(x, InverseAsin(z, x)); }
  static bool CalcSlopes(const SlopeArguments& at, Slopes& slopes) {
    return GiveSlopes(at, slopes, 1);
  }
};
struct ArcCosine : PrincipalArc {
  static constexpr const char* kName = "arccos";
  static R Evaluate(const R& x, const R&) { return Acos(x); }
  static bool Project(const R& z, R& x, R&) { return Meet(x, InverseAcos(z, x)); }
  static bool CalcSlopes(const SlopeArguments& at, Slopes& slopes) {
    return GiveSlopes(at, slopes, -1);
  }
};

struct ArcTangent : Transcendental {
  static constexpr const char* kName = "arctan";
  static R Evaluate(const R& x, const R&) { return Atan(x); }
  static bool Project(const R& z, R& x, R&) { return Meet(x, InverseAtan(z, x)); }
  static bool CalcSlopes(const SlopeArguments& at, Slopes& slopes) {
    return Give(slopes, kOne / (kOne + Square(Hull(at.x, at.xc))));
  }
};

/// The angle of the point (y, x), in this order as elsewhere: x is the ordinate here.
struct AngleOfPoint : Binary {
  static constexpr const char* kName = "atan2";
  static constexpr bool kIsPartial = true, kHasIntegers = false;
  static R Evaluate(const R& x, const R& y) { return Atan2(x, y); }
  static bool Project(const R& z, R& x, R& y) {
    return Meet(x, InverseAtan2(z, x, y)) && Meet(y, InverseAtan2Abscissa(z, x, y));
  }
  static bool CalcSlopes(const SlopeArguments& at, Slopes& slopes) {
    const R x = Hull(at.x, at.xc), y = Hull(at.y, at.yc);
    if (!IsContinuous(x, y)) return false;
    const R square = Square(x) + Square(y);
    return square.lower > 0 && Give(slopes, y / square, -(x / square));
  }
  /// It jumps at the axis to the left.
  static bool IsContinuous(const R& x, const R& y) { return y.lower > 0 || !x.Contains(0); }
};

struct Division : Binary {
  static constexpr const char* kName = "div";
  static constexpr bool kIsPartial = true;
  static R Evaluate(const R& x, const R& y) {
    const R quotient = x / y;
    return quotient.IsEmpty()
               ? quotient
               : R(std::trunc(quotient.lower) + 0.0, std::trunc(quotient.upper) + 0.0);
  }
  static bool Project(const R& z, R& x, R& y) {
    const double divisor = Abs(y).upper;
    return Meet(x, z * y + R(-divisor, divisor)) && !(y == kZero);
  }
  static I EvaluateIntegers(const I& x, const I& y) { return Div(x, y); }
  static bool ProjectIntegers(const I& z, I& x, I& y) {
    return Meet(x, DivDividends(z, x, y)) && Meet(y, DivDivisors(z, x, y));
  }
  static bool CalcSlopes(const SlopeArguments& at, Slopes& slopes) {
    return IsContinuous(Hull(at.x, at.xc), Hull(at.y, at.yc)) && Give(slopes, kZero, kZero);
  }
  static bool IsContinuous(const R& x, const R& y) {
    double whole = 0;
    return TruncatedQuotient(x, y, whole);
  }
};

/// Of whole numbers alone, so that reals say little of it.
struct CommonDivisor : Binary {
  static constexpr const char* kName = "gcd";
  static constexpr bool kIsCommutative = true;
  static R Evaluate(const R& x, const R& y) {
    if (x.IsEmpty() || y.IsEmpty()) return R::Empty();
    return {0, std::max(x.GetMagnitude(), y.GetMagnitude())};
  }
  static bool Project(const R& z, R& x, R& y) {
    return z.upper >= 0 && !x.IsEmpty() && !y.IsEmpty();
  }
  static I EvaluateIntegers(const I& x, const I& y) { return Gcd(x, y); }
  static bool ProjectIntegers(const I& z, I& x, I& y) {
    return Meet(x, GcdArguments(z, x, y)) && Meet(y, GcdArguments(z, y, x));
  }
  static bool CalcSlopes(const SlopeArguments&, Slopes&) { return false; }
  static bool IsContinuous(const R&, const R&) { return false; }
};

template <class F>
constexpr FunctionRow MakeRow() {
  FunctionRow row = {F::kName,    F::kOperands,  F::Evaluate,      F::Project,    nullptr,
                     nullptr,     F::CalcSlopes, F::IsContinuous,  F::kIsPartial, F::kHasInverse,
                     F::kInverse, F::kIsEven,    F::kIsCommutative};
  if constexpr (F::kHasIntegers) {
    row.evaluateIntegers = F::EvaluateIntegers;
    row.projectIntegers = F::ProjectIntegers;
  }
  return row;
}

}  // namespace

// clang-format off
constinit const FunctionRow kFunctionRows[kFunctions] = {
    MakeRow<Identity>(), MakeRow<Sum>(), MakeRow<Difference>(), MakeRow<Product>(),
    MakeRow<Quotient>(), MakeRow<Negative>(), MakeRow<PowerFunction>(),
    MakeRow<RemainderFunction>(), MakeRow<Minimum>(), MakeRow<Maximum>(), MakeRow<Absolute>(),
    MakeRow<SignFunction>(), MakeRow<Exponential>(), MakeRow<Logarithm>(),
    MakeRow<SquareFunction>(), MakeRow<Root>(), MakeRow<Sine>(), MakeRow<Cosine>(),
    MakeRow<Tangent>(), MakeRow<RoundFunction>(), MakeRow<FloorFunction>(), MakeRow<CeilFunction>(),
    MakeRow<HyperbolicSine>(), MakeRow<HyperbolicCosine>(), MakeRow<HyperbolicTangent>(),
    MakeRow<AreaSine>(), MakeRow<AreaCosine>(), MakeRow<AreaTangent>(), MakeRow<BinaryLogarithm>(),
    MakeRow<DecimalLogarithm>(), MakeRow<BinaryExponential>(), MakeRow<DecimalExponential>(),
    MakeRow<CubicRoot>(), MakeRow<Hypotenuse>(), MakeRow<ArcSine>(), MakeRow<ArcCosine>(),
    MakeRow<ArcTangent>(), MakeRow<AngleOfPoint>(), MakeRow<Division>(), MakeRow<CommonDivisor>()};
// clang-format on

}  // namespace zultav::engine
