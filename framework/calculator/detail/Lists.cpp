#include <algorithm>
#include <utility>

#include "framework/calculator/detail/Interpreter.h"
#include "framework/solver/ZULTaVoInteger.h"

namespace zultav::detail {

// Lists, arrays and sets of integers. An array of variables is a list, too, whose items need not be
// collected before they are asked for.

Value Interpreter::MakeList(std::vector<Value> items, std::int64_t first, Span span) {
  const std::size_t size = items.size() + 1;
  if (mListItems + size > mLimits.listItems)
    Fail(span, "the lists have more items than the limit of " + std::to_string(mLimits.listItems));
  Value value = Value::OfList({first, 1, true, std::move(items)}, span);
  if (value.List().depth > mLimits.nesting)
    Fail(span, "lists within lists are deeper than the limit of " +
                   std::to_string(mLimits.nesting) + " levels");
  // Whoever drops the list last says so.
  mListItems += size;
  value.content = std::shared_ptr<const void>(
      value.content.get(),
      [this, size, content = value.content](const void*) { mListItems -= size; });
  return value;
}

std::size_t Interpreter::SizeOf(const Value& list) const {
  if (list.kind == Value::Kind::kList) return list.List().items.size();
  return mBuilder->GetVariable(list.index).dimensions[list.depth].size;
}

std::int64_t Interpreter::FirstIndexOf(const Value& list) const {
  if (list.kind == Value::Kind::kList) return list.List().first;
  return mBuilder->GetVariable(list.index).dimensions[list.depth].first;
}

/// The item at a position from 0; messages about it point to where the list stands.
Value Interpreter::ItemOf(const Value& list, std::size_t item) const {
  Value value = list;
  if (list.kind == Value::Kind::kList) {
    value = list.List().items[item];
    value.span = list.span;
    return value;
  }
  const auto& dimensions = mBuilder->GetVariable(list.index).dimensions;
  std::size_t stride = 1;
  for (std::size_t i = list.depth + 1u; i < dimensions.size(); ++i) stride *= dimensions[i].size;
  value.offset += static_cast<std::uint32_t>(item * stride);
  if (++value.depth < dimensions.size()) return value;
  return Value::OfExpression(mBuilder->LeafOf(list.index, value.offset), list.span);
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

/// {item, …}
Value Interpreter::EvaluateSetLiteral(const Value* items, std::uint32_t count, Span span) const {
  std::vector<IntegerSet::Range> ranges;
  for (const Value* item = items; item != items + count; ++item) {
    if (item->IsSet()) {
      const auto& all = item->Set().GetRanges();
      ranges.insert(ranges.end(), all.begin(), all.end());
      continue;
    }
    if (!item->IsConstant() || !item->constant.IsInteger())
      Fail(item->span,
           "a set holds integers, known while the model is read; this is " + Describe(*item));
    ranges.push_back({item->constant.integer, item->constant.integer});
  }
  return Value::OfSet(IntegerSet(std::move(ranges)), span);
}

// --- Members ----------------------------------------------------------------------------------

/// That a number is in a set can be asked of integers alone.
void Interpreter::CheckMember(const Value& value, const Value& set, Span span) const {
  CheckOperand({}, value);
  if (!set.IsSet())
    Fail(set.span, "expected a set, such as {1, 3, 5..9}; this is " + Describe(set),
         {"bounds are written as a range: 'x in 2..4'"});
  const bool isInteger = value.IsConstant()
                             ? value.constant.IsInteger()
                             : ZULTaVoInteger::sDescriptor->IsMatched(mBuilder->TypeOf(value));
  if (!isInteger) Fail(span, "'in' asks of an integer; this is " + Describe(value));
}

/// The truth of `value in set`.
Value Interpreter::EvaluateMember(const Value& value, const Value& set, Span span) {
  CheckMember(value, set, span);
  if (value.IsConstant())
    return Value::Of(Constant::Boolean(set.Set().Contains(value.constant.integer)), span);
  std::vector<Value> terms;
  const auto number = [span](std::int64_t n) { return Value::Of(Constant::Integer(n), span); };
  for (const IntegerSet::Range& range : set.Set().GetRanges()) {
    if (range.low == range.high) {
      AddTerm(terms, Join(Op::kIsEqual, value, number(range.low), span));
      continue;
    }
    const Value above = Join(Op::kIsGreaterOrEqual, value, number(range.low), span);
    const Value below = Join(Op::kIsLessOrEqual, value, number(range.high), span);
    AddTerm(terms, Join(Op::kAnd, above, below, span));
  }
  return Combine(Aggregate::kExists, std::move(terms), span, nullptr);
}

void Interpreter::AssertMember(NodeRange range) {
  const Value value = Evaluate(LeftOperandOf(range));
  const Value set = Evaluate(RightOperandOf(range));
  const Span span = RootOf(range).span;
  CheckMember(value, set, span);
  if (value.IsConstant() || set.Set().IsEmpty())
    return AssertValue(EvaluateMember(value, set, span), range);
  const auto& ranges = set.Set().GetRanges();
  if (ranges.size() > 1)
    return mBuilder->StateMember(value, ZULTaVoMembership::MakeSet(ranges), span, mLine);
  const auto bound = [&](Op op, std::int64_t number) {
    mBuilder->State(OperationOf(op, span), value, Value::Of(Constant::Integer(number), span),
                    mLine);
  };
  bound(Op::kGreaterOrEqual, ranges.front().low);
  bound(Op::kLessOrEqual, ranges.back().high);
}

// --- Elements ---------------------------------------------------------------------------------

Value Interpreter::EvaluateElement(const Node& node, const Value* indices, const Value* target) {
  const Symbol::Kind kind = SymbolOf(node.data).kind;
  if (kind == Symbol::Kind::kUnknown || kind == Symbol::Kind::kBroken)
    FailUnknown(node, "unknown array");
  const Value list = EvaluateName(node);
  const Value* end = indices + node.count;
  if (std::all_of(indices, end, [](const Value& index) { return !index.IsExpression(); }))
    return Select(list, indices, end, node);
  return EvaluateVariableElement(list, {indices, end}, node, target);
}

/// What the indices leave of a list: each is an integer, a set of them, or everything.
Value Interpreter::Select(const Value& list, const Value* index, const Value* end,
                          const Node& node) {
  if (index == end) return list;
  if (!list.HasItems())
    FailIndexed(*index, node.count - static_cast<std::size_t>(end - index), node);
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
    Fail(index->span, "an index must be an integer; this is " + Describe(*index));
  }
  return MakeList(std::move(items), isEverything ? FirstIndexOf(list) : 1, node.span);
}

/// Of what has no more than the given number of indices.
void Interpreter::FailIndexed(const Value& index, std::size_t given, const Node& node) const {
  const std::string name = "'" + mNames.GetName(node.data) + "'";
  if (given == 0) Fail(node.span, name + " is no array");
  Fail(index.span, name + " has " + (given == 1 ? "1 index" : std::to_string(given) + " indices") +
                       ", not " + std::to_string(node.count));
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
      return "of type '" + std::string(mBuilder->TypeOf(value)->GetName()) + "'";
    case Value::Kind::kArray:
    case Value::Kind::kList:
      return "a list";
    case Value::Kind::kSet:
      return "a set of integers";
    case Value::Kind::kText:
      return "the name '" + value.Text() + "'";
    default:
      return "'*'";
  }
}

}  // namespace zultav::detail
