#include <algorithm>
#include <cmath>
#include <utility>

#include "framework/calculator/detail/Interpreter.h"

namespace zultav::detail {

// How the interpreter evaluates expressions: in postfix order, on a stack.

namespace {

/// The operator that combines the terms.
Op OpOf(Aggregate aggregate) {
  switch (aggregate) {
    case Aggregate::kSum:
      return Op::kAdd;
    case Aggregate::kProduct:
      return Op::kMultiply;
    case Aggregate::kMin:
      return Op::kMinimum;
    case Aggregate::kMax:
      return Op::kMaximum;
    case Aggregate::kExists:
      return Op::kOr;
    default:
      return Op::kAnd;
  }
}

}  // namespace

Span Interpreter::SpanOf(NodeRange range) const {
  const Span first = mSyntax->nodes[range.first].span;
  const Span root = RootOf(range).span;
  const std::uint32_t begin = std::min(first.position, root.position);
  return {begin, std::max(first.End(), root.End()) - begin};
}

// --- Expressions ------------------------------------------------------------------------------

Value Interpreter::Evaluate(NodeRange range, const Value* target) {
  const Scope depth(mDepth);
  CheckDepth(range);
  for (std::uint32_t i = range.first; i <= range.last; ++i) {
    const Node& node = mSyntax->nodes[i];
    Value value;
    std::size_t operands = 0;
    if (node.kind == Node::Kind::kBegin) {
      const Comprehension& comprehension = mSyntax->comprehensions[node.data];
      i = comprehension.end;
      value = EvaluateComprehension(comprehension, node.span, i == range.last ? target : nullptr);
    } else if (node.kind == Node::Kind::kIf) {
      const Conditional& conditional = mSyntax->conditionals[node.data];
      i = conditional.end;
      value = EvaluateConditional(conditional, node.span, i == range.last ? target : nullptr);
    } else {
      operands = node.count;
      value = EvaluateNode(node, mStack.data() + (mStack.size() - operands),
                           i == range.last ? target : nullptr);
    }
    mStack.resize(mStack.size() - operands);
    mStack.push_back(value);
  }
  Value result = std::move(mStack.back());
  mStack.pop_back();
  return result;
}

/// The source nests neither expressions nor statements beyond this, but calls of functions may.
void Interpreter::CheckDepth(NodeRange range) const {
  if (mDepth > 2 * mLimits.nesting)
    Fail(RootOf(range).span, "functions within functions are deeper than the limit of " +
                                 std::to_string(2 * mLimits.nesting) + " levels");
}

Value Interpreter::EvaluateNode(const Node& node, const Value* operands, const Value* target) {
  switch (node.kind) {
    case Node::Kind::kConstant:
      return Value::Of(mSyntax->constants[node.data], node.span);
    case Node::Kind::kName:
      return EvaluateName(node);
    case Node::Kind::kElement:
      return EvaluateElement(node, operands, target);
    case Node::Kind::kRange:
      return EvaluateRange(operands, node.span);
    case Node::Kind::kLiteral:
      return MakeList({operands, operands + node.count}, 1, node.span);
    case Node::Kind::kSet:
      return EvaluateSetLiteral(operands, node.count, node.span);
    case Node::Kind::kChain:
      return EvaluateChain(node, operands);
    case Node::Kind::kEverything: {
      Value value;
      value.kind = Value::Kind::kEverything;
      value.span = node.span;
      return value;
    }
    case Node::Kind::kPrefix:
    case Node::Kind::kBinary:
      return Operate({node.data, node.op, node.span}, operands, node.count, target);
    case Node::Kind::kCall:
      return EvaluateCall(node, operands, target);
    default: {
      std::vector<Value> terms;
      for (std::uint32_t i = 0; i < node.count; ++i) SpreadInto(terms, operands[i]);
      return Combine(node.aggregate, std::move(terms), node.span, target);
    }
  }
}

Value Interpreter::EvaluateName(const Node& node) {
  const Symbol symbol = SymbolOf(node.data);
  Value value;
  switch (symbol.kind) {
    case Symbol::Kind::kIndex:
      return Value::Of(Constant::Integer(symbol.value), node.span);
    case Symbol::Kind::kConstant: {
      const auto definition = mDefinitions.find(node.data);
      if (definition != mDefinitions.end()) definition->second.used = true;
      value = mNames.IsLocal(node.data) ? mConstants[symbol.data]
                                        : mBuilder->Import(mConstants[symbol.data]);
      value.span = node.span;
      return value;
    }
    case Symbol::Kind::kVariable: {
      if (mConstantOnly > 0)
        Fail(node.span, "'" + mNames.GetName(node.data) +
                            "' is a variable; expected what is known while the model is read");
      const bool isArray = mBuilder->GetVariable(symbol.data).IsArray();
      value.kind = isArray ? Value::Kind::kArray : Value::Kind::kExpression;
      value.index = isArray ? symbol.data : mBuilder->LeafOf(symbol.data, 0);
      value.span = node.span;
      return value;
    }
    default:
      break;
  }
  if (symbol.kind == Symbol::Kind::kUnknown && mRegistry.HasOperator(mNames.GetName(node.data), 0))
    return Operate({node.data, Op::kNone, node.span}, nullptr, 0, nullptr);
  if (symbol.kind == Symbol::Kind::kFunction)
    Fail(node.span,
         "expected '(' and operands after the function '" + mNames.GetName(node.data) + "'");
  FailUnknown(node, mRegistry.HasOperator(mNames.GetName(node.data))
                        ? "expected '(' and operands after the operator"
                        : "unknown name");
}

/// A registered operator by its name; `real(x)` is the operator "(real)".
Value Interpreter::EvaluateCall(const Node& node, const Value* operands, const Value* target) {
  const std::string name = mNames.GetName(node.data);
  if (SymbolOf(node.data).kind == Symbol::Kind::kFunction) {
    Value result;
    Call(node, {operands, operands + node.count},
         [&](NodeRange body) { result = Evaluate(body, target); });
    result.span = node.span;
    return result;
  }
  if (IsFreeCall(node, "size") || IsFreeCall(node, "union") || IsFreeCall(node, "intersection"))
    return EvaluateSetFunction(name, operands, node);
  std::uint32_t registered = node.data;
  if (IsRelationCall(node)) return EvaluateRelation(node, operands, target);
  if (!mRegistry.HasOperator(name)) {
    const std::string conversion = "(" + name + ")";
    if (!mRegistry.HasOperator(conversion)) {
      const Symbol::Kind kind = SymbolOf(node.data).kind;
      if (kind != Symbol::Kind::kUnknown && kind != Symbol::Kind::kBroken)
        Fail(node.span, "'" + name + "' is no operator that can be applied");
      FailUnknown(node, "unknown operator");
    }
    registered = mNames.Intern(conversion);
  }
  if (node.count > 2 || !mRegistry.HasOperator(mNames.GetName(registered), node.count)) {
    Fail(node.span, "no operator '" + name + "' takes " + std::to_string(node.count) + " operands",
         mRegistry.DescribeOperators(mNames.GetName(registered), nullptr, 0));
  }
  return Operate({registered, Op::kNone, node.span}, operands, node.count, target);
}

void Interpreter::CheckOperand(const Operation& operation, const Value& operand) const {
  if (operand.kind == Value::Kind::kArray) {
    const ZULTavModel::Variable& variable = mBuilder->GetVariable(operand.index);
    Fail(operand.span, "'" + variable.name + "' is an array; expected one element" +
                           (variable.values.empty() ? "" : ", such as " + variable.NameOf(0)));
  }
  if (!operand.IsConstant() && !operand.IsExpression())
    Fail(operand.span, "this is " + Describe(operand) + "; expected one value");
  if (operand.asserts && IsConnective(operation.op) && mBuilder->IsBoolean(operand))
    Fail(operand.span, "this comparison is stated, it has no truth value",
         {"for the truth of a comparison write '==', '<<>>', '<<', '<==', '>>', '>=='"});
}

Value Interpreter::Operate(const Operation& operation, const Value* operands, unsigned int count,
                           const Value* target) {
  if (operation.op == Op::kIn) return EvaluateMember(operands[0], operands[1], operation.span);
  const bool isTruthTable = operation.op == Op::kEquivalent || operation.op == Op::kXor;
  for (unsigned int i = 0; isTruthTable && i < count; ++i) {
    CheckOperand(operation, operands[i]);
    if (!AreTruths(&operands[i], 1))
      Fail(operands[i].span, "'" + mNames.GetName(operation.name) +
                                 "' stands between truth values; this is " + Describe(operands[i]));
  }
  if (isTruthTable)
    return Join(operation.op == Op::kXor ? Op::kIsUnequal : Op::kIsEqual, operands[0], operands[1],
                operation.span, target);
  if (mTruthsOnly > 0 && mConstantOnly == 0 && IsAsserting(operation.op))
    return Operate(OperationOf(WithoutAssertion(operation.op), operation.span), operands, count,
                   target);
  if (operation.name == mIntegerConversion && count == 1 && AreTruths(operands, 1))
    return Count({operands[0]}, operation.span, target);
  bool constant = count > 0;
  for (unsigned int i = 0; i < count; ++i) {
    CheckOperand(operation, operands[i]);
    constant = constant && operands[i].IsConstant();
  }
  const bool asserts = IsAsserting(operation.op);
  if (constant && operation.op != Op::kNone && (!asserts || mConstantOnly > 0)) {
    try {
      if (const auto folded = FoldConstants(operation.op, operands[0].constant,
                                            count == 2 ? &operands[1].constant : nullptr))
        return Value::Of(*folded, operation.span);
    } catch (const ConstantError& error) {
      Fail(operation.span, error.message);
    }
  }
  if (asserts && mConstantOnly > 0)
    Fail(operation.span, "this comparison cannot be decided while the model is read");
  if (asserts) return mBuilder->Relate(operation, operands[0], operands[1]);
  if (mConstantOnly > 0) return mBuilder->ApplyToConstants(operation, operands, count);
  return mBuilder->Apply(operation, operands, count, target);
}

// --- Aggregates -------------------------------------------------------------------------------

/// More terms than operators that could combine them are refused before they fill the memory.
void Interpreter::AddTerm(std::vector<Value>& terms, const Value& value) {
  if (terms.size() > mLimits.operations)
    Fail(value.span, "more terms than the limit of " + std::to_string(mLimits.operations) +
                         " operations allows");
  terms.push_back(value);
}

std::vector<Value> Interpreter::CollectTerms(const Comprehension& comprehension) {
  std::vector<Value> terms;
  ForEach(comprehension.generators, comprehension.where,
          [&] { SpreadInto(terms, Evaluate(comprehension.body)); });
  return terms;
}

Value Interpreter::EvaluateComprehension(const Comprehension& comprehension, Span span,
                                         const Value* target) {
  return Combine(comprehension.aggregate, CollectTerms(comprehension), span, target);
}

bool Interpreter::AreTruths(const Value* terms, std::size_t count) const {
  return std::all_of(terms, terms + count, [this](const Value& term) {
    return term.IsConstant() ? term.constant.IsBoolean() : mBuilder->IsBoolean(term);
  });
}

/// How many of the terms, all of them truth values, are true.
Value Interpreter::Count(const std::vector<Value>& terms, Span span, const Value* target) {
  std::int64_t known = 0;
  std::size_t constants = 0;
  for (const Value& term : terms) {
    CheckOperand(OperationOf(Op::kAnd, span), term);
    constants += term.IsConstant();
    known += term.IsConstant() && term.constant.IsTrue();
  }
  if (constants == terms.size()) return Value::Of(Constant::Integer(known), span);
  if (mConstantOnly > 0) Fail(span, "this truth value cannot be decided while the model is read");
  return mBuilder->Count(terms, span, target);
}

/// Folds the terms pairwise, so that what depends on all of them lies only a few operators away
/// from each.
Value Interpreter::Combine(Aggregate aggregate, std::vector<Value> terms, Span span,
                           const Value* target) {
  const Operation operation = OperationOf(OpOf(aggregate), span);
  if (aggregate == Aggregate::kAllDifferent) {
    std::vector<Value> pairs;
    for (std::size_t i = 0; i < terms.size(); ++i)
      for (std::size_t j = i + 1; j < terms.size(); ++j) {
        const Value pair[2] = {terms[i], terms[j]};
        AddTerm(pairs, Operate(OperationOf(Op::kIsUnequal, span), pair, 2, nullptr));
      }
    terms = std::move(pairs);
  }
  if (aggregate == Aggregate::kCount) {
    if (!AreTruths(terms.data(), terms.size()))
      Fail(span, "what 'count' counts are truth values",
           {"for the truth of a comparison write '==', '<<>>', '<<', '<==', '>>', '>=='"});
    return Count(terms, span, target);
  }
  if (aggregate == Aggregate::kSum && !terms.empty() && AreTruths(terms.data(), terms.size()))
    return Count(terms, span, target);
  if (terms.empty()) {
    switch (aggregate) {
      case Aggregate::kSum:
        return Value::Of(Constant::Integer(0), span);
      case Aggregate::kProduct:
        return Value::Of(Constant::Integer(1), span);
      case Aggregate::kExists:
        return Value::Of(Constant::Boolean(false), span);
      case Aggregate::kMin:
      case Aggregate::kMax:
        Fail(span, "the least and the greatest of no terms are undefined");
      default:
        return Value::Of(Constant::Boolean(true), span);
    }
  }
  while (terms.size() > 1) {
    std::size_t used = 0;
    for (std::size_t i = 0; i < terms.size(); i += 2, ++used)
      terms[used] = i + 1 < terms.size()
                        ? Operate(operation, &terms[i], 2, terms.size() == 2 ? target : nullptr)
                        : terms[i];
    terms.resize(used);
  }
  CheckOperand(operation, terms[0]);
  return terms[0];
}

// --- Constants --------------------------------------------------------------------------------

/// A value, a list or a set.
Value Interpreter::EvaluateKnown(NodeRange range) {
  const Scope constantOnly(mConstantOnly);
  Value value = Evaluate(range);
  if (!value.HasItems() && !value.IsSet()) CheckOperand({}, value);
  if (value.IsConstant() && value.constant.IsReal() &&
      !std::isfinite(value.constant.upper - value.constant.lower))
    Fail(SpanOf(range), "this constant is too large");
  return value;
}

Value Interpreter::EvaluateConstant(NodeRange range) {
  Value value = EvaluateKnown(range);
  CheckOperand({}, value);
  return value;
}

IntegerSet Interpreter::EvaluateSet(NodeRange range, std::string_view what) {
  const Value value = EvaluateKnown(range);
  if (!value.IsSet())
    Fail(SpanOf(range),
         std::string(what) + " is a range or a set, such as 1..9; this is " + Describe(value));
  return value.Set();
}

std::int64_t Interpreter::EvaluateInteger(NodeRange range, std::string_view what) {
  const Value value = EvaluateConstant(range);
  if (!value.IsConstant() || !value.constant.IsInteger())
    Fail(SpanOf(range), std::string(what) + " must be an integer, known while the model is read");
  return value.constant.integer;
}

bool Interpreter::EvaluateTruth(NodeRange range) {
  const Value value = EvaluateConstant(range);
  if (!value.IsConstant() || !value.constant.IsBoolean())
    Fail(SpanOf(range), "a condition must be true or false, known while the model is read");
  return value.constant.IsTrue();
}

}  // namespace zultav::detail
