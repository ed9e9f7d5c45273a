#ifndef ZULTAV_SOLVER_ZULTAVO_MODULE_H
#define ZULTAV_SOLVER_ZULTAVO_MODULE_H

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "framework/solver/ZULTaVoOperatorDescriptor.h"
#include "framework/solver/ZULTaVoRelationDescriptor.h"

/// A loaded library and what it registered: value types, constraints, operators and relations.
class ZULTAV_TYPES_API ZULTaVoModule : public ZULTaVoBase {
 public:
  explicit ZULTaVoModule(std::string_view name);
  ~ZULTaVoModule();
  ZULTaVoModule(const ZULTaVoModule&) = delete;
  ZULTaVoModule& operator=(const ZULTaVoModule&) = delete;

  const std::string& GetName() const { return mName; }

  /// Records a module that this one depends on. Null and repetitions are ignored.
  void AddLoadedModule(ZULTaVoModule* module);
  const std::vector<ZULTaVoModule*>& GetLoadedModules() const { return mLoaded; }

  /// Takes ownership and makes the descriptor known by name. Null is ignored, as is a descriptor
  /// that this or another module has already. An operator without all its types and its constraint
  /// is destroyed: nobody could use it.
  void AddObjectDescriptor(const ZULTaVoObjectDescriptor* descriptor);
  /// Everything registered, in the order of registration.
  const std::vector<const ZULTaVoObjectDescriptor*>& GetDescriptors() const { return mDescriptors; }

  /// The type (constraint) of that name, or null. The first registered one wins.
  const ZULTaVoObjectDescriptor* FindType(std::string_view name) const;
  const ZULTaVoConstraintDescriptor* FindConstraint(std::string_view name) const;
  /// All operators of that name, in the order of registration; empty when there is none.
  const std::vector<const ZULTaVoOperatorDescriptor*>& FindOperators(std::string_view name) const;
  /// All relations that models call by that name, in the order of registration.
  const std::vector<const ZULTaVoRelationDescriptor*>& FindRelations(std::string_view name) const;
  /// The relation of that signature, or null.
  const ZULTaVoRelationDescriptor* FindRelation(std::string_view signature) const;
  /// The operator of that name for operands of these types: the first registered exact match,
  /// else the first one whose operand types match (are equal to or bases of the given ones).
  /// Null when none fits.
  const ZULTaVoOperatorDescriptor* FindOperator(std::string_view name,
                                                const ZULTaVoObjectDescriptor* const* operands,
                                                unsigned int count) const;

 private:
  std::string mName;
  std::vector<ZULTaVoModule*> mLoaded;
  std::vector<const ZULTaVoObjectDescriptor*> mDescriptors;
  std::map<std::string, std::vector<const ZULTaVoOperatorDescriptor*>, std::less<>> mOperators;
  std::map<std::string, std::vector<const ZULTaVoRelationDescriptor*>, std::less<>> mRelations;
};

#endif
