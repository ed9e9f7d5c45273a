// Solutions whose intermediate results are longer than 64 bits.

#include <gtest/gtest.h>

#include <random>

#include "framework/calculator/ZULTavCalculator.h"
#include "framework/engine/ExactCheck.h"
#include "framework/engine/detail/BigInteger.h"
#include "tests/number_module.h"

namespace zultav::engine {
namespace {

TEST(BigInteger, ComputesAsIntegersDo) {
  // (a * b + c) / d and the remainder, put together again and in parts that 64 bits hold.
  std::mt19937_64 random(7);
  const auto draw = [&] { return static_cast<std::int64_t>(random()) >> random() % 64; };
  for (int i = 0; i < 20000; ++i) {
    const std::int64_t a = draw(), b = draw(), c = draw(), d = draw();
    if (d == 0 || d == INT64_MIN) continue;
    const BigInteger big = BigInteger(a) * b * a + c;
    BigInteger quotient, remainder;
    BigInteger::Divide(big, d, quotient, remainder);
    ASSERT_EQ(quotient * d + remainder, big);
    ASSERT_LT(remainder.GetSign() < 0 ? -remainder : remainder, BigInteger(d < 0 ? -d : d));
    ASSERT_TRUE(remainder.GetSign() == 0 || remainder.GetSign() == big.GetSign());
    BigInteger::Divide(c, d, quotient, remainder);
    ASSERT_EQ(quotient, BigInteger(c / d));
    ASSERT_EQ(remainder, BigInteger(c % d));
    ASSERT_EQ(BigInteger(a) < BigInteger(b), a < b);
    ASSERT_EQ(big<big + b, b> 0);
    ASSERT_EQ(big - BigInteger(a) * b * a, BigInteger(c));
    ASSERT_EQ(BigInteger(a >> 1) + (b >> 1), BigInteger((a >> 1) + (b >> 1)));
    ASSERT_EQ(BigInteger(a >> 33) * (b >> 33), BigInteger((a >> 33) * (b >> 33)));
  }
}

/// How many of the pairs x, y of the model are accepted, and how many are left open.
struct Tally {
  int holding = 0, unknown = 0;
  bool operator==(const Tally&) const = default;
};

Tally CheckAll(const std::string& text) {
  std::vector<ZULTavDiagnostic> errors;
  const auto model = ZULTavCalculator({&NumberModule()}).Read(text, "text", {}, errors);
  if (model == nullptr) return {-1, -1};
  std::vector<ZULTaVoAny*> declared;
  for (const auto& variable : model->Variables())
    declared.insert(declared.end(), variable.values.begin(), variable.values.end());
  const Program program(model->Network(), declared);
  const ExactCheck check(program);
  const Slot x = program.GetDeclared()[0], y = program.GetDeclared()[1];
  Engine engine(program, &model->Network());
  Tally tally;
  for (std::int64_t i = engine.GetLower(x); i <= engine.GetUpper(x); ++i)
    for (std::int64_t j = engine.GetLower(y); j <= engine.GetUpper(y); ++j) {
      engine.Push();
      if (engine.Fix(x, i) && engine.Fix(y, j) && engine.Propagate() == Engine::Status::kFixpoint) {
        const ExactCheck::Verdict verdict = check.Check(engine);
        tally.holding += verdict == ExactCheck::Verdict::kHolds;
        tally.unknown += verdict == ExactCheck::Verdict::kUnknown;
      }
      engine.Pop();
    }
  return tally;
}

TEST(ExactCheck, DecidesWhatNoRuleCan) {
  struct Case {
    const char* model;
    Tally tally;
  };
  const std::string pair = "x, y : int = [1000000, 1000004]; ";
  const Case kCases[] = {
      {"x^5 < y^5;",                                    {10, 0}},
      {"x^7 = y^7;",                                    {5, 0} },
      {"x^5 * y^5 - y^5 * x^5 = 0;",                    {25, 0}},
      {"x^4 * x mod 10 = y mod 10;",                    {5, 0} },
      {"~(x^9 >== y^9);",                               {10, 0}},
      {"x^6 <== y^6 && x^6 >== y^6 || x^8 == y^8 + 1;", {5, 0} },
      {"alldifferent(x^6, y^6, (x + 1)^6);",            {16, 0}},
      {"max(x^6, -y^6) = abs(min(-x^6, y^6));",         {25, 0}},
      {"x^5 + y^5 <> 2 * x^5;",                         {20, 0}},
      {"x^(10^9) <> y^(10^9);",                         {0, 25}},
      {"PrimeNumber(10 * x^3 + y);",                    {0, 25}},
  };
  for (const Case& row : kCases) {
    const Tally tally = CheckAll(pair + row.model);
    EXPECT_EQ(tally.holding, row.tally.holding) << row.model;
    EXPECT_EQ(tally.unknown, row.tally.unknown) << row.model;
  }
}

}  // namespace
}  // namespace zultav::engine
