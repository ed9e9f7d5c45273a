#include "solve/CatalogueCommand.h"

#include <iomanip>
#include <iostream>
#include <nlohmann/json.hpp>

#include "solve/Modules.h"

namespace {

using Json = nlohmann::ordered_json;

Json NameOf(const ZULTaVoObjectDescriptor* descriptor) {
  return descriptor != nullptr ? Json(descriptor->GetName()) : Json(nullptr);
}

Json JsonOf(const ZULTaVoOperatorDescriptor& op) {
  Json types = Json::array();
  for (unsigned int i = 0; i < op.GetNumberOfTypes(); ++i)
    types.push_back(NameOf(op.GetTypes()[i]));
  return {
      {"name",       op.GetName()              },
      {"kind",       op.GetShapeName()         },
      {"types",      std::move(types)          },
      {"constraint", NameOf(op.GetConstraint())}
  };
}

void PrintText(const ZULTaVoOperatorDescriptor& op) {
  op.PrintOn(std::cout);
  std::cout << "  " << op.GetShapeName();
  if (op.GetConstraint() != nullptr) std::cout << ' ' << op.GetConstraint()->GetName();
  std::cout << '\n';
}

Json JsonOf(const ZULTaVoRelationDescriptor& relation) {
  return {
      {"name",      relation.GetRelationName()      },
      {"signature", relation.GetName()              },
      {"meaning",   relation.GetDefinition().meaning}
  };
}

void PrintText(const ZULTaVoRelationDescriptor& relation) {
  std::cout << relation.GetName() << "\n    " << relation.GetDefinition().meaning << '\n';
}

Json JsonOf(const ZULTaVoObjectDescriptor& type) {
  return {
      {"name", type.GetName()        },
      {"base", NameOf(type.GetBase())}
  };
}

void PrintText(const ZULTaVoObjectDescriptor& type) {
  std::cout << std::left << std::setw(20) << type.GetName();
  if (type.GetBase() != nullptr) std::cout << " : " << type.GetBase()->GetName();
  std::cout << '\n';
}

template <class Descriptor>
void List(const Modules& modules, ZULTaVoObjectDescriptor::Kind kind, const char* key,
          Format format) {
  Json list = Json::array();
  for (const ZULTaVoModule* module : modules.Named()) {
    for (const ZULTaVoObjectDescriptor* descriptor : module->GetDescriptors()) {
      if (descriptor->GetKind() != kind) continue;
      const auto& item = static_cast<const Descriptor&>(*descriptor);
      if (format == Format::kText) {
        PrintText(item);
      } else {
        list.push_back(JsonOf(item));
      }
    }
  }
  if (format == Format::kJson)
    std::cout << Json{{key, std::move(list)}}.dump(2) << '\n';
}

}  // namespace

int RunCatalogueCommand(const Options& options) {
  Modules modules;
  if (std::string reason; !modules.Open(options, reason)) {
    std::cerr << "zultav: " << reason << '\n';
    return options.moduleGiven ? kUsage : kInternal;
  }
  using Kind = ZULTaVoObjectDescriptor::Kind;
  switch (options.command) {
    case Command::kOperators:
      List<ZULTaVoOperatorDescriptor>(modules, Kind::kOperator, "operators", options.format);
      break;
    case Command::kRelations:
      List<ZULTaVoRelationDescriptor>(modules, Kind::kRelation, "relations", options.format);
      break;
    default:
      List<ZULTaVoObjectDescriptor>(modules, Kind::kType, "types", options.format);
  }
  return kAnswered;
}
