#include "framework/calculator/ZULTavModel.h"

#include <algorithm>
#include <ostream>
#include <variant>

namespace {

bool IsWord(std::string_view name) {
  return (name[0] >= 'a' && name[0] <= 'z') || (name[0] >= 'A' && name[0] <= 'Z') || name[0] == '_';
}

}  // namespace

const ZULTavModel::Variable* ZULTavModel::FindVariable(std::string_view name) const {
  const auto found = std::find_if(mVariables.begin(), mVariables.end(),
                                  [name](const Variable& v) { return v.name == name; });
  return found != mVariables.end() ? &*found : nullptr;
}

void ZULTavModel::PrintExpression(std::ostream& out, std::uint32_t expression) const {
  // Expressions may be deep: what is still to be written waits on a stack.
  std::vector<std::variant<std::uint32_t, const char*>> pending = {expression};
  while (!pending.empty()) {
    const auto next = pending.back();
    pending.pop_back();
    if (const auto* text = std::get_if<const char*>(&next)) {
      out << *text;
      continue;
    }
    const Expression& node = mExpressions[std::get<std::uint32_t>(next)];
    if (node.IsVariable()) {
      const Variable& variable = mVariables[node.operands[0]];
      out << variable.name;
      if (variable.isArray) out << '[' << variable.firstIndex + long(node.operands[1]) << ']';
    } else if (node.IsConstant()) {
      node.object->PrintOn(out);
    } else if (node.op->GetNumberOfArguments() == 0) {
      out << node.op->GetName();
    } else {
      const char* name = node.op->GetName();
      const bool isBinary = node.operands[1] != kNone;
      pending.emplace_back(")");
      if (isBinary) pending.emplace_back(node.operands[1]);
      if (isBinary) {
        for (const char* part : {" ", name, " "}) pending.emplace_back(part);
        pending.emplace_back(node.operands[0]);
        pending.emplace_back("(");
      } else {
        pending.emplace_back(node.operands[0]);
        pending.emplace_back(IsWord(name) ? "(" : name);
        pending.emplace_back(IsWord(name) ? name : "(");
      }
    }
  }
}

void ZULTavModel::PrintStatement(std::ostream& out, const Statement& statement) const {
  constexpr const char* kSigns[] = {" = ", " <> ", " < ", " <= ", " > ", " >= "};
  PrintExpression(out, statement.left);
  if (statement.kind == Statement::Kind::kTrue) return;
  out << kSigns[static_cast<std::size_t>(statement.kind)];
  PrintExpression(out, statement.right);
}
