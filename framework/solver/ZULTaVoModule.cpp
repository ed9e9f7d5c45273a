#include "framework/solver/ZULTaVoModule.h"

#include <algorithm>

namespace {

using Kind = ZULTaVoObjectDescriptor::Kind;

const ZULTaVoObjectDescriptor* Find(const std::vector<const ZULTaVoObjectDescriptor*>& list,
                                    Kind kind, std::string_view name) {
  const auto found = std::find_if(list.begin(), list.end(), [&](const auto* descriptor) {
    return descriptor->GetKind() == kind && name == descriptor->GetName();
  });
  return found != list.end() ? *found : nullptr;
}

template <class Map>
const auto& FindList(const Map& map, std::string_view name) {
  static const typename Map::mapped_type kNone;
  const auto found = map.find(name);
  return found != map.end() ? found->second : kNone;
}

}  // namespace

ZULTaVoModule::ZULTaVoModule(std::string_view name) : mName(name) {}

ZULTaVoModule::~ZULTaVoModule() {
  for (auto descriptor = mDescriptors.rbegin(); descriptor != mDescriptors.rend(); ++descriptor)
    delete *descriptor;
}

void ZULTaVoModule::AddLoadedModule(ZULTaVoModule* module) {
  if (module != nullptr && std::find(mLoaded.begin(), mLoaded.end(), module) == mLoaded.end())
    mLoaded.push_back(module);
}

void ZULTaVoModule::AddObjectDescriptor(const ZULTaVoObjectDescriptor* descriptor) {
  if (descriptor == nullptr || descriptor->mOwned) return;
  const auto* operation = descriptor->GetKind() == Kind::kOperator
                              ? static_cast<const ZULTaVoOperatorDescriptor*>(descriptor)
                              : nullptr;
  if (operation != nullptr && !operation->IsComplete()) {
    delete descriptor;
    return;
  }
  mDescriptors.push_back(descriptor);
  descriptor->mOwned = true;
  if (operation != nullptr) mOperators[descriptor->GetName()].push_back(operation);
  if (descriptor->GetKind() == Kind::kRelation) {
    const auto* relation = static_cast<const ZULTaVoRelationDescriptor*>(descriptor);
    mRelations[relation->GetRelationName()].push_back(relation);
  }
}

const ZULTaVoObjectDescriptor* ZULTaVoModule::FindType(std::string_view name) const {
  return Find(mDescriptors, Kind::kType, name);
}

const ZULTaVoConstraintDescriptor* ZULTaVoModule::FindConstraint(std::string_view name) const {
  return static_cast<const ZULTaVoConstraintDescriptor*>(
      Find(mDescriptors, Kind::kConstraint, name));
}

const std::vector<const ZULTaVoOperatorDescriptor*>& ZULTaVoModule::FindOperators(
    std::string_view name) const {
  return FindList(mOperators, name);
}

const std::vector<const ZULTaVoRelationDescriptor*>& ZULTaVoModule::FindRelations(
    std::string_view name) const {
  return FindList(mRelations, name);
}

const ZULTaVoRelationDescriptor* ZULTaVoModule::FindRelation(std::string_view signature) const {
  return static_cast<const ZULTaVoRelationDescriptor*>(
      Find(mDescriptors, Kind::kRelation, signature));
}

const ZULTaVoOperatorDescriptor* ZULTaVoModule::FindOperator(
    std::string_view name, const ZULTaVoObjectDescriptor* const* operands,
    unsigned int count) const {
  const ZULTaVoOperatorDescriptor* fitting = nullptr;
  for (const ZULTaVoOperatorDescriptor* candidate : FindOperators(name)) {
    if (candidate->GetNumberOfArguments() != count) continue;
    bool exact = true;
    bool fits = true;
    for (unsigned int i = 0; i < count && fits; ++i) {
      exact = exact && candidate->GetOperandType(i) == operands[i];
      fits = candidate->GetOperandType(i)->IsMatched(operands[i]) != 0;
    }
    if (fits && exact) return candidate;
    if (fits && fitting == nullptr) fitting = candidate;
  }
  return fitting;
}
