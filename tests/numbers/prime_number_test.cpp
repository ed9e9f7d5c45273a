#include <gtest/gtest.h>

#include <climits>
#include <random>
#include <sstream>
#include <string>

#include "framework/solver/ZULTavAbstractTypes.h"
#include "numbers/ZULTavIntervalInteger.h"
#include "numbers/ZULTavPrimeNumber.h"
#include "numbers/ZULTavSingleBoolean.h"
#include "numbers/ZULTavSingleInteger.h"
#include "numbers/detail/PrimeSearch.h"
#include "tests/number_module.h"
#include "tests/oracle/operators.h"

using namespace zultav::detail;

namespace {

using II = ZULTavIntervalInteger;
using SI = ZULTavSingleInteger;
using SB = ZULTavSingleBoolean;

bool IsTrulyPrime(long n) { return oracle::IsPrime(static_cast<double>(n)); }

TEST(PrimeSearchTest, FindsTheIndexOfThePrimeBelow) {
  unsigned int index = 1001;
  for (unsigned int n = 0; n <= 7919; ++n) {
    if (IsTrulyPrime(n)) index = n == 2 ? 0 : index + 1;
    ASSERT_EQ(FindLowerBound(n), index) << n;
  }
  EXPECT_EQ(index, 999U);
  EXPECT_EQ(FindLowerBound(7920), 999U);
  EXPECT_EQ(FindLowerBound(UINT_MAX), 999U);
}

TEST(PrimeSearchTest, AgreesWithTrialDivision) {
  std::mt19937 random(20240611);
  std::uniform_int_distribution<unsigned int> inReach(7920, 62700000);
  for (unsigned int i = 0; i < 30000; ++i) {
    const unsigned int n = i < 20000 ? i : inReach(random);
    ASSERT_EQ(IsPrime(n, 1), IsTrulyPrime(n)) << n;
    ASSERT_EQ(IsPrime(n, 0), !IsTrulyPrime(n)) << n;
  }
}

TEST(PrimeSearchTest, LimitsOfTheTest) {
  struct {
    unsigned int n;
    int prime, other;
  } rows[] = {
      {7919,        1, 0},
      {7920,        0, 1},
      {7921,        0, 1}, // 89^2
      {62615569,    0, 1}, // 41^2 * 193^2
      {16801801,    1, 0}, // 4099^2, whose root is one too small in single precision
      {62710561,    1, 0}, // 7919^2, likewise
      {62726398,    1, 1}, // from here on nothing is checked
      {62726400,    1, 1},
      {2147483646u, 1, 1},
      {2147483650u, 1, 1}, // a negative number
      {UINT_MAX,    1, 1}
  };
  for (const auto& [n, prime, other] : rows) {
    EXPECT_EQ(IsPrime(n, 1), prime) << n;
    EXPECT_EQ(IsPrime(n, 0), other) << n;
  }
}

TEST(PrimeSearchTest, NarrowsAnIntervalToTheNearestHits) {
  for (int want : {0, 1}) {
    for (long low = -3; low <= 40; ++low) {
      for (long high = low; high <= 40; ++high) {
        SCOPED_TRACE(testing::Message() << low << ".." << high << ", want " << want);
        long first = want ? std::max(low, 2L) : low, last = high;
        const auto passes = [&](long v) { return v < 0 || IsTrulyPrime(v) == (want != 0); };
        while (last >= first && !passes(last)) --last;
        while (first < last && !passes(first)) ++first;
        II x(low, high);
        EXPECT_EQ(CalcInteger(&x, want), first != low || last != high);
        EXPECT_EQ(x.GetSubdef(), IntegerInterval(first, last));
      }
    }
  }
  EXPECT_EQ(CalcInteger(nullptr, 1), 0);
}

TEST(PrimeSearchTest, SingleValuesHoldNoTwoBounds) {
  const long any = SI::sNC_INT_ANY, nil = SI::sNC_INT_NIL;
  struct {
    long x;
    int want, answer;
    long narrowed;
  } rows[] = {
      {5,   1, 0, 5  },
      {4,   1, 1, nil},
      {4,   0, 0, 4  },
      {7,   0, 1, nil},
      {0,   1, 1, nil},
      {-5,  0, 0, -5 },
      {any, 1, 0, any},
      {any, 0, 0, any}
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << row.x << ", want " << row.want);
    SI x(row.x);
    EXPECT_EQ(CalcInteger(&x, row.want), row.answer);
    EXPECT_EQ(x.GetValue(), row.narrowed);
  }
}

// The constraint ---------------------------------------------------------------------------------

template <class C>
C Input(const char* text) {
  std::istringstream in(text);
  C value;
  value.InputValue(in);
  return value;
}

std::string Print(const ZULTaVoObject& value) {
  std::ostringstream out;
  out << value;
  return out.str();
}

TEST(PrimeNumberTest, FilterTable) {
  constexpr unsigned kBConstant = 1, kXConstant = 2;
  struct {
    const char *x, *b;
    unsigned constants;
    int status;
    bool passive;
    const char *newX, *newB;
  } rows[] = {
      {"[0,10]",  "True",  0,                       0, true,  "[2,7]",   "True" },
      {"[0,10]",  "False", 0,                       0, true,  "[0,10]",  "False"},
      {"[2,10]",  "False", 0,                       0, true,  "[4,10]",  "False"},
      {"[0,10]",  "Any",   0,                       0, true,  "[0,10]",  "Any"  },
      {"[24,28]", "True",  0,                       1, false, "Nil",     "True" },
      {"[0,1]",   "Any",   0,                       0, true,  "[0,1]",   "False"},
      {"[0,1]",   "True",  0,                       1, false, "Nil",     "True" },
      {"[0,1]",   "True",  kXConstant,              1, false, "[0,1]",   "Nil"  },
      {"[24,28]", "True",  kXConstant,              0, true,  "[24,28]", "True" },
      {"[0,1]",   "Any",   kBConstant,              0, true,  "[0,1]",   "Any"  },
      {"[0,1]",   "True",  kXConstant | kBConstant, 0, true,  "[0,1]",   "True" },
      {"[0,10]",  "True",  kBConstant,              0, true,  "[2,7]",   "True" },
      {"Nil",     "True",  0,                       1, true,  "Nil",     "True" },
      {"[0,10]",  "Nil",   0,                       1, true,  "[0,10]",  "Nil"  },
      {"[7,7]",   "Any",   0,                       0, true,  "[7,7]",   "Any"  },
      {"[-4,0]",  "Any",   0,                       0, true,  "[-4,0]",  "False"},
      {"[-5,-3]", "Any",   0,                       0, true,  "[-5,-3]", "Any"  },
      {"[0,2]",   "Any",   0,                       0, true,  "[0,2]",   "Any"  }
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << row.x << ", " << row.b << ", " << row.constants);
    ZULTaVoNetwork network;
    const II x = Input<II>(row.x);
    const SB b = Input<SB>(row.b);
    ZULTaVoObject* arguments[] = {network.AddObject(SB::sDescriptor, &b),
                                  network.AddObject(II::sDescriptor, &x)};
    ZULTavPrimeNumber constraint;
    EXPECT_EQ(constraint.Filter({&network, arguments, 2, row.constants}, 0), row.status);
    EXPECT_EQ(constraint.IsPassive(), row.passive);
    EXPECT_EQ(Print(*arguments[1]), row.newX);
    EXPECT_EQ(Print(*arguments[0]), row.newB);
  }
}

TEST(PrimeNumberTest, IsRegisteredWithItsArgumentsAndPriority) {
  const auto* type = NumberModule().FindConstraint("PrimeNumber");
  ASSERT_NE(type, nullptr);
  EXPECT_EQ(type->GetNumberOfArguments(), 2U);
  EXPECT_EQ(type->GetArgument(0).name, ZULString("Value"));
  EXPECT_EQ(type->GetArgument(1).name, ZULString("Arg"));
  ZULTaVoNetwork network;
  ZULTavPrimeNumber constraint;
  EXPECT_EQ(constraint.Activate(&network), 1);
  EXPECT_EQ(constraint.GetPriority(), 100);
}

}  // namespace
