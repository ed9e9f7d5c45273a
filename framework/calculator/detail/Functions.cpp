#include <utility>

#include "framework/calculator/detail/Interpreter.h"

namespace zultav::detail {

// Functions that a model defines, and those of the language that take lists and sets.

// --- Of the model -----------------------------------------------------------------------------

/// The names in it mean what they mean here, wherever it is called.
void Interpreter::ExecuteFunction(const Statement& statement) {
  CheckNames(statement.expression);
  Symbol symbol;
  symbol.kind = Symbol::Kind::kFunction;
  symbol.data = static_cast<std::uint32_t>(mFunctions.size());
  const std::uint32_t name = statement.declarators[0].name;
  if (mRegistry.HasOperator(mNames.GetName(name)))
    Fail(statement.span, "'" + mNames.GetName(name) + "' is an operator");
  Introduce(name, statement.span, symbol);
  if (mKept == nullptr) mKept = std::make_shared<const Syntax>(*mSyntax);
  mFunctions.push_back({mKept, mSource, statement.parameters, statement.expression});
}

void Interpreter::CheckNames(NodeRange body) {
  for (std::uint32_t i = body.first; i <= body.last; ++i) {
    const Node& node = mSyntax->nodes[i];
    const bool isCall = node.kind == Node::Kind::kCall;
    if (!isCall && node.kind != Node::Kind::kName && node.kind != Node::Kind::kElement) continue;
    const Symbol::Kind kind = SymbolOf(node.data).kind;
    const std::string& name = mNames.GetName(node.data);
    const bool isKnown = mNames.IsLocal(node.data) || mRegistry.HasOperator(name) ||
                         (kind != Symbol::Kind::kUnknown && kind != Symbol::Kind::kBroken);
    const bool isWord =
        isCall && (mRegistry.HasOperator("(" + name + ")") || name == "size" || name == "union" ||
                   name == "intersection" || name == "symmetric");
    if (!isKnown && !isWord) FailUnknown(node, isCall ? "unknown operator" : "unknown name");
  }
}

/// Hands the body to `use`, the parameters having the values of the operands.
void Interpreter::Call(const Node& node, std::vector<Value> operands,
                       const std::function<void(NodeRange body)>& use) {
  const Symbol symbol = SymbolOf(node.data);
  const Function& function = mFunctions[symbol.data];
  if (operands.size() != function.parameters.size())
    Fail(node.span,
         "'" + mNames.GetName(node.data) + "' takes " + std::to_string(function.parameters.size()) +
             " operands, not " + std::to_string(operands.size()),
         {"it was introduced in " + PlaceOf(symbol)});
  constexpr std::size_t kSteps = 2;  // of a loop, that a call takes as long as
  CountIteration(node.span, kSteps);
  const std::size_t known = mConstants.size();
  for (std::size_t i = 0; i < operands.size(); ++i) {
    Symbol& parameter = SymbolOf(function.parameters[i]);
    parameter.kind = Symbol::Kind::kConstant;
    parameter.data = static_cast<std::uint32_t>(mConstants.size());
    mConstants.push_back(std::move(operands[i]));
  }
  const Syntax* const outerSyntax = std::exchange(mSyntax, function.syntax.get());
  const Source* const outerSource = mSource;
  SetSource(function.source);
  const auto leave = [&] {
    mSyntax = outerSyntax;
    SetSource(outerSource);
    mConstants.resize(known);
    for (const std::uint32_t parameter : function.parameters) SymbolOf(parameter) = Symbol();
  };
  try {
    use(function.body);
  } catch (ModelError& error) {
    leave();
    if (error.source == nullptr) error.source = function.source;
    constexpr std::size_t kMostNotes = 8;
    if (error.notes.size() < kMostNotes)
      error.notes.push_back("in '" + mNames.GetName(node.data) + "', used in " +
                            mSource->NameLine(mSource->GetLine(node.span.position), error.source));
    throw;
  }
  leave();
}

// --- Of the language --------------------------------------------------------------------------

/// Whether it calls a name to which neither the model nor a module gives a meaning.
bool Interpreter::IsFreeCall(const Node& node, std::string_view name) const {
  return node.kind == Node::Kind::kCall && mNames.GetName(node.data) == name &&
         !mRegistry.HasOperator(name);
}

/// size(list or set), union(sets), intersection(sets)
Value Interpreter::EvaluateSetFunction(const std::string& name, const Value* operands,
                                       const Node& node) {
  if (node.count == 0) Fail(node.span, "'" + name + "' of nothing is undefined");
  if (name == "size") {
    if (node.count != 1 || (!operands[0].IsSet() && !operands[0].HasItems()))
      Fail(node.span, "'size' takes one list or set");
    if (operands[0].HasItems())
      return Value::Of(Constant::Integer(static_cast<std::int64_t>(SizeOf(operands[0]))),
                       node.span);
    const std::uint64_t size = operands[0].Set().GetSize();
    if (size > INT64_MAX) Fail(node.span, "this set is too large");
    return Value::Of(Constant::Integer(static_cast<std::int64_t>(size)), node.span);
  }
  for (std::uint32_t i = 0; i < node.count; ++i)
    if (!operands[i].IsSet())
      Fail(operands[i].span, "'" + name + "' takes sets; this is " + Describe(operands[i]));
  IntegerSet set = operands[0].Set();
  for (std::uint32_t i = 1; i < node.count; ++i)
    set = name == "union" ? set.Union(operands[i].Set()) : set.Intersection(operands[i].Set());
  return Value::OfSet(std::move(set), node.span);
}

/// symmetric(x, y, …): what can be exchanged comes in order, numbers by size, lists as in a
/// dictionary. A single list stands for its items.
void Interpreter::AssertSymmetric(NodeRange range) {
  const Span span = RootOf(range).span;
  std::vector<Value> items;
  for (const NodeRange operand : OperandsOf(range)) items.push_back(Evaluate(operand));
  if (items.size() == 1 && items[0].HasItems()) {
    const Value list = std::exchange(items, {})[0];
    for (std::size_t i = 0; i < SizeOf(list); ++i) AddTerm(items, ItemOf(list, i));
  }
  for (std::size_t i = 1; i < items.size(); ++i) {
    std::vector<Value> before, after;
    SpreadInto(before, items[i - 1]);
    SpreadInto(after, items[i]);
    if (before.size() != after.size())
      Fail(span, "'symmetric' takes lists of the same length; these have " +
                     std::to_string(before.size()) + " and " + std::to_string(after.size()) +
                     " items");
    if (before.empty()) continue;
    // Before the last place: less, or equal and in order from the next one on.
    Value ordered = Join(Op::kIsLessOrEqual, before.back(), after.back(), span);
    for (std::size_t k = before.size() - 1; k-- > 0;) {
      const Value equal = Join(Op::kIsEqual, before[k], after[k], span);
      ordered = Join(Op::kOr, Join(Op::kIsLess, before[k], after[k], span),
                     Join(Op::kAnd, equal, ordered, span), span);
    }
    AssertValue(ordered, range);
  }
}

}  // namespace zultav::detail
