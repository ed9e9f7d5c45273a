#ifndef ZULTAV_TESTS_ORACLE_OPERATORS_H
#define ZULTAV_TESTS_ORACLE_OPERATORS_H

#include <mpfr.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <stdexcept>
#include <string>
#include <string_view>

/// What every operator means, for all tests that compare the system with it.
namespace oracle {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();  // there is no value

inline double If(bool holds, double value) { return holds ? value : kNone; }

inline bool IsPrime(double number) {
  const auto n = static_cast<long long>(number);
  for (long long d = 2; d * d <= n; ++d)
    if (n % d == 0) return false;
  return n > 1;
}

/// A negative exponent leads to an integer from 1 and -1 only.
inline double IntegerPower(double base, double exponent) {
  return If(exponent >= 0 || std::fabs(base) == 1, std::pow(base, exponent));
}

inline double CommonDivisor(double l, double r) {
  return static_cast<double>(std::gcd(std::llrint(l), std::llrint(r)));
}

inline int Euler(mpfr_ptr z, mpfr_rnd_t to) { return mpfr_set_ui(z, 1, to), mpfr_exp(z, z, to); }

enum Kind {
  kArithmetic,  // `rounded` is the meaning for reals
  kOrder,       // decided by the order of the operands: `exact` of -1, 0 or 1 and of 0
  kDiscrete     // of integers and truths only
};

struct Operator {
  std::string_view name;
  unsigned operands;
  Kind kind;
  /// Of integers and truths, exact within 2^53 and as large beyond. Null: it leaves the integers.
  double (*exact)(double l, double r);
  /// Of reals, rounded as told; the principal value where there are many.
  int (*rounded)(mpfr_ptr z, mpfr_srcptr l, mpfr_srcptr r, mpfr_rnd_t to);
};

// Aligned by hand, since the formatter would spread the lambdas over columns.
// clang-format off
#define EXACT(VALUE) [](double l, [[maybe_unused]] double r) -> double { return VALUE; }
#define BINARY(F) \
  [](mpfr_ptr z, mpfr_srcptr l, mpfr_srcptr r, mpfr_rnd_t to) { return F(z, l, r, to); }
#define UNARY(F) [](mpfr_ptr z, mpfr_srcptr l, mpfr_srcptr, mpfr_rnd_t to) { return F(z, l, to); }
#define CONSTANT(F) [](mpfr_ptr z, mpfr_srcptr, mpfr_srcptr, mpfr_rnd_t to) { return F(z, to); }
inline constexpr Operator kOperators[] = {
    {"+",      2, kArithmetic, EXACT(l + r),                           BINARY(mpfr_add)},
    {"-",      2, kArithmetic, EXACT(l - r),                           BINARY(mpfr_sub)},
    {"*",      2, kArithmetic, EXACT(l * r),                           BINARY(mpfr_mul)},
    {"/",      2, kArithmetic, EXACT(If(std::fmod(l, r) == 0, l / r)), BINARY(mpfr_div)},
    {"mod",    2, kArithmetic, EXACT(std::fmod(l, r)),                 BINARY(mpfr_fmod)},
    {"^",      2, kArithmetic, IntegerPower,                           BINARY(mpfr_pow)},
    {"/\\",    2, kArithmetic, EXACT(std::min(l, r)),                  BINARY(mpfr_min)},
    {"\\/",    2, kArithmetic, EXACT(std::max(l, r)),                  BINARY(mpfr_max)},
    {"-",      1, kArithmetic, EXACT(-l),                              UNARY(mpfr_neg)},
    {"abs",    1, kArithmetic, EXACT(std::fabs(l)),                    UNARY(mpfr_abs)},
    {"floor",  1, kArithmetic, EXACT(std::floor(l)),                   UNARY(mpfr_rint_floor)},
    {"ceil",   1, kArithmetic, EXACT(std::ceil(l)),                    UNARY(mpfr_rint_ceil)},
    {"round",  1, kArithmetic, EXACT(std::round(l)),                   UNARY(mpfr_rint_round)},
    {"(real)", 1, kArithmetic, EXACT(l),                               UNARY(mpfr_set)},
    {"(int)",  1, kArithmetic, EXACT(l),                               UNARY(mpfr_set)},
    {"exp",    1, kArithmetic, nullptr,                                UNARY(mpfr_exp)},
    {"ln",     1, kArithmetic, nullptr,                                UNARY(mpfr_log)},
    {"sqrt",   1, kArithmetic, nullptr,                                UNARY(mpfr_sqrt)},
    {"sin",    1, kArithmetic, nullptr,                                UNARY(mpfr_sin)},
    {"cos",    1, kArithmetic, nullptr,                                UNARY(mpfr_cos)},
    {"tan",    1, kArithmetic, nullptr,                                UNARY(mpfr_tan)},
    {"asin",   1, kArithmetic, nullptr,                                UNARY(mpfr_asin)},
    {"acos",   1, kArithmetic, nullptr,                                UNARY(mpfr_acos)},
    {"atan",   1, kArithmetic, nullptr,                                UNARY(mpfr_atan)},
    {"cosh",   1, kArithmetic, nullptr,                                UNARY(mpfr_cosh)},
    {"sinh",   1, kArithmetic, nullptr,                                UNARY(mpfr_sinh)},
    {"tanh",   1, kArithmetic, nullptr,                                UNARY(mpfr_tanh)},
    {"asinh",  1, kArithmetic, nullptr,                                UNARY(mpfr_asinh)},
    {"acosh",  1, kArithmetic, nullptr,                                UNARY(mpfr_acosh)},
    {"atanh",  1, kArithmetic, nullptr,                                UNARY(mpfr_atanh)},
    {"log2",   1, kArithmetic, nullptr,                                UNARY(mpfr_log2)},
    {"log10",  1, kArithmetic, nullptr,                                UNARY(mpfr_log10)},
    {"exp2",   1, kArithmetic, nullptr,                                UNARY(mpfr_exp2)},
    {"cbrt",   1, kArithmetic, nullptr,                                UNARY(mpfr_cbrt)},
    {"arcsin", 1, kArithmetic, nullptr,                                UNARY(mpfr_asin)},
    {"arccos", 1, kArithmetic, nullptr,                                UNARY(mpfr_acos)},
    {"arctan", 1, kArithmetic, nullptr,                                UNARY(mpfr_atan)},
    {"atan2",  2, kArithmetic, nullptr,                                BINARY(mpfr_atan2)},
    {"hypot",  2, kArithmetic, nullptr,                                BINARY(mpfr_hypot)},
    {"Pi",     0, kArithmetic, nullptr,                                CONSTANT(mpfr_const_pi)},
    {"E",      0, kArithmetic, nullptr,                                CONSTANT(Euler)},
    // A comparison of numbers has a value: the side that stands right of ">" and left of "<".
    {"=",      2, kOrder,      EXACT(If(l == r, r)),                   nullptr},
    {"<>",     2, kOrder,      EXACT(If(l != r, r)),                   nullptr},
    {">=",     2, kOrder,      EXACT(If(l >= r, r)),                   nullptr},
    {">",      2, kOrder,      EXACT(If(l > r, r)),                    nullptr},
    {"<=",     2, kOrder,      EXACT(If(l <= r, l)),                   nullptr},
    {"<",      2, kOrder,      EXACT(If(l < r, l)),                    nullptr},
    {"==",     2, kOrder,      EXACT(l == r),                          nullptr},
    {"<<>>",   2, kOrder,      EXACT(l != r),                          nullptr},
    {">==",    2, kOrder,      EXACT(l >= r),                          nullptr},
    {">>",     2, kOrder,      EXACT(l > r),                           nullptr},
    {"<==",    2, kOrder,      EXACT(l <= r),                          nullptr},
    {"<<",     2, kOrder,      EXACT(l < r),                           nullptr},
    {"sign",   1, kOrder,      EXACT((l > 0) - (l < 0)),               nullptr},
    // The step of reals depends on their type.
    {"next",   1, kDiscrete,   EXACT(l + 1),                           nullptr},
    {"prev",   1, kDiscrete,   EXACT(l - 1),                           nullptr},
    {"&&",     2, kDiscrete,   EXACT(l != 0 && r != 0),                nullptr},
    {"||",     2, kDiscrete,   EXACT(l != 0 || r != 0),                nullptr},
    {"->",     2, kDiscrete,   EXACT(l == 0 || r != 0),                nullptr},
    {"~",      1, kDiscrete,   EXACT(l == 0),                          nullptr},
    {"div",    2, kDiscrete,   EXACT(If(r != 0, std::trunc(l / r))),   nullptr},
    {"gcd",    2, kDiscrete,   CommonDivisor,                          nullptr},
    {"pow",    2, kDiscrete,   IntegerPower,                           nullptr},
    {"PrimeNumber", 1, kDiscrete,   EXACT(IsPrime(l)),                      nullptr},
};
#undef CONSTANT
#undef UNARY
#undef BINARY
#undef EXACT
// clang-format on

/// Null when there is no such operator.
inline const Operator* Find(std::string_view name, unsigned operands = 2) {
  const auto* found = std::find_if(
      std::begin(kOperators), std::end(kOperators),
      [&](const Operator& each) { return each.name == name && each.operands == operands; });
  return found == std::end(kOperators) ? nullptr : found;
}
inline const Operator& Get(std::string_view name, unsigned operands = 2) {
  const Operator* const found = Find(name, operands);
  return found != nullptr ? *found : throw std::logic_error("no operator " + std::string(name));
}

/// Whether z is a value of the integers l and r: of 0 / 0 everything is.
inline bool Holds(const Operator& op, double l, double r, double z) {
  return op.name == "/" ? z * r == l : op.exact(l, r) == z;
}

}  // namespace oracle

#endif
