// The printed form of values.

#include <gtest/gtest.h>

#include <iomanip>
#include <memory>
#include <sstream>
#include <string>

#include "numbers/ZULTavNumbers.h"
#include "tests/numbers/comma_locale.h"

namespace {

std::string Real(double value, double precision) {
  std::ostringstream out;
  ZULTavSingleReal::PrintReal(out, value, precision);
  return out.str();
}

struct RealRow {
  double value;
  double precision;
  const char* text;
};

// clang-format off
const RealRow kReals[] = {
      {3.14159265, 1e-6, "3.141593"}, {0.5, 1e-6, "0.5"}, {1234.5678, 1e-6, "1234.5678"},
      {1234.56789012, 1e-6, "1234.56789"}, {3.0, 1e-6, "3.0"}, {-7.0, 1e-6, "-7.0"},
      {1.0, 1e-6, "1.0"}, {0.1234567891, 1e-6, "0.1234568"}, {-0.1234567891, 1e-6, "-0.1234568"},
      {0.0000004, 1e-6, "0.0"}, {-0.0000004, 1e-6, "0.0"}, {0.0000006, 1e-6, "6e-7"},
      {1.5e-5, 1e-6, "1.5e-5"}, {999999.5, 1e-6, "999999.5"}, {1000000.0, 1e-6, "1.0000000e6"},
      {2000000.0, 1e-6, "2.0000000e6"}, {-2.5e10, 1e-6, "-2.5000000e10"},
      {1.23456789e18, 1e-6, "1.2345679e18"}, {0.1234567891234, 1e-9, "0.1234567891"},
      {3.14159265, 1e-3, "3.142"}, {2000.0, 1e-3, "2.0000e3"}, {0.1, 1e-15, "0.1"},
      {1.0 / 3.0, 1e-15, "0.333333333333333"}, {1.5, 1.0, "1.5e"}, {0.7, 1.0, "0.7"},
      {9.9, 10.0, "9.9e"}, {1e19, 1e-6, " Max"}, {1e21, 1e-6, " Max"}, {-1e19, 1e-6, " Min"},
      {2147483646.0, 1e-6, "intMax"}, {-2147483646.0, 1e-6, "intMin"},
      {2147483645.0, 1e-6, "2.1474836e9"}};
// clang-format on

TEST(ValueWriterTest, Reals) {
  for (const auto& [value, precision, text] : kReals)
    EXPECT_EQ(Real(value, precision), text) << value << " to " << precision;
}

TEST(ValueWriterTest, RealsKeepThePointInALocaleWithAComma) {
  const CommaLocale locale;
  for (const auto& [value, precision, text] : kReals)
    EXPECT_EQ(Real(value, precision), text) << value << " to " << precision;
}

TEST(ValueWriterTest, RealsIgnoreTheFlagsOfTheStream) {
  std::ostringstream out;
  out << std::fixed << std::showpos << std::setprecision(2);
  ZULTavSingleReal::PrintReal(out, 1234.5678, 1e-6);
  EXPECT_EQ(out.str(), "1234.5678");
  EXPECT_EQ(out.precision(), 2);
}

using Domain = std::unique_ptr<ZULTaVoObject>;
template <class C, class... Arguments>
Domain Make(Arguments... arguments) {
  return std::make_unique<C>(arguments...);
}
template <class C>
Domain Nil() {
  auto domain = std::make_unique<C>();
  domain->SetNil();
  return domain;
}

TEST(ValueWriterTest, Domains) {
  using SI = ZULTavSingleInteger;
  using SB = ZULTavSingleBoolean;
  using II = ZULTavIntervalInteger;
  using SR = ZULTavSingleReal;
  using IR = ZULTavIntervalReal;
  constexpr long kMax = 2147483646;
  const struct {
    Domain domain;
    // clang-format off
    const char* text;
  } rows[] = {
      {Make<SI>(5), "5"}, {Make<SI>(-2147483645), "-2147483645"}, {Make<SI>(kMax), " Max"},
      {Make<SI>(-kMax), " Min"}, {Make<SI>(), "Any"}, {Nil<SI>(), "Nil"},
      {Make<SB>(SubdefBool::kFalse), "False"}, {Make<SB>(SubdefBool::kTrue), "True"},
      {Make<SB>(), "Any"}, {Nil<SB>(), "Nil"},
      {Make<SB>(static_cast<SubdefBool::Code>(7)), "Incorrect value"},
      {Make<SB>(static_cast<SubdefBool::Code>(-1)), "Incorrect value"},
      {Make<II>(-3L, kMax), "[-3, Max]"}, {Make<II>(-kMax, 4L), "[ Min,4]"},
      {Make<II>(5L, 5L), "[5,5]"}, {Make<II>(), "Any"}, {Nil<II>(), "Nil"},
      {Make<II>(SubdefInt(5, 3)), "Nil"}, {Make<SR>(0.25), "0.25"}, {Make<SR>(), "Any"},
      {Nil<SR>(), "Nil"}, {Make<IR>(0.5, 2e6), "[0.5,2.0000000e6]"},
      {Make<IR>(-1e19, 0.0), "[ Min,0.0]"}, {Make<IR>(2.5, 2.5), "2.5"}, {Make<IR>(),"Any"},
      {Nil<IR>(), "Nil"}, {Make<ZULTavAngle>(), "[0.0,6.283185]"},
      {Make<ZULTavPositive>(), "[0.0, Max]"}};
  // clang-format on
  for (const auto& row : rows) {
    std::ostringstream out;
    row.domain->PrintOn(out);
    EXPECT_EQ(out.str(), row.text);
  }
}

}  // namespace
