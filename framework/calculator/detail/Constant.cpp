#include "framework/calculator/detail/Constant.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <sstream>

#include "framework/calculator/detail/Decimal.h"
#include "framework/intervals/detail/Rounding.h"

namespace zultav::detail {

namespace {

using Result = std::optional<Constant>;
using rounding::Rounded;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// --- Reals ------------------------------------------------------------------------------------

/// The hull of an operation over the corners of its operands.
template <class Operation>
Constant OverCorners(const Constant& a, const Constant& b, Operation operation) {
  const Rounded corners[] = {operation(a.lower, b.lower), operation(a.lower, b.upper),
                             operation(a.upper, b.lower), operation(a.upper, b.upper)};
  double lower = kInfinity;
  double upper = -kInfinity;
  for (const Rounded& corner : corners) {
    if (!std::isfinite(corner.nearest)) throw ConstantError{"this constant is too large"};
    lower = std::min(lower, corner.Down());
    upper = std::max(upper, corner.Up());
  }
  const double nearest = operation(a.nearest, b.nearest).nearest;
  return Constant::Real(lower, upper, std::clamp(nearest, lower, upper));
}

Constant Negate(const Constant& a) { return Constant::Real(-a.upper, -a.lower, -a.nearest); }

Result FoldReals(Op op, const Constant& a, const Constant& b) {
  switch (op) {
    case Op::kAdd:
      return OverCorners(a, b, rounding::Sum);
    case Op::kSubtract:
      return OverCorners(a, Negate(b), rounding::Sum);
    case Op::kMultiply:
      return OverCorners(a, b, rounding::Product);
    case Op::kDivide:
      if (b.lower <= 0 && b.upper >= 0) throw ConstantError{"division by zero"};
      return OverCorners(a, b, rounding::Quotient);
    case Op::kMinimum:
      return Constant::Real(std::min(a.lower, b.lower), std::min(a.upper, b.upper),
                            std::min(a.nearest, b.nearest));
    case Op::kMaximum:
      return Constant::Real(std::max(a.lower, b.lower), std::max(a.upper, b.upper),
                            std::max(a.nearest, b.nearest));
    default:
      return {};
  }
}

// --- Integers ---------------------------------------------------------------------------------

[[noreturn]] void Overflow() {
  throw ConstantError{"this integer constant does not fit into 64 bits"};
}

Constant Power(std::int64_t base, std::int64_t exponent) {
  std::int64_t result = 1;
  if (base == 0 || base == 1 || base == -1)  // the only bases that allow any exponent
    return Constant::Integer(exponent == 0 || base == 1 ? 1
                             : base == 0                ? 0
                             : exponent % 2 == 0        ? 1
                                                        : -1);
  for (; exponent > 0; --exponent)
    if (__builtin_mul_overflow(result, base, &result)) Overflow();
  return Constant::Integer(result);
}

Result FoldIntegers(Op op, std::int64_t a, std::int64_t b) {
  std::int64_t result = 0;
  switch (op) {
    case Op::kAdd:
      if (__builtin_add_overflow(a, b, &result)) Overflow();
      return Constant::Integer(result);
    case Op::kSubtract:
      if (__builtin_sub_overflow(a, b, &result)) Overflow();
      return Constant::Integer(result);
    case Op::kMultiply:
      if (__builtin_mul_overflow(a, b, &result)) Overflow();
      return Constant::Integer(result);
    case Op::kDivide:
      if (b == 0) throw ConstantError{"division by zero"};
      if (b == -1) return FoldIntegers(Op::kSubtract, 0, a);
      if (a % b == 0) return Constant::Integer(a / b);
      return FoldReals(op, Constant::Integer(a).AsReal(), Constant::Integer(b).AsReal());
    case Op::kModulo:
      if (b == 0) throw ConstantError{"the remainder of a division by zero"};
      return Constant::Integer(b == -1 ? 0 : a % b);
    case Op::kPower: {
      if (b >= 0) return Power(a, b);
      if (a == 0) throw ConstantError{"division by zero"};
      if (b == std::numeric_limits<std::int64_t>::min()) return {};
      const Constant power = Power(a, -b);
      return FoldIntegers(Op::kDivide, 1, power.integer);
    }
    case Op::kMinimum:
      return Constant::Integer(std::min(a, b));
    case Op::kMaximum:
      return Constant::Integer(std::max(a, b));
    default:
      return {};
  }
}

// --- Truth ------------------------------------------------------------------------------------

Result FoldBooleans(Op op, bool a, bool b) {
  switch (op) {
    case Op::kAnd:
    case Op::kMinimum:
      return Constant::Boolean(a && b);
    case Op::kOr:
    case Op::kMaximum:
      return Constant::Boolean(a || b);
    case Op::kImplies:
      return Constant::Boolean(!a || b);
    default:
      return {};
  }
}

/// A comparison of two values that are known to be less, equal or greater, or of which only some
/// of these can be excluded.
struct Order {
  bool less, equal, greater;  // which are possible
};

Result Compare(Op op, Order order) {
  const auto decide = [](bool possible, bool alternative) -> Result {
    if (possible && alternative) return {};
    return Constant::Boolean(possible);
  };
  switch (WithoutAssertion(op)) {
    case Op::kIsEqual:
      return decide(order.equal, order.less || order.greater);
    case Op::kIsUnequal:
      return decide(order.less || order.greater, order.equal);
    case Op::kIsLess:
      return decide(order.less, order.equal || order.greater);
    case Op::kIsLessOrEqual:
      return decide(order.less || order.equal, order.greater);
    case Op::kIsGreater:
      return decide(order.greater, order.equal || order.less);
    case Op::kIsGreaterOrEqual:
      return decide(order.greater || order.equal, order.less);
    default:
      return {};
  }
}

Order OrderOf(const Constant& a, const Constant& b) {
  if (!a.IsReal() && !b.IsReal())
    return {a.integer<b.integer, a.integer == b.integer, a.integer> b.integer};
  const Constant x = a.AsReal();
  const Constant y = b.AsReal();
  const bool points = x.lower == x.upper && y.lower == y.upper;
  return {points ? x.lower < y.lower : x.lower < y.upper, x.lower <= y.upper && y.lower <= x.upper,
          points ? x.lower > y.lower : x.upper > y.lower};
}

}  // namespace

// Both kinds of signs stand in the same order.
Op WithoutAssertion(Op op) {
  constexpr int kDistance = static_cast<int>(Op::kIsEqual) - static_cast<int>(Op::kEqual);
  return IsAsserting(op) ? static_cast<Op>(static_cast<int>(op) + kDistance) : op;
}

Constant Constant::FromDecimal(std::string_view text) {
  const Decimal decimal = ReadDecimal(text);
  return Real(decimal.lower, decimal.upper, decimal.nearest);
}

std::optional<Constant> Constant::FromDigits(std::string_view text) {
  std::int64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc()) return {};
  return Integer(value);
}

Constant Constant::AsReal() const {
  if (IsReal()) return *this;
  const DoubleDouble exact = FromInteger(integer);
  const Rounded real{exact.hi, exact.lo};
  return Real(real.Down(), real.Up(), real.nearest);
}

std::string Constant::Describe() const {
  if (IsBoolean()) return integer != 0 ? "True" : "False";
  if (IsInteger()) return "the integer " + std::to_string(integer);
  if (!std::isfinite(nearest)) return "this number";
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text.precision(std::numeric_limits<double>::digits10);
  text << "the number " << nearest;
  return text.str();
}

std::optional<Constant> FoldConstants(Op op, const Constant& a, const Constant* b) {
  if (b == nullptr) {
    if (op == Op::kNot && a.IsBoolean()) return Constant::Boolean(a.integer == 0);
    if (op != Op::kSubtract || a.IsBoolean()) return {};
    return a.IsReal() ? Negate(a) : FoldIntegers(Op::kSubtract, 0, a.integer);
  }
  if (a.IsBoolean() != b->IsBoolean()) return {};
  if (Result compared = Compare(op, OrderOf(a, *b))) return compared;
  if (a.IsBoolean()) return FoldBooleans(op, a.integer != 0, b->integer != 0);
  if (a.IsInteger() && b->IsInteger()) return FoldIntegers(op, a.integer, b->integer);
  return FoldReals(op, a.AsReal(), b->AsReal());
}

}  // namespace zultav::detail
