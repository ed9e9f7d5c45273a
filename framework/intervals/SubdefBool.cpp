#include "framework/intervals/SubdefBool.h"

#include "framework/intervals/IntervalControl.h"

namespace {

// The codes count through the masks in order, beginning after the empty one: as masks (1: False
// is possible, 2: True is possible) the sets obey the laws of bits.
constexpr unsigned kHasFalse = 1, kHasTrue = 2;

constexpr unsigned MaskOf(SubdefBool set) { return (static_cast<unsigned>(set.code) + 1) & 3; }
constexpr SubdefBool SetOf(unsigned mask) { return static_cast<std::int32_t>((mask + 3) & 3); }

static_assert(SetOf(0) == SubdefBool::kNil && SetOf(kHasFalse) == SubdefBool::kFalse &&
              SetOf(kHasTrue) == SubdefBool::kTrue && MaskOf(SubdefBool::kAny) == 3);

}  // namespace

int SubdefBool::SDIntersect(const SubdefBool& other) {
  const SubdefBool before = *this;
  *this = SetOf(MaskOf(*this) & MaskOf(other));
  if (code == kNil) SDRaiseError();
  return *this == before ? 0 : 1;
}

SubdefBool And(const SubdefBool& a, const SubdefBool& b) {
  const unsigned x = MaskOf(a), y = MaskOf(b);
  if (x == 0 || y == 0) return SubdefBool::kNil;
  return SetOf(((x | y) & kHasFalse) | (x & y & kHasTrue));
}

SubdefBool Or(const SubdefBool& a, const SubdefBool& b) { return Not(And(Not(a), Not(b))); }

SubdefBool Not(const SubdefBool& a) {
  const unsigned x = MaskOf(a);
  return SetOf((x & kHasFalse) << 1 | (x & kHasTrue) >> 1);
}
