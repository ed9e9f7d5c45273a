#include "solve/CheckCommand.h"

#include <iostream>

#include "solve/LoadedModel.h"
#include "solve/Report.h"

namespace {

void PrintHolding(const ZULTavModel& model, const std::string& file) {
  std::cout << file << ": " << ValuesOf(model).size() << " variables, " << model.Statements().size()
            << " statements, " << model.Network().GetNumberOfConstraints() << " constraints\n";
  for (const ZULTavModel::Variable& variable : model.Variables()) {
    std::cout << "  " << variable.name;
    const char* before = "[";
    for (const ZULTavModel::Dimension& dimension : variable.dimensions) {
      std::cout << before << dimension.first << ".."
                << dimension.first + static_cast<long>(dimension.size) - 1;
      before = ", ";
    }
    std::cout << (variable.IsArray() ? "]" : "") << " : " << variable.typeName << '\n';
  }
}

nlohmann::ordered_json JsonOf(const ZULTavModel& model) {
  nlohmann::ordered_json variables = nlohmann::ordered_json::array();
  for (const ZULTavModel::Variable& variable : model.Variables()) {
    nlohmann::ordered_json item = {
        {"name", variable.name    },
        {"type", variable.typeName}
    };
    nlohmann::ordered_json first = nlohmann::ordered_json::array(), size = first;
    for (const ZULTavModel::Dimension& dimension : variable.dimensions) {
      first.push_back(dimension.first);
      size.push_back(dimension.size);
    }
    // Of an array with one index, numbers.
    if (variable.IsArray()) item["first"] = first.size() == 1 ? first[0] : first;
    if (variable.IsArray()) item["size"] = size.size() == 1 ? size[0] : size;
    variables.push_back(std::move(item));
  }
  return {
      {"variables",   std::move(variables)                    },
      {"statements",  model.Statements().size()               },
      {"constraints", model.Network().GetNumberOfConstraints()}
  };
}

}  // namespace

int RunCheckCommand(const Options& options) {
  LoadedModel model;
  std::vector<ZULTavDiagnostic> errors;
  const int status = model.Load(options, errors);
  if (options.format == Format::kJson) {
    auto document = status == kAnswered ? JsonOf(model.Get()) : nlohmann::ordered_json::object();
    document["errors"] = JsonOf(errors);
    document["warnings"] = JsonOf(model.GetWarnings());
    std::cout << document.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace)
              << '\n';
  } else {
    PrintWarnings(model.GetWarnings());
    PrintErrors(errors);
    if (status == kAnswered) PrintHolding(model.Get(), options.modelFile);
  }
  return status;
}
