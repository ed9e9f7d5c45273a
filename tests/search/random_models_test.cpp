// Random small models over integers and booleans: all solutions that the search reports are all
// solutions that brute force finds, and those that another solver finds where it has the operators.
//
// ZULTAV_CASES=100000 ZULTAV_SEED=5 search_test --gtest_filter='RandomModels*' runs longer.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>
#ifdef ZULTAV_TEST_GECODE
#include <gecode/int.hh>
#include <gecode/minimodel.hh>
#include <gecode/search.hh>
#endif

#include "framework/calculator/ZULTavCalculator.h"
#include "framework/search/ZULTavUtilities.h"
#include "framework/solver/ZULTavAbstractTypes.h"

namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();  // there is no value

bool IsPrime(double n) {
  for (double d = 2; d * d <= n; ++d)
    if (std::fmod(n, d) == 0) return false;
  return n > 1;
}
double Power(double base, double exponent) {
  if (exponent >= 0) return std::pow(base, exponent);
  return std::fabs(base) == 1 ? std::pow(base, exponent) : kNone;
}
double If(bool holds, double value) { return holds ? value : kNone; }

// --- The language -----------------------------------------------------------------------------

enum Type { kBoolean, kSingle, kIntegers, kReals };

/// A form of expression. `signature`: the result, then the operands.
///   b boolean; n number; z integer; i interval integer; r real; d divisor; e exponent; q an array
/// A number has the widest type of its operands.
struct Form {
  const char* text;  // $0 and $1 stand for the operands
  const char* signature;
  double (*value)(double, double);  // null: whether all are different
  bool overIndex = false;           // value is joined over i = 1, 2, 3
};

#define VALUE(RESULT) \
  []([[maybe_unused]] double x, [[maybe_unused]] double y) -> double { return RESULT; }
// clang-format off
const Form kForms[] = {
    {"($0 + $1)",      "nnn", VALUE(x + y)},
    {"($0 - $1)",      "nnn", VALUE(x - y)},
    {"($0 * $1)",      "nnn", VALUE(x * y)},
    {"($0 / $1)",      "zid", VALUE(If(std::fmod(x, y) == 0, x / y))},
    {"($0 mod $1)",    "zzd", VALUE(std::fmod(x, y))},
    {"($0 ^ $1)",      "zze", VALUE(Power(x, y))},
    {"($0 /\\ $1)",    "nnn", VALUE(std::min(x, y))},
    {"($0 \\/ $1)",    "nnn", VALUE(std::max(x, y))},
    {"min($0, $1)",    "nnn", VALUE(std::min(x, y))},
    {"(-$0)",          "nn",  VALUE(-x)},
    {"abs($0)",        "nn",  VALUE(std::fabs(x))},
    {"sign($0)",       "zz",  VALUE((x > 0) - (x < 0))},
    {"next($0)",       "zz",  VALUE(x + 1)},
    {"prev($0)",       "zz",  VALUE(x - 1)},
    {"($0 / 2.0)",     "ri",  VALUE(x / 2)},
    {"(0.25 * $0)",    "ri",  VALUE(x / 4)},
    {"floor($0)",      "rr",  VALUE(std::floor(x))},
    {"ceil($0)",       "rr",  VALUE(std::ceil(x))},
    {"round($0)",      "rr",  VALUE(std::round(x))},
    {"($0 = $1)",      "nnn", VALUE(If(x == y, y))},
    {"($0 <> $1)",     "nnn", VALUE(If(x != y, y))},
    {"($0 < $1)",      "nnn", VALUE(If(x < y, x))},
    {"($0 <= $1)",     "nnn", VALUE(If(x <= y, x))},
    {"($0 > $1)",      "nnn", VALUE(If(x > y, y))},
    {"($0 >= $1)",     "nnn", VALUE(If(x >= y, y))},
    {"($0 == $1)",     "bnn", VALUE(x == y)},
    {"($0 <<>> $1)",   "bnn", VALUE(x != y)},
    {"($0 << $1)",     "bnn", VALUE(x < y)},
    {"($0 <== $1)",    "bnn", VALUE(x <= y)},
    {"($0 >> $1)",     "bnn", VALUE(x > y)},
    {"($0 >== $1)",    "bnn", VALUE(x >= y)},
    {"PrimeNumber($0)", "bi", VALUE(IsPrime(x))},
    {"($0 && $1)",     "bbb", VALUE(std::min(x, y))},
    {"($0 || $1)",     "bbb", VALUE(std::max(x, y))},
    {"($0 /\\ $1)",    "bbb", VALUE(std::min(x, y))},
    {"($0 \\/ $1)",    "bbb", VALUE(std::max(x, y))},
    {"($0 -> $1)",     "bbb", VALUE(std::max(1 - x, y))},
    {"($0 == $1)",     "bbb", VALUE(x == y)},
    {"($0 <<>> $1)",   "bbb", VALUE(x != y)},
    {"(~$0)",          "bb",  VALUE(1 - x)},
    {"(sum(i in 1..3) $0)",     "nn", VALUE(x + y), true},
    {"(product(i in 1..3) $0)", "nn", VALUE(x * y), true},
    {"(min(i in 1..3) $0)",     "nn", VALUE(std::min(x, y)), true},
    {"(max(i in 1..3) $0)",     "nn", VALUE(std::max(x, y)), true},
    {"(forall(i in 1..3) $0)",  "bb", VALUE(std::min(x, y)), true},
    {"(exists(i in 1..3) $0)",  "bb", VALUE(std::max(x, y)), true},
    {"sum(q)",                  "nq", VALUE(x + y), true},
    {"max(q)",                  "nq", VALUE(std::max(x, y)), true},
    {"alldifferent(q)",         "bq", nullptr, true},
    {"(alldifferent(i in 1..3) $0)", "bn", nullptr, true},
};
const Form& kHalf = kForms[14];
// Statements; where they are false, they have no value.
const Form kStatements[] = {
    {"$0 = $1",   "-nn", VALUE(If(x == y, 1))},
    {"$0 <> $1",  "-nn", VALUE(If(x != y, 1))},
    {"$0 < $1",   "-nn", VALUE(If(x < y, 1))},
    {"$0 <= $1",  "-nn", VALUE(If(x <= y, 1))},
    {"$0 > $1",   "-nn", VALUE(If(x > y, 1))},
    {"$0 >= $1",  "-nn", VALUE(If(x >= y, 1))},
    {"$0 = $1",   "-bb", VALUE(If(x == y, 1))},
    {"$0 <> $1",  "-bb", VALUE(If(x != y, 1))},
    {"$0 < $1",   "-bb", VALUE(If(x < y, 1))},
    {"$0",        "-b",  VALUE(If(x != 0, 1))},
    {"$0",        "-b",  VALUE(If(x != 0, 1))},
    {"for i in 1..3 : $0 = $1",  "-nn", VALUE(If(x == y, 1)), true},
    {"for i in 1..3 : $0 <= $1", "-nn", VALUE(If(x <= y, 1)), true},
    {"for i in 1..3 : $0",       "-b",  VALUE(If(x != 0, 1)), true},
    {"for i in 1..3 where i <> 2 : $0 < $1", "-nn", VALUE(If(x < y, 1)), true},
};
// clang-format on
#undef VALUE

/// Values of the variables: x y z k, q[1..3], b c, p[1..3]; and of the loop index.
constexpr std::size_t kZ = 2, kQ = 4, kB = 7, kP = 9, kIndex = 12, kVariables = 12;
using Values = std::array<double, kVariables + 1>;

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
    return std::isnan(x + y) ? kNone : form->value(x, y);
  }
  bool IsWithoutTwo() const {
    return std::string_view(form->text).find("where") != std::string::npos;
  }
  static double Bounded(double x) {
    if (std::fabs(x) > 2147483646) sOverflow = true;
    return x + 0.0;
  }
  static inline bool sOverflow = false;  // the value depends on the limits of integers

  std::string Text() const {
    if (form == nullptr) return text;
    std::string out;
    for (const char* c = form->text; *c != 0; ++c)
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
    return std::none_of(statements.begin(), statements.end(),
                        [&](const Expression& e) { return std::isnan(e.Value(at)); });
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
    for (int i = Draw(3); i >= 0; --i) mModel.statements.push_back(Statement());
  }
  const Model& Get() const { return mModel; }

 private:
  int Draw(int below) { return static_cast<int>(mRandom() % static_cast<std::uint64_t>(below)); }

  Expression Statement() {
    return Filled(kStatements[Draw(std::size(kStatements))], 3, false, false);
  }
  /// The form with random operands. `integers`: without reals.
  Expression Filled(const Form& form, int depth, bool inLoop, bool integers) {
    Expression made;
    made.form = &form;
    made.type = form.signature[0] == 'b' || form.signature[0] == '-' ? kBoolean
                : form.signature[0] == 'r'                           ? kReals
                                                                     : kSingle;
    for (const char* wanted = form.signature + 1; *wanted != 0; ++wanted) {
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
      const Form& form = kForms[Draw(std::size(kForms))];
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

using Solutions = std::vector<std::vector<double>>;

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

const ZULTaVoModule& Module() {
  static ZULTaVoModuleManager manager;
  static const ZULTaVoModule* module = [] {
    manager.AddSearchDirectory(ZULTAV_TEST_MODULES);
    return manager.OpenModule("ZULTavNumbers");
  }();
  return *module;
}

double ValueOf(const ZULTaVoAny& value) {
  if (const auto* boolean = ZULTaVoCast<ZULTaVoBoolean>(&value))
    return boolean->IsTrue() ? 1 : boolean->IsFalse() ? 0 : kNone;
  const auto* integer = ZULTaVoCast<ZULTaVoInteger>(&value);
  return integer->GetLowerBound() == integer->GetUpperBound()
             ? static_cast<double>(integer->GetLowerBound())
             : kNone;
}

/// Whether reading went well, and the search to its end.
bool Search(const Model& model, std::uint64_t seed, Solutions& solutions, std::string& trouble) {
  std::vector<ZULTavDiagnostic> errors;
  const auto read = ZULTavCalculator({&Module()}).Read(model.Text(), "random", {}, errors);
  if (read == nullptr) {
    trouble = errors.front().message;
    return false;
  }
  std::vector<ZULTaVoAny*> declared;
  for (const auto& variable : read->Variables())
    declared.insert(declared.end(), variable.values.begin(), variable.values.end());
  ZULTavNewton newton(read->Network(), declared);
  ZULTavSearch::Options options;
  options.limits.solutions = ZULTavSearch::kUnlimited;
  options.limits.nodes = 100000;
  options.choice = static_cast<ZULTavSearch::VariableChoice>(seed % 5);
  options.selection = seed / 5 % 2 == 0 ? ZULTaVoAny::kLowerHalf : ZULTaVoAny::kUpperHalf;
  options.reasoning = newton.GetReasoning();
  ZULTavSearch search(read->Network(), declared, options);
  const auto outcome = search.Run([&](const ZULTavSolution& solution) {
    solutions.emplace_back();
    for (std::size_t i = 0; i < solution.GetSize(); ++i)
      solutions.back().push_back(ValueOf(solution.GetValue(i)));
    return true;
  });
  trouble = "the search ends with outcome " + std::to_string(static_cast<int>(outcome));
  return outcome == ZULTavSearch::Outcome::kExhausted;
}

// --- Another solver -------------------------------------------------------------------------
#ifdef ZULTAV_TEST_GECODE

/// The model in Gecode's terms. Throws std::out_of_range when it has an operator that Gecode does
/// not state in the same way.
class Peer : public Gecode::Space {
 public:
  explicit Peer(const Model& model) : mVariables(*this, static_cast<int>(model.Places().size())) {
    for (const std::size_t place : model.Places()) {
      const int index = static_cast<int>(mIndexOf.size());
      mIndexOf[place] = index;
      mVariables[index] = Gecode::IntVar(*this, model.domains[place][0], model.domains[place][1]);
    }
    for (const Expression& statement : model.statements) State(statement);
    Gecode::branch(*this, mVariables, Gecode::INT_VAR_NONE(), Gecode::INT_VAL_MIN());
  }
  Peer(Peer& other) : Gecode::Space(other) { mVariables.update(*this, other.mVariables); }
  Gecode::Space* copy() override { return new Peer(*this); }

  std::vector<double> Solution() const {
    std::vector<double> values;
    for (const Gecode::IntVar& variable : mVariables) values.push_back(variable.val());
    return values;
  }

 private:
  using Number = Gecode::LinIntExpr;
  using Truth = Gecode::BoolExpr;

  void State(const Expression& statement) {
    const std::string_view form = statement.form->text;
    if (form == "$0") return Gecode::rel(*this, TruthOf(statement.operands[0]));
    static const std::map<std::string_view, Gecode::IntRelType> kRelations = {
        {"$0 = $1",  Gecode::IRT_EQ},
        {"$0 <> $1", Gecode::IRT_NQ},
        {"$0 < $1",  Gecode::IRT_LE},
        {"$0 <= $1", Gecode::IRT_LQ},
        {"$0 > $1",  Gecode::IRT_GR},
        {"$0 >= $1", Gecode::IRT_GQ}
    };
    const Gecode::IntRelType relation = kRelations.at(form);
    Gecode::rel(*this, IntegerOf(statement.operands[0]), relation,
                IntegerOf(statement.operands[1]));
  }
  Gecode::IntVar IntegerOf(const Expression& e) {
    return e.type == kBoolean ? Gecode::channel(*this, Gecode::expr(*this, TruthOf(e)))
                              : Gecode::expr(*this, NumberOf(e));
  }
  Gecode::IntVar Leaf(const Expression& e) const {
    return mVariables[mIndexOf.at(e.kind == Expression::Kind::kVariable ? e.place : kIndex)];
  }

  // clang-format off
  Number NumberOf(const Expression& e) {
    if (e.form == nullptr)
      return e.kind == Expression::Kind::kLiteral ? Number(static_cast<int>(e.literal)) : Leaf(e);
    using Operation = Number (*)(const Number&, const Number&);
#define MEANS(VALUE) \
    [](const Number& x, [[maybe_unused]] const Number& y) -> Number { return VALUE; }
    static const std::map<std::string_view, Operation> kOperations = {
        {"($0 + $1)",   MEANS(x + y)    },
        {"($0 - $1)",   MEANS(x - y)    },
        {"($0 * $1)",   MEANS(x * y)    },
        {"($0 mod $1)", MEANS(x % y)    },
        {"($0 /\\ $1)", MEANS(min(x, y))},
        {"($0 \\/ $1)", MEANS(max(x, y))},
        {"min($0, $1)", MEANS(min(x, y))},
        {"(-$0)",       MEANS(-x)       },
        {"abs($0)",     MEANS(abs(x))   },
        {"next($0)",    MEANS(x + 1)    },
        {"prev($0)",    MEANS(x - 1)    },
    };
    const Operation operation = kOperations.at(e.form->text);
    return operation(NumberOf(e.operands[0]), NumberOf(e.operands.back()));
  }
  Truth TruthOf(const Expression& e) {
    if (e.form == nullptr) return Number(Leaf(e)) == 1;
    if (e.operands[0].type != kBoolean) {
      using Relation = Truth (*)(const Number&, const Number&);
      static const std::map<std::string_view, Relation> kRelations = {
#undef MEANS
#define MEANS(VALUE) [](const Number& x, const Number& y) -> Truth { return VALUE; }
          {"($0 == $1)",   MEANS(x == y)},
          {"($0 <<>> $1)", MEANS(x != y)},
          {"($0 << $1)",   MEANS(x < y) },
          {"($0 <== $1)",  MEANS(x <= y)},
          {"($0 >> $1)",   MEANS(x > y) },
          {"($0 >== $1)",  MEANS(x >= y)},
      };
      const Relation relation = kRelations.at(e.form->text);
      return relation(NumberOf(e.operands[0]), NumberOf(e.operands.back()));
    }
    using Connective = Truth (*)(const Truth&, const Truth&);
#undef MEANS
#define MEANS(VALUE) \
    [](const Truth& x, [[maybe_unused]] const Truth& y) -> Truth { return VALUE; }
    static const std::map<std::string_view, Connective> kConnectives = {
        {"($0 && $1)",   MEANS(x && y)},
        {"($0 || $1)",   MEANS(x || y)},
        {"($0 /\\ $1)",  MEANS(x && y)},
        {"($0 \\/ $1)",  MEANS(x || y)},
        {"($0 -> $1)",   MEANS(x >> y)},
        {"($0 == $1)",   MEANS(x == y)},
        {"($0 <<>> $1)", MEANS(x != y)},
        {"(~$0)",        MEANS(!x)    },
    };
#undef MEANS
    const Connective connective = kConnectives.at(e.form->text);
    return connective(TruthOf(e.operands[0]), TruthOf(e.operands.back()));
  }
  // clang-format on

  Gecode::IntVarArray mVariables;
  std::map<std::size_t, int> mIndexOf;
};

/// False when Gecode cannot state the model.
bool SearchByPeer(const Model& model, Solutions& solutions) try {
  const Peer root(model);
  Gecode::DFS<Peer> search(const_cast<Peer*>(&root));
  while (const std::unique_ptr<Peer> found{search.next()}) solutions.push_back(found->Solution());
  return true;
} catch (const std::out_of_range&) {
  return false;
} catch (const Gecode::Exception&) {  // beyond its limits
  return false;
}
#endif

/// What is wrong; empty when nothing is.
std::string Difference(const Model& model, std::uint64_t seed, std::size_t* compared = nullptr) {
  Solutions expected, found;
  if (!BruteForce(model, expected)) return {};
  std::string trouble;
  if (!Search(model, seed, found, trouble)) return trouble;
  std::sort(found.begin(), found.end());
  if (compared != nullptr) *compared += expected.size() + 1;
  if (found == expected) return {};
  const auto first = std::mismatch(found.begin(), found.end(), expected.begin(), expected.end());
  const bool isLost = first.first == found.end() ||
                      (first.second != expected.end() && *first.second < *first.first);
  std::string text = isLost ? "lost:" : "wrong, undecided or repeated:";
  for (const double value : isLost ? *first.second : *first.first)
    text += " " + (std::isnan(value) ? "?" : std::to_string(static_cast<int>(value)));
  return text;
}

/// All expressions that differ from one by a single simplification.
std::vector<Expression> Simplified(const Expression& from) {
  std::vector<Expression> all;
  if (from.form == nullptr) return all;
  for (const Expression& operand : from.operands)
    if (from.form->signature[0] != '-' && (operand.type == kBoolean) == (from.type == kBoolean))
      all.push_back(operand);
  for (std::size_t i = 0; i < from.operands.size(); ++i)
    for (const Expression& operand : Simplified(from.operands[i])) {
      all.push_back(from);
      all.back().operands[i] = operand;
    }
  return all;
}

Model Shrunk(Model model, std::uint64_t seed) {
  const auto isWrong = [&](const Model& smaller) {
    const std::string difference = Difference(smaller, seed);
    return difference.find(": ") != std::string::npos;  // readable, and wrong
  };
  for (bool again = true; again;) {
    std::vector<Model> candidates;
    for (std::size_t i = 0; i < model.statements.size(); ++i) {
      candidates.push_back(model);
      candidates.back().statements.erase(candidates.back().statements.begin() +
                                         static_cast<std::ptrdiff_t>(i));
      for (const Expression& statement : Simplified(model.statements[i])) {
        candidates.push_back(model);
        candidates.back().statements[i] = statement;
      }
    }
    for (const std::size_t place : model.Places())
      for (const int end : {0, 1}) {
        if (model.domains[place][0] == model.domains[place][1]) continue;
        candidates.push_back(model);
        candidates.back().domains[place][static_cast<std::size_t>(end)] += end == 0 ? 1 : -1;
        for (const std::size_t array : {kQ, kP})
          for (std::size_t i = array; place >= array && place < array + 3 && i < array + 3; ++i)
            candidates.back().domains[i] = candidates.back().domains[place];
      }
    const auto smaller = std::find_if(candidates.begin(), candidates.end(), isWrong);
    again = smaller != candidates.end();
    if (again) model = *smaller;
  }
  return model;
}

std::uint64_t FromEnvironment(const char* name, std::uint64_t otherwise) {
  const char* text = std::getenv(name);
  return text == nullptr ? otherwise : std::strtoull(text, nullptr, 10);
}

TEST(RandomModelsTest, HaveTheSolutionsOfBruteForce) {
  const std::uint64_t first = FromEnvironment("ZULTAV_SEED", 1) << 32;
  const std::uint64_t count = FromEnvironment("ZULTAV_CASES", 8000);
  std::size_t compared = 0;
  int failures = 0;
  for (std::uint64_t seed = first; seed < first + count && failures < 5; ++seed) {
    const RandomModel random(seed);
    if (Difference(random.Get(), seed, &compared).empty()) continue;
    ++failures;
    const Model model = Shrunk(random.Get(), seed);
    ADD_FAILURE() << "seed " << seed << ": " << Difference(model, seed) << '\n' << model.Text();
  }
  EXPECT_GT(compared, count * 10);
}

#ifdef ZULTAV_TEST_GECODE
TEST(RandomModelsTest, HaveTheSolutionsOfGecode) {
  const std::uint64_t first = (FromEnvironment("ZULTAV_SEED", 1) << 32) + (1u << 31);
  const std::uint64_t count = 4 * FromEnvironment("ZULTAV_CASES", 8000);  // it can state few
  std::size_t compared = 0;
  for (std::uint64_t seed = first; seed < first + count && !HasFailure(); ++seed) {
    const RandomModel random(seed);
    Solutions few, theirs, ours;
    if (!BruteForce(random.Get(), few) || !SearchByPeer(random.Get(), theirs)) continue;
    std::string trouble;
    ASSERT_TRUE(Search(random.Get(), seed, ours, trouble)) << trouble;
    std::sort(ours.begin(), ours.end());
    std::sort(theirs.begin(), theirs.end());
    EXPECT_EQ(ours, theirs) << "seed " << seed << '\n' << random.Get().Text();
    ++compared;
  }
  EXPECT_GT(compared, count / 20);
}
#endif

}  // namespace
