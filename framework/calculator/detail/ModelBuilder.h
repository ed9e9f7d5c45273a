#ifndef ZULTAV_CALCULATOR_DETAIL_MODEL_BUILDER_H
#define ZULTAV_CALCULATOR_DETAIL_MODEL_BUILDER_H

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "framework/calculator/ZULTavModel.h"
#include "framework/calculator/detail/IntegerSet.h"
#include "framework/calculator/detail/LocalValue.h"
#include "framework/calculator/detail/Registry.h"
#include "framework/calculator/detail/Syntax.h"
#include "framework/solver/ZULTaVoRelation.h"

namespace zultav::detail {

/// What an expression of the source stands for while the model is built.
struct Value {
  enum class Kind : std::uint8_t {
    kConstant,
    kExpression,
    kArray,       // of variables, or a part of one
    kList,        // of values
    kSet,         // of integers
    kEverything,  // '*' and '..'
    kText         // of data, the name of a constant
  };
  Kind kind = Kind::kConstant;
  bool asserts = false;      // the value of a comparison that the model states
  std::uint8_t depth = 0;    // of an array: how many of its indices are given
  std::uint32_t index = 0;   // of the model's expression; of the array's variable
  std::uint32_t offset = 0;  // of an array: its first element
  Constant constant;
  Span span;
  std::shared_ptr<const void> content;  // of a list or a set

  static Value Of(const Constant& constant, Span span) {
    Value value;
    value.constant = constant;
    value.span = span;
    return value;
  }
  static Value OfExpression(std::uint32_t index, Span span) {
    Value value;
    value.kind = Kind::kExpression;
    value.index = index;
    value.span = span;
    return value;
  }
  static Value OfSet(IntegerSet set, Span span) {
    Value value;
    value.kind = Kind::kSet;
    value.span = span;
    value.content = std::make_shared<const IntegerSet>(std::move(set));
    return value;
  }
  bool IsConstant() const { return kind == Kind::kConstant; }
  bool IsExpression() const { return kind == Kind::kExpression; }
  bool IsSet() const { return kind == Kind::kSet; }
  bool IsEverything() const { return kind == Kind::kEverything; }
  /// Whether it has items, being an array or a list.
  bool HasItems() const { return kind == Kind::kArray || kind == Kind::kList; }
  const IntegerSet& Set() const { return *static_cast<const IntegerSet*>(content.get()); }
  const struct List& List() const;
  const std::string& Text() const { return *static_cast<const std::string*>(content.get()); }
  static Value OfList(struct List list, Span span);
};

/// The items of a list, which may be lists.
struct List {
  std::int64_t first = 1;  // index of items[0]
  std::size_t depth = 1;   // of the lists in it, itself included
  bool isPlain = true;     // no expressions are in it
  std::vector<Value> items;
};
inline Value Value::OfList(struct List list, Span span) {
  for (const Value& item : list.items) {
    if (item.IsExpression()) list.isPlain = false;
    if (item.kind != Kind::kList) continue;
    list.depth = std::max(list.depth, item.List().depth + 1);
    list.isPlain = list.isPlain && item.List().isPlain;
  }
  Value value;
  value.kind = Kind::kList;
  value.span = span;
  value.content = std::make_shared<const struct List>(std::move(list));
  return value;
}
inline const List& Value::List() const { return *static_cast<const struct List*>(content.get()); }

/// What a call gives to a parameter of a relation.
struct Argument {
  std::vector<Value> values;  // row by row
  std::uint32_t rows = 1;
  std::int64_t firstIndex = 1;

  /// The first one that is not known while the model is read.
  std::vector<Value>::const_iterator FindOpen() const {
    return std::find_if_not(values.begin(), values.end(), [](const Value& value) {
      return value.IsConstant() || value.IsEverything();
    });
  }
};

/// An operator as it stands in the source.
struct Operation {
  std::uint32_t name = 0;  // in the name table
  Op op = Op::kNone;
  Span span;
};

/// Builds the network of a model: shares constants and equal subexpressions, lets literals take
/// the types that operators ask for, and spares hidden variables where an object that is there
/// already can be the result of an operator.
class ModelBuilder {
 public:
  using Type = Registry::Type;
  using StatementKind = ZULTavModel::Statement::Kind;

  /// @param outer  of the model for whose variables a computation is built; null: of none
  ModelBuilder(ZULTavModel& model, Registry& registry, const NameTable& names,
               const ZULTavCalculator::Limits& limits, const ModelBuilder* outer = nullptr)
      : mModel(model),
        mRegistry(registry),
        mNames(names),
        mLimits(limits),
        mOuter(outer),
        mTable(64, Entry{0, kNone}) {}

  /// Adds `count` objects with the value of `initial`. Answers the index of the variable.
  std::uint32_t AddVariable(ZULTavModel::Variable variable, std::size_t count,
                            const LocalValue& initial);
  const ZULTavModel::Variable& GetVariable(std::uint32_t variable) const {
    return mOuter != nullptr ? mOuter->GetVariable(variable) : mModel.mVariables[variable];
  }
  /// Index of the expression that is the variable's element or, in a computation, a copy of it.
  std::uint32_t LeafOf(std::uint32_t variable, std::size_t element) {
    return mOuter != nullptr ? CopyOf(variable, element)
                             : mLeaves[variable] + static_cast<std::uint32_t>(element);
  }
  /// Of a computation: a constant of the outer model as one of its own; any other value stays.
  Value Import(const Value& value);
  Type TypeOf(const Value& value) const;
  /// Of an expression over integers, its only value.
  std::optional<std::int64_t> FixedInteger(const Value& value) const;
  /// Whether it is an expression whose values are truth values.
  bool IsBoolean(const Value& value) const;
  /// Whether it is an operator applied to two numbers.
  bool TakesNumbers(const Value& value) const;

  /// Notes what is probably not meant, once for each place in the source.
  void Warn(Span span, std::string message, std::vector<std::string> notes);
  /// What is built from now on stands in this text, null: in none that is warned of.
  void SetSource(const Source* source) { mSource = source; }
  /// A place in the texts that make up a model.
  using Place = std::pair<std::uint32_t, std::uint32_t>;
  const std::map<Place, ModelError>& GetWarnings() const { return mWarnings; }

  /// Applies an operator to its operands (none, one or two) and answers the result. Where it can,
  /// the result is the object of `target` (null: of none), so that an equation between both holds
  /// without a constraint of its own.
  Value Apply(const Operation& operation, const Value* operands, unsigned int count,
              const Value* target);
  /// As Apply, and computes the result, so that what follows knows it. Fails where there is none.
  Value ApplyToConstants(const Operation& operation, const Value* operands, unsigned int count);
  /// What a relation says of its arguments, whose types fit: its result or, where it has none, its
  /// truth; `target` as in Apply.
  Value Call(const ZULTaVoRelationDescriptor& relation, const std::vector<Argument>& arguments,
             bool isReal, Span span, const Value* target);
  /// Records and adds that the value, which is no constant, is in the set.
  void StateMember(const Value& value, const ZULTaVoRelation::Part& set, Span span,
                   std::uint32_t line);
  /// Records and adds that the relation holds.
  void StateRelation(const ZULTaVoRelationDescriptor& relation,
                     const std::vector<Argument>& arguments, bool isReal, Span span,
                     std::uint32_t line);
  /// How many of the terms, all of them truth values, are true; `target` as in Apply.
  Value Count(const std::vector<Value>& terms, Span span, const Value* target);
  /// Fails where the type cannot hold the number.
  void CheckRange(const Value& number, Type type) const;
  /// Of a computation: whether it is the copy of a variable's value.
  bool IsInput(const Value& value) const {
    return value.IsExpression() && mModel.mExpressions[value.index].IsVariable();
  }
  /// Of a computation: what shows the values, each behind a blank but the first. The computation
  /// has its results then.
  std::vector<ZULTavModel::Shown> Show(const std::vector<Value>& values,
                                       const std::vector<bool>& areIntegers);
  /// Elements that were built for variable indices, by the array and the indices.
  std::map<std::vector<std::int64_t>, Value>& Elements() { return mChosen; }
  /// Adds a computation that was built. Answers its index.
  std::uint32_t AddComputation(std::unique_ptr<ZULTavModel> model, const ModelBuilder& builder,
                               Span span);
  void AddLine(std::vector<ZULTavModel::Shown> line, Span span);
  /// Adds the constraint of an asserting comparison. Its value, which equals one of the operands,
  /// is the object of this operand where the types allow it.
  Value Relate(const Operation& operation, const Value& left, const Value& right);
  /// As Relate, for a whole statement, which is recorded.
  void State(const Operation& operation, const Value& left, const Value& right, std::uint32_t line);
  /// Records and adds that the value, a boolean one, is true. `equality`: the operator "=".
  void StateTrue(const Operation& equality, const Value& value, std::uint32_t line);
  /// Records what is optimised. Fails where it is no number that solutions can be compared by.
  void SetObjective(const Value& value, bool isMaximized);
  /// Records and adds, as one constraint, that the terms are pairwise different. False where they
  /// are not of one type of integers.
  bool StateAllDifferent(const std::vector<Value>& terms, Span span, std::uint32_t line);

 private:
  static constexpr std::uint32_t kNone = ZULTavModel::kNone;

  /// An operator of a module with the operands it takes.
  struct Application {
    const ZULTaVoOperatorDescriptor* op;
    unsigned int count;
    std::uint32_t operands[2];
  };
  struct Entry {
    std::uint32_t hash;
    std::uint32_t expression;
  };
  struct ConstantKey {
    Type type;
    std::int64_t integer;
    std::uint64_t lower, upper;
    bool operator==(const ConstantKey&) const = default;
  };
  struct ConstantHash {
    std::size_t operator()(const ConstantKey& key) const;
  };

  std::uint32_t CopyOf(std::uint32_t variable, std::size_t element);
  ZULTaVoAny* ObjectOf(std::uint32_t expression) const {
    return mModel.mExpressions[expression].object;
  }
  void Warn(const ModelError& warning);
  void NoteQuotient(std::uint32_t expression, Span span);
  void WarnOfQuotients(const Application& application);
  Application Resolve(const Operation& operation, const Value* operands, unsigned int count);
  [[noreturn]] void FailToResolve(const Operation& operation, const Value* operands,
                                  unsigned int count) const;
  ConstantKey KeyOf(const Constant& constant, Type type) const;
  ZULTaVoConstant NumberOf(const Constant& constant, Type type) const;
  std::uint32_t LeafFor(const Value& value, Type type);
  bool StoreConstant(ZULTaVoAny& object, const Constant& constant, Type type) const;
  ZULTaVoAny* ResultObject(Type type, std::span<const std::uint32_t> operands, const Value* target);
  ZULTaVoAny* NewObject(Type type, const void* from = nullptr);
  void Compute(const Value& value);
  void CountOperations(std::size_t operations, Span span);
  void Post(const Application& application, ZULTaVoAny* result, Span span);
  void PostList(const ZULTaVoObjectDescriptor* constraint,
                const std::vector<ZULTaVoObject*>& arguments, Span span);
  Type CommonIntegerType(const std::vector<Value>& terms) const;
  std::uint32_t AppendList(const std::vector<std::uint32_t>& expressions);
  static Type RequireType(Type type, const std::string& what, Span span);
  Type LiteralTypeOf(ZULTaVoRelationDescriptor::Element element, bool isReal, Span span) const;
  std::uint32_t Connect(const ZULTaVoRelationDescriptor& relation,
                        const std::vector<Argument>& arguments, bool isReal, Span span,
                        ZULTaVoAny* truth, const Value* target, ZULTaVoAny*& result);
  Value RelateResolved(const Operation& operation, const Application& application, bool record);
  std::uint32_t Append(const ZULTavModel::Expression& expression);
  std::uint32_t HashOf(const Application& application) const;
  std::uint32_t Find(const Application& application, std::uint32_t hash) const;
  void Enter(std::uint32_t expression, std::uint32_t hash);

  ZULTavModel& mModel;
  Registry& mRegistry;
  const NameTable& mNames;
  const ZULTavCalculator::Limits& mLimits;
  const ModelBuilder* mOuter;
  std::vector<std::uint32_t> mLeaves;     // of each variable: its first expression
  std::vector<std::uint32_t> mPositions;  // of each variable: its first value among all
  // Of a computation: copies of outer values by their positions, those positions in the order of
  // the variables that copy them, and copies of outer constants.
  std::unordered_map<std::uint32_t, std::uint32_t> mCopies, mImported;
  std::vector<std::uint32_t> mInputs;
  std::unordered_map<ConstantKey, std::uint32_t, ConstantHash> mConstants;
  std::unordered_set<const ZULTaVoAny*> mSaturated;  // constants beyond the limits of their types
  std::vector<Entry> mTable;  // open hash table of the expressions that apply operators
  std::unordered_map<std::uint32_t, ModelError> mQuotients;     // integers that may not divide
  std::map<std::vector<std::uint32_t>, std::uint32_t> mCounts;  // of lists of expressions
  std::map<std::vector<std::int64_t>, Value> mChosen;           // elements by array and indices
  const Source* mSource = nullptr;
  std::map<Place, ModelError> mWarnings;
  std::size_t mApplied = 0;
  std::size_t mElements = 0;
  std::size_t mOperations = 0;
  std::size_t mShown = 0, mShownBytes = 0;
};

}  // namespace zultav::detail

#endif
