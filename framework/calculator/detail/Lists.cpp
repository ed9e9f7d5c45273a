#include <algorithm>
#include <utility>

#include "framework/calculator/detail/Interpreter.h"

namespace zultav::detail {

// Lists, arrays and sets of integers. An array of variables is a list, too, whose items need not be
// collected before they are asked for.

Value Interpreter::MakeList(std::vector<Value> items, std::int64_t first, Span span) const {
  auto list = std::make_shared<List>();
  list->first = first;
  for (const Value& item : items)
    if (item.kind == Value::Kind::kList) list->depth = std::max(list->depth, item.List().depth + 1);
  if (list->depth > mLimits.nesting)
    Fail(span, "lists within lists are deeper than the limit of " +
                   std::to_string(mLimits.nesting) + " levels");
  list->items = std::move(items);
  Value value;
  value.kind = Value::Kind::kList;
  value.span = span;
  value.content = std::move(list);
  return value;
}

std::size_t Interpreter::SizeOf(const Value& list) const {
  if (list.kind == Value::Kind::kList) return list.List().items.size();
  return mBuilder.GetVariable(list.index).dimensions[list.depth].size;
}

std::int64_t Interpreter::FirstIndexOf(const Value& list) const {
  if (list.kind == Value::Kind::kList) return list.List().first;
  return mBuilder.GetVariable(list.index).dimensions[list.depth].first;
}

/// The item at a position from 0; messages about it point to where the list stands.
Value Interpreter::ItemOf(const Value& list, std::size_t item) const {
  Value value = list;
  if (list.kind == Value::Kind::kList) {
    value = list.List().items[item];
    value.span = list.span;
    return value;
  }
  const auto& dimensions = mBuilder.GetVariable(list.index).dimensions;
  std::size_t stride = 1;
  for (std::size_t i = list.depth + 1u; i < dimensions.size(); ++i) stride *= dimensions[i].size;
  value.offset += static_cast<std::uint32_t>(item * stride);
  if (++value.depth < dimensions.size()) return value;
  return Value::OfExpression(mBuilder.LeafOf(list.index, value.offset), list.span);
}

/// Appends the value or, of what has items, all of them.
void Interpreter::SpreadInto(std::vector<Value>& terms, const Value& value) {
  if (value.IsSet()) {
    for (const IntegerSet::Range& range : value.Set().GetRanges())
      for (std::int64_t item = range.low;; ++item) {
        AddTerm(terms, Value::Of(Constant::Integer(item), value.span));
        if (item == range.high) break;
      }
    return;
  }
  if (!value.HasItems()) return AddTerm(terms, value);
  const std::size_t size = SizeOf(value);
  for (std::size_t i = 0; i < size; ++i) {
    CountIteration(value.span);
    SpreadInto(terms, ItemOf(value, i));
  }
}

Value Interpreter::EvaluateRange(const Value* ends, Span span) const {
  for (const Value* end : {&ends[0], &ends[1]}) {
    CheckOperand({}, *end);
    if (!end->IsConstant() || !end->constant.IsInteger())
      Fail(end->span, "the ends of a range are integers, known while the model is read");
  }
  return Value::OfSet({ends[0].constant.integer, ends[1].constant.integer}, span);
}

// --- Elements ---------------------------------------------------------------------------------

Value Interpreter::EvaluateElement(const Node& node, const Value* indices) {
  const Symbol::Kind kind = SymbolOf(node.data).kind;
  if (kind == Symbol::Kind::kUnknown || kind == Symbol::Kind::kBroken)
    FailUnknown(node, "unknown array");
  return Select(EvaluateName(node), indices, indices + node.count, node);
}

/// What the indices leave of a list: each is an integer, a set of them, or everything.
Value Interpreter::Select(const Value& list, const Value* index, const Value* end,
                          const Node& node) {
  if (index == end) return list;
  const std::string name = "'" + mNames.GetName(node.data) + "'";
  if (!list.HasItems()) {
    const auto given = index - &mStack[mStack.size() - node.count];
    if (given == 0) Fail(node.span, name + " is no array");
    Fail(index->span, name + " has " +
                          (given == 1 ? "1 index" : std::to_string(given) + " indices") + ", not " +
                          std::to_string(node.count));
  }
  if (index->IsConstant()) return Select(ItemAt(list, *index, node), index + 1, end, node);
  const bool isEverything = index->kind == Value::Kind::kEverything;
  std::vector<Value> items;
  const auto add = [&](const Value& item) {
    CountIteration(node.span);
    AddTerm(items, Select(item, index + 1, end, node));
  };
  if (isEverything) {
    const std::size_t size = SizeOf(list);
    for (std::size_t i = 0; i < size; ++i) add(ItemOf(list, i));
  } else if (index->IsSet()) {
    std::vector<Value> positions;
    SpreadInto(positions, *index);
    for (const Value& position : positions) add(ItemAt(list, position, node));
  } else {
    Fail(index->span, "an index must be an integer that is known while the model is read",
         {"it may use integers, 'let' constants and the indices of loops"});
  }
  return MakeList(std::move(items), isEverything ? FirstIndexOf(list) : 1, node.span);
}

/// The item with this index, which is a constant.
Value Interpreter::ItemAt(const Value& list, const Value& index, const Node& node) {
  if (!index.constant.IsInteger())
    Fail(index.span, "an index must be an integer; this is " + index.constant.Describe());
  const std::int64_t first = FirstIndexOf(list);
  const std::int64_t last = first + static_cast<std::int64_t>(SizeOf(list)) - 1;
  const std::int64_t at = index.constant.integer;
  if (at < first || at > last)
    Fail(node.span, "index " + std::to_string(at) + " is outside the range " +
                        std::to_string(first) + ".." + std::to_string(last) + " of '" +
                        mNames.GetName(node.data) + "'");
  return ItemOf(list, static_cast<std::size_t>(at - first));
}

/// For messages: what kind of value it is.
std::string Interpreter::Describe(const Value& value) const {
  switch (value.kind) {
    case Value::Kind::kConstant:
      return value.constant.Describe();
    case Value::Kind::kExpression:
      return "of type '" + std::string(mBuilder.TypeOf(value)->GetName()) + "'";
    case Value::Kind::kArray:
    case Value::Kind::kList:
      return "a list";
    case Value::Kind::kSet:
      return "a set of integers";
    default:
      return "'*'";
  }
}

}  // namespace zultav::detail
