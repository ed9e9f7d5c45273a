// Functions of one or two numbers, as operators. A search goes by their rules; the propagators
// narrow what an embedder's network holds.

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <utility>
#include <vector>

#include "framework/intervals/IntegerRange.h"
#include "framework/intervals/RealRange.h"
#include "framework/solver/ZULTaVoInteger.h"
#include "framework/solver/ZULTaVoModule.h"
#include "framework/solver/ZULTaVoReal.h"
#include "relations/Relations.h"

namespace zultav::relations {

namespace {

using R = RealRange;
using I = IntegerRange;

/// A function: all values for operands, and the part of an operand that may have a value in z.
/// Unary ones ignore y, and have no second operand.
template <class Range>
struct Function {
  const char* name;
  const char* meaning;
  ZULTaVoRule rule;
  Range (*evaluate)(const Range& x, const Range& y);
  Range (*toFirst)(const Range& z, const Range& x, const Range& y);
  const char* firstName = "x";
  const char* secondName = nullptr;
  Range (*toSecond)(const Range& z, const Range& x, const Range& y) = nullptr;
};

constexpr R kNonNegative = {0, R::sMaxValue};

#define OF(formula) [](const auto& x, const auto& y) { return (void)y, formula; }
#define BACK(formula) \
  [](const auto& z, const auto& x, const auto& y) { return (void)x, (void)y, formula; }

// clang-format off
constexpr Function<R> kRealFunctions[] = {
    {"sinh", "hyperbolic sine", ZULTaVoRule::kSinh, OF(Sinh(x)), BACK(Asinh(z))},
    {"cosh", "hyperbolic cosine", ZULTaVoRule::kCosh, OF(Cosh(x)), BACK(InverseAbs(Acosh(z), x))},
    {"tanh", "hyperbolic tangent", ZULTaVoRule::kTanh, OF(Tanh(x)), BACK(Atanh(z))},
    {"asinh", "inverse of sinh", ZULTaVoRule::kAsinh, OF(Asinh(x)), BACK(Sinh(z))},
    {"acosh", "inverse of cosh that is not negative, of x >= 1", ZULTaVoRule::kAcosh,
     OF(Acosh(x)), BACK(Cosh(Intersection(z, kNonNegative)))},
    {"atanh", "inverse of tanh, of -1 < x < 1", ZULTaVoRule::kAtanh, OF(Atanh(x)), BACK(Tanh(z))},
    {"log2", "logarithm to the base 2, of x > 0", ZULTaVoRule::kLog2, OF(Log2(x)), BACK(Exp2(z))},
    {"log10", "logarithm to the base 10, of x > 0", ZULTaVoRule::kLog10, OF(Log10(x)),
     BACK(Exp10(z))},
    {"exp2", "2 to the power of x", ZULTaVoRule::kExp2, OF(Exp2(x)), BACK(Log2(z))},
    {"cbrt", "cubic root, of negative numbers, too", ZULTaVoRule::kCbrt, OF(Cbrt(x)),
     BACK(Power(z, 3))},
    {"arcsin", "angle within -pi/2 and pi/2 whose sine is x", ZULTaVoRule::kArcsin, OF(Asin(x)),
     BACK(InverseAsin(z, x))},
    {"arccos", "angle within 0 and pi whose cosine is x", ZULTaVoRule::kArccos, OF(Acos(x)),
     BACK(InverseAcos(z, x))},
    {"arctan", "angle between -pi/2 and pi/2 whose tangent is x", ZULTaVoRule::kArctan,
     OF(Atan(x)), BACK(InverseAtan(z, x))},
    {"atan2", "angle of the point (x, y) above -pi and up to pi; (0, 0) has none",
     ZULTaVoRule::kAtan2, OF(Atan2(x, y)), BACK(InverseAtan2(z, x, y)), "y", "x",
     BACK(InverseAtan2Abscissa(z, x, y))},
    {"hypot", "distance of the point (x, y) from (0, 0)", ZULTaVoRule::kHypot, OF(Hypot(x, y)),
     BACK(InverseHypot(z, x, y)), "x", "y", BACK(InverseHypot(z, y, x))},
};

constexpr Function<I> kIntegerFunctions[] = {
    {"div", "quotient, truncated toward 0; by 0 there is none", ZULTaVoRule::kDiv, OF(Div(x, y)),
     BACK(DivDividends(z, x, y)), "x", "y", BACK(DivDivisors(z, x, y))},
    {"gcd", "greatest common divisor; of 0 and 0 it is 0", ZULTaVoRule::kGcd, OF(Gcd(x, y)),
     BACK(GcdArguments(z, x, y)), "x", "y", BACK(GcdArguments(z, y, x))},
    {"pow", "power; negative exponents have 1 and -1 alone", ZULTaVoRule::kPower, OF(Power(x, y)),
     BACK(PowerBases(z, x, y)), "x", "n", BACK(PowerExponents(z, x, y))},
};
// clang-format on
#undef OF
#undef BACK

void Get(const ZULTaVoDomains& values, std::uint32_t i, R& range) {
  range = {values.GetRealLower(i), values.GetRealUpper(i)};
}
void Get(const ZULTaVoDomains& values, std::uint32_t i, I& range) {
  range = {values.GetLower(i), values.GetUpper(i)};
}
bool Narrow(ZULTaVoDomains& values, std::uint32_t i, const R& range) {
  return !range.IsEmpty() && values.Intersect(i, range.lower, range.upper);
}
bool Narrow(ZULTaVoDomains& values, std::uint32_t i, const I& range) {
  return !range.IsEmpty() && values.SetLower(i, range.lower) && values.SetUpper(i, range.upper);
}

/// value 0 = function(value 1, value 2).
template <class Range>
class FunctionPropagator final : public ZULTaVoPropagator {
 public:
  explicit FunctionPropagator(const Function<Range>& function) : mFunction(function) {}

  Wake GetWake(std::uint32_t) const override { return Wake::kOnBounds; }
  Cost GetCost() const override { return Cost::kConstant; }
  Outcome Propagate(ZULTaVoDomains& values) override {
    const bool isBinary = mFunction.toSecond != nullptr;
    Range z, x, y;
    Get(values, 1, x);
    Get(values, isBinary ? 2 : 1, y);
    if (!Narrow(values, 0, mFunction.evaluate(x, y))) return Outcome::kFailed;
    Get(values, 0, z);
    if (!Narrow(values, 1, mFunction.toFirst(z, x, y))) return Outcome::kFailed;
    if (!isBinary) return Outcome::kFixpoint;
    Range narrowed, other;
    Get(values, 1, narrowed);
    if (!Narrow(values, 2, mFunction.toSecond(z, narrowed, y))) return Outcome::kFailed;
    Get(values, 2, other);
    return narrowed == x && other == y ? Outcome::kFixpoint : Outcome::kAgain;
  }

 private:
  const Function<Range>& mFunction;
};

template <const auto& Table, std::size_t Row>
std::unique_ptr<ZULTaVoPropagator> Make(Arguments) {
  return std::unique_ptr<ZULTaVoPropagator>(new FunctionPropagator(Table[Row]));
}

template <const auto& Table, std::size_t... Rows>
void Describe(Element element, std::vector<Definition>& all, std::index_sequence<Rows...>) {
  const auto describe = [&](const auto& function, auto make) {
    Definition definition = {.name = function.name,
                             .meaning = function.meaning,
                             .parameters = {{.name = function.firstName, .element = element}},
                             .result = {{.name = "value", .element = element}},
                             .make = make,
                             .rule = function.rule};
    if (function.secondName != nullptr)
      definition.parameters.push_back({.name = function.secondName, .element = element});
    all.push_back(std::move(definition));
  };
  (describe(Table[Rows], &Make<Table, Rows>), ...);
}

/// A constraint like any other, by which operators are linked.
class FunctionDescriptor final : public ZULTaVoRelationDescriptor {
 public:
  using ZULTaVoRelationDescriptor::ZULTaVoRelationDescriptor;
  Kind GetKind() const override { return Kind::kConstraint; }
};

/// Whether values of the type are sets of numbers, and not one number or any.
bool HoldsSets(const ZULTaVoObjectDescriptor& type) {
  const auto place =
      std::make_unique<std::max_align_t[]>(type.GetObjectSize() / sizeof(std::max_align_t) + 1);
  auto* value = static_cast<ZULTaVoAny*>(static_cast<ZULTaVoObject*>(type.InitObject(place.get())));
  if (value == nullptr) return false;
  value->SetAny();
  const bool holdsSets = value->GetCardinality() < -1;
  type.DestroyObject(value);
  return holdsSets;
}

/// The first type of sets of `numbers` that the modules registered, and whose it is.
struct SetType {
  const ZULTaVoObjectDescriptor* type = nullptr;
  ZULTaVoModule* module = nullptr;
};
SetType FindSetType(const std::vector<ZULTaVoModule*>& modules,
                    const ZULTaVoObjectDescriptor* numbers) {
  for (ZULTaVoModule* module : modules)
    for (const ZULTaVoObjectDescriptor* type : module->GetDescriptors())
      if (type->GetKind() == ZULTaVoObjectDescriptor::Kind::kType && type->GetObjectSize() != 0 &&
          numbers->IsMatched(type) && HoldsSets(*type))
        return {type, module};
  return {};
}

}  // namespace

std::vector<Definition> DescribeFunctions() {
  std::vector<Definition> all;
  Describe<kRealFunctions>(Element::kReal, all,
                           std::make_index_sequence<std::size(kRealFunctions)>());
  Describe<kIntegerFunctions>(Element::kInteger, all,
                              std::make_index_sequence<std::size(kIntegerFunctions)>());
  return all;
}

void RegisterFunctions(ZULTaVoModule& module, const std::vector<ZULTaVoModule*>& others) {
  const SetType integers = FindSetType(others, ZULTaVoInteger::sDescriptor);
  const SetType reals = FindSetType(others, ZULTaVoReal::sDescriptor);
  for (Definition& definition : DescribeFunctions()) {
    const bool isReal = definition.result->element == Element::kReal;
    const SetType& result = isReal ? reals : integers;
    const ZULString name(definition.name);
    const auto* constraint = new FunctionDescriptor(std::move(definition));
    module.AddObjectDescriptor(constraint);
    if (result.type == nullptr) continue;
    module.AddLoadedModule(result.module);  // its types must outlive the operators
    const ZULTaVoObjectDescriptor* operand =
        isReal ? ZULTaVoNumber::sDescriptor : ZULTaVoInteger::sDescriptor;
    module.AddObjectDescriptor(
        constraint->GetNumberOfArguments() == 1
            ? ZULTaVoCreateUnaryOperator(name, operand, result.type, constraint)
            : ZULTaVoCreateBinaryOperator(name, operand, operand, result.type, constraint));
  }
}

}  // namespace zultav::relations
