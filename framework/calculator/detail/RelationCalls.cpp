#include <algorithm>
#include <limits>
#include <new>

#include "framework/calculator/detail/Interpreter.h"
#include "framework/solver/ZULTaVoReal.h"
#include "framework/solver/ZULTaVoRelation.h"

namespace zultav::detail {

// Calls of relations, which modules have over lists of values.

using Element = ZULTaVoRelationDescriptor::Element;
using Given = ZULTaVoRelationDescriptor::Given;

namespace {

/// Of a call whose numbers are reals or not.
bool IsRealElement(Element element, bool isReal) {
  return element == Element::kReal || (element == Element::kNumber && isReal);
}

/// Whether the parameter takes plain numbers here.
bool IsKnown(const ZULTaVoRelationDescriptor::Parameter& parameter, const Argument& argument) {
  const auto open = argument.FindOpen();
  const bool isKnown = open == argument.values.end();
  if (parameter.given == Given::kKnown && !isKnown)
    Fail(open->span, "'" + std::string(parameter.name) + "' must be known while the model is read");
  return isKnown && parameter.given != Given::kValues;
}

ZULTaVoRelation::Part PartOf(const Argument& argument, bool isKnown, bool isReal) {
  ZULTaVoRelation::Part part;
  part.rows = argument.rows;
  part.columns =
      static_cast<std::uint32_t>(argument.rows == 0 ? 0 : argument.values.size() / argument.rows);
  part.isKnown = isKnown;
  part.isReal = isReal;
  part.firstIndex = argument.firstIndex;
  if (isKnown && isReal) {
    std::vector<double> reals;
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    for (const Value& value : argument.values) {
      const Constant real =
          value.IsEverything() ? Constant::Real(-kInfinity, kInfinity, 0) : value.constant.AsReal();
      reals.insert(reals.end(), {real.lower, real.upper});
    }
    part.reals = std::make_shared<const std::vector<double>>(std::move(reals));
  } else if (isKnown) {
    std::vector<std::int64_t> integers;
    for (const Value& value : argument.values)
      integers.push_back(value.IsEverything() ? ZULTaVoRelationArgument::kAnything
                                              : value.constant.integer);
    part.integers = std::make_shared<const std::vector<std::int64_t>>(std::move(integers));
  }
  return part;
}

}  // namespace

// --- What calls mean --------------------------------------------------------------------------

bool Interpreter::IsReal(const Value& value) const {
  return value.IsConstant() ? value.constant.IsReal()
                            : value.IsExpression() && mRegistry.IsReal(mBuilder->TypeOf(value));
}

/// An operator of the same name is called as such.
bool Interpreter::IsRelationCall(const Node& node) const {
  if (node.kind != Node::Kind::kCall) return false;
  const std::string& name = mNames.GetName(node.data);
  return mRegistry.HasRelation(name) && !mRegistry.HasOperator(name);
}

/// The relation that a call names, with its arguments as its parameters want them.
Interpreter::RelationCall Interpreter::ResolveRelation(const Node& node, const Value* operands) {
  const std::string name = mNames.GetName(node.data);
  RelationCall call;
  call.relation = mRegistry.FindRelation(name, node.count);
  if (call.relation == nullptr)
    Fail(node.span, "no relation '" + name + "' takes " + std::to_string(node.count) + " arguments",
         mRegistry.DescribeRelations(name));
  if (mConstantOnly > 0)
    Fail(node.span, "the relation '" + name + "' cannot be decided while the model is read");
  const auto& parameters = call.relation->GetDefinition().parameters;
  for (std::uint32_t i = 0; i < node.count; ++i) {
    call.arguments.push_back(ArgumentOf(operands[i], parameters[i]));
    const std::vector<Value>& values = call.arguments.back().values;
    call.isReal =
        call.isReal || (parameters[i].element == Element::kNumber &&
                        std::any_of(values.begin(), values.end(),
                                    [this](const Value& value) { return IsReal(value); }));
  }
  for (std::uint32_t i = 0; i < node.count; ++i)
    for (Value& value : call.arguments[i].values)
      if (!value.IsEverything()) value = Adapt(value, parameters[i].element, call.isReal);
  return call;
}

/// The values of an operand. Where a list is wanted, lists of lists count as one.
Argument Interpreter::ArgumentOf(const Value& operand,
                                 const ZULTaVoRelationDescriptor::Parameter& parameter) {
  const std::string_view size = parameter.size;
  if ((operand.HasItems() || operand.IsSet()) == size.empty())
    Fail(operand.span, "'" + std::string(parameter.name) + "' is " +
                           (size.empty() ? "one value, not a list" : "a list, not one value"));
  Argument argument;
  SpreadInto(argument.values, operand);
  if (operand.HasItems()) argument.firstIndex = FirstIndexOf(operand);
  for (const Value& value : argument.values) {
    if (parameter.takesAnything && value.IsEverything()) continue;
    CheckOperand({}, value);
    if (parameter.takesAnything && value.constant.integer == ZULTaVoRelationArgument::kAnything)
      Fail(value.span, "expected a number above " + std::to_string(value.constant.integer));
  }
  if (size.size() < 2) return argument;
  std::vector<Value> row;
  argument.rows = static_cast<std::uint32_t>(operand.HasItems() ? SizeOf(operand) : 0);
  for (std::size_t i = 0; i < argument.rows; ++i) {
    const Value item = ItemOf(operand, i);
    row.clear();
    SpreadInto(row, item);
    if (!item.HasItems() || row.size() * argument.rows != argument.values.size())
      Fail(operand.span,
           "'" + std::string(parameter.name) + "' is a list of rows, all of one length");
  }
  return argument;
}

/// The value as one of what a parameter takes: a truth counts as 0 or 1, an integer as a real.
Value Interpreter::Adapt(const Value& value, Element element, bool isReal) {
  const bool isTruth = AreTruths(&value, 1);
  if (element == Element::kTruth) {
    if (!isTruth) Fail(value.span, "expected a truth value");
    return value;
  }
  Value number = isTruth ? Count({value}, value.span, nullptr) : value;
  if (IsRealElement(element, isReal)) {
    if (!number.IsConstant() && !IsReal(number))
      number = Operate({mRealConversion, Op::kNone, value.span}, &number, 1, nullptr);
    return number;
  }
  if (IsReal(number)) Fail(value.span, "expected an integer");
  return number;
}

Value Interpreter::EvaluateRelation(const Node& node, const Value* operands, const Value* target) {
  const RelationCall call = ResolveRelation(node, operands);
  return mBuilder->Call(*call.relation, call.arguments, call.isReal, node.span, target);
}

void Interpreter::AssertRelation(NodeRange range) {
  const Node& root = RootOf(range);
  std::vector<Value> operands;
  for (const NodeRange operand : OperandsOf(range)) operands.push_back(Evaluate(operand));
  const RelationCall call = ResolveRelation(root, operands.data());
  if (call.relation->GetDefinition().result)
    Fail(root.span, "'" + mNames.GetName(root.data) + "' has a value; a statement has none",
         {"write 'x = " + mNames.GetName(root.data) + "(…)'"});
  if (std::all_of(call.arguments.begin(), call.arguments.end(), [](const Argument& argument) {
        return argument.FindOpen() == argument.values.end();
      }))
    return AssertValue(  // there may be no value at all, but always the truth
        mBuilder->Call(*call.relation, call.arguments, call.isReal, root.span, nullptr), range);
  mBuilder->StateRelation(*call.relation, call.arguments, call.isReal, root.span, mLine);
}

// --- What they become -------------------------------------------------------------------------

ModelBuilder::Type ModelBuilder::LiteralTypeOf(Element element, bool isReal, Span span) const {
  if (element == Element::kTruth)
    return RequireType(mRegistry.ChooseType(Constant::Boolean(true), nullptr), "truth values",
                       span);
  if (IsRealElement(element, isReal))
    return RequireType(mRegistry.ChooseType(Constant::Integer(0).AsReal(), nullptr), "reals", span);
  return RequireType(mRegistry.GetIntegerType(), "integers", span);
}

/// Adds the relation between its arguments, its result where it has one, and its truth unless that
/// is null. Answers the place of the list of its arguments.
std::uint32_t ModelBuilder::Connect(const ZULTaVoRelationDescriptor& relation,
                                    const std::vector<Argument>& arguments, bool isReal, Span span,
                                    ZULTaVoAny* truth, const Value* target, ZULTaVoAny*& result) {
  const auto& definition = relation.GetDefinition();
  std::vector<ZULTaVoRelation::Part> parts;
  std::vector<std::uint32_t> list;
  if (definition.result)
    parts.push_back(PartOf({{Value()}}, false, IsRealElement(definition.result->element, isReal)));
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const Element element = definition.parameters[i].element;
    const bool isKnown = IsKnown(definition.parameters[i], arguments[i]);
    parts.push_back(PartOf(arguments[i], isKnown, IsRealElement(element, isReal)));
    if (isKnown) continue;
    for (const Value& value : arguments[i].values)
      list.push_back(value.IsExpression() ? value.index
                                          : LeafFor(value, LiteralTypeOf(element, isReal, span)));
  }
  const ZULTaVoRelation constraint(&relation, std::move(parts), truth != nullptr);
  if (const std::string fault = constraint.Check(); !fault.empty()) Fail(span, fault);
  std::vector<ZULTaVoObject*> objects;
  if (definition.result) {
    result = ResultObject(LiteralTypeOf(definition.result->element, isReal, span), list, target);
    objects.push_back(result);
  }
  for (const std::uint32_t expression : list) objects.push_back(ObjectOf(expression));
  if (truth != nullptr) objects.push_back(truth);
  CountOperations(objects.size(), span);
  if (objects.size() > std::numeric_limits<std::uint32_t>::max() ||
      !mModel.mNetwork.AddRelation(constraint, objects.data(),
                                   static_cast<unsigned int>(objects.size())))
    throw std::bad_alloc();
  return AppendList(list);
}

Value ModelBuilder::Call(const ZULTaVoRelationDescriptor& relation,
                         const std::vector<Argument>& arguments, bool isReal, Span span,
                         const Value* target) {
  ZULTaVoAny* object = nullptr;
  if (!relation.GetDefinition().result)
    object = ResultObject(LiteralTypeOf(Element::kTruth, false, span), {}, target);
  const std::uint32_t list = Connect(relation, arguments, isReal, span, object, target, object);
  const auto constraint = static_cast<std::uint32_t>(mModel.mNetwork.GetNumberOfConstraints() - 1);
  return Value::OfExpression(Append({
                                 nullptr, object, {kNone, list},
                                   constraint
  }),
                             span);
}

void ModelBuilder::StateRelation(const ZULTaVoRelationDescriptor& relation,
                                 const std::vector<Argument>& arguments, bool isReal, Span span,
                                 std::uint32_t line) {
  ZULTaVoAny* none = nullptr;
  const std::uint32_t list = Connect(relation, arguments, isReal, span, nullptr, nullptr, none);
  const auto constraint = static_cast<std::uint32_t>(mModel.mNetwork.GetNumberOfConstraints() - 1);
  mModel.mStatements.push_back({StatementKind::kRelation, list, constraint, line});
}

void ModelBuilder::StateMember(const Value& value, const ZULTaVoRelation::Part& set, Span span,
                               std::uint32_t line) {
  CountOperations(1, span);
  ZULTaVoObject* object = ObjectOf(value.index);
  if (!mModel.mNetwork.AddRelation(ZULTaVoMembership::Make(set), &object, 1))
    throw std::bad_alloc();
  const auto constraint = static_cast<std::uint32_t>(mModel.mNetwork.GetNumberOfConstraints() - 1);
  mModel.mStatements.push_back(
      {StatementKind::kRelation, AppendList({value.index}), constraint, line});
}

}  // namespace zultav::detail
