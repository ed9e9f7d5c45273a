#include <gtest/gtest.h>

#include "framework/intervals/IntervalControl.h"
#include "framework/intervals/SubdefBool.h"

namespace {

bool Has(SubdefBool set, int value) { return set.code == value || set == SubdefBool::kAny; }

TEST(SubdefBoolTest, ConnectivesAndIntersectionMatchTheTruthTables) {
  SDErrorScope scope;
  for (int code = 0; code < 16; ++code) {
    const SubdefBool x(code / 4), y(code % 4);
    for (int value : {0, 1}) {
      bool both = false, either = false;
      for (int pair = 0; pair < 4; ++pair) {
        const int a = pair / 2, b = pair % 2;
        if (!Has(x, a) || !Has(y, b)) continue;
        both = both || (a & b) == value;
        either = either || (a | b) == value;
      }
      EXPECT_EQ(Has(And(x, y), value), both) << code;
      EXPECT_EQ(Has(Or(x, y), value), either) << code;
      EXPECT_EQ(Has(Not(x), value), Has(x, 1 - value)) << code;
      SubdefBool set = x;
      const int changed = set.SDIntersect(y);
      EXPECT_EQ(changed, set == x ? 0 : 1) << code;
      EXPECT_EQ(Has(set, value), Has(x, value) && Has(y, value)) << code;
      EXPECT_EQ(SDCheckError() != 0, set == SubdefBool::kNil) << code;
      SDClearError();
    }
  }
}

}  // namespace
