#ifndef ZULTAV_CALCULATOR_DETAIL_INTERPRETER_H
#define ZULTAV_CALCULATOR_DETAIL_INTERPRETER_H

#include <array>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "framework/calculator/detail/ModelBuilder.h"
#include "framework/calculator/detail/Syntax.h"

namespace zultav::detail {

/// Carries statements out: keeps what names mean, writes loops out, evaluates expressions and
/// hands what they state to the builder.
///
/// Expressions are evaluated in postfix order on a stack; only the bodies of comprehensions and
/// loops recurse, as deep as the source nests them.
class Interpreter {
 public:
  Interpreter(ModelBuilder& builder, Registry& registry, NameTable& names,
              const ZULTavCalculator::Limits& limits);

  /// Makes a constant of `text`, which names no other constants.
  void Define(const std::string& name, const Source& text);
  /// Makes what data say known to each `let` of their names. The text must outlive this object.
  void TakeData(const Source& data);
  /// Data were given but could not be read: that a constant has no value is no other fault.
  void MarkDataBroken() { mIsDataBroken = true; }
  /// Those that no `let` takes.
  std::vector<ModelError> GetUnusedData() const;
  /// Carries out all statements of one piece of source. Throws ModelError; the message is empty
  /// when the fault was reported before.
  void Run(const Source& source, const Syntax& syntax);
  /// Of an unknown name: its declaration was faulty, so that its use is no other fault.
  void MarkBroken(std::uint32_t name);
  /// The definitions that the model had no use for.
  std::vector<std::string> GetUnusedDefinitions() const;
  /// The name that is known and nearest to the given one, for messages.
  std::vector<std::string> SuggestName(std::string_view unknown) const;

 private:
  struct Symbol {
    enum class Kind : std::uint8_t { kUnknown, kVariable, kConstant, kFunction, kIndex, kBroken };
    Kind kind = Kind::kUnknown;
    std::uint32_t data = 0;  // of a variable, a constant, a function
    std::int64_t value = 0;  // of an index
    std::uint32_t line = 0;  // where it was introduced
    const Source* source = nullptr;
  };
  struct Definition {
    Value value;
    bool used = false;
    bool named = false;  // by a `let`
  };
  /// `let name(parameters) = body`, with the statement that it stands in.
  struct Function {
    std::shared_ptr<const Syntax> syntax;
    const Source* source;
    std::vector<std::uint32_t> parameters;
    NodeRange body;
  };
  struct Datum {
    Value value;
    Span span;  // of the name
    const Source* source = nullptr;
    bool used = false;
  };
  /// Keeps a way of evaluating as long as it lives.
  class Scope {
   public:
    explicit Scope(unsigned int& depth) : mDepth(depth) { ++mDepth; }
    ~Scope() { --mDepth; }
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;

   private:
    unsigned int& mDepth;
  };

  Symbol& SymbolOf(std::uint32_t name);
  void Introduce(std::uint32_t name, Span span, Symbol symbol);

  void Execute(const Statement& statement);
  void ExecuteLet(const Statement& statement);
  void ExecuteFunction(const Statement& statement);
  void CheckNames(NodeRange body);
  void Call(const Node& node, std::vector<Value> operands,
            const std::function<void(NodeRange body)>& use);
  Value EvaluateSetFunction(const std::string& name, const Value* operands, const Node& node);
  void AssertSymmetric(NodeRange range);
  bool IsFreeCall(const Node& node, std::string_view name) const;
  using Dimensions = std::span<const ZULTavModel::Dimension>;
  Value ValueOfConstant(Dimensions dimensions, const Statement& statement);
  Value TakeDatum(const Value& value);
  Value CheckDefinition(const Value& value, Dimensions dimensions,
                        const Statement& statement) const;
  Value CheckItems(const Value& value, Dimensions dimensions, const Statement& statement) const;
  void CheckScalar(const Value& value, const Statement& statement) const;
  void ExecuteDeclaration(const Statement& statement);
  void Declare(const Declarator& declarator, ModelBuilder::Type type, const LocalValue& initial);
  std::vector<ZULTavModel::Dimension> EvaluateDimensions(const Declarator& declarator);
  void ExecuteIf(const Statement& statement);
  void ExecuteAssert(const Statement& statement);
  void ExecuteShow(const Statement& statement);
  void ExecuteObjective(const Statement& statement);
  std::vector<ZULTavModel::Shown> ShowValues(NodeRange range);
  bool WidenInteger(Value& value);
  void ExecuteUnder(const Value& guard, const std::vector<Statement>& statements);
  IntegerSet ReadDomain(const Statement& statement, const LocalValue& initial);
  void StateDomain(const Declarator& declarator, const IntegerSet& domain);
  void ForEach(const std::vector<Generator>& generators, NodeRange where,
               const std::function<void()>& body);
  IntegerSet Enter(const Generator& generator);
  void NoteIndices(ModelError& error, const std::vector<Generator>& generators);

  void ReadInitialValue(Span span, const LocalValue& value);
  std::string EvaluateValuePiece(Span piece, bool isLower, bool isUpper, const ZULTaVoAny& value);

  void Assert(NodeRange range);
  void AssertOne(NodeRange range, std::vector<NodeRange>& pending);
  void AssertGuarded(NodeRange range);
  void AssertComparison(const Operation& operation, NodeRange left, NodeRange right);
  void AssertMember(NodeRange range);
  void AssertTruth(NodeRange range);
  void AssertValue(const Value& value, NodeRange range);
  void AssertAllDifferent(const std::vector<Value>& terms, Span span);

  Value Evaluate(NodeRange range, const Value* target = nullptr);
  void CheckDepth(NodeRange range) const;
  Value EvaluateNode(const Node& node, const Value* operands, const Value* target);
  Value EvaluateName(const Node& node);
  Value EvaluateElement(const Node& node, const Value* indices, const Value* target);
  [[noreturn]] void FailIndexed(const Value& index, std::size_t given, const Node& node) const;
  /// An index that variables decide, and the indices that there are.
  struct VariableIndex {
    Value value;
    std::int64_t first = 1;
    std::size_t size = 0;
  };
  Value EvaluateVariableElement(const Value& list, std::vector<Value> indices, const Node& node,
                                const Value* target);
  Value CheckVariableIndex(const Value& index, const Value& list) const;
  void CheckRows(const std::vector<Value>& rows, const Node& node) const;
  std::vector<Value> ItemsAt(const std::vector<Value>& rows, const Value& index, const Node& node);
  Value SelectAmong(std::vector<Value> rows, std::vector<VariableIndex> chosen,
                    std::span<const Value> indices, const Node& node, const Value* target);
  Value Choose(std::vector<Value> items, const std::vector<VariableIndex>& chosen, const Node& node,
               const Value* target);
  Value Select(const Value& list, const Value* index, const Value* end, const Node& node);
  Value ItemAt(const Value& list, const Value& index, const Node& node);
  Value EvaluateRange(const Value* ends, Span span) const;
  Value EvaluateSetLiteral(const Value* items, std::uint32_t count, Span span) const;
  Value EvaluateChain(const Node& node, const Value* operands);
  Value EvaluateConditional(const Conditional& conditional, Span span, const Value* target);
  Value EvaluateCondition(NodeRange range);
  Value EvaluateMember(const Value& value, const Value& set, Span span);
  void CheckMember(const Value& value, const Value& set, Span span) const;
  Value Join(Op op, const Value& left, const Value& right, Span span,
             const Value* target = nullptr);
  Value MakeList(std::vector<Value> items, std::int64_t first, Span span);
  std::size_t SizeOf(const Value& list) const;
  std::int64_t FirstIndexOf(const Value& list) const;
  Value ItemOf(const Value& list, std::size_t item) const;
  std::string Describe(const Value& value) const;
  Value EvaluateCall(const Node& node, const Value* operands, const Value* target);
  /// A relation and what a call of it gives.
  struct RelationCall {
    const ZULTaVoRelationDescriptor* relation = nullptr;
    std::vector<Argument> arguments;
    bool isReal = false;
  };
  RelationCall ResolveRelation(const Node& node, const Value* operands);
  Argument ArgumentOf(const Value& operand, const ZULTaVoRelationDescriptor::Parameter& parameter);
  Value Adapt(const Value& value, ZULTaVoRelationDescriptor::Element element, bool isReal);
  bool IsReal(const Value& value) const;
  bool IsRelationCall(const Node& node) const;
  Value EvaluateRelation(const Node& node, const Value* operands, const Value* target);
  void AssertRelation(NodeRange range);
  Value EvaluateComprehension(const Comprehension& comprehension, Span span, const Value* target);
  std::vector<Value> CollectTerms(const Comprehension& comprehension);
  void AddTerm(std::vector<Value>& terms, const Value& value);
  void SpreadInto(std::vector<Value>& terms, const Value& value);
  bool AreTruths(const Value* terms, std::size_t count) const;
  Value Count(const std::vector<Value>& terms, Span span, const Value* target);
  Value Combine(Aggregate aggregate, std::vector<Value> terms, Span span, const Value* target);
  Value Operate(const Operation& operation, const Value* operands, unsigned int count,
                const Value* target);
  void CheckOperand(const Operation& operation, const Value& operand) const;
  Value EvaluateKnown(NodeRange range);
  Value EvaluateConstant(NodeRange range);
  IntegerSet EvaluateSet(NodeRange range, std::string_view what);
  std::int64_t EvaluateInteger(NodeRange range, std::string_view what);
  bool EvaluateTruth(NodeRange range);

  Operation OperationOf(Op op, Span span) const {
    return {mSignNames[static_cast<std::size_t>(op)], op, span};
  }
  bool IsAssertingComparison(NodeRange range) const;
  bool IsApplication(NodeRange range) const;
  bool TakesRightSide(NodeRange left, NodeRange right) const;
  NodeRange RightOperandOf(NodeRange range) const;
  NodeRange LeftOperandOf(NodeRange range) const;
  std::vector<NodeRange> OperandsOf(NodeRange range) const;
  Span SpanOf(NodeRange range) const;
  const Node& RootOf(NodeRange range) const { return mSyntax->nodes[range.last]; }
  void CountIteration(Span span, std::size_t steps = 1);
  [[noreturn]] void FailUnknown(const Node& node, std::string_view what);
  void SetSource(const Source* source);
  std::string PlaceOf(const Symbol& symbol) const;

  ModelBuilder* mBuilder;  // of the model, or of what is computed to be shown
  Registry& mRegistry;
  NameTable& mNames;
  const ZULTavCalculator::Limits& mLimits;
  const Source* mSource = nullptr;
  const Syntax* mSyntax = nullptr;
  std::size_t mListItems = 0;           // of the lists that expressions made; outlives them
  std::shared_ptr<const Syntax> mKept;  // the present statement, where it defines functions
  std::vector<Symbol> mSymbols;         // by name
  std::vector<Value> mConstants;
  std::map<std::uint32_t, Definition> mDefinitions;  // by name
  std::deque<Function> mFunctions;
  std::map<std::uint32_t, Datum> mData;  // by name
  bool mIsDataBroken = false;
  std::array<std::uint32_t, kOperatorSigns.size()> mSignNames = {};
  std::uint32_t mIntegerConversion = 0, mRealConversion = 0;  // names
  std::vector<Value> mStack;
  std::uint32_t mLine = 0;
  unsigned int mConstantOnly = 0;  // what is evaluated must be known while the model is read
  unsigned int mTruthsOnly = 0;    // nothing is stated: all comparisons have truth values
  unsigned int mDepth = 0;         // of expressions that are being evaluated or stated
  std::size_t mIterations = 0;
  std::optional<Symbol> mObjective;  // where it is
  std::optional<Value> mGuard;       // what is stated now holds where this is true
};

}  // namespace zultav::detail

#endif
