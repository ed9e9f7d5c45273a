// Random small models over integers and booleans: all solutions that the search reports are all
// solutions that brute force finds.
//
// ZULTAV_CASES=100000 ZULTAV_SEED=5 search_test --gtest_filter='RandomModels*' runs longer.

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "tests/oracle/operators.h"
#include "tests/search/search_world.h"

namespace {

using oracle::If;
using oracle::kNone;

// --- The language -----------------------------------------------------------------------------

enum Type { kBoolean, kSingle, kIntegers, kReals };
using Value = double (*)(double, double);

/// A form of expression. `signature`: the result, then the operands.
///   b boolean; n number; z integer; i interval integer; r real; d divisor; e exponent; q an array
/// A number has the widest type of its operands. A statement has the result -, and no value where
/// it is false.
struct Form {
  std::string text;  // $0 and $1 stand for the operands
  std::string signature;
  Value value;             // null: whether all are different
  bool overIndex = false;  // value is joined over i = 1, 2, 3
};

const Form kHalf = {"($0 / 2.0)", "ri", [](double x, double) { return x / 2; }};

std::vector<Form> MakeForms() {
  const auto exact = [](const char* name) { return oracle::Get(name).exact; };
  std::vector<Form> forms = {
      kHalf,
      {"(0.25 * $0)", "ri",         [](double x,  double) { return x / 4; }},
      {"min($0, $1)", "nnn",        exact("/\\")},
      {"(sum(i in 1..3) $0)",         "nn",   exact("+"),         true                         },
      {"(product(i in 1..3) $0)",         "nn",   exact("*"),         true},
      {"(min(i in 1..3) $0)",         "nn", exact("/\\"),         true                         },
      {"(max(i in 1..3) $0)",         "nn", exact("\\/"),         true},
      {"(forall(i in 1..3) $0)",         "bb",  exact("&&"),         true                         },
      {"(exists(i in 1..3) $0)",         "bb",  exact("||"),         true},
      {"sum(q)",         "nq",   exact("+"),         true                         },
      {"max(q)",         "nq", exact("\\/"),         true},
      {"alldifferent(q)",         "bq",      nullptr,         true                         },
      {"(alldifferent(i in 1..3) $0)",         "bn",      nullptr,         true},
  };
  for (const auto& [signature, names] : {
           std::pair<std::string, const char*>{"nnn", "+ - * /\\ \\/ = <> < <= > >="},
           {"zid", "/"                           },
           {"zzd", "mod div"                     },
           {"zze", "^ pow"                       },
           {"zzz", "gcd"                         },
           {"nn",  "- abs"                       },
           {"zz",  "sign next prev"              },
           {"rr",  "floor ceil round"            },
           {"bnn", "== <<>> << <== >> >=="       },
           {"bi",  "PrimeNumber"                 },
           {"bbb", "&& || /\\ \\/ -> == <<>>"    },
           {"bb",  "~"                           },
  }) {
    std::istringstream list(names);
    for (std::string name; list >> name;) {
      const unsigned operands = static_cast<unsigned>(signature.size()) - 1;
      const bool isCalled = name == "div" || name == "pow" || name == "gcd";
      forms.push_back({isCalled                     ? name + "($0, $1)"
                       : operands == 2              ? "($0 " + name + " $1)"
                       : name == "-" || name == "~" ? "(" + name + "$0)"
                                                    : name + "($0)",
                       signature, oracle::Get(name, operands).exact});
    }
  }
  return forms;
}

std::vector<Form> MakeStatements() {
  constexpr Value kIsTrue = [](double x, double) { return If(x != 0, 1); };
  std::vector<Form> statements = {
      {"$0",                     "-b",    kIsTrue},
      {                                      "$0",                    "-b", kIsTrue       },
      {                   "for i in 1..3 : $0",                 "-b",                    kIsTrue,        true},
      {              "for i in 1..3 : $0 = $1",  "-nn",     oracle::Get("=").exact,        true},
      {             "for i in 1..3 : $0 <= $1", "-nn",    oracle::Get("<=").exact,        true},
      { "for i in 1..3 where i <> 2 : $0 < $1",  "-nn",     oracle::Get("<").exact,        true},
  };
  for (const std::string name : {"=", "<>", "<", "<=", ">", ">="})
    for (const std::string signature : {"-nn", "-bb"})
      if (signature == "-nn" || name[0] != '>')
        statements.push_back({"$0 " + name + " $1", signature, oracle::Get(name).exact});
  return statements;
}

const std::vector<Form> kForms = MakeForms(), kStatements = MakeStatements();

/// Values of the variables: x y z k, q[1..3], b c, p[1..3]; and of the loop index.
constexpr std::size_t kZ = 2, kQ = 4, kB = 7, kP = 9, kIndex = 12, kVariables = 12;
using Values = std::array<double, kVariables + 1>;
constexpr int kMax = 2147483646;

struct Expression {
  Type type = kIntegers;
  const Form* form = nullptr;
  std::vector<Expression> operands;
  // A leaf:
  std::string text;
  std::size_t place = 0;  // in Values
  enum class Kind { kLiteral, kVariable, kElement, kMirrored } kind = Kind::kLiteral;
  double literal = 0;

  std::size_t PlaceAt(const Values& at) const {
    const auto index = static_cast<std::size_t>(at[kIndex]);
    return kind == Kind::kElement    ? place + index - 1
           : kind == Kind::kMirrored ? place + 3 - index
                                     : place;
  }
  /// NaN where there is none.
  double Value(Values at) const {
    if (form == nullptr) return kind == Kind::kLiteral ? literal : at[PlaceAt(at)];
    if (!form->overIndex) return Bounded(Applied(at));
    std::array<double, 3> terms;
    for (std::size_t i = 0; i < 3; ++i) {
      at[kIndex] = static_cast<double>(i + 1);
      const bool isLeftOut = form->signature[0] == '-' && i == 1 && IsWithoutTwo();
      terms[i] = isLeftOut ? 1 : form->signature[0] == '-' ? Applied(at) : operands[0].Value(at);
    }
    const auto& [first, second, third] = terms;
    if (std::isnan(first + second + third) || form->signature[0] == '-')
      return first + second + third;
    if (form->value == nullptr) return first != second && second != third && first != third;
    return Bounded(form->value(Bounded(form->value(first, second)), third));
  }
  double Applied(const Values& at) const {
    const double x = operands[0].Value(at);
    const double y = operands.size() < 2 ? 0 : operands[1].Value(at);
    if (form->signature == "bi" && x > 1e6) sOverflow = true;  // primes end there
    return std::isnan(x + y) ? kNone : form->value(x, y);
  }
  bool IsWithoutTwo() const { return form->text.find("where") != std::string::npos; }
  static double Bounded(double x) {
    if (std::fabs(x) >= kMax) sOverflow = true;
    return x + 0.0;
  }
  static inline bool sOverflow = false;  // the value depends on limits

  std::string Text() const {
    if (form == nullptr) return text;
    std::string out;
    for (const char* c = form->text.c_str(); *c != 0; ++c)
      out += *c == '$' ? operands[static_cast<std::size_t>(*++c - '0')].Text() : std::string(1, *c);
    return out;
  }
  void CollectPlaces(std::set<std::size_t>& places) const {
    // Arrays are declared as a whole.
    const std::size_t first = place >= kP ? kP : place >= kQ && place < kB ? kQ : place;
    if (form == nullptr && kind != Kind::kLiteral && place != kIndex)
      for (std::size_t i = 0; i < (first == kQ || first == kP ? 3u : 1u); ++i)
        places.insert(first + i);
    for (const Expression& operand : operands) operand.CollectPlaces(places);
  }
};

struct Model {
  std::vector<Expression> statements;
  std::array<std::array<int, 2>, kVariables> domains = {};

  std::set<std::size_t> Places() const {
    std::set<std::size_t> places;
    for (const Expression& statement : statements) statement.CollectPlaces(places);
    return places;
  }
  std::string Text() const {
    constexpr const char* kNames[] = {"x", "y", "z", "k", "q[1..3]", "", "", "b", "c", "p[1..3]"};
    std::string text;
    for (const std::size_t place : Places()) {
      if (place >= std::size(kNames) || *kNames[place] == 0) continue;
      const auto [low, high] = domains[place];
      text += std::string(kNames[place]) + " : ";
      text += place >= kB  ? "bool" + std::string(low == high ? low ? " = True" : " = False" : "")
              : place == 3 ? "single int = " + std::to_string(low)
                           : "int = [" + std::to_string(low) + ", " + std::to_string(high) + "]";
      text += ";\n";
    }
    for (const Expression& statement : statements) text += statement.Text() + ";\n";
    return text;
  }
  bool Holds(const Values& at) const {
    return std::count_if(statements.begin(), statements.end(),  // of all, to see what overflows
                         [&](const Expression& e) { return std::isnan(e.Value(at)); }) == 0;
  }
};

class RandomModel {
 public:
  explicit RandomModel(std::uint64_t seed) : mRandom(seed) {
    for (std::size_t i = 0; i < kVariables; ++i) {
      auto& [low, high] = mModel.domains[i];
      low = i >= kB ? 0 : i == kZ ? 1 : Draw(6) - 3;
      high = i == 3 ? low : i >= kB ? 1 : low + Draw(i >= kQ ? 3 : 4);
      if (i > kQ && i < kB) mModel.domains[i] = mModel.domains[kQ];
    }
    auto& [low, high] = mModel.domains[0];
    if (const int limit = Draw(8); limit < 2) {
      high = (limit == 0 ? kMax - 1 : 4 - kMax) - Draw(3);  // the limits themselves are infinite
      low = high - Draw(limit == 0 ? 4 : 2);
    }
    for (int i = Draw(3); i >= 0; --i) mModel.statements.push_back(Statement());
  }
  const Model& Get() const { return mModel; }

 private:
  int Draw(int below) { return static_cast<int>(mRandom() % static_cast<std::uint64_t>(below)); }

  const Form& Pick(const std::vector<Form>& from) {
    return from[static_cast<std::size_t>(mRandom() % from.size())];
  }
  Expression Statement() { return Filled(Pick(kStatements), 3, false, false); }
  /// The form with random operands. `integers`: without reals.
  Expression Filled(const Form& form, int depth, bool inLoop, bool integers) {
    Expression made;
    made.form = &form;
    made.type = form.signature[0] == 'b' || form.signature[0] == '-' ? kBoolean
                : form.signature[0] == 'r'                           ? kReals
                                                                     : kSingle;
    for (const char* wanted = form.signature.c_str() + 1; *wanted != 0; ++wanted) {
      const char kind = integers && *wanted == 'n' ? 'z' : *wanted;
      made.operands.push_back(Make(kind, depth - 1, inLoop || form.overIndex));
      if (form.signature[0] != 'b') made.type = std::max(made.type, made.operands.back().type);
    }
    return made;
  }
  Expression Make(char wanted, int depth, bool inLoop) {
    const bool isLeaf =
        wanted == 'd' || wanted == 'e' || wanted == 'q' || depth <= 0 || Draw(4) == 0;
    for (int attempt = 0; !isLeaf && attempt < 50; ++attempt) {
      const Form& form = Pick(kForms);
      const char result = form.signature[0];
      const bool integers = wanted == 'z' || wanted == 'i';
      if ((wanted == 'b') != (result == 'b') || (integers && result == 'r') ||
          (inLoop && form.overIndex))
        continue;
      Expression made = Filled(form, depth, inLoop, integers);
      if ((wanted != 'i' || made.type == kIntegers) && (wanted != 'r' || made.type == kReals))
        return made;
    }
    if (wanted == 'r') return Filled(kHalf, 1, inLoop, true);
    return Leaf(wanted, inLoop);
  }

  Expression Leaf(char wanted, bool inLoop) {
    if (wanted == 'q') return Element("q", kQ, 3);
    if (wanted == 'b') {
      if (Draw(3) == 0) return Element("p", kP, Draw(inLoop ? 5 : 3));
      const bool isB = Draw(2) == 0;
      return Variable(isB ? "b" : "c", isB ? kB : kB + 1);
    }
    if (wanted == 'd' || wanted == 'e') {
      if (Draw(3) == 0) return Variable("z", kZ);
      if (wanted == 'e' && Draw(6) == 0) return Variable("y", 1);
      return Literal(wanted == 'e' ? Draw(4) : (1 + Draw(4)) * (Draw(3) == 0 ? -1 : 1));
    }
    static constexpr const char* kNames[] = {"x", "y", "z", "k"};
    const int choice = Draw(wanted == 'i' ? 5 : 8);
    if (choice < 3) return Variable(kNames[choice], static_cast<std::size_t>(choice));
    if (choice < 5) return Element("q", kQ, Draw(inLoop ? 5 : 3));
    if (choice == 5) return Variable("k", 3);
    if (choice == 6 && inLoop) return Variable("i", kIndex);
    return Literal(Draw(6));
  }
  static Expression Literal(int value) {
    Expression leaf;
    leaf.type = kSingle;  // it takes its neighbour's
    leaf.literal = value;
    leaf.text = value < 0 ? "(" + std::to_string(value) + ")" : std::to_string(value);
    return leaf;
  }
  static Expression Variable(const char* name, std::size_t place) {
    Expression leaf;
    leaf.type = place >= kB && place < kIndex ? kBoolean
                : place < 3 || place == kQ    ? kIntegers
                                              : kSingle;
    leaf.kind = Expression::Kind::kVariable;
    leaf.text = name;
    leaf.place = place;
    return leaf;
  }
  /// Element 1, 2, 3, i or 4 - i of an array.
  static Expression Element(const std::string& array, std::size_t place, int choice) {
    Expression leaf = Variable("", place);
    leaf.text = array + (choice < 3    ? "[" + std::to_string(choice + 1) + "]"
                         : choice == 3 ? "[i]"
                                       : "[4 - i]");
    if (choice < 3) leaf.place += static_cast<std::size_t>(choice);
    if (choice >= 3)
      leaf.kind = choice == 3 ? Expression::Kind::kElement : Expression::Kind::kMirrored;
    return leaf;
  }

  std::mt19937_64 mRandom;
  Model mModel;
};

// --- Solutions ----------------------------------------------------------------------------------

/// All solutions in order, or none where the model has too many points or depends on the limits of
/// integers: then `solutions` is left empty and the answer is false.
bool BruteForce(const Model& model, Solutions& solutions) {
  const std::set<std::size_t> places = model.Places();
  std::size_t points = 1;
  for (const std::size_t place : places)
    points *= static_cast<std::size_t>(model.domains[place][1] - model.domains[place][0] + 1);
  if (points > 4000) return false;
  Expression::sOverflow = false;
  Values at = {};
  const std::function<void(std::set<std::size_t>::const_iterator)> enumerate = [&](auto place) {
    if (place == places.end()) {
      if (!model.Holds(at)) return;
      solutions.emplace_back();
      for (const std::size_t each : places) solutions.back().push_back(at[each]);
      return;
    }
    const auto [low, high] = model.domains[*place];
    for (int value = low; value <= high; ++value) {
      at[*place] = value;
      enumerate(std::next(place));
    }
  };
  enumerate(places.begin());
  return !Expression::sOverflow;
}

TEST(RandomModelsTest, HaveTheSolutionsOfBruteForce) {
  std::size_t compared = 0;
  const std::uint64_t count = TrySeeds(8000, [&](std::uint64_t seed) {
    const Model model = RandomModel(seed).Get();
    Solutions expected;
    if (!BruteForce(model, expected)) return std::string();
    compared += expected.size() + 1;
    return WrongSolutions(model.Text(), seed, expected);
  });
  EXPECT_GT(compared, count * 10);
}

/// Domains, statements and truths of them, with gaps that are narrow, wide and at the bounds.
TEST(RandomModelsTest, SetsOfIntegersHaveTheSolutionsOfBruteForce) {
  TrySeeds(300, [](std::uint64_t seed) {
    std::mt19937_64 random(seed);
    std::string names[3];
    std::set<long> sets[3];
    for (int i = 0; i < 3; ++i) {
      for (std::size_t size = 1 + random() % 6; sets[i].size() < size;)
        sets[i].insert(static_cast<long>(random() % 20) - 9 +
                       (random() % 5 == 0 ? 1'000'000'000 : 0));
      for (const long member : sets[i])
        names[i] += (names[i].empty() ? "{" : ", ") + std::to_string(member);
      names[i] += "}";
    }
    const std::string text = "x : int in " + names[0] + "; y[1..2] : int in " + names[1] +
                             "; p : bool; y[1] <> y[2]; x + y[1] in union(" + names[2] +
                             ", 20..40); p == (y[2] - x in " + names[2] + ");";
    Solutions expected;
    for (const long x : sets[0])
      for (const long y : sets[1])
        for (const long z : sets[1]) {
          const bool holds = sets[2].contains(x + y) || (x + y >= 20 && x + y <= 40);
          if (y == z || !holds) continue;
          const bool p = sets[2].contains(z - x);
          expected.push_back({static_cast<double>(x), static_cast<double>(y),
                              static_cast<double>(z), p ? 1.0 : 0.0});
        }
    return WrongSolutions(text, seed, expected);
  });
}

}  // namespace
