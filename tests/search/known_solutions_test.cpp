// Random models with a solution that is known by construction: expressions over every registered
// operator are evaluated at a random point by MPFR, and what comes out is stated of them. However
// the boxes around the point lie, neither propagation nor the search may lose it.
//
// ZULTAV_CASES=1000000 ZULTAV_SEED=5 search_test --gtest_filter='KnownSolutions*' runs longer.

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cmath>
#include <map>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "tests/intervals/mpfr_oracle.h"
#include "tests/oracle/operators.h"
#include "tests/search/search_world.h"

namespace {

// --- What the operators mean --------------------------------------------------------------------

/// A number or truth value that lies between two; the two are equal where it is known exactly.
struct Known {
  Mpfr low, high;

  bool IsExact() const { return mpfr_equal_p(low, high) != 0; }
  bool IsInteger() const { return IsExact() && mpfr_integer_p(low) != 0; }
  bool IsTrue() const { return mpfr_sgn(static_cast<mpfr_srcptr>(low)) != 0; }
  bool Above(double x) const { return mpfr_cmp_d(low, x) > 0; }
  bool Below(double x) const { return mpfr_cmp_d(high, x) < 0; }
  bool Within(double x) const { return mpfr_cmp_d(low, -x) >= 0 && mpfr_cmp_d(high, x) <= 0; }
};
using MaybeKnown = std::optional<Known>;
Known Exactly(double x) { return {x, x}; }

enum Type { kBoolean, kInteger, kIntegers, kReal, kReals, kTypes };
constexpr const char* kTypeNames[] = {"single bool", "single int", "interval int", "single real",
                                      "interval real"};
bool IsReal(Type type) { return type >= kReal; }
constexpr double kPrecision = 1e-6;  // the solver's default

/// One application of an operator.
struct Application {
  Known l, r;
  Type left, right, result;
  int branch;  // which of several values
};
using Rounded = int (*)(mpfr_ptr, mpfr_srcptr, mpfr_srcptr, mpfr_rnd_t);
const Rounded kSum = oracle::Get("+").rounded, kDifference = oracle::Get("-").rounded,
              kProduct = oracle::Get("*").rounded;

/// The values of a function that is monotone in each operand; NaN where it has none.
Known Monotone(const Known& l, const Known& r, Rounded f) {
  Known known{HUGE_VAL, -HUGE_VAL};
  for (const Mpfr* x : {&l.low, &l.high})
    for (const Mpfr* y : {&r.low, &r.high}) {
      Mpfr value;
      f(value, *x, *y, MPFR_RNDD);
      if (mpfr_nan_p(static_cast<mpfr_srcptr>(value)) != 0) return {NAN, NAN};
      mpfr_min(known.low, known.low, value, MPFR_RNDD);
      f(value, *x, *y, MPFR_RNDU);
      mpfr_max(known.high, known.high, value, MPFR_RNDU);
    }
  return known;
}

/// Sine and cosine change by no more than their argument does.
Known Wave(const Known& x, Rounded f) {
  Known known = Monotone(x, x, f);
  const Mpfr width = Monotone(x, x, kDifference).high;
  mpfr_sub(known.low, known.low, width, MPFR_RNDD);
  mpfr_add(known.high, known.high, width, MPFR_RNDU);
  return known;
}
Known PiTimes(int factor) {
  const Known pi = Monotone({}, {}, oracle::Get("Pi", 0).rounded);
  return Monotone(pi, Exactly(factor), kProduct);
}
/// The angle itself, its mirror image where `mirror`, and so many turns more.
Known Turned(const Known& angle, bool mirror, int halfTurns) {
  return Monotone(PiTimes(halfTurns), angle, mirror ? kDifference : kSum);
}

Known Absolute(const Known& x) {
  const Known negative = Monotone(Exactly(0), x, kDifference);
  return Monotone(x, negative, oracle::Get("\\/").rounded);
}

MaybeKnown Power(const Application& at, Rounded power) {
  const auto& [x, n] = std::tie(at.l, at.r);
  if (x.IsExact() && mpfr_zero_p(static_cast<mpfr_srcptr>(x.low)))
    return n.Above(0)                     ? MaybeKnown(Exactly(0))
           : n.IsInteger() && !n.Below(0) ? MaybeKnown(Exactly(1))
                                          : MaybeKnown();
  if (x.Above(0) || (x.Below(0) && n.IsInteger())) return Monotone(x, n, power);
  return {};
}

MaybeKnown Remainder(const Application& at) {
  const auto& [x, m] = std::tie(at.l, at.r);
  if (!m.Above(0) && !m.Below(0)) return {};
  Known quotient = Monotone(x, m, oracle::Get("/").rounded);
  mpfr_trunc(quotient.low, quotient.low);
  mpfr_trunc(quotient.high, quotient.high);
  if (!quotient.IsExact()) return {};
  const Known rest = Monotone(x, Monotone(quotient, m, kProduct), kDifference);
  if (!IsReal(at.result)) return rest;
  // Those of single reals round the quotient.
  const Known gap = Monotone(Absolute(m), Absolute(rest), kDifference);
  const bool clear = gap.Above(1e-3) && !rest.Within(1e-3);
  return clear || at.result != kReal ? MaybeKnown(rest) : MaybeKnown();
}

/// -1, 0 or 1 as the left operand is less, the same or greater; nothing where that depends on the
/// tolerance of comparisons.
std::optional<int> Compare(const Application& at) {
  // Variables are made equal to expressions whose value no number of finite length is.
  if (mpfr_equal_p(at.l.low, at.r.low) != 0 && mpfr_equal_p(at.l.high, at.r.high) != 0) return 0;
  const Known difference = Monotone(at.l, at.r, kDifference);
  const double size = std::max(std::fabs(mpfr_get_d(at.l.low, MPFR_RNDN)), 1.0);
  const double margin = IsReal(at.left) || IsReal(at.right) ? 5 * kPrecision + 1e-13 * size : 0;
  if (difference.Below(-margin)) return -1;
  if (difference.Above(margin)) return 1;
  return {};
}

/// What the operator makes of its operands, where it is known.
MaybeKnown Apply(const oracle::Operator& op, const Application& at) {
  const auto is = [&](auto... names) { return ((op.name == names) || ...); };
  const bool isAroundZero = !at.r.Above(0) && !at.r.Below(0);
  if (is("mod")) return Remainder(at);
  if (is("^")) return Power(at, op.rounded);
  if (is("/") && isAroundZero) return {};
  if (is("abs")) return Absolute(at.l);
  if (is("cosh")) return Monotone(Absolute(at.l), at.r, op.rounded);
  if (is("hypot")) return Monotone(Absolute(at.l), Absolute(at.r), op.rounded);
  // It jumps at the axis to the left.
  if (is("atan2") && !at.l.Above(0) && !at.l.Below(0) && !at.r.Above(0)) return {};
  if (is("sin", "cos")) return Wave(at.l, op.rounded);
  if (is("tan")) {
    const Known cosine = Wave(at.l, oracle::Get("cos", 1).rounded);
    if (!cosine.Above(0) && !cosine.Below(0)) return {};
  }
  if (is("next", "prev")) {
    const double step = at.result == kReals ? kPrecision : at.result == kReal ? 2 * kPrecision : 1;
    return Monotone(at.l, Exactly(is("next") ? step : -step), kSum);
  }
  if (is("PrimeNumber") && !at.l.Within(1000)) return {};
  const auto exact = [&](double l, double r) {
    const double value = op.exact(l, r);
    return std::isnan(value) ? MaybeKnown() : MaybeKnown(Exactly(value));
  };
  if (op.kind == oracle::kDiscrete)
    return exact(mpfr_get_d(at.l.low, MPFR_RNDN), mpfr_get_d(at.r.low, MPFR_RNDN));
  if (is("sign")) {
    const bool known = at.l.Above(0) || at.l.Below(0) || at.l.IsExact();
    return known ? exact(mpfr_sgn(static_cast<mpfr_srcptr>(at.l.low)), 0) : MaybeKnown();
  }
  if (op.kind == oracle::kOrder) {
    const std::optional<int> order = Compare(at);
    const MaybeKnown value = order ? exact(*order, 0) : MaybeKnown();
    if (!value || is("==", "<<>>", ">==", ">>", "<==", "<<")) return value;
    return is("<", "<=") ? at.l : at.r;
  }
  const Known known = Monotone(at.l, at.r, op.rounded);
  // The inverses stand for every angle that has the given sine, cosine or tangent.
  if (is("asin")) return Turned(known, at.branch % 2 != 0, at.branch);
  if (is("acos")) return Turned(known, at.branch % 2 != 0, at.branch / 2 * 2);
  return is("atan") ? Turned(known, false, at.branch) : known;
}

/// What the operator makes of its operands, where its type can hold it and the rounding errors of
/// what comes before have not grown large.
MaybeKnown Evaluate(const oracle::Operator& op, const Application& at) {
  MaybeKnown known = Apply(op, at);
  if (!known || mpfr_number_p(known->low) == 0 || mpfr_number_p(known->high) == 0) return {};
  if (at.result == kBoolean) return known->Within(1) && !known->Below(0) ? known : MaybeKnown();
  if (!IsReal(at.result))
    return known->IsInteger() && known->Within(2147483646) ? known : MaybeKnown();
  const double size = std::max(std::fabs(mpfr_get_d(known->low, MPFR_RNDN)), 1.0);
  if (at.result == kReal) {
    // A double near the value, compared within the precision: large and tiny ones are none of it,
    // nor are powers, which are compared as they are.
    const bool isDouble = mpfr_get_d(known->low, MPFR_RNDD) == mpfr_get_d(known->high, MPFR_RNDU);
    if (!known->Within(1e4) || (!isDouble && (op.name == "^" || known->Within(1e-3)))) return {};
    const double error = isDouble ? 0 : 0x1p-48 * size;
    mpfr_sub_d(known->low, known->low, error, MPFR_RNDD);
    mpfr_add_d(known->high, known->high, error, MPFR_RNDU);
  }
  Mpfr width;
  mpfr_sub(width, known->high, known->low, MPFR_RNDU);
  return known->Within(1e18) && mpfr_cmp_d(width, 1e-4 * size) < 0 ? known : MaybeKnown();
}

// --- Models -----------------------------------------------------------------------------------

constexpr double kInfinity = 1e19;

/// Shortest decimals that read back exactly.
std::string Shortest(double x, bool integer = false) {
  char text[40];
  if (integer) return std::to_string(static_cast<long>(x));
  return {text, std::to_chars(text, text + sizeof text, x).ptr};
}

/// An operator over earlier nodes, a variable in a box, or a literal.
struct Node {
  Type type = kReals;
  Known known = {};
  const ZULTaVoOperatorDescriptor* op = nullptr;
  std::array<int, 2> operands = {-1, -1};
  std::string literal = {};
  std::string typeName = {};  // as a variable
  double lower = 0, upper = 0;

  bool IsVariable() const { return op == nullptr && literal.empty(); }
  bool Holds(double low, double high) const {
    return (low <= -kInfinity || mpfr_cmp_d(known.high, low) >= 0) &&
           (high >= kInfinity || mpfr_cmp_d(known.low, high) <= 0);
  }
};

struct Model {
  std::vector<Node> nodes;
  std::vector<int> statements;  // comparisons, and boolean expressions that are true

  std::string Expression(int index) const {
    const Node& node = nodes[static_cast<std::size_t>(index)];
    if (node.IsVariable()) return "v" + std::to_string(index);
    if (!node.literal.empty()) return node.literal;
    const std::string name = node.op->GetName();
    const auto [l, r] = node.operands;
    if (r >= 0 && std::isalpha(name.front()) != 0 && name != "mod")
      return name + "(" + Expression(l) + ", " + Expression(r) + ")";
    if (r >= 0) return "(" + Expression(l) + " " + name + " " + Expression(r) + ")";
    if (l < 0) return name + "()";
    return name == "-" || name == "~" ? "(" + name + Expression(l) + ")"
           : name.front() == '('      ? "(" + name + " " + Expression(l) + ")"
                                      : name + "(" + Expression(l) + ")";
  }
  /// The variables that the statements are about.
  std::set<int> Variables() const {
    std::set<int> found;
    std::vector<int> open = statements;
    while (!open.empty()) {
      const int index = open.back();
      open.pop_back();
      if (index < 0) continue;
      const Node& node = nodes[static_cast<std::size_t>(index)];
      if (node.IsVariable()) found.insert(index);
      open.insert(open.end(), node.operands.begin(), node.operands.end());
    }
    return found;
  }
  std::string Text() const {
    std::string text;
    for (const int index : Variables()) {
      const Node& node = nodes[static_cast<std::size_t>(index)];
      const auto number = [&](double x) { return Shortest(x, !IsReal(node.type)); };
      text += "v" + std::to_string(index) + " : " + node.typeName;
      if (node.type == kBoolean)
        text += node.lower < node.upper ? "" : node.lower != 0 ? " = True" : " = False";
      else if (node.type == kInteger || node.type == kReal)
        text += node.lower < node.upper ? "" : " = " + number(node.lower);
      else
        text += " = [" + (node.lower <= -kInfinity ? "Min" : number(node.lower)) + ", " +
                (node.upper >= kInfinity ? "Max" : number(node.upper)) + "]";
      text += ";\n";
    }
    for (const int index : statements) text += Expression(index) + ";\n";
    return text;
  }
};

class RandomModel {
 public:
  /// `one`: of a single operator.
  RandomModel(std::uint64_t seed, bool singleReals, bool one)
      : mRandom(seed), mSingleReals(singleReals) {
    for (std::size_t i = one ? 0 : 1 + Below(3); i > 0; --i) Variable(AnyType());
    for (std::size_t i = one ? 1 : 1 + Below(8); i > 0; --i) Grow();
    std::set<int> used;
    for (const Node& node : mModel.nodes) used.insert(node.operands.begin(), node.operands.end());
    const int count = static_cast<int>(mModel.nodes.size());
    for (int index = 0; index < count; ++index)
      if (At(index).op != nullptr && used.count(index) == 0) State(index);
    std::erase(mModel.statements, -1);  // beyond what can be told apart from its tolerance
  }
  const Model& Get() const { return mModel; }
  std::size_t Below(std::size_t n) { return static_cast<std::size_t>(mRandom() % n); }

 private:
  using Operator = const ZULTaVoOperatorDescriptor*;
  struct Variant {
    Operator op;
    std::array<Type, 2> operands;
    Type result;
  };
  /// The variants of each operator that expressions can name, without those of the first module
  /// over abstract types.
  static std::vector<std::vector<Variant>> AllOperators(bool singleReals) {
    std::vector<std::vector<Variant>> all;
    for (const oracle::Operator& row : oracle::kOperators) {
      all.emplace_back();
      for (const ZULTaVoModule* module : {&NumberModule(), &RelationModule()})
        for (const Operator op : module->FindOperators(row.name))
          for (const Type left : TypesOf(op->GetOperandType(0)))
            for (const Type right : TypesOf(op->GetOperandType(1))) {
              const Variant variant{
                  op, {left, right},
                   TypeOf(op->GetResultType())
              };
              if (Fits(variant, row, *module, singleReals)) all.back().push_back(variant);
            }
      if (all.back().empty()) all.pop_back();
    }
    return all;
  }
  static bool Fits(const Variant& variant, const oracle::Operator& row, const ZULTaVoModule& module,
                   bool singleReals) {
    // A hidden single integer would be asked for by inexact inverses, see Enclose.
    if (variant.result == (singleReals ? kTypes : kReal) || (singleReals && row.name == "(int)"))
      return false;
    std::array<const ZULTaVoObjectDescriptor*, 2> types = {};
    for (unsigned i = 0; i < row.operands; ++i) {
      const Type type = variant.operands[i];
      if (type == kTypes || (type == kReal && !singleReals)) return false;
      types[i] = NumberModule().FindType(kTypeNames[type]);
    }
    return module.FindOperator(row.name, types.data(), row.operands) == variant.op;
  }
  /// The types that an operand of this one can have; kTypes stands for none.
  static std::vector<Type> TypesOf(const ZULTaVoObjectDescriptor* type) {
    if (type == ZULTaVoNumber::sDescriptor) return {kInteger, kIntegers, kReal, kReals, kReals};
    if (type == ZULTaVoInteger::sDescriptor) return {kInteger, kIntegers};
    return {TypeOf(type)};
  }
  const std::vector<std::vector<Variant>>& Operators() const {
    static const std::vector<std::vector<Variant>> kWithout = AllOperators(false),
                                                   kWith = AllOperators(true);
    return mSingleReals ? kWith : kWithout;
  }
  static Type TypeOf(const ZULTaVoObjectDescriptor* type) {
    if (type == nullptr) return kTypes;
    const auto* end = std::end(kTypeNames);
    return static_cast<Type>(
        std::find(std::begin(kTypeNames), end, std::string_view(type->GetName())) - kTypeNames);
  }

  bool Chance(std::size_t percent) { return Below(100) < percent; }
  Node& At(int index) { return mModel.nodes[static_cast<std::size_t>(index)]; }
  int Add(Node node) {
    mModel.nodes.push_back(std::move(node));
    return static_cast<int>(mModel.nodes.size()) - 1;
  }
  Type AnyType() {
    const Type type = static_cast<Type>(Below(kTypes + 3));
    return type < kTypes && (type != kReal || mSingleReals) ? type : kReals;
  }

  double DrawReal(bool moderate) {
    const double sign = Chance(50) ? 1 : -1;
    const double fraction = std::ldexp(static_cast<double>(mRandom() >> 11), -53);
    constexpr double kSpecial[] = {0, 0.5, 1, 2, 3, 0.1, 1e-9, 10, 0.25, 100};
    constexpr double kFurther[] = {3.141592653589793, 1.5707963267948966, 1e-300, 5e-324, 1e-14,
                                   1 + 1e-9};
    switch (Below(moderate ? 6 : 9)) {
      case 0:
        return sign * kSpecial[Below(std::size(kSpecial))];
      case 1:
        return sign * static_cast<double>(Below(12));
      case 2:
        return sign * static_cast<double>(Below(1000)) / 8;
      case 3:
      case 4:
      case 5:
        return sign * fraction * (Chance(50) ? 1 : 10);
      case 6:
        return sign * kFurther[Below(std::size(kFurther))];
      case 7:
        return sign * std::ldexp(fraction, static_cast<int>(Below(60)));
      default:
        return sign * std::ldexp(fraction, -static_cast<int>(Below(80)));
    }
  }
  Known Draw(Type type) {
    if (type == kBoolean) return Exactly(static_cast<double>(Below(2)));
    if (IsReal(type)) return Exactly(DrawReal(mSingleReals));
    constexpr std::size_t kSizes[] = {3, 10, 10, 50, 1000, 2147483647};
    const double sign = Chance(50) ? 1 : -1;
    if (!mSingleReals && Chance(5))
      return Exactly(sign * (2147483646 - static_cast<double>(Below(3))));
    return Exactly(sign * static_cast<double>(Below(kSizes[Below(mSingleReals ? 5 : 6)])));
  }

  int Variable(Type type) { return Variable(type, Draw(type)); }
  int Variable(Type type, const Known& known) {
    Node node{.type = type, .known = known};
    Enclose(node);
    return Add(std::move(node));
  }
  /// Gives the node a box around its value, should it be a variable.
  void Enclose(Node& node) {
    const double low = mpfr_get_d(node.known.low, MPFR_RNDD);
    const double high = mpfr_get_d(node.known.high, MPFR_RNDU);
    node.typeName = node.type == kReals && Chance(10)               ? "angle"
                    : node.type == kReals && low >= 0 && Chance(10) ? "positive"
                                                                    : kTypeNames[node.type];
    if (node.type == kReals || node.type == kIntegers) {
      const double limit = node.type == kReals ? kInfinity : 2147483646;
      node.lower = std::clamp(-Widened(-low, node.type), -limit, limit);
      node.upper = std::clamp(Widened(high, node.type), -limit, limit);
    } else if (node.type == kBoolean) {
      node.lower = Chance(50) ? 0 : low;
      node.upper = Chance(50) ? 1 : high;
    } else {  // Any, or one value
      node.lower = node.upper = (low + high) / 2;
      // What single reals make of an inverse is inexact, and no integer if it misses one by an ulp.
      if (!mSingleReals && Chance(25)) ++node.upper;
    }
  }
  double Widened(double bound, Type type) {
    const double further = static_cast<double>(1 + Below(20));
    switch (Below(8)) {
      case 0:
        return 2 * kInfinity;
      case 1:
        return std::max(bound, 0.0);
      case 2:
        return bound + further * 1e5;
      case 3:
        return type == kReals ? std::nextafter(bound, HUGE_VAL) : bound + 1;
      case 4:
        return type == kReals ? bound + std::ldexp(further, -static_cast<int>(Below(50)))
                              : bound + further;
      case 5:
        return bound + (type == kReals ? further / 8 : further);
      default:
        return bound;
    }
  }

  int Literal(Type type) {
    Node node{.type = type};
    if (!IsReal(type)) {
      node.known = Exactly(static_cast<double>(Below(12)));
      node.literal = Shortest(mpfr_get_d(node.known.low, MPFR_RNDN), true);
    } else {
      node.literal = std::to_string(Below(20)) + "." + std::to_string(Below(1000));
      mpfr_set_str(node.known.low, node.literal.c_str(), 10, MPFR_RNDD);
      mpfr_set_str(node.known.high, node.literal.c_str(), 10, MPFR_RNDU);
      if (type == kReal) node.known = Exactly(std::strtod(node.literal.c_str(), nullptr));
    }
    return Add(std::move(node));
  }

  /// An operand of that type: mostly a node that is there already.
  int Operand(Type type) {
    std::vector<int> fitting;
    for (std::size_t i = 0; i < mModel.nodes.size(); ++i)
      if (mModel.nodes[i].type == type && mModel.nodes[i].literal.empty() &&
          !(type == kBoolean && IsStated(mModel.nodes[i])))
        fitting.push_back(static_cast<int>(i));
    if (fitting.empty() || Chance(20)) return Variable(type);
    return Chance(50) ? fitting.back() : fitting[Below(fitting.size())];
  }

  /// One more application of a random operator.
  void Grow() {
    const auto& operators = Operators();
    for (int attempt = 0; attempt < 20; ++attempt) {
      const auto& variants = operators[Below(operators.size())];
      const Variant& variant = variants[Below(variants.size())];
      const std::size_t before = mModel.nodes.size();
      const std::string_view name = variant.op->GetName();
      std::array<int, 2> operands = {-1, -1};
      const auto [left, right] = variant.operands;
      if (left != kTypes) operands[0] = Operand(left);
      if (right != kTypes) {
        // A literal takes the type of its neighbour, but an exponent stays an integer.
        const bool literal =
            right != kBoolean && Chance(25) &&
            (left == right || (name == "^" && right == kIntegers && left == kReals));
        const bool equal = left == right && name.find('=') != name.npos && Chance(60);
        operands[1] = literal ? Literal(right)
                      : equal ? Variable(right, Known(At(operands[0]).known))
                              : Operand(right);
        if (literal && left == right && Chance(30)) std::swap(operands[0], operands[1]);
      }
      if (Apply(variant, operands) >= 0) return;
      mModel.nodes.resize(before);
    }
  }

  int Apply(const Variant& variant, const std::array<int, 2>& operands) {
    Application at{{}, {}, variant.operands[0], variant.operands[1], variant.result, 0};
    if (operands[0] >= 0) at.l = At(operands[0]).known;
    if (operands[1] >= 0) at.r = At(operands[1]).known;
    // Equal expressions are one, so that they have one value.
    at.branch = static_cast<int>(std::hash<double>()(mpfr_get_d(at.l.low, MPFR_RNDD)) % 7) - 3;
    const MaybeKnown known =
        Evaluate(oracle::Get(variant.op->GetName(), variant.op->GetNumberOfArguments()), at);
    if (!known) return -1;
    Node node{.type = variant.result, .known = *known, .op = variant.op, .operands = operands};
    Enclose(node);
    return Add(std::move(node));
  }

  static bool IsStated(const Node& node) {
    static const std::set<std::string_view> kStated = {"=", "<>", "<", "<=", ">", ">="};
    return node.op != nullptr && kStated.count(node.op->GetName()) != 0;
  }
  /// States what holds of a node at the point.
  void State(int index) {
    const Node node = At(index);
    if (IsStated(node)) {
      mModel.statements.push_back(index);
    } else if (node.type == kBoolean && Chance(60)) {
      mModel.statements.push_back(node.known.IsTrue() ? index : Applied("~", index, -1));
    } else {
      const int value = Variable(node.type, node.known);
      if (node.type == kReal && Chance(25)) ++At(value).upper;
      mModel.statements.push_back(
          Applied(node.type == kBoolean && Chance(30) ? "==" : "=", index, value));
    }
  }
  int Applied(const char* name, int l, int r) {
    for (const auto& variants : Operators())
      for (const Variant& variant : variants)
        if (std::string_view(name) == variant.op->GetName() && variant.operands[0] == At(l).type &&
            variant.operands[1] == (r < 0 ? kTypes : At(r).type))
          return Apply(variant, {l, r});
    return -1;
  }

  std::mt19937_64 mRandom;
  bool mSingleReals;
  Model mModel;
};

// --- What becomes of them -----------------------------------------------------------------------

struct Bounds {
  double lower, upper;
};
Bounds BoundsOf(const ZULTaVoAny& value) {
  if (const auto* boolean = ZULTaVoCast<ZULTaVoBoolean>(&value))
    return {boolean->IsTrue() ? 1.0 : 0.0, boolean->IsFalse() ? 0.0 : 1.0};
  if (value.IsAny()) return {-kInfinity, kInfinity};
  if (const auto* integer = ZULTaVoCast<ZULTaVoInteger>(&value))
    return {static_cast<double>(integer->GetLowerBound()),
            static_cast<double>(integer->GetUpperBound())};
  const auto& real = *ZULTaVoCast<ZULTaVoReal>(&value);
  return {real.GetLowerBound(), real.GetUpperBound()};
}

struct Counts {
  int exhausted = 0, boxes = 0;
};

/// How the model loses its solution by propagation, or by a search if `counts` is given, which
/// counts those that end; empty when it keeps it.
std::string Loss(const Model& model, std::uint64_t seed, Counts* counts) {
  TextModel read(model.Text());
  if (read.model == nullptr) return "cannot be read: " + read.error;
  const std::set<int> indices = model.Variables();
  const auto holds = [&](int index, const ZULTaVoAny& value) {
    const Bounds bounds = BoundsOf(value);
    const Node& node = model.nodes[static_cast<std::size_t>(index)];
    const double slack = node.type == kReal ? 1e-4 : 0;
    return node.Holds(bounds.lower - slack, bounds.upper + slack);
  };

  std::mt19937_64 random(seed);
  read.model->Network().SetFilterLimit(5000);  // some converge by one value at a time
  ZULTavSearch::Options options;
  options.limits.solutions = 500;
  options.limits.nodes = 60;
  options.hiddenNodes = 20;
  options.absoluteWidth = std::pow(10.0, static_cast<double>(random() % 9) - 6);
  options.selection = random() % 2 == 0 ? ZULTaVoAny::kLowerHalf : ZULTaVoAny::kUpperHalf;
  options.choice =
      static_cast<ZULTavSearch::VariableChoice>(random() % ZULTavSearch::kVariableChoices);
  ZULTavSearch search(read.model->Network(), read.declared, options);

  ZULTavSearch::Verdict verdict;
  if (counts == nullptr || random() % 2 == 0) {
    const auto outcome = search.Propagate(verdict);
    if (outcome == ZULTavSearch::Outcome::kBadModel) return "is a bad model";
    if (verdict == ZULTavSearch::Verdict::kContradiction) return "is refuted by propagation";
    auto index = indices.begin();
    for (const ZULTaVoAny* value : read.declared) {
      if (!holds(*index, *value)) return "loses v" + std::to_string(*index) + " by propagation";
      ++index;
    }
  }
  if (counts == nullptr) return {};
  bool found = false;
  const auto outcome = search.Run([&](const ZULTavSolution& solution) {
    auto index = indices.begin();
    bool inside = true;
    for (std::size_t i = 0; i < solution.GetSize(); ++i)
      inside &= holds(*index++, solution.GetValue(i));
    found |= inside;
    return true;
  });
  if (outcome != ZULTavSearch::Outcome::kExhausted) return {};
  ++counts->exhausted;
  counts->boxes += static_cast<int>(search.GetStatistics().solutions);
  return found                                   ? ""
         : search.GetStatistics().solutions == 0 ? "is refuted by the search"
                                                 : "is lost by the search";
}

void KeepSolutions(bool singleReals, std::uint64_t cases, Counts* counts) {
  const std::uint64_t count = TrySeeds(cases, [&](std::uint64_t seed) -> std::string {
    const Model model = RandomModel(seed, singleReals, counts == nullptr).Get();
    const std::string loss = model.statements.empty() ? "" : Loss(model, seed, counts);
    if (loss.empty()) return {};
    std::string point;
    for (const int index : model.Variables()) {
      const Mpfr& value = model.nodes[static_cast<std::size_t>(index)].known.low;
      point +=
          "// v" + std::to_string(index) + " = " + Shortest(mpfr_get_d(value, MPFR_RNDN)) + '\n';
    }
    return "the solution " + loss + '\n' + point + model.Text();
  });
  if (counts == nullptr) return;
  // Enough of them must be searched to the end, and not all of these trivial.
  EXPECT_GT(counts->exhausted, static_cast<int>(count / 4));
  EXPECT_GT(counts->boxes, 2 * counts->exhausted);
}

TEST(KnownSolutionsTest, KnowTheMeaningOfEveryOperator) {
  for (const ZULTaVoModule* module : {&NumberModule(), &RelationModule()})
    for (const ZULTaVoObjectDescriptor* descriptor : module->GetDescriptors()) {
      const auto* op = dynamic_cast<const ZULTaVoOperatorDescriptor*>(descriptor);
      if (op == nullptr) continue;
      EXPECT_NE(oracle::Find(op->GetName(), op->GetNumberOfArguments()), nullptr) << op->GetName();
    }
}

TEST(KnownSolutionsTest, AreKept) {
  for (const bool singleReals : {false, true}) {
    Counts counts;
    KeepSolutions(singleReals, singleReals ? 3000 : 5000, &counts);
    KeepSolutions(singleReals, singleReals ? 20000 : 60000, nullptr);
  }
}

}  // namespace
