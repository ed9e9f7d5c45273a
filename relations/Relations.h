#ifndef ZULTAV_RELATIONS_RELATIONS_H
#define ZULTAV_RELATIONS_RELATIONS_H

#include "framework/solver/ZULTaVoRelationDescriptor.h"

/// X(Name): every relation of the module. Each has a file of its own, which defines
/// `Definition Describe<Name>()`.
#define ZULTAV_RELATIONS(X) \
  X(Increasing)             \
  X(StrictlyIncreasing)

namespace zultav::relations {

using Definition = ZULTaVoRelationDescriptor::Definition;
using Element = ZULTaVoRelationDescriptor::Element;
using Given = ZULTaVoRelationDescriptor::Given;
using Argument = ZULTaVoRelationArgument;
using Arguments = ZULTaVoRelationDescriptor::Arguments;

#define ZULTAV_RELATION(NAME) Definition Describe##NAME();
ZULTAV_RELATIONS(ZULTAV_RELATION)
#undef ZULTAV_RELATION

}  // namespace zultav::relations

#endif
