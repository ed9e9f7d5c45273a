#ifndef ZULTAV_SOLVER_ZULTAVO_MEMBERSHIP_H
#define ZULTAV_SOLVER_ZULTAVO_MEMBERSHIP_H

#include "framework/solver/ZULTaVoRelation.h"

/// The framework's own relation between an integer and a set of integers that it is in. Where the
/// values of the integer are kept one by one, the first run leaves out those that are not in the
/// set, and no further one is needed; else only its bounds are in the set.
class ZULTAV_TYPES_API ZULTaVoMembership {
 public:
  struct Range {
    std::int64_t low, high;
    bool operator==(const Range&) const = default;
  };

  static ZULTaVoRelationDescriptor::Definition Describe();
  /// The set as the relation takes it, of ranges that ascend with gaps between them. Relations that
  /// get the same one share its memory.
  static ZULTaVoRelation::Part MakeSet(const std::vector<Range>& ranges);
  /// That the one argument is in the set.
  static ZULTaVoRelation Make(const ZULTaVoRelation::Part& set);

  /// Made by the framework's own module.
  static const ZULTaVoRelationDescriptor* sDescriptor;
};

#endif
