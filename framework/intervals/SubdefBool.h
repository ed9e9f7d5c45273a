#ifndef ZULTAV_INTERVALS_SUBDEF_BOOL_H
#define ZULTAV_INTERVALS_SUBDEF_BOOL_H

#include <cstdint>

#include "framework/intervals/Export.h"

/// A set of truth values in one 32-bit code: 0 {False}, 1 {True}, 2 both (Any), 3 none (Nil).
class ZULTAV_INTERVALS_API SubdefBool {
 public:
  enum Code : std::int32_t { kFalse = 0, kTrue = 1, kAny = 2, kNil = 3 };

  constexpr SubdefBool(std::int32_t value = kAny) : code(value) {}
  friend constexpr bool operator==(SubdefBool x, SubdefBool y) { return x.code == y.code; }

  /// Intersection in place; answers 1 when the set changed, raises the flag when it is empty.
  int SDIntersect(const SubdefBool& other);

  std::int32_t code;
};

/// The truth values of the connective over all pairs of the operands; Nil when one is Nil.
ZULTAV_INTERVALS_API SubdefBool And(const SubdefBool& a, const SubdefBool& b);
ZULTAV_INTERVALS_API SubdefBool Or(const SubdefBool& a, const SubdefBool& b);
ZULTAV_INTERVALS_API SubdefBool Not(const SubdefBool& a);

#endif
