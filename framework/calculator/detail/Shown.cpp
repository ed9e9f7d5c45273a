#include <algorithm>
#include <utility>

#include "framework/calculator/detail/Interpreter.h"
#include "framework/solver/ZULTaVoInteger.h"

namespace zultav::detail {

// What solutions show. Expressions are built into a network of their own over copies of the
// variables that they use.

namespace {

/// As models write it; of integers and truth values.
std::string TextOf(const Constant& constant) {
  if (constant.IsInteger()) return std::to_string(constant.integer);
  return constant.IsTrue() ? "True" : "False";
}

/// Appends a text to the line.
void AddText(std::vector<ZULTavModel::Shown>& line, std::string_view text) {
  if (line.empty() || !line.back().IsText()) line.emplace_back();
  line.back().text += text;
}

/// Builds elsewhere as long as it lives.
class Elsewhere {
 public:
  Elsewhere(ModelBuilder*& builder, ModelBuilder& other)
      : mBuilder(builder), mOuter(std::exchange(builder, &other)) {}
  ~Elsewhere() { mBuilder = mOuter; }
  Elsewhere(const Elsewhere&) = delete;
  Elsewhere& operator=(const Elsewhere&) = delete;

 private:
  ModelBuilder*& mBuilder;
  ModelBuilder* mOuter;
};

}  // namespace

// --- Statements -------------------------------------------------------------------------------

void Interpreter::ExecuteShow(const Statement& statement) {
  mLine = mSource->GetLine(statement.span.position);
  if (mGuard)
    Fail(statement.span, "what is shown cannot depend on a condition that solutions decide",
         {"a value may: 'show if p then x else y;'"});
  std::vector<ZULTavModel::Shown> line;
  for (const ShownItem& item : statement.shown) {
    if (!item.expression.present) {
      const std::string_view quoted = mSource->GetText(item.text);
      AddText(line, quoted.substr(1, quoted.size() - 2));
      continue;
    }
    for (ZULTavModel::Shown& part : ShowValues(item.expression)) {
      if (part.IsText())
        AddText(line, part.text);
      else
        line.push_back(std::move(part));
    }
  }
  mBuilder->AddLine(std::move(line), statement.span);
}

/// A value, or those of a list with blanks between them.
std::vector<ZULTavModel::Shown> Interpreter::ShowValues(NodeRange range) {
  auto model = std::make_unique<ZULTavModel>();
  ModelBuilder builder(*model, mRegistry, mNames, mLimits, mBuilder);
  std::vector<ZULTavModel::Shown> parts;
  {
    const Elsewhere elsewhere(mBuilder, builder);
    const Scope truthsOnly(mTruthsOnly);
    std::vector<Value> values;
    SpreadInto(values, Evaluate(range));
    std::vector<bool> areIntegers(values.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
      CheckOperand({}, values[i]);
      areIntegers[i] = WidenInteger(values[i]);
    }
    parts = builder.Show(values, areIntegers);
  }
  const auto isComputed = [](const ZULTavModel::Shown& part) {
    return part.computation != ZULTavModel::kNone;
  };
  if (std::none_of(parts.begin(), parts.end(), isComputed)) return parts;
  const std::uint32_t computation =
      mBuilder->AddComputation(std::move(model), builder, SpanOf(range));
  for (ZULTavModel::Shown& part : parts)
    if (isComputed(part)) part.computation = computation;
  return parts;
}

/// A computed integer becomes a real, whose type does not limit it; whether it did.
bool Interpreter::WidenInteger(Value& value) {
  if (!value.IsExpression() || mBuilder->IsInput(value)) return false;
  const ModelBuilder::Type type = mBuilder->TypeOf(value);
  if (!ZULTaVoInteger::sDescriptor->IsMatched(type) || mRegistry.IsSingle(type)) return false;
  value = Operate({mRealConversion, Op::kNone, value.span}, &value, 1, nullptr);
  return true;
}

// --- What they become -------------------------------------------------------------------------

std::uint32_t ModelBuilder::CopyOf(std::uint32_t variable, std::size_t element) {
  const ZULTavModel::Variable& original = GetVariable(variable);
  const std::uint32_t position = mOuter->mPositions[variable] + static_cast<std::uint32_t>(element);
  if (const auto known = mCopies.find(position); known != mCopies.end()) return known->second;
  const LocalValue value(*original.type);
  value->Assign(*original.values[element]);
  ZULTavModel::Variable copy;
  copy.name = original.NameOf(element);
  copy.typeName = original.typeName;
  copy.type = original.type;
  const std::uint32_t leaf = mLeaves[AddVariable(std::move(copy), 1, value)];
  mInputs.push_back(position);
  mCopies.emplace(position, leaf);
  return leaf;
}

Value ModelBuilder::Import(const Value& value) {
  if (mOuter == nullptr) return value;
  Value result = value;
  if (value.IsExpression()) {
    const ZULTaVoAny* original = mOuter->ObjectOf(value.index);
    const auto [place, isNew] = mImported.try_emplace(value.index, kNone);
    if (isNew)
      place->second = Append({
          nullptr, NewObject(original->GetDescriptor(), original), {kNone, kNone}
      });
    result.index = place->second;
  } else if (value.kind == Value::Kind::kList && !value.List().isPlain) {
    List list = value.List();
    for (Value& item : list.items) item = Import(item);
    result = Value::OfList(std::move(list), value.span);
  }
  return result;
}

std::vector<ZULTavModel::Shown> ModelBuilder::Show(const std::vector<Value>& values,
                                                   const std::vector<bool>& areIntegers) {
  std::vector<ZULTavModel::Shown> parts;
  std::unordered_map<const ZULTaVoAny*, std::uint32_t> results;
  for (std::size_t i = 0; i < values.size(); ++i) {
    const Value& value = values[i];
    if (i > 0) AddText(parts, " ");
    if (value.IsConstant() && !value.constant.IsReal()) {
      AddText(parts, TextOf(value.constant));
      continue;
    }
    ZULTavModel::Shown& part = parts.emplace_back();
    if (IsInput(value)) {
      part.value = mInputs[mModel.mExpressions[value.index].operands[0]];
      continue;
    }
    const std::uint32_t expression =
        value.IsExpression() ? value.index
                             : LeafFor(value, mRegistry.ChooseTypes(value.constant, nullptr)[0]);
    ZULTaVoAny* object = ObjectOf(expression);
    const auto [place, isNew] =
        results.try_emplace(object, static_cast<std::uint32_t>(mModel.mVariables.size()));
    if (isNew) {
      ZULTavModel::Variable result;
      result.type = object->GetDescriptor();
      result.typeName = result.type->GetName();
      result.values = {object};
      mModel.mVariables.push_back(std::move(result));
    }
    part.computation = 0;
    part.value = place->second;
    part.isInteger = areIntegers[i];
  }
  return parts;
}

std::uint32_t ModelBuilder::AddComputation(std::unique_ptr<ZULTavModel> model,
                                           const ModelBuilder& builder, Span span) {
  CountOperations(builder.mOperations + builder.mInputs.size(), span);
  mModel.mComputations.push_back({std::move(model), builder.mInputs});
  return static_cast<std::uint32_t>(mModel.mComputations.size() - 1);
}

void ModelBuilder::AddLine(std::vector<ZULTavModel::Shown> line, Span span) {
  mShown += line.size();
  for (const ZULTavModel::Shown& part : line) mShownBytes += part.text.size();
  if (mShown > mLimits.shown)
    Fail(span,
         "more texts and values are shown than the limit of " + std::to_string(mLimits.shown));
  if (mShownBytes > mLimits.sourceBytes)
    Fail(span, "the texts that are shown are longer than the limit of " +
                   std::to_string(mLimits.sourceBytes) + " bytes");
  mModel.mLines.push_back(std::move(line));
}

}  // namespace zultav::detail
