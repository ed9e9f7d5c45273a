#include "framework/calculator/detail/Interpreter.h"

#include <algorithm>
#include <utility>

#include "framework/calculator/detail/Parser.h"
#include "framework/calculator/detail/Suggestion.h"
#include "framework/solver/ZULTaVoInteger.h"

namespace zultav::detail {

namespace {

constexpr std::size_t kMostIndices = 16;  // of an array

}  // namespace

Interpreter::Interpreter(ModelBuilder& builder, Registry& registry, NameTable& names,
                         const ZULTavCalculator::Limits& limits)
    : mBuilder(&builder), mRegistry(registry), mNames(names), mLimits(limits) {
  for (const OperatorSign& sign : kOperatorSigns)
    mSignNames[static_cast<std::size_t>(sign.op)] = names.Intern(sign.text);
  mIntegerConversion = names.Intern("(int)");
  mRealConversion = names.Intern("(real)");
}

// --- Names ------------------------------------------------------------------------------------

Interpreter::Symbol& Interpreter::SymbolOf(std::uint32_t name) {
  if (name >= mSymbols.size()) mSymbols.resize(std::max<std::size_t>(mNames.GetSize(), name + 1));
  return mSymbols[name];
}

void Interpreter::MarkBroken(std::uint32_t name) {
  Symbol& symbol = SymbolOf(name);
  if (symbol.kind == Symbol::Kind::kUnknown) symbol.kind = Symbol::Kind::kBroken;
}

void Interpreter::Introduce(std::uint32_t name, Span span, Symbol symbol) {
  Symbol& known = SymbolOf(name);
  if (known.kind != Symbol::Kind::kUnknown && known.kind != Symbol::Kind::kBroken) {
    ModelError error = {span, "'" + mNames.GetName(name) + "' has a meaning already", {}};
    error.notes.push_back(known.line == 0 ? "it was defined from outside"
                                          : "it was introduced in " + PlaceOf(known));
    throw error;
  }
  symbol.source = mSource;
  symbol.line = mSource->GetLine(span.position);
  known = symbol;
}

void Interpreter::SetSource(const Source* source) {
  mSource = source;
  mBuilder->SetSource(source);
}

/// Where it was introduced.
std::string Interpreter::PlaceOf(const Symbol& symbol) const {
  return symbol.source->NameLine(symbol.line, mSource);
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
  std::vector<std::string> notes = SuggestName(name);
  if (const std::string_view advice = AdviceFor(name); !advice.empty())
    notes.assign(1, std::string(advice));
  Fail(span, std::string(what) + " '" + name + "'", std::move(notes));
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
  mBuilder->SetSource(nullptr);
  // cppcheck-suppress danglingLifetime; set anew before it is used again
  mSyntax = &syntax;
  Definition definition;
  definition.value = EvaluateKnown(range);
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
  SetSource(&source);
  mSyntax = &syntax;
  mStack.clear();
  mConstantOnly = mTruthsOnly = mDepth = 0;
  mGuard.reset();
  mKept.reset();
  for (const Statement& statement : syntax.statements) Execute(statement);
}

void Interpreter::Execute(const Statement& statement) {
  switch (statement.kind) {
    case Statement::Kind::kLet:
      return ExecuteLet(statement);
    case Statement::Kind::kFunction:
      return ExecuteFunction(statement);
    case Statement::Kind::kDeclaration:
      return ExecuteDeclaration(statement);
    case Statement::Kind::kExpression:
      mLine = mSource->GetLine(statement.span.position);
      return mGuard ? AssertGuarded(statement.expression) : Assert(statement.expression);
    case Statement::Kind::kIf:
      return ExecuteIf(statement);
    case Statement::Kind::kAssert:
      return ExecuteAssert(statement);
    case Statement::Kind::kObjective:
      return ExecuteObjective(statement);
    case Statement::Kind::kShow:
      return ExecuteShow(statement);
    case Statement::Kind::kFor:
      ForEach(statement.generators, statement.where, [&] {
        for (const Statement& inner : statement.body) Execute(inner);
      });
      break;
    case Statement::Kind::kInclude:  // whoever reads the texts does it
      break;
  }
}

void Interpreter::ExecuteLet(const Statement& statement) {
  const std::uint32_t name = statement.declarators[0].name;
  const auto definition = mDefinitions.find(name);
  const bool isDefined = definition != mDefinitions.end() && !definition->second.named;
  Symbol symbol;
  try {
    const auto dimensions = EvaluateDimensions(statement.declarators[0]);
    const Value value = isDefined ? CheckDefinition(definition->second.value, dimensions, statement)
                                  : ValueOfConstant(dimensions, statement);
    symbol.kind = Symbol::Kind::kConstant;
    symbol.data = static_cast<std::uint32_t>(mConstants.size());
    mConstants.push_back(value);
  } catch (const ModelError&) {
    MarkBroken(name);
    throw;
  }
  if (isDefined) {
    definition->second.used = definition->second.named = true;
    if (const auto datum = mData.find(name); datum != mData.end()) datum->second.used = true;
    SymbolOf(name) = Symbol();
  }
  Introduce(name, statement.span, symbol);
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
      if (const std::string_view advice = AdviceFor(name); !advice.empty())
        error.notes.assign(1, std::string(advice));
      if (!suggestion.GetBest().empty())
        error.notes.insert(error.notes.begin(), "did you mean '" + suggestion.GetBest() + "'?");
      throw error;
    }
    const LocalValue initial(*type);
    if (statement.hasValue) ReadInitialValue(statement.value, initial);
    IntegerSet domain;
    if (statement.domain.present) domain = ReadDomain(statement, initial);
    for (const Declarator& declarator : statement.declarators) {
      Declare(declarator, type, initial);
      if (statement.domain.present) StateDomain(declarator, domain);
    }
  } catch (const ModelError&) {
    for (const Declarator& declarator : statement.declarators) MarkBroken(declarator.name);
    throw;
  }
}

/// The set of values after `in`; the initial value becomes its hull.
IntegerSet Interpreter::ReadDomain(const Statement& statement, const LocalValue& initial) {
  auto* integer = ZULTaVoCast<ZULTaVoInteger>(initial.Get());
  if (integer == nullptr)
    Fail(statement.type, "only integers have a set of values, written behind 'in'");
  IntegerSet set = EvaluateSet(statement.domain, "a domain");
  const LocalValue any(*initial->GetDescriptor());
  any->SetAny();
  const auto* limits = ZULTaVoCast<ZULTaVoInteger>(any.Get());
  set = set.Intersection({limits->GetLowerBound(), limits->GetUpperBound()});
  if (set.IsEmpty()) Fail(SpanOf(statement.domain), "no value of the type is in this set");
  integer->SetLowerBound(static_cast<long>(set.GetRanges().front().low));
  integer->SetUpperBound(static_cast<long>(set.GetRanges().back().high));
  return set;
}

/// The bounds say it where the domain has no gaps.
void Interpreter::StateDomain(const Declarator& declarator, const IntegerSet& domain) {
  if (domain.GetRanges().size() < 2) return;
  mLine = mSource->GetLine(declarator.span.position);
  const ZULTaVoRelation::Part set = ZULTaVoMembership::MakeSet(domain.GetRanges());
  const std::uint32_t variable = SymbolOf(declarator.name).data;
  const std::size_t size = mBuilder->GetVariable(variable).values.size();
  for (std::size_t i = 0; i < size; ++i)
    mBuilder->StateMember(Value::OfExpression(mBuilder->LeafOf(variable, i), declarator.span), set,
                          declarator.span, mLine);
}

void Interpreter::Declare(const Declarator& declarator, ModelBuilder::Type type,
                          const LocalValue& initial) {
  ZULTavModel::Variable variable;
  variable.name = mNames.GetName(declarator.name);
  variable.typeName = type->GetName();
  variable.type = type;
  variable.dimensions = EvaluateDimensions(declarator);
  std::size_t count = 1;
  for (const ZULTavModel::Dimension& dimension : variable.dimensions) count *= dimension.size;
  Symbol symbol;
  symbol.kind = Symbol::Kind::kVariable;
  Introduce(declarator.name, declarator.span, symbol);
  try {
    const std::uint32_t index = mBuilder->AddVariable(std::move(variable), count, initial);
    SymbolOf(declarator.name).data = index;
  } catch (ModelError& error) {
    SymbolOf(declarator.name).kind = Symbol::Kind::kBroken;
    error.span = declarator.span;
    throw;
  }
}

/// Their product is within the limit on the size of arrays.
std::vector<ZULTavModel::Dimension> Interpreter::EvaluateDimensions(const Declarator& declarator) {
  std::vector<ZULTavModel::Dimension> result;
  std::uint64_t count = 1;
  for (const NodeRange range : declarator.indices) {
    const IntegerSet set = EvaluateSet(range, "an index of an array");
    if (set.GetRanges().size() > 1)
      Fail(SpanOf(range), "the indices of an array are a range without gaps");
    if (result.size() == kMostIndices)
      Fail(SpanOf(range), "more indices than the limit of " + std::to_string(kMostIndices));
    const IntegerSet::Range ends = set.IsEmpty() ? IntegerSet::Range{1, 0} : set.GetRanges()[0];
    const auto overflows = __builtin_mul_overflow(count, set.GetSize(), &count);
    if (overflows || count > mLimits.arraySize)
      Fail(declarator.span, "the array '" + mNames.GetName(declarator.name) + "' of indices " +
                                std::to_string(ends.low) + ".." + std::to_string(ends.high) +
                                " is larger than the limit of " +
                                std::to_string(mLimits.arraySize) + " elements");
    const auto first = static_cast<long>(ends.low);
    if (first != ends.low || static_cast<long>(ends.high) != ends.high)
      Fail(declarator.span, "the indices of an array must fit into 'long'");
    result.push_back({first, static_cast<std::size_t>(set.GetSize())});
  }
  return result;
}

// --- Loops ------------------------------------------------------------------------------------

void Interpreter::CountIteration(Span span, std::size_t steps) {
  mIterations += steps;
  if (mIterations > mLimits.iterations)
    Fail(span, "the loops take more steps than the limit of " + std::to_string(mLimits.iterations));
}

/// Notes the values that the indices have.
void Interpreter::NoteIndices(ModelError& error, const std::vector<Generator>& generators) {
  std::string values;
  for (const Generator& generator : generators) {
    const Symbol& symbol = SymbolOf(generator.name);
    if (symbol.kind != Symbol::Kind::kIndex) continue;
    values += (values.empty() ? "with " : ", ") + mNames.GetName(generator.name) + " = " +
              std::to_string(symbol.value);
  }
  if (!values.empty()) error.notes.push_back(values);
}

/// Introduces the index with its first value; answers all that it has.
IntegerSet Interpreter::Enter(const Generator& generator) {
  IntegerSet set = EvaluateSet(generator.set, "what an index runs through");
  if (set.GetSize() > mLimits.iterations)
    Fail(generator.span, "the range " + std::to_string(set.GetRanges().front().low) + ".." +
                             std::to_string(set.GetRanges().back().high) +
                             " is longer than the limit of " + std::to_string(mLimits.iterations) +
                             " steps");
  Symbol symbol;
  symbol.kind = Symbol::Kind::kIndex;
  symbol.value = set.IsEmpty() ? 0 : set.GetRanges()[0].low;
  Introduce(generator.name, generator.span, symbol);
  return set;
}

/// Calls `body` for every combination of index values that satisfies `where`, the last index
/// running fastest. Ranges may depend on the indices before them.
void Interpreter::ForEach(const std::vector<Generator>& generators, NodeRange where,
                          const std::function<void()>& body) {
  struct Level {
    IntegerSet values;
    std::size_t range = 0;  // of the values, in which the index is

    bool HasValue() const { return range < values.GetRanges().size(); }
    void Advance(std::int64_t& index) {
      if (!HasValue()) return;
      if (index < values.GetRanges()[range].high)
        ++index;
      else if (++range; HasValue())
        index = values.GetRanges()[range].low;
    }
  };
  std::vector<Level> levels;  // of the indices that are introduced
  const auto indexAt = [&](std::size_t level) -> Symbol& {
    return SymbolOf(generators[level].name);
  };
  const auto leave = [&] {
    levels.pop_back();
    indexAt(levels.size()) = Symbol();
  };
  const auto advance = [&] { levels.back().Advance(indexAt(levels.size() - 1).value); };
  try {
    levels.push_back({Enter(generators[0])});
    while (!levels.empty()) {
      if (!levels.back().HasValue()) {  // on to the next value of the index outside of it
        leave();
        if (!levels.empty()) advance();
        continue;
      }
      CountIteration(generators[levels.size() - 1].span);
      if (levels.size() < generators.size()) {
        levels.push_back({Enter(generators[levels.size()])});
        continue;
      }
      if (!where.present || EvaluateTruth(where)) body();
      advance();
    }
  } catch (ModelError& error) {
    NoteIndices(error, generators);
    while (!levels.empty()) leave();
    throw;
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
         kind == Node::Kind::kEnd || kind == Node::Kind::kEndIf;
}

/// Whether the left side of an equation had better take over the object of the right one than the
/// other way round.
bool Interpreter::TakesRightSide(NodeRange left, NodeRange right) const {
  if (IsApplication(left)) return !IsApplication(right);
  const Node::Kind kind = RootOf(right).kind;
  return RootOf(left).kind == Node::Kind::kElement &&
         (kind == Node::Kind::kName || kind == Node::Kind::kConstant);
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
  const Scope depth(mDepth);
  CheckDepth(range);
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
    AssertComparison({root.data, root.op, root.span}, LeftOperandOf(range), RightOperandOf(range));
  } else if (root.kind == Node::Kind::kCall &&
             SymbolOf(root.data).kind == Symbol::Kind::kFunction) {
    std::vector<Value> operands;
    for (const NodeRange operand : OperandsOf(range)) operands.push_back(Evaluate(operand));
    Call(root, std::move(operands), [this](NodeRange body) { Assert(body); });
  } else if (IsFreeCall(root, "symmetric")) {
    AssertSymmetric(range);
  } else if (root.kind == Node::Kind::kBinary && root.op == Op::kIn) {
    AssertMember(range);
  } else if (root.kind == Node::Kind::kChain && IsAsserting(mSyntax->chains[root.data][0].op)) {
    const std::vector<NodeRange> operands = OperandsOf(range);
    const std::vector<Token>& signs = mSyntax->chains[root.data];
    for (std::size_t i = 0; i < signs.size(); ++i)
      AssertComparison(OperationOf(signs[i].op, signs[i].span), operands[i], operands[i + 1]);
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
  } else if (IsRelationCall(root)) {
    AssertRelation(range);
  } else {
    AssertTruth(range);
  }
}

void Interpreter::ExecuteObjective(const Statement& statement) {
  mLine = mSource->GetLine(statement.span.position);
  if (mObjective)
    Fail(statement.span, "a model has one objective",
         {"the other one is in " + PlaceOf(*mObjective)});
  mObjective.emplace();
  mObjective->line = mLine;
  mObjective->source = mSource;
  const Value value = Evaluate(statement.expression, nullptr);
  CheckOperand({}, value);
  mBuilder->SetObjective(value, statement.isMaximized);
}

void Interpreter::AssertComparison(const Operation& operation, NodeRange leftRange,
                                   NodeRange rightRange) {
  Value left;
  Value right;
  if (operation.op == Op::kEqual && TakesRightSide(leftRange, rightRange)) {
    right = Evaluate(rightRange);
    left = Evaluate(leftRange, &right);
  } else {
    left = Evaluate(leftRange);
    right = Evaluate(rightRange, operation.op == Op::kEqual ? &left : nullptr);
  }
  CheckOperand(operation, left);
  CheckOperand(operation, right);
  if (left.IsConstant() && right.IsConstant()) {
    const auto truth = FoldConstants(operation.op, left.constant, &right.constant);
    if (truth && truth->IsTrue()) return;
    if (truth) mBuilder->Warn(operation.span, "this is false, whatever the variables are", {});
  }
  mBuilder->State(operation, left, right, mLine);
}

void Interpreter::AssertTruth(NodeRange range) {
  const Node& root = RootOf(range);
  const Value truth = Value::Of(Constant::Boolean(true), root.span);
  const Value value = Evaluate(range, &truth);
  if (root.op == Op::kIsEqual && mBuilder->TakesNumbers(value))
    mBuilder->Warn(root.span, "'==' is the truth value of a comparison",
                   {"to state that two numbers are equal write '='"});
  AssertValue(value, range);
}

void Interpreter::AssertValue(const Value& value, NodeRange range) {
  CheckOperand({}, value);
  if (value.IsConstant() && value.constant.IsTrue()) return;
  const bool isBoolean =
      value.IsConstant() ? value.constant.IsBoolean() : mBuilder->IsBoolean(value);
  if (!isBoolean)
    Fail(SpanOf(range),
         "a statement is a comparison or a boolean expression; this is " +
             (value.IsConstant()
                  ? value.constant.Describe()
                  : "of type '" + std::string(mBuilder->TypeOf(value)->GetName()) + "'"));
  mBuilder->StateTrue(OperationOf(Op::kEqual, value.span), value, mLine);
}

void Interpreter::AssertAllDifferent(const std::vector<Value>& terms, Span span) {
  if (terms.size() > 2 && mBuilder->StateAllDifferent(terms, span, mLine)) return;
  const Operation unequal = OperationOf(Op::kUnequal, span);
  for (std::size_t i = 0; i < terms.size(); ++i)
    for (std::size_t j = i + 1; j < terms.size(); ++j) {
      CountIteration(span);
      if (terms[i].IsConstant() && terms[j].IsConstant()) {
        const auto truth = FoldConstants(Op::kUnequal, terms[i].constant, &terms[j].constant);
        if (truth && truth->IsTrue()) continue;
      }
      mBuilder->State(unequal, terms[i], terms[j], mLine);
    }
}

}  // namespace zultav::detail
