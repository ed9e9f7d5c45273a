#include <utility>

#include "framework/calculator/detail/Interpreter.h"

namespace zultav::detail {

// Chains of comparisons, conditionals, and assertions.

/// Of two operands.
Value Interpreter::Join(Op op, const Value& left, const Value& right, Span span,
                        const Value* target) {
  const Value operands[2] = {left, right};
  return Operate(OperationOf(op, span), operands, 2, target);
}

/// The truth of a chain.
Value Interpreter::EvaluateChain(const Node& node, const Value* operands) {
  const std::vector<Token>& signs = mSyntax->chains[node.data];
  if (IsAsserting(signs[0].op) && mConstantOnly == 0 && mTruthsOnly == 0)
    Fail(node.span, "this chain of comparisons is stated, it has no truth value",
         {"for its truth write '<<', '<==', '>>', '>=='"});
  std::vector<Value> terms;
  for (std::size_t i = 0; i < signs.size(); ++i)
    AddTerm(terms, Join(signs[i].op, operands[i], operands[i + 1], signs[i].span));
  return Combine(Aggregate::kForall, std::move(terms), node.span, nullptr);
}

// --- Conditionals -----------------------------------------------------------------------------

/// A truth value; comparisons in it are not stated.
Value Interpreter::EvaluateCondition(NodeRange range) {
  const Scope truthsOnly(mTruthsOnly);
  Value condition = Evaluate(range);
  CheckOperand({}, condition);
  if (!AreTruths(&condition, 1))
    Fail(SpanOf(range), "expected a truth value; this is " + Describe(condition));
  return condition;
}

/// Where the condition is known only one side is evaluated. Otherwise numbers a and b become
/// b + int(c) * (a - b), and two implications say more of them than the product does.
Value Interpreter::EvaluateConditional(const Conditional& conditional, Span span,
                                       const Value* target) {
  const Value condition = EvaluateCondition(conditional.condition);
  if (condition.IsConstant())
    return Evaluate(condition.constant.IsTrue() ? conditional.yes : conditional.no, target);
  const Value yes = Evaluate(conditional.yes);
  const Value no = Evaluate(conditional.no);
  CheckOperand({}, yes);
  CheckOperand({}, no);
  const Operation negation = OperationOf(Op::kNot, span);
  const Value otherwise = Operate(negation, &condition, 1, nullptr);
  const Value sides[2] = {yes, no};
  if (AreTruths(sides, 2))
    return Join(Op::kAnd, Join(Op::kImplies, condition, yes, span),
                Join(Op::kImplies, otherwise, no, span), span, target);
  const Value difference = Join(Op::kSubtract, yes, no, span);
  const Value part = Join(Op::kMultiply, Count({condition}, span, nullptr), difference, span);
  Value result = Join(Op::kAdd, no, part, span, target);
  if (yes.IsConstant() && no.IsConstant()) return result;
  const Operation equality = OperationOf(Op::kEqual, span);
  for (const auto& [when, value] : {std::pair(condition, yes), std::pair(otherwise, no)})
    mBuilder->StateTrue(
        equality, Join(Op::kImplies, when, Join(Op::kIsEqual, result, value, span), span), mLine);
  return result;
}

void Interpreter::ExecuteIf(const Statement& statement) {
  mLine = mSource->GetLine(statement.span.position);
  const Value condition = EvaluateCondition(statement.expression);
  if (condition.IsConstant()) {
    for (const Statement& inner :
         condition.constant.IsTrue() ? statement.body : statement.otherwise)
      Execute(inner);
    return;
  }
  ExecuteUnder(condition, statement.body);
  ExecuteUnder(Operate(OperationOf(Op::kNot, condition.span), &condition, 1, nullptr),
               statement.otherwise);
}

/// What is stated holds where the guard, beside those outside of it, is true.
void Interpreter::ExecuteUnder(const Value& guard, const std::vector<Statement>& statements) {
  const std::optional<Value> outer = mGuard;
  mGuard = outer ? Join(Op::kAnd, *outer, guard, guard.span) : guard;
  try {
    for (const Statement& statement : statements) Execute(statement);
  } catch (const ModelError&) {
    mGuard = outer;
    throw;
  }
  mGuard = outer;
}

void Interpreter::AssertGuarded(NodeRange range) {
  const Value value = EvaluateCondition(range);
  AssertValue(Join(Op::kImplies, *mGuard, value, RootOf(range).span), range);
}

// --- Assertions about constants ---------------------------------------------------------------

void Interpreter::ExecuteAssert(const Statement& statement) {
  if (EvaluateTruth(statement.expression)) return;
  const std::string_view text = mSource->GetText(statement.value);
  Fail(SpanOf(statement.expression), std::string(text.substr(1, text.size() - 2)));
}

}  // namespace zultav::detail
