// Entry of the framework's own module: the abstract value types, the constraints and a relation.

#include "framework/solver/FrameworkConstraints.h"
#include "framework/solver/ZULTaVoBoolean.h"
#include "framework/solver/ZULTaVoInteger.h"
#include "framework/solver/ZULTaVoMembership.h"
#include "framework/solver/ZULTaVoModule.h"
#include "framework/solver/ZULTaVoModuleManager.h"
#include "framework/solver/ZULTaVoReal.h"

namespace {

/// Describes an abstract type, which has no objects of its own.
template <class T>
class AbstractDescriptor final : public ZULTaVoObjectDescriptor {
 public:
  explicit AbstractDescriptor(const ZULTaVoObjectDescriptor* base)
      : ZULTaVoObjectDescriptor(T::sIdent, base, 1) {
    T::sDescriptor = this;
  }
  ~AbstractDescriptor() override {
    if (T::sDescriptor == this) T::sDescriptor = nullptr;
  }
};

template <class T>
void AddType(ZULTaVoModule& module, const ZULTaVoObjectDescriptor* base) {
  T::sDescriptor = nullptr;
  module.AddObjectDescriptor(new AbstractDescriptor<T>(base));
}

#define ZULTAV_COUNT(NAME, ARGUMENTS) +1  // NOLINT(bugprone-macro-parentheses): terms of a sum
/// Describes the relation that sets of integers need.
class MembershipDescriptor final : public ZULTaVoRelationDescriptor {
 public:
  MembershipDescriptor() : ZULTaVoRelationDescriptor(ZULTaVoMembership::Describe()) {
    ZULTaVoMembership::sDescriptor = this;
  }
  ~MembershipDescriptor() override {
    if (ZULTaVoMembership::sDescriptor == this) ZULTaVoMembership::sDescriptor = nullptr;
  }
};

constexpr std::size_t kTypes = 6;
constexpr std::size_t kConstraints = 0 ZULTAV_FRAMEWORK_CONSTRAINTS(ZULTAV_COUNT);
#undef ZULTAV_COUNT

}  // namespace

extern "C" ZULTAV_TYPES_API int InitModule(ZULTaVoModule* module, ZULTaVoModuleManager* manager) {
  if (module == nullptr || manager == nullptr) return 0;
  AddType<ZULTaVoAny>(*module, nullptr);
  AddType<ZULTaVoScalar>(*module, ZULTaVoAny::sDescriptor);
  AddType<ZULTaVoBoolean>(*module, ZULTaVoScalar::sDescriptor);
  AddType<ZULTaVoNumber>(*module, ZULTaVoScalar::sDescriptor);
  AddType<ZULTaVoInteger>(*module, ZULTaVoNumber::sDescriptor);
  AddType<ZULTaVoReal>(*module, ZULTaVoNumber::sDescriptor);
#define ZULTAV_CONSTRAINT(NAME, ARGUMENTS) \
  module->AddObjectDescriptor(ZULTaVo##NAME##Constraint::MakeDescriptor());
  ZULTAV_FRAMEWORK_CONSTRAINTS(ZULTAV_CONSTRAINT)
#undef ZULTAV_CONSTRAINT
  module->AddObjectDescriptor(new MembershipDescriptor());
  // Null descriptors, for which there was no memory, are not counted.
  return module->GetDescriptors().size() == kTypes + kConstraints + 1;
}
