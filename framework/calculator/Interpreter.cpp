#include "framework/calculator/Interpreter.h"

#include <algorithm>
#include <utility>

#include "framework/calculator/Parser.h"
#include "framework/calculator/Suggestion.h"
#include "framework/solver/ZULTaVoBoolean.h"

namespace {

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

bool IsAsserting(Op op) { return op >= Op::kEqual && op <= Op::kGreaterOrEqual; }
bool IsConnective(Op op) {
  return op == Op::kAnd || op == Op::kOr || op == Op::kImplies || op == Op::kNot;
}

Value ConstantValue(const Constant& constant, Span span) {
  Value value;
  value.constant = constant;
  value.span = span;
  return value;
}

/// The text between two spans' ends, both included.
Span Join(Span a, Span b) {
  const std::uint32_t begin = std::min(a.position, b.position);
  return {begin, std::max(a.End(), b.End()) - begin};
}

}  // namespace

/// Evaluates what must be known while the model is read as long as it lives.
class Interpreter::Scope {
 public:
  explicit Scope(unsigned int& depth) : mDepth(depth) { ++mDepth; }
  ~Scope() { --mDepth; }
  Scope(const Scope&) = delete;
  Scope& operator=(const Scope&) = delete;

 private:
  unsigned int& mDepth;
};

Interpreter::Interpreter(ModelBuilder& builder, Registry& registry, NameTable& names,
                         const ZULTavCalculator::Limits& limits)
    : mBuilder(builder), mRegistry(registry), mNames(names), mLimits(limits) {
  for (const OperatorSign& sign : kOperatorSigns)
    mSignNames[static_cast<std::size_t>(sign.op)] = names.Intern(sign.text);
}

// --- Names ------------------------------------------------------------------------------------

Interpreter::Symbol& Interpreter::SymbolOf(std::uint32_t name) {
  if (name >= mSymbols.size()) mSymbols.resize(std::max<std::size_t>(mNames.GetSize(), name + 1));
  return mSymbols[name];
}

void Interpreter::Introduce(std::uint32_t name, Span span, Symbol symbol) {
  Symbol& known = SymbolOf(name);
  if (known.kind != Symbol::Kind::kUnknown && known.kind != Symbol::Kind::kBroken) {
    ModelError error = {span, "'" + mNames.GetName(name) + "' has a meaning already", {}};
    error.notes.push_back(known.line == 0
                              ? "it was defined from outside"
                              : "it was introduced in line " + std::to_string(known.line));
    throw error;
  }
  symbol.line = mSource->GetLine(span.position);
  known = symbol;
}

std::vector<std::string> Interpreter::SuggestName(std::string_view unknown) const {
  Suggestion suggestion(unknown);
  for (std::uint32_t name = 0; name < mSymbols.size(); ++name)
    if (mSymbols[name].kind != Symbol::Kind::kUnknown &&
        mSymbols[name].kind != Symbol::Kind::kBroken)
      suggestion.Offer(mNames.GetName(name));
  for (const std::string& name : mRegistry.GetFunctionNames()) suggestion.Offer(name);
  for (const std::string_view word : kWords) suggestion.Offer(word);
  if (suggestion.GetBest().empty()) return {};
  return {"did you mean '" + suggestion.GetBest() + "'?"};
}

void Interpreter::FailUnknown(const Node& node, std::string_view what) {
  const std::string name = mNames.GetName(node.data);
  Symbol& symbol = SymbolOf(node.data);
  if (symbol.kind == Symbol::Kind::kBroken) Fail(node.span, "");
  if (symbol.kind == Symbol::Kind::kUnknown) symbol.kind = Symbol::Kind::kBroken;
  const Span span = {node.span.position, static_cast<std::uint32_t>(name.size())};
  Fail(span, std::string(what) + " '" + name + "'", SuggestName(name));
}

void Interpreter::Define(const std::string& name, const Source& text) {
  const Source nameText("", name);
  const Span all = {0, static_cast<std::uint32_t>(name.size())};
  const Token token = Lexer(nameText, mLimits, all).Next();
  if (token.kind != TokenKind::kName || token.span.length != name.size())
    Fail({}, "'" + name + "' cannot be the name of a constant");
  const std::uint32_t number = mNames.Intern(name);
  Syntax syntax;
  Parser parser(text, {0, static_cast<std::uint32_t>(text.GetText().size())}, mLimits, mNames,
                [this](std::string_view op) { return mRegistry.HasOperator(op); });
  const NodeRange range = parser.WholeExpression(syntax);
  mSource = &text;
  mSyntax = &syntax;
  Definition definition;
  definition.value = EvaluateConstant(range);
  definition.value.span = {};
  Symbol& symbol = SymbolOf(number);
  symbol.kind = Symbol::Kind::kConstant;
  symbol.data = static_cast<std::uint32_t>(mConstants.size());
  mConstants.push_back(definition.value);
  mDefinitions.emplace(number, definition);
}

std::vector<std::string> Interpreter::GetUnusedDefinitions() const {
  std::vector<std::string> result;
  for (const auto& [name, definition] : mDefinitions)
    if (!definition.used) result.push_back(mNames.GetName(name));
  std::sort(result.begin(), result.end());
  return result;
}

// --- Statements -------------------------------------------------------------------------------

void Interpreter::Run(const Source& source, const Syntax& syntax) {
  mSource = &source;
  mSyntax = &syntax;
  mStack.clear();
  mConstantOnly = 0;
  for (const Statement& statement : syntax.statements) Execute(statement);
}

void Interpreter::Execute(const Statement& statement) {
  switch (statement.kind) {
    case Statement::Kind::kLet:
      return ExecuteLet(statement);
    case Statement::Kind::kDeclaration:
      return ExecuteDeclaration(statement);
    case Statement::Kind::kExpression:
      mLine = mSource->GetLine(statement.span.position);
      return Assert(statement.expression);
    case Statement::Kind::kFor:
      ForEach(statement.generators, statement.where, [&] {
        for (const Statement& inner : statement.body) Execute(inner);
      });
  }
}

void Interpreter::ExecuteLet(const Statement& statement) {
  const auto definition = mDefinitions.find(statement.name);
  if (definition != mDefinitions.end() && !definition->second.named) {
    definition->second.used = definition->second.named = true;
    SymbolOf(statement.name).line = mSource->GetLine(statement.span.position);
    return;
  }
  Symbol symbol;
  symbol.kind = Symbol::Kind::kBroken;
  try {
    const Value value = EvaluateConstant(statement.expression);
    symbol.kind = Symbol::Kind::kConstant;
    symbol.data = static_cast<std::uint32_t>(mConstants.size());
    mConstants.push_back(value);
  } catch (const ModelError&) {
    if (SymbolOf(statement.name).kind == Symbol::Kind::kUnknown) SymbolOf(statement.name) = symbol;
    throw;
  }
  Introduce(statement.name, statement.span, symbol);
}

void Interpreter::ExecuteDeclaration(const Statement& statement) {
  try {
    std::string name;
    for (const char c : mSource->GetText(statement.type)) {
      const bool blank = c == ' ' || c == '\t';
      if (!blank || (!name.empty() && name.back() != ' ')) name += blank ? ' ' : c;
    }
    const ModelBuilder::Type type = mRegistry.FindType(name);
    if (type == nullptr) {
      Suggestion suggestion(name);
      std::string all = "the types are";
      for (const std::string& known : mRegistry.GetTypeNames()) {
        suggestion.Offer(known);
        all += (all.back() == 'e' ? " '" : ", '") + known + "'";
      }
      ModelError error = {statement.type, "unknown type '" + name + "'", {all}};
      if (!suggestion.GetBest().empty())
        error.notes.insert(error.notes.begin(), "did you mean '" + suggestion.GetBest() + "'?");
      throw error;
    }
    const LocalValue initial(*type);
    if (statement.hasValue) ReadInitialValue(statement.value, initial);
    for (const Declarator& declarator : statement.declarators) Declare(declarator, type, initial);
  } catch (const ModelError&) {
    // Each fault of the declaration is one error: what uses these names is not reported too.
    for (const Declarator& declarator : statement.declarators)
      if (SymbolOf(declarator.name).kind == Symbol::Kind::kUnknown)
        SymbolOf(declarator.name).kind = Symbol::Kind::kBroken;
    throw;
  }
}

void Interpreter::Declare(const Declarator& declarator, ModelBuilder::Type type,
                          const LocalValue& initial) {
  ZULTavModel::Variable variable;
  variable.name = mNames.GetName(declarator.name);
  variable.typeName = type->GetName();
  variable.type = type;
  variable.isArray = declarator.isArray;
  std::uint64_t count = 1;
  if (declarator.isArray) {
    const std::int64_t low = EvaluateInteger(declarator.low, "the first index");
    const std::int64_t high = EvaluateInteger(declarator.high, "the last index");
    count = high < low ? 0 : static_cast<std::uint64_t>(high) - static_cast<std::uint64_t>(low) + 1;
    if (count > mLimits.arraySize || (high >= low && count == 0))
      Fail(declarator.span, "the array '" + variable.name + "' of indices " + std::to_string(low) +
                                ".." + std::to_string(high) + " is larger than the limit of " +
                                std::to_string(mLimits.arraySize) + " elements");
    variable.firstIndex = static_cast<long>(low);
    if (variable.firstIndex != low || static_cast<long>(high) != high)
      Fail(declarator.span, "the indices of an array must fit into 'long'");
  }
  Symbol symbol;
  symbol.kind = Symbol::Kind::kVariable;
  Introduce(declarator.name, declarator.span, symbol);
  try {
    const std::uint32_t index =
        mBuilder.AddVariable(std::move(variable), static_cast<std::size_t>(count), initial);
    SymbolOf(declarator.name).data = index;
  } catch (ModelError& error) {
    SymbolOf(declarator.name).kind = Symbol::Kind::kBroken;
    error.span = declarator.span;
    throw;
  }
}

// --- Loops ------------------------------------------------------------------------------------

void Interpreter::CountIteration(Span span) {
  if (++mIterations > mLimits.iterations)
    Fail(span, "the loops take more steps than the limit of " + std::to_string(mLimits.iterations));
}

void Interpreter::RethrowWithIndices(ModelError error, const std::vector<Generator>& generators) {
  if (!error.message.empty()) {
    std::string note = "with ";
    for (const Generator& generator : generators) {
      const Symbol& symbol = SymbolOf(generator.name);
      if (symbol.kind != Symbol::Kind::kIndex) continue;
      if (note.back() != ' ') note += ", ";
      note += mNames.GetName(generator.name) + " = " + std::to_string(symbol.value);
    }
    if (note.back() != ' ') error.notes.push_back(note);
  }
  throw error;
}

/// Calls `body` for every combination of index values that satisfies `where`, the last index
/// running fastest. Ranges may depend on the indices before them.
template <class Body>
void Interpreter::ForEach(const std::vector<Generator>& generators, NodeRange where, Body body) {
  std::vector<std::int64_t> last(generators.size());
  std::size_t level = 0;
  const auto enter = [&] {
    const Generator& generator = generators[level];
    const std::int64_t low = EvaluateInteger(generator.low, "a range");
    last[level] = EvaluateInteger(generator.high, "a range");
    if (low <= last[level] &&
        static_cast<std::uint64_t>(last[level]) - static_cast<std::uint64_t>(low) >=
            mLimits.iterations)
      Fail(generator.span, "the range " + std::to_string(low) + ".." + std::to_string(last[level]) +
                               " is longer than the limit of " +
                               std::to_string(mLimits.iterations) + " steps");
    Symbol symbol;
    symbol.kind = Symbol::Kind::kIndex;
    symbol.value = low;
    Introduce(generator.name, generator.span, symbol);
  };
  const auto leave = [&](std::size_t down) {
    for (; level > down; --level) SymbolOf(generators[level - 1].name) = Symbol();
  };
  // `level` counts the indices that are introduced.
  try {
    enter();
    level = 1;
    while (level > 0) {
      const Generator& generator = generators[level - 1];
      const std::int64_t value = SymbolOf(generator.name).value;
      if (value <= last[level - 1]) {
        CountIteration(generator.span);
        if (level < generators.size()) {
          enter();
          ++level;
          continue;
        }
        if (!where.present || EvaluateTruth(where)) body();
      }
      // On to the next value of the innermost index that has one.
      while (level > 0 && SymbolOf(generators[level - 1].name).value >= last[level - 1])
        leave(level - 1);
      if (level > 0) ++SymbolOf(generators[level - 1].name).value;
    }
  } catch (const ModelError& error) {
    try {
      RethrowWithIndices(error, generators);
    } catch (...) {
      leave(0);
      throw;
    }
  }
}

// --- What must be true ------------------------------------------------------------------------

bool Interpreter::IsAssertingComparison(NodeRange range) const {
  return RootOf(range).kind == Node::Kind::kBinary && IsAsserting(RootOf(range).op);
}

/// Whether the root can take over an object as its result.
bool Interpreter::IsApplication(NodeRange range) const {
  const Node::Kind kind = RootOf(range).kind;
  return (kind == Node::Kind::kBinary && !IsAssertingComparison(range)) ||
         kind == Node::Kind::kPrefix || kind == Node::Kind::kCall || kind == Node::Kind::kList ||
         kind == Node::Kind::kEnd;
}

NodeRange Interpreter::RightOperandOf(NodeRange range) const {
  const std::uint32_t last = range.last - 1;
  return {mSyntax->nodes[last].start, last, true};
}

std::vector<NodeRange> Interpreter::OperandsOf(NodeRange range) const {
  std::vector<NodeRange> result;
  for (std::uint32_t end = range.last; end > range.first; end = result.back().first)
    result.push_back({mSyntax->nodes[end - 1].start, end - 1, true});
  std::reverse(result.begin(), result.end());
  return result;
}

NodeRange Interpreter::LeftOperandOf(NodeRange range) const {
  return {range.first, RightOperandOf(range).first - 1, true};
}

/// A conjunction is taken apart, however long it is.
void Interpreter::Assert(NodeRange range) {
  std::vector<NodeRange> pending = {range};
  while (!pending.empty()) {
    const NodeRange next = pending.back();
    pending.pop_back();
    AssertOne(next, pending);
  }
}

void Interpreter::AssertOne(NodeRange range, std::vector<NodeRange>& pending) {
  const Node& root = RootOf(range);
  const bool isComprehension = root.kind == Node::Kind::kEnd;
  if (root.kind == Node::Kind::kBinary && root.op == Op::kAnd) {
    pending.push_back(RightOperandOf(range));
    pending.push_back(LeftOperandOf(range));
  } else if (IsAssertingComparison(range)) {
    AssertComparison(range);
  } else if (isComprehension && root.aggregate == Aggregate::kForall) {
    const Comprehension& comprehension = mSyntax->comprehensions[root.data];
    ForEach(comprehension.generators, comprehension.where, [&] { Assert(comprehension.body); });
  } else if (isComprehension && root.aggregate == Aggregate::kAllDifferent) {
    AssertAllDifferent(CollectTerms(mSyntax->comprehensions[root.data]), root.span);
  } else if (root.kind == Node::Kind::kList && root.aggregate == Aggregate::kAllDifferent) {
    std::vector<Value> terms;
    for (const NodeRange operand : OperandsOf(range)) SpreadInto(terms, Evaluate(operand));
    AssertAllDifferent(terms, root.span);
  } else if (root.kind == Node::Kind::kList && root.aggregate == Aggregate::kForall) {
    for (const NodeRange operand : OperandsOf(range)) {
      if (RootOf(operand).kind != Node::Kind::kName) {
        Assert(operand);
        continue;
      }
      std::vector<Value> terms;
      SpreadInto(terms, Evaluate(operand));
      for (const Value& term : terms) AssertValue(term, operand);
    }
  } else {
    AssertTruth(range);
  }
}

void Interpreter::AssertComparison(NodeRange range) {
  const Node& root = RootOf(range);
  const Operation operation = {root.data, root.op, root.span};
  const NodeRange leftRange = LeftOperandOf(range);
  const NodeRange rightRange = RightOperandOf(range);
  Value left;
  Value right;
  if (root.op == Op::kEqual && IsApplication(leftRange) && !IsApplication(rightRange)) {
    right = Evaluate(rightRange);
    left = Evaluate(leftRange, &right);
  } else {
    left = Evaluate(leftRange);
    right = Evaluate(rightRange, root.op == Op::kEqual ? &left : nullptr);
  }
  CheckOperand(operation, left);
  CheckOperand(operation, right);
  if (left.IsConstant() && right.IsConstant()) {
    const auto truth = FoldConstants(root.op, left.constant, &right.constant);
    if (truth && truth->IsTrue()) return;
  }
  mBuilder.State(operation, left, right, mLine);
}

void Interpreter::AssertTruth(NodeRange range) {
  const Value truth = ConstantValue(Constant::Boolean(true), RootOf(range).span);
  AssertValue(Evaluate(range, &truth), range);
}

void Interpreter::AssertValue(const Value& value, NodeRange range) {
  if (value.kind == Value::Kind::kArray) CheckOperand({}, value);
  if (value.IsConstant() && value.constant.IsTrue()) return;
  const bool isBoolean =
      value.IsConstant() ? value.constant.IsBoolean() : mBuilder.IsBoolean(value);
  if (!isBoolean)
    Fail(Join(mSyntax->nodes[range.first].span, RootOf(range).span),
         "a statement is a comparison or a boolean expression; this is " +
             (value.IsConstant()
                  ? value.constant.Describe()
                  : "of type '" + std::string(mBuilder.TypeOf(value)->GetName()) + "'"));
  mBuilder.StateTrue(OperationOf(Op::kEqual, value.span), value, mLine);
}

void Interpreter::AssertAllDifferent(const std::vector<Value>& terms, Span span) {
  const Operation unequal = OperationOf(Op::kUnequal, span);
  for (std::size_t i = 0; i < terms.size(); ++i)
    for (std::size_t j = i + 1; j < terms.size(); ++j) {
      CountIteration(span);
      if (terms[i].IsConstant() && terms[j].IsConstant()) {
        const auto truth = FoldConstants(Op::kUnequal, terms[i].constant, &terms[j].constant);
        if (truth && truth->IsTrue()) continue;
      }
      mBuilder.State(unequal, terms[i], terms[j], mLine);
    }
}

// --- Expressions ------------------------------------------------------------------------------

Value Interpreter::Evaluate(NodeRange range, const Value* target) {
  for (std::uint32_t i = range.first; i <= range.last; ++i) {
    const Node& node = mSyntax->nodes[i];
    Value value;
    std::size_t operands = 0;
    if (node.kind == Node::Kind::kBegin) {
      const Comprehension& comprehension = mSyntax->comprehensions[node.data];
      i = comprehension.end;
      value = EvaluateComprehension(comprehension, node.span, i == range.last ? target : nullptr);
    } else {
      operands = node.count;
      value = EvaluateNode(node, mStack.data() + (mStack.size() - operands),
                           i == range.last ? target : nullptr);
    }
    mStack.resize(mStack.size() - operands);
    mStack.push_back(value);
  }
  const Value result = mStack.back();
  mStack.pop_back();
  return result;
}

Value Interpreter::EvaluateNode(const Node& node, const Value* operands, const Value* target) {
  switch (node.kind) {
    case Node::Kind::kConstant:
      return ConstantValue(mSyntax->constants[node.data], node.span);
    case Node::Kind::kName:
      return EvaluateName(node);
    case Node::Kind::kElement:
      return EvaluateElement(node, operands[0]);
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
      return ConstantValue(Constant::Integer(symbol.value), node.span);
    case Symbol::Kind::kConstant: {
      const auto definition = mDefinitions.find(node.data);
      if (definition != mDefinitions.end()) definition->second.used = true;
      value = mConstants[symbol.data];
      value.span = node.span;
      return value;
    }
    case Symbol::Kind::kVariable: {
      if (mConstantOnly > 0)
        Fail(node.span, "'" + mNames.GetName(node.data) +
                            "' is a variable; expected what is known while the model is read");
      const bool isArray = mBuilder.GetVariable(symbol.data).isArray;
      value.kind = isArray ? Value::Kind::kArray : Value::Kind::kExpression;
      value.index = isArray ? symbol.data : mBuilder.LeafOf(symbol.data, 0);
      value.span = node.span;
      return value;
    }
    default:
      break;
  }
  if (symbol.kind == Symbol::Kind::kUnknown && mRegistry.HasOperator(mNames.GetName(node.data), 0))
    return mBuilder.Apply({node.data, Op::kNone, node.span}, nullptr, 0, nullptr);
  FailUnknown(node, mRegistry.HasOperator(mNames.GetName(node.data))
                        ? "expected '(' and operands after the operator"
                        : "unknown name");
}

Value Interpreter::EvaluateElement(const Node& node, const Value& index) {
  const Symbol symbol = SymbolOf(node.data);
  const std::string& name = mNames.GetName(node.data);
  if (symbol.kind == Symbol::Kind::kUnknown || symbol.kind == Symbol::Kind::kBroken)
    FailUnknown(node, "unknown array");
  if (symbol.kind != Symbol::Kind::kVariable || !mBuilder.GetVariable(symbol.data).isArray)
    Fail(node.span, "'" + name + "' is no array");
  if (mConstantOnly > 0)
    Fail(node.span, "'" + name + "' is a variable; expected what is known while the model is read");
  if (!index.IsConstant() || !index.constant.IsInteger())
    Fail(index.span, "an index must be an integer that is known while the model is read",
         {"it may use integers, 'let' constants and the indices of loops"});
  const ZULTavModel::Variable& variable = mBuilder.GetVariable(symbol.data);
  const std::int64_t first = variable.firstIndex;
  const std::int64_t last = first + static_cast<std::int64_t>(variable.values.size()) - 1;
  const std::int64_t at = index.constant.integer;
  if (at < first || at > last)
    Fail(node.span, "index " + std::to_string(at) + " is outside the range " +
                        std::to_string(first) + ".." + std::to_string(last) + " of '" + name + "'");
  Value value;
  value.kind = Value::Kind::kExpression;
  value.index = mBuilder.LeafOf(symbol.data, static_cast<std::size_t>(at - first));
  value.span = node.span;
  return value;
}

/// A registered operator by its name; `real(x)` is the operator "(real)".
Value Interpreter::EvaluateCall(const Node& node, const Value* operands, const Value* target) {
  const std::string name = mNames.GetName(node.data);
  std::uint32_t registered = node.data;
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
    const ZULTavModel::Variable& variable = mBuilder.GetVariable(operand.index);
    Fail(operand.span, "'" + variable.name + "' is an array; expected one element, such as " +
                           variable.name + "[" + std::to_string(variable.firstIndex) + "]");
  }
  if (operand.asserts && IsConnective(operation.op) && mBuilder.IsBoolean(operand))
    Fail(operand.span, "this comparison is stated, it has no truth value",
         {"for the truth of a comparison write '==', '<<>>', '<<', '<==', '>>', '>=='"});
}

Value Interpreter::Operate(const Operation& operation, const Value* operands, unsigned int count,
                           const Value* target) {
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
        return ConstantValue(*folded, operation.span);
    } catch (const ConstantError& error) {
      Fail(operation.span, error.message);
    }
  }
  if (asserts && mConstantOnly > 0)
    Fail(operation.span, "this comparison cannot be decided while the model is read");
  if (asserts) return mBuilder.Relate(operation, operands[0], operands[1]);
  return mBuilder.Apply(operation, operands, count, target);
}

// --- Aggregates -------------------------------------------------------------------------------

/// More terms than operators that could combine them are refused before they fill the memory.
void Interpreter::AddTerm(std::vector<Value>& terms, const Value& value) {
  if (terms.size() > mLimits.operations)
    Fail(value.span, "more terms than the limit of " + std::to_string(mLimits.operations) +
                         " operations allows");
  terms.push_back(value);
}

/// Appends the value or, of an array, its elements.
void Interpreter::SpreadInto(std::vector<Value>& terms, const Value& value) {
  if (value.kind != Value::Kind::kArray) return AddTerm(terms, value);
  const std::size_t size = mBuilder.GetVariable(value.index).values.size();
  for (std::size_t i = 0; i < size; ++i) {
    Value element = value;
    element.kind = Value::Kind::kExpression;
    element.index = mBuilder.LeafOf(value.index, i);
    AddTerm(terms, element);
  }
}

std::vector<Value> Interpreter::CollectTerms(const Comprehension& comprehension) {
  std::vector<Value> terms;
  ForEach(comprehension.generators, comprehension.where,
          [&] { AddTerm(terms, Evaluate(comprehension.body)); });
  return terms;
}

Value Interpreter::EvaluateComprehension(const Comprehension& comprehension, Span span,
                                         const Value* target) {
  return Combine(comprehension.aggregate, CollectTerms(comprehension), span, target);
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
  if (terms.empty()) {
    switch (aggregate) {
      case Aggregate::kSum:
        return ConstantValue(Constant::Integer(0), span);
      case Aggregate::kProduct:
        return ConstantValue(Constant::Integer(1), span);
      case Aggregate::kExists:
        return ConstantValue(Constant::Boolean(false), span);
      case Aggregate::kMin:
      case Aggregate::kMax:
        Fail(span, "the least and the greatest of no terms are undefined");
      default:
        return ConstantValue(Constant::Boolean(true), span);
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

Value Interpreter::EvaluateConstant(NodeRange range) {
  const Scope constantOnly(mConstantOnly);
  const Value value = Evaluate(range);
  CheckOperand({}, value);
  return value;
}

std::int64_t Interpreter::EvaluateInteger(NodeRange range, std::string_view what) {
  const Value value = EvaluateConstant(range);
  if (!value.IsConstant() || !value.constant.IsInteger())
    Fail(Join(mSyntax->nodes[range.first].span, RootOf(range).span),
         std::string(what) + " must be an integer, known while the model is read");
  return value.constant.integer;
}

bool Interpreter::EvaluateTruth(NodeRange range) {
  const Value value = EvaluateConstant(range);
  if (!value.IsConstant() || !value.constant.IsBoolean())
    Fail(Join(mSyntax->nodes[range.first].span, RootOf(range).span),
         "a condition must be true or false, known while the model is read");
  return value.constant.IsTrue();
}
