#include "framework/calculator/detail/DataReader.h"
#include "framework/calculator/detail/Interpreter.h"
#include "framework/calculator/detail/Suggestion.h"

namespace zultav::detail {

// Constants whose values come from data, and what a `let` says of its value.

void Interpreter::TakeData(const Source& data) {
  for (DataMember& member : DataReader(data, mLimits).Read()) {
    const auto [place, isNew] = mData.try_emplace(mNames.Intern(member.name));
    Datum& datum = place->second;
    if (!isNew)
      Fail(member.span, "'" + member.name + "' has a value already",
           {"data give it one in " +
            datum.source->NameLine(datum.source->GetLine(datum.span.position), &data)});
    datum = {std::move(member.value), member.span, &data};
  }
}

std::vector<ModelError> Interpreter::GetUnusedData() const {
  std::vector<ModelError> result;
  for (const auto& [name, datum] : mData)
    if (!datum.used)
      result.push_back({datum.span, "the model does not use '" + mNames.GetName(name) + "'",
                        SuggestName(mNames.GetName(name)), datum.source});
  return result;
}

/// From data or, where they have none, as the statement says.
Value Interpreter::ValueOfConstant(Dimensions dimensions, const Statement& statement) {
  const std::uint32_t name = statement.declarators[0].name;
  if (const auto datum = mData.find(name); datum != mData.end()) {
    datum->second.used = true;
    try {
      return CheckItems(TakeDatum(datum->second.value), dimensions, statement);
    } catch (ModelError& error) {
      if (error.source == nullptr && !error.message.empty()) {
        error.source = datum->second.source;
        error.notes.push_back(
            "'" + mNames.GetName(name) + "' is asked for in " +
            mSource->NameLine(mSource->GetLine(statement.span.position), error.source));
      }
      throw;
    }
  }
  if (statement.expression.present)
    return CheckItems(EvaluateKnown(statement.expression), dimensions, statement);
  if (mIsDataBroken) Fail(statement.span, "");
  Suggestion suggestion(mNames.GetName(name));
  for (const auto& [other, datum] : mData)
    if (!datum.used) suggestion.Offer(mNames.GetName(other));
  std::vector<std::string> notes = {"data give it one, '--data FILE', or '-D " +
                                    mNames.GetName(name) + "=VALUE'"};
  if (!suggestion.GetBest().empty())
    notes.insert(notes.begin(), "the data have '" + suggestion.GetBest() + "'");
  Fail(statement.span, "'" + mNames.GetName(name) + "' has no value", std::move(notes));
}

/// With the constants that names in it stand for.
Value Interpreter::TakeDatum(const Value& value) {
  if (value.kind == Value::Kind::kText) {
    const Symbol symbol = SymbolOf(mNames.Intern(value.Text()));
    if (symbol.kind == Symbol::Kind::kBroken) Fail(value.span, "");
    if (symbol.kind != Symbol::Kind::kConstant)
      Fail(value.span, "the model has no constant '" + value.Text() + "' before this one",
           SuggestName(value.Text()));
    Value constant = mConstants[symbol.data];
    constant.span = value.span;
    return constant;
  }
  if (value.kind != Value::Kind::kList) return value;
  List list;
  list.items.reserve(value.List().items.size());
  for (const Value& item : value.List().items) list.items.push_back(TakeDatum(item));
  return Value::OfList(std::move(list), value.span);
}

// --- What a constant must be ------------------------------------------------------------------

/// What a definition from outside gives has no place in the model.
Value Interpreter::CheckDefinition(const Value& value, Dimensions dimensions,
                                   const Statement& statement) const {
  try {
    return CheckItems(value, dimensions, statement);
  } catch (ModelError& error) {
    error.span = statement.span;
    throw;
  }
}

/// The value with the indices that the statement asks for.
Value Interpreter::CheckItems(const Value& value, Dimensions dimensions,
                              const Statement& statement) const {
  if (dimensions.empty()) {
    const bool isOpen = statement.type.length == 0 && statement.declarators[0].indices.empty();
    if (!isOpen) CheckScalar(value, statement);
    return value;
  }
  const std::string size = std::to_string(dimensions[0].size);
  const std::string name = "'" + mNames.GetName(statement.declarators[0].name) + "'";
  if (value.kind != Value::Kind::kList)
    Fail(value.span, name + " needs a list of " + size + " items here; this is " + Describe(value));
  if (value.List().items.size() != dimensions[0].size)
    Fail(value.span, name + " needs a list of " + size + " items here; this one has " +
                         std::to_string(value.List().items.size()));
  List list;
  list.first = dimensions[0].first;
  for (const Value& item : value.List().items)
    list.items.push_back(CheckItems(item, dimensions.subspan(1), statement));
  return Value::OfList(std::move(list), value.span);
}

void Interpreter::CheckScalar(const Value& value, const Statement& statement) const {
  const std::string name = "'" + mNames.GetName(statement.declarators[0].name) + "'";
  if (value.HasItems() || value.IsSet())
    Fail(value.span, name + " needs one value here; this is " + Describe(value));
  if (statement.type.length == 0) return;
  const std::string_view type = mSource->GetText(statement.type);
  const Constant& constant = value.constant;
  bool fits = !value.IsConstant();
  if (type == "int") {
    fits = value.IsConstant() && constant.IsInteger();
  } else if (type == "real") {
    fits = fits || constant.IsInteger() || constant.IsReal();
  } else if (type == "bool") {
    fits = fits || constant.IsBoolean();
  } else {
    ModelError error = {statement.type,
                        "a constant has no type '" + std::string(type) + "'",
                        {"the types of constants are 'int', 'real' and 'bool'"},
                        mSource};
    throw error;
  }
  if (!fits)
    Fail(value.span,
         name + " is of the type '" + std::string(type) + "'; this is " + Describe(value));
}

}  // namespace zultav::detail
