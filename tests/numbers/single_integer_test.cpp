#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "framework/intervals/IntervalControl.h"
#include "numbers/ZULTavIntervalInteger.h"
#include "numbers/ZULTavSingleBoolean.h"
#include "numbers/ZULTavSingleInteger.h"
#include "tests/numbers/other_integer.h"
#include "tests/oracle/operators.h"

namespace {

using SI = ZULTavSingleInteger;
using Number = ZULTaVoNumber;
using V = std::int64_t;  // a value, or one of:
constexpr V kMax = 2147483646, kAny = kMax + 1, kNil = -kMax - 1;
const V kValues[] = {kNil, kAny, -kMax, 1 - kMax, -9, -7, -3, -2, -1,       0,
                     1,    2,    3,     4,        7,  8,  9,  27, kMax - 1, kMax};

/// Where `long` has 32 bits its ends stand for what is beyond them.
long Long(V v) { return static_cast<long>(std::clamp<V>(v, LONG_MIN, LONG_MAX)); }

bool IsProper(V v) { return v != kNil && v != kAny; }

// The operations, read a second time -------------------------------------------------------------

/// The target x after a value was computed.
V Stored(V x, V value) {
  return std::abs(value) <= kMax && (x == kAny || x == value) ? value : kNil;
}

V Checked(V x, bool holds) { return x == kAny || holds ? x : kNil; }

/// The integer a^n, which the inverses take for the limit where it is beyond.
bool IsPower(V r, V a, V n) {
  const double limit = static_cast<double>(kMax);
  const double power = oracle::IntegerPower(static_cast<double>(a), static_cast<double>(n));
  return std::clamp(power, -limit, limit) == static_cast<double>(r);
}

/// The only v of `candidates` that solves, if there is one.
template <class Solves>
std::optional<V> TheOnly(V first, V last, Solves solves) {
  std::optional<V> found;
  for (V v = first; v <= last; ++v) {
    if (!solves(v)) continue;
    if (found) return {};
    found = v;
  }
  return found;
}

V FirstInversePower(V x, V r, V n) {
  if (x != kAny) return IsPower(r, x, n) && x == r ? x : kNil;  // compared with the result: a quirk
  if (n == 1) return r;
  const auto root = TheOnly(-1300, 1300, [&](V v) { return IsPower(r, v, n); });
  return root ? *root : kNil;
}

V SecondInversePower(V x, V r, V a) {
  if (x != kAny) return IsPower(r, a, x) ? x : kNil;
  const auto exponent = TheOnly(-4, 40, [&](V n) { return IsPower(r, a, n); });
  return exponent ? *exponent : kNil;
}

/// Who is narrowed: the receiver, the first or the second argument.
enum Target { kReceiver, kFirst, kSecond };
struct Operation {
  const char* name;
  int arguments;
  Target target;
  int (*slot)(Number& r, Number& a, Number& b);
  /// The narrowed x for a result (or left side) r and arguments a, b, none of them Nil or Any.
  V (*rule)(V x, V r, V a, V b);
};
// clang-format off
#define UNARY(NAME) \
  #NAME, 1, kReceiver, [](Number& r, Number& a, Number&) { return r.NAME(a); }
#define UNARY_INVERSE(NAME) \
  #NAME, 1, kFirst, [](Number& r, Number& a, Number&) { return r.NAME(a); }
#define BINARY(NAME, TARGET) \
  #NAME, 2, TARGET, [](Number& r, Number& a, Number& b) { return r.NAME(a, b); }

const Operation kOperations[] = {
    {UNARY(CalcEqualValue), [](V x, V, V a, V) { return Stored(x, a); }},
    {UNARY_INVERSE(CalcInverseEqualValue), [](V x, V r, V, V) { return Stored(x, r); }},
    {UNARY(CalcLessValue), [](V x, V, V a, V) { return Checked(x, x < a); }},
    {UNARY_INVERSE(CalcInverseLessValue), [](V x, V r, V, V) { return Checked(x, r < x); }},
    {UNARY(CalcLessOrEqualValue), [](V x, V, V a, V) { return Checked(x, x <= a); }},
    {UNARY_INVERSE(CalcInverseLessOrEqualValue), [](V x, V r, V, V) { return Checked(x, r <= x); }},
    {UNARY(CalcNotLessValue), [](V x, V, V a, V) { return Checked(x, x >= a); }},
    {UNARY_INVERSE(CalcInverseNotLessValue), [](V x, V r, V, V) { return Checked(x, r >= x); }},
    {UNARY(CalcNotLessAndUnequalValue), [](V x, V, V a, V) { return Checked(x, x > a); }},
    {UNARY_INVERSE(CalcInverseNotLessAndUnequalValue),
     [](V x, V r, V, V) { return Checked(x, r > x); }},
    {UNARY(CalcNextValue), [](V x, V, V a, V) { return Stored(x, a + 1); }},
    {UNARY_INVERSE(CalcInverseNextValue), [](V x, V r, V, V) { return Stored(x, r - 1); }},
    {UNARY(CalcNegativeValue), [](V x, V, V a, V) { return Stored(x, -a); }},
    {UNARY_INVERSE(CalcInverseNegativeValue), [](V x, V r, V, V) { return Stored(x, -r); }},
    {UNARY(CalcAbsoluteValue), [](V x, V, V a, V) { return Stored(x, a < 0 ? -a : a); }},
    {UNARY_INVERSE(CalcInverseAbsoluteValue),
     [](V x, V r, V, V) { return Checked(x, r >= 0 && (x == r || -x == r)); }},
    {BINARY(CalcMinValue, kReceiver), [](V x, V, V a, V b) { return Stored(x, b < a ? b : a); }},
    {BINARY(CalcFirstInverseMinValue, kFirst),
     [](V x, V r, V, V b) { return b == r ? x : Stored(x, r); }},
    {BINARY(CalcMaxValue, kReceiver), [](V x, V, V a, V b) { return Stored(x, b > a ? b : a); }},
    {BINARY(CalcFirstInverseMaxValue, kFirst),
     [](V x, V r, V, V b) { return b == r ? x : Stored(x, r); }},
    {BINARY(CalcSumValue, kReceiver), [](V x, V, V a, V b) { return Stored(x, a + b); }},
    {BINARY(CalcFirstInverseSumValue, kFirst), [](V x, V r, V, V b) { return Stored(x, r - b); }},
    {BINARY(CalcProdValue, kReceiver), [](V x, V, V a, V b) { return Stored(x, a * b); }},
    {BINARY(CalcFirstInverseProdValue, kFirst),
     [](V x, V r, V, V b) {  // a fixed x: the quotient is compared with the result, a quirk
       if (b == 0) return x;
       return x == kAny ? r / b : r / b == r ? x : kNil;
     }},
    {BINARY(CalcModValue, kReceiver),
     [](V x, V, V a, V b) { return b == 0 ? x : Stored(x, a % b); }},
    {BINARY(CalcFirstInverseModValue, kFirst),
     [](V x, V r, V, V b) { return b == 0 ? x : Checked(x, x % b == r); }},
    {BINARY(CalcSecondInverseModValue, kSecond),
     [](V x, V r, V a, V) {  // Any divides as the number that encodes it, a quirk
       return x == 0 || a % x == r ? x : kNil;
     }},
    {BINARY(CalcPowerValue, kReceiver),
     [](V x, V, V a, V b) {
       const double power = oracle::IntegerPower(static_cast<double>(a), static_cast<double>(b));
       return std::fabs(power) <= static_cast<double>(kMax) ? Stored(x, static_cast<V>(power)) : kNil;
     }},
    {BINARY(CalcFirstInversePowerValue, kFirst),
     [](V x, V r, V, V b) { return FirstInversePower(x, r, b); }},
    {BINARY(CalcSecondInversePowerValue, kSecond),
     [](V x, V r, V a, V) { return SecondInversePower(x, r, a); }},
};
// clang-format on

/// The protocol around the rules: what the states of the values decide before any arithmetic.
V Expected(const Operation& op, const V (&v)[3]) {
  const V x = v[op.target];
  if (x == kNil) return x;
  std::vector<int> order = {0, 1, 2};  // an inverse looks at the result before the other argument
  order.resize(static_cast<std::size_t>(op.arguments) + 1);
  std::erase(order, op.target);
  if (op.target == kReceiver) {
    for (int i : order)
      if (v[i] == kNil) return kNil;
  }
  for (int i : order) {
    if (v[i] == kNil) return kNil;
    if (v[i] == kAny) return x;
  }
  return op.rule(x, v[0], v[1], v[2]);
}
template <class Check>
void ForAllValues(const Operation& op, Check check) {
  for (V r : kValues)
    for (V a : kValues)
      for (V b : kValues)
        if (op.arguments == 2 || b == 0) check({r, a, b});
}
struct Trio {
  explicit Trio(const V (&v)[3]) : values{SI(v[0]), SI(v[1]), SI(v[2])} {}
  std::string Text() const {
    std::ostringstream text;
    text << "r " << values[0] << ", a " << values[1] << ", b " << values[2];
    return text.str();
  }
  SI values[3];
};

class SingleIntegerOperation : public testing::TestWithParam<Operation> {};
TEST_P(SingleIntegerOperation, FollowsProtocolAndRule) {
  const Operation& op = GetParam();
  ForAllValues(op, [&](const V(&v)[3]) {
    const V expected = Expected(op, v);
    Trio trio(v);
    const std::string before = trio.Text();
    const int changed = op.slot(trio.values[0], trio.values[1], trio.values[2]);
    for (int i = 0; i < 3; ++i)
      ASSERT_EQ(trio.values[i].GetValue(), i == op.target ? expected : v[i]) << before;
    ASSERT_EQ(changed, expected != v[op.target]) << before;
    ASSERT_EQ(SDCheckError(), 0) << before;
  });
}
TEST_P(SingleIntegerOperation, IgnoresForeignArguments) {
  const Operation& op = GetParam();
  for (int foreign = 1; foreign <= op.arguments; ++foreign) {
    for (V own : {kAny, kNil, V{3}}) {
      SI r(own), a(own), b(own);
      ZULTavIntervalInteger other(5, 6);
      Number* arguments[] = {&r, &a, &b};
      arguments[foreign] = &other;
      EXPECT_EQ(op.slot(r, *arguments[1], *arguments[2]), 0);
      EXPECT_EQ(r.GetValue(), own);
      EXPECT_EQ(other.GetLowerBound(), 5);
      EXPECT_EQ(other.GetUpperBound(), 6);
    }
  }
}
INSTANTIATE_TEST_SUITE_P(All, SingleIntegerOperation, testing::ValuesIn(kOperations),
                         [](const auto& row) { return std::string(row.param.name); });

// Sets and exact values --------------------------------------------------------------------------
TEST(SingleIntegerTest, SetOperationsOfTwoValues) {
  for (V x : kValues) {
    for (V y : kValues) {
      SCOPED_TRACE(testing::Message() << x << ", " << y);
      const SI other(y);
      const bool both = x != kNil && y != kNil;
      EXPECT_EQ(SI(x).IsIntersected(other), both && (x == y || !IsProper(x) || !IsProper(y)));

      SI met(x), united(x), copy(x);
      const V common = !both ? kNil : y == kAny ? x : Stored(x, y);
      EXPECT_EQ(met.Intersect(static_cast<const ZULTaVoAny&>(other)), common != x);
      EXPECT_EQ(met.GetValue(), common);
      const V hull = y == kNil ? x : x == kNil || x == y ? y : kAny;
      EXPECT_EQ(united.Unite(other), hull != x);
      EXPECT_EQ(united.GetValue(), hull);
      copy.Assign(other);
      EXPECT_EQ(copy.GetValue(), y);

      SI fewer(x);
      EXPECT_EQ(fewer.RemoveExactValue(Long(y)), IsProper(x) && x == y);
      EXPECT_EQ(fewer.GetValue(), IsProper(x) && x == y ? kNil : x);
    }
    SI split(x), rest(7);
    split.Bisect(rest, ZULTaVoAny::kLowerHalf);
    EXPECT_TRUE(split.IsNil());
    EXPECT_EQ(rest.GetValue(), 7);
    EXPECT_EQ(SI(x).GetCardinality(), x == kNil ? 0 : x == kAny ? -1 : 1);
    EXPECT_EQ(SI(x).GetLowerBound(), x == kNil ? kMax : x == kAny ? -kMax : x);
    EXPECT_EQ(SI(x).GetUpperBound(), x == kNil ? -kMax : x == kAny ? kMax : x);
  }
}
TEST(SingleIntegerTest, OtherClasses) {
  const ZULTavIntervalInteger seven(7, 7);
  const ZULTavSingleBoolean no(SubdefBool::kFalse), yes(SubdefBool::kTrue), maybe,
      never(SubdefBool::kNil);
  SI met(7), united(7), copied(7);
  EXPECT_EQ(met.Intersect(seven), 1);
  EXPECT_TRUE(met.IsNil());
  EXPECT_EQ(met.Intersect(seven), 0);
  EXPECT_EQ(united.Unite(seven), 1);
  EXPECT_TRUE(united.IsAny());
  copied.Assign(seven);
  EXPECT_TRUE(copied.IsNil());
  EXPECT_EQ(SI(7).IsIntersected(seven), 1);
  EXPECT_EQ(SI(8).IsIntersected(seven), 0);

  struct {
    V x;
    const ZULTavSingleBoolean& y;
    V narrowed;
    int answer, common;
  } rows[] = {
      {kAny, no,    0,    1, 1},
      {kAny, yes,   1,    1, 1},
      {kAny, maybe, kAny, 0, 1},
      {kAny, never, kNil, 1, 0},
      {0,    no,    0,    0, 1},
      {1,    yes,   1,    0, 1},
      {1,    no,    kNil, 1, 0},
      {2,    yes,   kNil, 1, 0},
      {2,    maybe, 2,    0, 1},
      {2,    never, kNil, 1, 0},
      {kNil, yes,   kNil, 0, 0},
      {kNil, never, kNil, 1, 0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << row.x << " with " << row.y);
    SI x(row.x);
    EXPECT_EQ(x.IsIntersected(row.y), row.common);
    EXPECT_EQ(row.y.IsIntersected(x), row.common);
    EXPECT_EQ(x.Intersect(row.y), row.answer);
    EXPECT_EQ(x.GetValue(), row.narrowed);
  }
}
TEST(SingleIntegerTest, ConstantsNarrowToTheirValue) {
  struct {
    int (SI::*calc)();
    V constant;
  } rows[] = {
      {&SI::CalcMinValue,  -kMax},
      {&SI::CalcMaxValue,  kMax },
      {&SI::CalcZeroValue, 0    },
      {&SI::CalcOneValue,  1    },
  };
  for (const auto& [calc, constant] : rows) {
    for (V x : kValues) {
      SI narrowed(x);
      const V expected = x == kNil ? kNil : Stored(x, constant);
      EXPECT_EQ((narrowed.*calc)(), expected != x);
      EXPECT_EQ(narrowed.GetValue(), expected);
    }
  }
}
TEST(SingleIntegerTest, NeighboursOfExactValues) {
  struct {
    V x, v, next, previous;
  } rows[] = {
      {3,    3,    4,        2       },
      {7,    3,    7,        3       },
      {1,    3,    3,        1       },
      {kNil, 3,    3,        3       },
      {kAny, 3,    4,        2       },
      {kAny, kMax, kMax + 1, kMax - 1},
      {kAny, kAny, kAny + 1, kMax    },
      {kAny, kNil, kNil + 1, kNil    },
  };
  for (const auto& [x, v, next, previous] : rows) {
    SCOPED_TRACE(testing::Message() << v << " on " << x);
    EXPECT_EQ(SI(x).GetNextExactValue(Long(v)), Long(next));
    EXPECT_EQ(SI(x).GetPrevExactValue(Long(v)), Long(previous));
  }
  EXPECT_EQ(SI(kAny).GetPrevExactValue(LONG_MIN), LONG_MIN);
  EXPECT_EQ(SI(3).GetNextExactValue(LONG_MAX), LONG_MAX);
}
TEST(SingleIntegerTest, ValuesBeyondTheRangeAreUnknown) {
  const std::pair<V, V> rows[] = {
      {kMax + 5,   kAny},
      {-kMax - 2,  kAny},
      {4294967301, kAny},
      {INT64_MIN,  kAny},
      {kMax,       kMax},
      {-kMax - 1,  kNil}
  };
  for (const auto& [row, expected] : rows) {
    const long stored = static_cast<long>(row);
    if (stored != row) continue;  // no `long` here
    SCOPED_TRACE(stored);
    SI set, inserted(kNil);
    set.SetExactValue(stored);
    inserted.InsertExactValue(stored);
    EXPECT_EQ(set.GetValue(), expected);
    EXPECT_EQ(inserted.GetValue(), expected);
    EXPECT_EQ(SI(static_cast<const void*>(&stored)).GetValue(), expected);
  }
  EXPECT_TRUE(SI(static_cast<const void*>(nullptr)).IsAny());

  SI overflowed(4);
  SDRaiseError();
  overflowed.CheckValue();
  EXPECT_TRUE(overflowed.IsNil());
  EXPECT_EQ(SDCheckError(), 0);
}

// Sign -------------------------------------------------------------------------------------------

TEST(SingleIntegerTest, SignsMayBeASet) {
  for (long low = -9; low <= 9; ++low)
    for (long high = low; high <= 9; ++high)
      for (V x : {V{-5}, V{0}, V{5}}) {
        SCOPED_TRACE(testing::Message() << x << " with sign " << low << ".." << high);
        const V sign = (x > 0) - (x < 0), expected = low <= sign && sign <= high ? x : kNil;
        SI number(x);
        EXPECT_EQ(number.CalcInverseSignumValue(ZULTavIntervalInteger(low, high)), expected != x);
        EXPECT_EQ(number.GetValue(), expected);
      }
  /// -1 and 1, which no domain of this module can hold without 0.
  class BothSigns final : public OtherInteger {
   public:
    BothSigns() : OtherInteger(-1, 1) {}
    int IsIntersected(const ZULTaVoAny& other) const override {
      return std::abs(static_cast<const SI&>(other).GetValue()) == 1;
    }
  };
  for (V x : {V{-5}, V{0}, V{5}, kAny}) {
    SI number(x);
    EXPECT_EQ(number.CalcInverseSignumValue(BothSigns()), x == 0);
    EXPECT_EQ(number.GetValue(), x == 0 ? kNil : x);
  }

  ZULTavIntervalInteger sign(-1, 1);
  EXPECT_EQ(SI(5).CalcSignumValue(sign), 0);  // a set is not of this class
  EXPECT_EQ(SI(kNil).CalcSignumValue(sign), 1);
  EXPECT_TRUE(sign.IsNil());
}
TEST(SingleIntegerTest, AnErrorIsItsCausesAlone) {
  SI r, a(1), b(1);
  SDRaiseError();
  EXPECT_EQ(r.CalcSumValue(a, b), 1);
  EXPECT_EQ(r.GetValue(), 2);
  SDRaiseError();
  EXPECT_EQ(r.CalcModValue(a, b), 1);  // pending when a remainder begins: its error
  EXPECT_TRUE(r.IsNil());
  EXPECT_EQ(SDCheckError(), 0);
}

}  // namespace
