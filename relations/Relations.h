#ifndef ZULTAV_RELATIONS_RELATIONS_H
#define ZULTAV_RELATIONS_RELATIONS_H

#include "framework/solver/ZULTaVoRelationDescriptor.h"

class ZULTaVoModule;

/// X(Name): every relation of the module. Each has a file of its own, which defines
/// `Definition Describe<Name>()`.
#define ZULTAV_RELATIONS(X) \
  X(AllDifferentValues)     \
  X(Among)                  \
  X(Circuit)                \
  X(Count)                  \
  X(Cumulative)             \
  X(Diffn)                  \
  X(Disjunctive)            \
  X(DisjunctiveOptional)    \
  X(Element)                \
  X(Increasing)             \
  X(IndexOfMaximum)         \
  X(IndexOfMinimum)         \
  X(Inverse)                \
  X(LexLess)                \
  X(LexLesseq)              \
  X(NoneOfTable)            \
  X(NumberOfValues)         \
  X(Piecewise)              \
  X(Precedence)             \
  X(Regular)                \
  X(StrictlyIncreasing)     \
  X(Subcircuit)             \
  X(Table)

namespace zultav::relations {

using Definition = ZULTaVoRelationDescriptor::Definition;
using Element = ZULTaVoRelationDescriptor::Element;
using Given = ZULTaVoRelationDescriptor::Given;
using Parameter = ZULTaVoRelationDescriptor::Parameter;
using Argument = ZULTaVoRelationArgument;
using Arguments = ZULTaVoRelationDescriptor::Arguments;

#define ZULTAV_RELATION(NAME) Definition Describe##NAME();
ZULTAV_RELATIONS(ZULTAV_RELATION)
#undef ZULTAV_RELATION

/// What is wrong with a list that has to have members.
inline std::string RefuseEmpty(const Argument& list) {
  return list.GetSize() == 0 ? "the list is empty" : "";
}

/// Functions of one or two numbers, which differ in a row of a table alone.
std::vector<Definition> DescribeFunctions();
/// Registers them as operators whose results are of the first fitting types of the other modules;
/// where these have none, as constraints alone.
void RegisterFunctions(ZULTaVoModule& module, const std::vector<ZULTaVoModule*>& others);

}  // namespace zultav::relations

#endif
