// Models whose numbers reach beyond what types, doubles or 64 bits hold: what
// lies between the variables is mathematics, without limits and tolerances.
//
// ZULTAV_CASES=100000 ZULTAV_SEED=5 search_test --gtest_filter='LargeNumbers*'
// runs longer.

#include <gmpxx.h>

#include <array>
#include <functional>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "tests/intervals/mpfr_oracle.h"
#include "tests/search/search_world.h"

namespace {

using Outcome = ZULTavSearch::Outcome;

// --- Known answers -------------------------------------------------------------------------------

struct Row {
  std::string name, model;
  /// All solutions, or the first ones where `first` is not 0; a real's box
  /// holds its value.
  Solutions solutions;
  std::uint64_t first = 0, nodes = 1000;

  friend void PrintTo(const Row& row, std::ostream* out) { *out << row.model; }
};

class LargeNumbersTest : public testing::TestWithParam<Row> {};

bool Holds(const ZULTaVoAny& value, double wanted) {
  const auto* real = ZULTaVoCast<ZULTaVoReal>(&value);
  if (real == nullptr) return ValueOf(value) == wanted;
  const double slack = 1e-14 * std::fabs(wanted);  // what is wanted is rounded itself
  return real->GetLowerBound() <= wanted + slack && wanted - slack <= real->GetUpperBound();
}

/// Where numbers are beyond all doubles, nothing can be proven.
bool IsEndless(const ZULTaVoAny& value) {
  const auto* real = ZULTaVoCast<ZULTaVoReal>(&value);
  return real != nullptr && (real->GetLowerBound() <= -1e19 || real->GetUpperBound() >= 1e19);
}

TEST_P(LargeNumbersTest, HasTheseProvenSolutions) {
  const Row& row = GetParam();
  TextModel read(row.model);
  ASSERT_NE(read.model, nullptr) << read.error;
  ZULTavSearch::Options options;
  options.limits.solutions = row.first != 0 ? row.first : ZULTavSearch::kUnlimited;
  options.limits.nodes = row.nodes;
  options.restartAfter = row.first != 0 ? 100 : 0;
  ZULTavSearch search(read.model->Network(), read.declared, options);
  std::size_t found = 0;
  const Outcome outcome = search.Run([&](const ZULTavSolution& solution) {
    bool isEndless = false;
    for (std::size_t i = 0; i < solution.GetSize(); ++i) {
      const ZULTaVoAny& value = solution.GetValue(i);
      isEndless = isEndless || IsEndless(value);
      if (!solution.IsProven() || found >= row.solutions.size()) continue;
      EXPECT_TRUE(Holds(value, row.solutions[found][i])) << found << ' ' << i;
    }
    EXPECT_TRUE(solution.IsProven() || isEndless);
    found += solution.IsProven();
    return true;
  });
  EXPECT_TRUE(outcome == (row.first != 0 ? Outcome::kSolutionLimit : Outcome::kExhausted));
  EXPECT_EQ(found, row.solutions.size());
}

INSTANTIATE_TEST_SUITE_P(
    KnownAnswers, LargeNumbersTest,
    testing::Values(
        Row{
            "Squares", "x, y : int = [65536, 65537]; x*x < y*y;", {{65536, 65537}}
},
        Row{"EqualSquares", "x, y : int = [65536, 65537]; x*x = y*y; x < y;", {}},
        Row{"NextToItself", "x : int; x + 1 = x;", {}},
        Row{"Automorphic", "n : int = [10000, 99999]; n^2 mod 100000 = n;", {{90625}}, 0, 200000},
        Row{"Triangle",
            "a, b, c : int; a^2 + b^2 = c^2; a + b + c = 1000; a < b; a > 0;",
            {{200, 375, 425}},
            1,
            100000},
        Row{"Exponentials", "x, y : real; x = 50; y = 60; exp(x) < exp(y);", {{50, 60}}},
        Row{"RealPower", "x : int = 500; y : real; y = x^4; y < 1e10;", {}},
        Row{"NoPrime", "x : int = 100000000; PrimeNumber(x);", {}},
        Row{"LastPrime", "x : int = [2147483588, 2147483646]; PrimeNumber(x);", {{2147483629}}},
        Row{"FactorsThatAddUpBeyond64Bits",
            "i : int = [-3, -2]; i * -9223372036854775807 > i;",
            {{-3}, {-2}}},
        Row{"ComparedBeyond64Bits",
            "z : int = 107; p : bool; p == (z >> -9223372036854775807);",
            {{107, 1}}},
        Row{"BelowAll64Bits", "z : int = [1, 3]; z < -9223372036854775807 - 1;", {}},
        Row{"StrictBelow", "x : real = [0, 1e-8]; x < 1e-8;", {{0}}},
        Row{"StrictlyAround", "x, y, z : real; x < y; y < z; z < x;", {}, 0, 1},
        Row{"GeostationaryRadius",
            "r : real; r^3 = 3.986e14 * (86164 / (2 * Pi()))^2;",
            {{42164124.522181746}}},
        Row{"HyperbolicKepler",
            "H : real; 1.5 * (exp(H) - exp(-H)) / 2 - H = 10;",
            {{2.8439472024166403}}},
        Row{"Pigeons", "p[1..10] : int = [1, 9]; alldifferent(p);", {}, 0, 1}),
    [](const auto& row) { return row.param.name; });

// --- Random models over integers -----------------------------------------------------------------

using Integer = mpz_class;
using Maybe = std::optional<Integer>;

/// A form of expression. `signature`: the result, then the operands.
///   n number; b truth; d number that is not 0; e exponent
struct Form {
  const char* text;  // $0 and $1 stand for the operands
  const char* signature;
  Maybe (*value)(const Integer& l, const Integer& r);
};
#define VALUE(E) \
  [](const Integer& l, [[maybe_unused]] const Integer& r) -> Maybe { return Integer(E); }
// clang-format off
const Form kForms[] = {
    {"($0 + $1)",    "nnn", VALUE(l + r)},
    {"($0 - $1)",    "nnn", VALUE(l - r)},
    {"($0 * $1)",    "nnn", VALUE(l * r)},
    {"($0 * $0)",    "nn",  VALUE(l * l)},
    {"($0 * $0 - $0)", "nn", VALUE(l * l - l)},
    {"min($0, $1)",  "nnn", VALUE(l < r ? l : r)},
    {"max($0, $1)",  "nnn", VALUE(l < r ? r : l)},
    {"(-$0)",        "nn",  VALUE(-l)},
    {"abs($0)",      "nn",  VALUE(abs(l))},
    {"($0 mod $1)",  "nnd", VALUE(l % r)},
    {"($0 / $1)",    "nnd", [](const Integer& l, const Integer& r) -> Maybe {
       return l % r == 0 ? Maybe(l / r) : Maybe();
     }},
    {"($0 ^ $1)",    "nne", [](const Integer& l, const Integer& r) -> Maybe {
       Integer power;
       mpz_pow_ui(power.get_mpz_t(), l.get_mpz_t(), r.get_ui());
       return power;
     }},
    {"($0 == $1)",   "bnn", VALUE(l == r)},
    {"($0 <<>> $1)", "bnn", VALUE(l != r)},
    {"($0 << $1)",   "bnn", VALUE(l < r)},
    {"($0 <== $1)",  "bnn", VALUE(l <= r)},
    {"($0 >> $1)",   "bnn", VALUE(l > r)},
    {"($0 && $1)",   "bbb", VALUE(l != 0 && r != 0)},
    {"($0 || $1)",   "bbb", VALUE(l != 0 || r != 0)},
    {"($0 -> $1)",   "bbb", VALUE(l == 0 || r != 0)},
    {"(~$0)",        "bb",  VALUE(l == 0)},
};
const Form kStatements[] = {
    {"$0 = $1",      "bnn", VALUE(l == r)},
    {"$0 <> $1",     "bnn", VALUE(l != r)},
    {"$0 < $1",      "bnn", VALUE(l < r)},
    {"$0 <= $1",     "bnn", VALUE(l <= r)},
    {"$0 > $1",      "bnn", VALUE(l > r)},
    {"$0",           "bb",  VALUE(l)},
};
// clang-format on
#undef VALUE

constexpr std::size_t kVariables = 5,
                      kTruth = 4;  // four integers x0 to x3 and a truth p
using Point = std::array<Integer, kVariables>;

struct Expression {
  const Form* form = nullptr;  // null of a leaf
  std::vector<Expression> operands;
  std::string text = {};
  std::optional<std::size_t> place = {};  // of a variable
  Integer literal = {};

  Maybe Value(const Point& at) const {
    if (form == nullptr) return place ? at[*place] : literal;
    const Maybe l = operands[0].Value(at);
    const Maybe r = operands.size() < 2 ? l : operands[1].Value(at);
    return l && r ? form->value(*l, *r) : Maybe();
  }
  bool IsConstant() const {
    return form == nullptr ? !place
                           : std::all_of(operands.begin(), operands.end(),
                                         [](const Expression& each) { return each.IsConstant(); });
  }
  std::string Text() const {
    if (form == nullptr) return text;
    std::string out;
    for (const char* c = form->text; *c != 0; ++c)
      out += *c == '$' ? operands[static_cast<std::size_t>(*++c - '0')].Text() : std::string(1, *c);
    return out;
  }
};

/// A source of random choices.
class Dice {
 public:
  explicit Dice(std::uint64_t seed) : mRandom(seed) {}

 protected:
  long Draw(long below) { return static_cast<long>(mRandom() % static_cast<std::uint64_t>(below)); }
  template <class T, std::size_t kSize>
  const T& Pick(const T (&from)[kSize]) {
    return from[mRandom() % kSize];
  }

 private:
  std::mt19937_64 mRandom;
};

class RandomModel : private Dice {
 public:
  explicit RandomModel(std::uint64_t seed)
      : Dice(seed), mCount(2 + static_cast<std::size_t>(Draw(3))) {
    const long width = mCount == 2 ? 12 : mCount == 3 ? 8 : 4;
    for (std::size_t i = 0; i < mCount; ++i) {
      auto& [low, high] = mDomains[i];
      low = i > 0 && Draw(2) == 0 ? mDomains[i - 1][0] : Offset();
      high = low > kMax - width ? kMax : low + 1 + Draw(width - 1);
      mSomewhere[i] = low + Draw(high - low + 1);
    }
    mSomewhere[kTruth] = Draw(2);
    for (long i = 1 + Draw(3); i > 0; --i) mStatements.push_back(Statement());
  }
  std::string Text() const {
    std::string text = "p : bool;\n";
    for (std::size_t i = mCount; i-- > 0;)
      text = "x" + std::to_string(i) + " : int = [" + std::to_string(mDomains[i][0]) + ", " +
             std::to_string(mDomains[i][1]) + "];\n" + text;
    for (const Expression& statement : mStatements) text += statement.Text() + ";\n";
    return text;
  }
  Solutions BruteForce() const {
    Solutions solutions;
    Point at;
    Enumerate(0, at, solutions);
    return solutions;
  }

 private:
  static constexpr long kMax = 2147483646;
  static inline const Integer kGreatestLiteral = (Integer(1) << 63) - 1;

  /// The least value of a domain: where squares, cubes and products leave what
  /// holds them, at the limits, anywhere, near zero.
  long Offset() {
    constexpr long kEdges[] = {1290, 46340, 65536, 2097151, 94906265, 1000000000, kMax};
    const long sign = Draw(2) == 0 ? 1 : -1, kind = Draw(3);
    return kind == 0   ? Draw(12) - 6
           : kind == 1 ? std::max(sign * (Pick(kEdges) - Draw(12)), -kMax)
                       : sign * Draw(kMax);
  }

  void Enumerate(std::size_t place, Point& at, Solutions& solutions) const {
    if (place < mCount) {
      for (long value = mDomains[place][0]; value <= mDomains[place][1]; ++value) {
        at[place] = value;
        Enumerate(place + 1, at, solutions);
      }
      return;
    }
    for (const int truth : {0, 1}) {
      at[kTruth] = truth;
      bool holds = true;
      for (const Expression& statement : mStatements) {
        const Maybe value = statement.Value(at);
        holds = holds && value && *value != 0;
      }
      if (!holds) continue;
      solutions.emplace_back();
      for (std::size_t i = 0; i < mCount; ++i) solutions.back().push_back(at[i].get_d());
      solutions.back().push_back(truth);
    }
  }

  /// Half of the numeric ones are made to hold somewhere.
  Expression Statement() {
    const Form& form = Pick(kStatements);
    Expression made{&form, {Make(form.signature[1], 3)}};
    if (form.signature[2] == 0) return made;
    const Maybe value = made.operands[0].Value(mSomewhere);
    made.operands.push_back(value && abs(*value) <= kGreatestLiteral && Draw(2) == 0
                                ? Literal(*value)
                                : Make(form.signature[2], 2));
    return made;
  }
  Expression Make(char wanted, int depth) {
    if (wanted == 'e') return Literal(Integer(Draw(4)));
    if (wanted == 'd') {
      constexpr long kDivisors[] = {2, 3, 7, 10, 1000, 65537, 99991, 1000000007, kMax};
      return Literal(Integer(Pick(kDivisors) * (Draw(4) == 0 ? -1 : 1)));
    }
    for (int attempt = 0; depth > 0 && Draw(4) != 0 && attempt < 50; ++attempt) {
      const Form& form = Pick(kForms);
      if (form.signature[0] != wanted) continue;
      Expression made{&form, {}};
      for (const char* operand = form.signature + 1; *operand != 0; ++operand)
        made.operands.push_back(Make(*operand, depth - 1));
      if (!made.IsConstant()) return made;  // constants end at 64 bits
    }
    if (wanted == 'b') return {nullptr, {}, "p", kTruth};
    if (Draw(5) == 0) return Literal(Integer(Offset()));
    const auto place = static_cast<std::size_t>(Draw(static_cast<long>(mCount)));
    return {nullptr, {}, "x" + std::to_string(place), place};
  }
  static Expression Literal(const Integer& value) {
    const std::string digits = value.get_str();
    return {nullptr, {}, value < 0 ? "(" + digits + ")" : digits, {}, value};
  }

  std::size_t mCount;
  std::array<std::array<long, 2>, kVariables> mDomains = {};
  Point mSomewhere;
  std::vector<Expression> mStatements;
};

TEST(LargeNumbersTest, HaveTheSolutionsOfBruteForceWithBigIntegers) {
  std::size_t solutions = 0;
  const std::uint64_t count = TrySeeds(4000, [&](std::uint64_t seed) {
    const RandomModel model(seed);
    const Solutions expected = model.BruteForce();
    solutions += expected.size();
    return WrongSolutions(model.Text(), seed, expected);
  });
  EXPECT_GT(solutions, count * 10);
}

// --- Random comparisons of reals -----------------------------------------------------------------

/// A positive number that is computed from positive variables: nothing cancels
/// out, so that its enclosure is narrow unless what it is computed from leaves
/// the doubles.
struct Magnitude {
  std::string text;
  Mpfr value;
  bool isDouble = true;
};

class RandomComparison : private Dice {
 public:
  explicit RandomComparison(std::uint64_t seed) : Dice(seed) {
    for (std::size_t i = 0; i < 2; ++i) {
      const long digits = 1 + Draw(9999), exponent = Draw(13);
      mValues[i] = static_cast<double>(digits) * std::pow(10.0, static_cast<double>(exponent));
      mText += "x" + std::to_string(i) + " : real = " + std::to_string(digits) + "e" +
               std::to_string(exponent) + ";\n";
    }
    const Magnitude l = Make(3), r = Make(3);
    const int order = mpfr_cmp(l.value, r.value);
    const bool negated = Draw(3) == 0;
    static constexpr std::array kSigns = {"<", "<=", ">", ">=", "<>"};
    const long sign = Draw(5);
    mText += negated ? "-" + l.text + " " + kSigns[static_cast<std::size_t>(sign)] + " -" + r.text
                     : l.text + " " + kSigns[static_cast<std::size_t>(sign)] + " " + r.text;
    mText += ";\n";
    mHolds = sign == 4 ? order != 0 : (order < 0) == ((sign < 2) != negated);
    Mpfr ratio;
    mpfr_div(ratio, l.value, r.value, MPFR_RNDN);
    const double difference = std::fabs(mpfr_get_d(ratio, MPFR_RNDN) - 1);
    mIsClose = !(difference >= 1e-9);
    mIsDouble = l.isDouble && r.isDouble;
  }

  /// What is wrong with what the search says.
  std::string Wrong() const {
    if (mIsClose) return {};
    TextModel read(mText);
    if (read.model == nullptr) return read.error + '\n' + mText;
    ZULTavSearch::Options options;
    ZULTavSearch search(read.model->Network(), read.declared, options);
    bool proven = false;
    search.Run([&](const ZULTavSolution& solution) { return proven = solution.IsProven(), true; });
    const bool found = search.GetStatistics().solutions != 0;
    if (mHolds && !found) return "lost\n" + mText;
    if (!mHolds && proven) return "false but proven\n" + mText;
    if (mIsDouble && (mHolds ? !proven : found)) return "undecided\n" + mText;
    return {};
  }

 private:
  Magnitude Literal() {
    const long number = 1 + Draw(1000000);
    return {std::to_string(number) + ".0", static_cast<double>(number)};
  }
  Magnitude Make(int depth) {
    if (depth == 0 || Draw(4) == 0) {
      const long place = Draw(2);
      return {"x" + std::to_string(place), mValues[static_cast<std::size_t>(place)]};
    }
    Magnitude made, x = Make(depth - 1);
    switch (Draw(6)) {
      case 0: {
        const Magnitude y = Draw(3) == 0 ? Literal() : Make(depth - 1);
        x.isDouble = x.isDouble && y.isDouble;
        mpfr_add(made.value, x.value, y.value, MPFR_RNDN);
        made.text = "(" + x.text + " + " + y.text + ")";
        break;
      }
      case 1: {
        const Magnitude y = Draw(3) == 0 ? Literal() : Make(depth - 1);
        x.isDouble = x.isDouble && y.isDouble;
        mpfr_mul(made.value, x.value, y.value, MPFR_RNDN);
        made.text = "(" + x.text + " * " + y.text + ")";
        break;
      }
      case 2: {
        const long n = 2 + Draw(5);
        mpfr_pow_si(made.value, x.value, n, MPFR_RNDN);
        made.text = "(" + x.text + " ^ " + std::to_string(n) + ")";
        break;
      }
      case 3:
        mpfr_sqrt(made.value, x.value, MPFR_RNDN);
        made.text = "sqrt(" + x.text + ")";
        break;
      case 4:
        mpfr_ui_div(made.value, 1, x.value, MPFR_RNDN);
        made.text = "(1.0 / " + x.text + ")";
        break;
      default:
        mpfr_exp(made.value, x.value, MPFR_RNDN);
        made.text = "exp(" + x.text + ")";
    }
    made.isDouble =
        x.isDouble && mpfr_cmp_d(made.value, 1e300) < 0 && mpfr_cmp_d(made.value, 1e-300) > 0;
    return made;
  }

  std::array<double, 2> mValues = {};
  std::string mText;
  bool mHolds = false, mIsClose = false, mIsDouble = false;
};

TEST(LargeNumbersTest, ComparisonsOfRealsAreDecided) {
  TrySeeds(3000, [](std::uint64_t seed) { return RandomComparison(seed).Wrong(); });
}

}  // namespace
