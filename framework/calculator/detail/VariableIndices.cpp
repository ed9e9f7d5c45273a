#include <algorithm>
#include <utility>

#include "framework/calculator/detail/Interpreter.h"
#include "framework/solver/ZULTaVoInteger.h"

namespace zultav::detail {

// Elements whose indices variables decide. They are what the relation `element`, which a module may
// have, says of an index and a list.

namespace {

constexpr char kRelation[] = "element";

}  // namespace

/// Of the same array and the same indices there is one.
Value Interpreter::EvaluateVariableElement(const Value& list, std::vector<Value> indices,
                                           const Node& node, const Value* target) {
  std::vector<std::int64_t> key = {node.data};
  bool isShared = !mNames.IsLocal(node.data);
  for (const Value& index : indices) {
    isShared =
        isShared && (index.IsExpression() || (index.IsConstant() && index.constant.IsInteger()));
    key.push_back(index.IsExpression());
    key.push_back(index.IsExpression() ? index.index : index.constant.integer);
  }
  if (!isShared) return SelectAmong({list}, {}, indices, node, target);
  if (const auto known = mBuilder->Elements().find(key); known != mBuilder->Elements().end())
    return known->second;
  const Value element = SelectAmong({list}, {}, indices, node, target);
  mBuilder->Elements().emplace(std::move(key), element);
  return element;
}

/// An index that is fixed already becomes a constant where the list has it.
Value Interpreter::CheckVariableIndex(const Value& index, const Value& list) const {
  if (!ZULTaVoInteger::sDescriptor->IsMatched(mBuilder->TypeOf(index)))
    Fail(index.span, "an index must be an integer; this is " + Describe(index));
  const std::optional<std::int64_t> fixed = mBuilder->FixedInteger(index);
  const std::int64_t first = FirstIndexOf(list);
  const bool isThere =
      fixed && *fixed >= first && *fixed - first < static_cast<std::int64_t>(SizeOf(list));
  return isThere ? Value::Of(Constant::Integer(*fixed), index.span) : index;
}

/// Rows among which a variable chooses have the same indices.
void Interpreter::CheckRows(const std::vector<Value>& rows, const Node& node) const {
  const std::string name = "'" + mNames.GetName(node.data) + "'";
  if (rows.empty()) Fail(node.span, name + " has no elements");
  for (const Value& row : rows)
    if (row.HasItems() != rows[0].HasItems() ||
        (row.HasItems() &&
         (SizeOf(row) != SizeOf(rows[0]) || FirstIndexOf(row) != FirstIndexOf(rows[0]))))
      Fail(node.span, "the rows of " + name + " do not all have the same indices",
           {"a variable can choose only among rows that have"});
}

/// The item that each row has with this index, a constant.
std::vector<Value> Interpreter::ItemsAt(const std::vector<Value>& rows, const Value& index,
                                        const Node& node) {
  std::vector<Value> items;
  for (const Value& row : rows) {
    CountIteration(node.span);
    AddTerm(items, ItemAt(row, index, node));
  }
  return items;
}

/// What the indices leave of the rows, among which those chose that came before: a value or, where
/// one stands for several or is missing, a list of them.
Value Interpreter::SelectAmong(std::vector<Value> rows, std::vector<VariableIndex> chosen,
                               std::span<const Value> indices, const Node& node,
                               const Value* target) {
  CheckRows(rows, node);
  const Value row = rows[0];
  if (!row.HasItems()) {
    if (!indices.empty()) FailIndexed(indices[0], node.count - indices.size(), node);
    return Choose(std::move(rows), chosen, node, target);
  }
  const std::int64_t first = FirstIndexOf(row);
  const std::size_t size = SizeOf(row);
  const bool isEverything = indices.empty() || indices[0].kind == Value::Kind::kEverything;
  const std::span<const Value> left = indices.empty() ? indices : indices.subspan(1);
  if (isEverything || indices[0].IsSet()) {
    std::vector<Value> positions;
    const std::int64_t last = first + static_cast<std::int64_t>(size) - 1;
    SpreadInto(positions, isEverything ? Value::OfSet({first, last}, node.span) : indices[0]);
    std::vector<Value> items;
    for (const Value& position : positions)
      AddTerm(items, SelectAmong(ItemsAt(rows, position, node), chosen, left, node, nullptr));
    return MakeList(std::move(items), isEverything ? first : 1, node.span);
  }
  const Value index = indices[0].IsExpression() ? CheckVariableIndex(indices[0], row) : indices[0];
  if (index.IsConstant())
    return SelectAmong(ItemsAt(rows, index, node), std::move(chosen), left, node, target);
  if (!index.IsExpression())
    Fail(index.span, "an index must be an integer; this is " + Describe(index));
  chosen.push_back({index, first, size});
  std::vector<Value> items;
  for (const Value& each : rows)
    for (std::size_t i = 0; i < size; ++i) {
      CountIteration(node.span);
      AddTerm(items, ItemOf(each, i));
    }
  return SelectAmong(std::move(items), std::move(chosen), left, node, target);
}

/// The item that the indices choose; several of them make up the place in a list of all. An index
/// that there is not has no value.
Value Interpreter::Choose(std::vector<Value> items, const std::vector<VariableIndex>& chosen,
                          const Node& node, const Value* target) {
  if (chosen.empty()) return items[0];
  const ZULTaVoRelationDescriptor* relation = mRegistry.FindRelation(kRelation, 2);
  if (relation == nullptr || !relation->GetDefinition().result)
    Fail(chosen[0].value.span, "an index must be an integer that is known while the model is read",
         {"no module has the relation 'element', by which a variable can be an index"});
  const auto number = [&](std::int64_t n) { return Value::Of(Constant::Integer(n), node.span); };
  Value place = chosen[0].value;
  std::int64_t first = chosen[0].first;
  for (std::size_t i = 1; i < chosen.size(); ++i) {
    const auto& [index, low, size] = chosen[i];
    const auto count = static_cast<std::int64_t>(size);
    mBuilder->State(OperationOf(Op::kGreaterOrEqual, node.span), index, number(low), mLine);
    mBuilder->State(OperationOf(Op::kLessOrEqual, node.span), index, number(low + count - 1),
                    mLine);
    place = Join(Op::kAdd, Join(Op::kMultiply, place, number(count), node.span), index, node.span);
    if (__builtin_mul_overflow(first, count, &first) || __builtin_add_overflow(first, low, &first))
      Fail(node.span, "these indices are too large for a variable to choose among");
  }
  const bool areTruths = AreTruths(items.data(), items.size());
  Node call = node;
  call.kind = Node::Kind::kCall;
  call.data = mNames.Intern(kRelation);
  call.count = 2;
  const Value operands[2] = {place, MakeList(std::move(items), first, node.span)};
  const Value element = EvaluateRelation(call, operands, areTruths ? nullptr : target);
  return areTruths ? Join(Op::kIsEqual, element, number(1), node.span, target) : element;
}

}  // namespace zultav::detail
