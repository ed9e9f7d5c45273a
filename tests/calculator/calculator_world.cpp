#include "tests/calculator/calculator_world.h"

#include <algorithm>
#include <cctype>
#include <sstream>

#include "framework/solver/ZULTaVoRelation.h"

namespace {

std::string ExpressionText(const ZULTavModel& model, std::uint32_t index);

std::string ListText(const ZULTavModel& model, std::uint32_t place) {
  std::string text;
  for (const std::uint32_t term : model.List(place))
    text += (text.empty() ? "" : ", ") + ExpressionText(model, term);
  return text;
}

/// With every application in parentheses, such as "((x ^ 2) + y)".
std::string ExpressionText(const ZULTavModel& model, std::uint32_t index) {
  const auto& node = model.Expressions()[index];
  std::ostringstream out;
  if (node.IsVariable()) return model.Variables()[node.operands[0]].NameOf(node.operands[1]);
  if (node.IsConstant()) {
    node.object->PrintOn(out);
    return out.str();
  }
  if (node.IsCount()) return "count(" + ListText(model, node.operands[1]) + ")";
  const std::string name = node.op->GetName();
  if (node.op->GetNumberOfArguments() == 0) return name;
  const std::string first = ExpressionText(model, node.operands[0]);
  if (node.op->GetNumberOfArguments() == 2)
    return "(" + first + " " + name + " " + ExpressionText(model, node.operands[1]) + ")";
  return std::isalpha(static_cast<unsigned char>(name[0])) ? name + "(" + first + ")"
                                                           : "(" + name + first + ")";
}

}  // namespace

std::string Reading::ErrorText() const {
  std::ostringstream out;
  for (const ZULTavDiagnostic& error : errors) error.Print(out);
  return out.str();
}

std::string Reading::StatementText() const {
  constexpr const char* kSigns[] = {" = ", " <> ", " < ", " <= ", " > ", " >= "};
  std::string text;
  for (const auto& statement : model->Statements()) {
    if (statement.kind == ZULTavModel::Statement::Kind::kAllDifferent) {
      text += "alldifferent(" + ListText(*model, statement.left) + "); ";
      continue;
    }
    if (statement.kind == ZULTavModel::Statement::Kind::kRelation) {
      const auto& relation =
          dynamic_cast<const ZULTaVoRelation&>(model->Network().GetConstraint(statement.right));
      text += std::string(relation.GetType().GetRelationName()) + "(" +
              ListText(*model, statement.left) + ";";
      for (const std::int64_t number : relation.GetParts().back().integers)
        text += " " + std::to_string(number);
      text += "); ";
      continue;
    }
    text += ExpressionText(*model, statement.left);
    if (statement.kind != ZULTavModel::Statement::Kind::kTrue)
      text += kSigns[static_cast<std::size_t>(statement.kind)] +
              ExpressionText(*model, statement.right);
    text += "; ";
  }
  return text;
}

ZULTaVoAny& Reading::Value(const std::string& name, std::size_t element) const {
  const auto& variables = model->Variables();
  const auto found = std::find_if(variables.begin(), variables.end(),
                                  [&](const auto& variable) { return variable.name == name; });
  return *found->values.at(element);
}

std::string Reading::ValueText(const std::string& name, std::size_t element) const {
  std::ostringstream out;
  Value(name, element).PrintOn(out);
  return out.str();
}

Reading ReadModel(const std::string& text, const ZULTavCalculator::Options& options) {
  Reading reading;
  const ZULTavCalculator calculator({&NumberModule()});
  reading.model = calculator.Read(text, "test", options, reading.errors);
  EXPECT_EQ(reading.model == nullptr, !reading.errors.empty()) << text;
  return reading;
}

Reading ReadModel(const std::string& text, const Definitions& definitions) {
  ZULTavCalculator::Options options;
  options.definitions = definitions;
  return ReadModel(text, options);
}

bool IsConsistent(const std::string& text, const Definitions& definitions) {
  const Reading reading = ReadModel(text, definitions);
  EXPECT_EQ(reading.ErrorText(), "") << text;
  return reading.model != nullptr &&
         reading.model->Network().Propagate() == ZULTaVoNetwork::Status::kConsistent;
}
