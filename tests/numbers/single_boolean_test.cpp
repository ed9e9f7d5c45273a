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
