#include <gtest/gtest.h>

#include <bit>
#include <string>

#include "framework/intervals/IntervalControl.h"
#include "numbers/ZULTavSingleBoolean.h"
#include "numbers/ZULTavSingleInteger.h"

namespace {

using SB = ZULTavSingleBoolean;
using Abstract = ZULTaVoBoolean;
using Set = unsigned;  // bit 0: False is possible, bit 1: True is
constexpr Set kBoth = 3;

SB Domain(Set set) {
  constexpr SubdefBool::Code kCodes[] = {SubdefBool::kNil, SubdefBool::kFalse, SubdefBool::kTrue,
                                         SubdefBool::kAny};
  return SB(kCodes[set]);
}

Set SetOf(const SB& x) {
  return x.IsNil() ? 0 : x.IsAny() ? kBoth : x.IsTrue() ? 2U : x.IsFalse() ? 1U : 99U;
}

bool Has(Set set, int value) { return (set >> value & 1) != 0; }

// Every operation keeps of the set that it narrows exactly the values with partners in the others.

struct Operation {
  const char* name;
  int arguments;
  int target;  // 0 the receiver, 1 the first argument
  int (*slot)(Abstract& r, Abstract& a, Abstract& b);
  int (*typed)(SB& r, SB& a, SB& b);
  bool (*relation)(int r, int a, int b);
};

// clang-format off
#define UNARY(NAME, TARGET) \
  #NAME, 1, TARGET, [](Abstract& r, Abstract& a, Abstract&) { return r.NAME(a); }, \
      [](SB& r, SB& a, SB&) { return r.NAME(a); }
#define BINARY(NAME, TARGET) \
  #NAME, 2, TARGET, [](Abstract& r, Abstract& a, Abstract& b) { return r.NAME(a, b); }, \
      [](SB& r, SB& a, SB& b) { return r.NAME(a, b); }
// clang-format on

const Operation kOperations[] = {
    {UNARY(CalcEqualValue,                    0), [](int r, int a, int) { return r == a; }         },
    {UNARY(CalcInverseEqualValue,             1), [](int r, int a, int) { return r == a; }         },
    {UNARY(CalcLessValue,                     0), [](int r, int a, int) { return r < a; }          },
    {UNARY(CalcInverseLessValue,              1), [](int r, int a, int) { return r < a; }          },
    {UNARY(CalcLessOrEqualValue,              0), [](int r, int a, int) { return r <= a; }         },
    {UNARY(CalcInverseLessOrEqualValue,       1), [](int r, int a, int) { return r <= a; }         },
    {UNARY(CalcNotLessValue,                  0), [](int r, int a, int) { return r >= a; }         },
    {UNARY(CalcInverseNotLessValue,           1), [](int r, int a, int) { return r >= a; }         },
    {UNARY(CalcNotLessAndUnequalValue,        0), [](int r, int a, int) { return r > a; }          },
    {UNARY(CalcInverseNotLessAndUnequalValue, 1), [](int r, int a, int) { return r > a; }          },
    {UNARY(CalcNextValue,                     0), [](int r, int a, int) { return r == a + 1; }     },
    {UNARY(CalcInverseNextValue,              1), [](int r, int a, int) { return r == a + 1; }     },
    {UNARY(CalcNegativeValue,                 0), [](int r, int a, int) { return r != a; }         },
    {UNARY(CalcInverseNegativeValue,          1), [](int r, int a, int) { return r != a; }         },
    {BINARY(CalcMinValue,                     0), [](int r, int a, int b) { return r == (a && b); }},
    {BINARY(CalcFirstInverseMinValue,         1), [](int r, int a, int b) { return r == (a && b); }},
    {BINARY(CalcMaxValue,                     0), [](int r, int a, int b) { return r == (a || b); }},
    {BINARY(CalcFirstInverseMaxValue,         1), [](int r, int a, int b) { return r == (a || b); }},
};

class SingleBooleanOperation : public testing::TestWithParam<Operation> {};

TEST_P(SingleBooleanOperation, KeepsTheSolutions) {
  const Operation& op = GetParam();
  for (Set code = 0; code < 64; ++code) {
    const Set sets[3] = {code & 3, code >> 2 & 3, op.arguments == 2 ? code >> 4 : kBoth};
    Set expected = 0;
    for (int v = 0; v < 8; ++v) {
      const int values[3] = {v & 1, v >> 1 & 1, v >> 2};
      if (Has(sets[0], values[0]) && Has(sets[1], values[1]) && Has(sets[2], values[2]) &&
          op.relation(values[0], values[1], values[2]))
        expected |= 1U << values[op.target];
    }
    for (bool typed : {false, true}) {
      SCOPED_TRACE(testing::Message() << (typed ? "typed, sets " : "slot, sets ") << sets[0] << ' '
                                      << sets[1] << ' ' << sets[2]);
      SB domains[3] = {Domain(sets[0]), Domain(sets[1]), Domain(sets[2])};
      const int answer = typed ? op.typed(domains[0], domains[1], domains[2])
                               : op.slot(domains[0], domains[1], domains[2]);
      EXPECT_EQ(answer, expected != sets[op.target]);
      for (int i = 0; i < 3; ++i) EXPECT_EQ(SetOf(domains[i]), i == op.target ? expected : sets[i]);
      EXPECT_EQ(SDCheckError(), 0);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(All, SingleBooleanOperation, testing::ValuesIn(kOperations),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(SingleBooleanTest, NarrowingAndWideningByOneValue) {
  struct {
    const char* name;
    int (*narrow)(SB&);
    Set kept;
  } rows[] = {
      {"SetFalse",             [](SB& x) { return x.SetFalse(); },           1},
      {"SetTrue",              [](SB& x) { return x.SetTrue(); },            2},
      {"CalcMinValue",         [](SB& x) { return x.CalcMinValue(); },       1},
      {"CalcMaxValue",         [](SB& x) { return x.CalcMaxValue(); },       2},
      {"RemoveExactValue(0)",  [](SB& x) { return x.RemoveExactValue(0); },  2},
      {"RemoveExactValue(-7)", [](SB& x) { return x.RemoveExactValue(-7); }, 1}
  };
  for (Set set = 0; set <= kBoth; ++set) {
    for (const auto& row : rows) {
      SCOPED_TRACE(testing::Message() << row.name << " on " << set);
      SB x = Domain(set);
      EXPECT_EQ(row.narrow(x), (set & row.kept) != set);
      EXPECT_EQ(SetOf(x), set & row.kept);
    }
    for (int value : {0, 1, 5}) {
      SB x = Domain(set);
      const Set united = set | (value != 0 ? 2U : 1U);
      EXPECT_EQ(x.InsertExactValue(value), united != set);
      EXPECT_EQ(SetOf(x), united);
      x.SetExactValue(value);
      EXPECT_EQ(SetOf(x), value != 0 ? 2U : 1U);
    }
    EXPECT_EQ(Domain(set).GetCardinality(), std::popcount(set));
  }
}

TEST(SingleBooleanTest, SetOperations) {
  const ZULTavSingleInteger one(1);
  for (Set x = 0; x <= kBoth; ++x) {
    for (Set y = 0; y <= kBoth; ++y) {
      SCOPED_TRACE(testing::Message() << x << " with " << y);
      SB met = Domain(x), united = Domain(x), copy = Domain(x);
      const SB other = Domain(y);
      EXPECT_EQ(met.IsIntersected(other), (x & y) != 0);
      EXPECT_EQ(met.Intersect(static_cast<const ZULTaVoAny&>(other)), (x & y) != x);
      EXPECT_EQ(SetOf(met), x & y);
      EXPECT_EQ(united.Unite(other), (x | y) != x);
      EXPECT_EQ(SetOf(united), x | y);
      copy.Assign(other);
      EXPECT_EQ(SetOf(copy), y);
    }
    SB met = Domain(x), united = Domain(x), copy = Domain(x), compared = Domain(x);
    EXPECT_EQ(met.Intersect(one), x != 0);
    EXPECT_TRUE(met.IsNil());
    EXPECT_EQ(united.Unite(one), x != kBoth);
    EXPECT_TRUE(united.IsAny());
    copy.Assign(one);
    EXPECT_TRUE(copy.IsNil());
    EXPECT_EQ(compared.CalcEqualValue(one), 0);
    EXPECT_EQ(SetOf(compared), x);
  }
}

TEST(SingleBooleanTest, BisectsTheUndecidedOnly) {
  for (Set set = 0; set <= kBoth; ++set) {
    for (int selection = 0; selection <= 4; ++selection) {
      SCOPED_TRACE(testing::Message() << "set " << set << ", selection " << selection);
      SB x = Domain(set), other;
      x.Bisect(other, static_cast<ZULTaVoAny::ValueSelection>(selection));
      const bool splits = set == kBoth && selection < 4;
      const Set here = !splits ? 0 : selection % 2 == 0 ? 2 : 1;
      EXPECT_EQ(SetOf(x), here);
      EXPECT_EQ(SetOf(other), splits ? kBoth - here : 0);
    }
  }
  SB x;
  ZULTavSingleInteger foreign(1);
  x.Bisect(foreign, ZULTaVoAny::kLowerHalf);
  EXPECT_TRUE(x.IsNil());
  EXPECT_EQ(foreign.GetValue(), 1);
}

TEST(SingleBooleanTest, UnknownCodesBecomeAny) {
  for (int code : {-1, 0, 1, 2, 3, 4, 7}) {
    SB x(static_cast<SubdefBool::Code>(code)), built(static_cast<const void*>(&code));
    EXPECT_EQ(x.CheckValue(), 1);
    EXPECT_EQ(x.GetSet().code, code < 0 || code > 3 ? 2 : code);
    EXPECT_EQ(built.GetSet(), x.GetSet());
  }
}

}  // namespace
