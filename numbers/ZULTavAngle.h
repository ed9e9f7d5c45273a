#ifndef ZULTAV_NUMBERS_ZULTAV_ANGLE_H
#define ZULTAV_NUMBERS_ZULTAV_ANGLE_H

#include "numbers/ZULTavIntervalReal.h"

/// An interval real that starts as the full turn [0, 2*pi], in radians; else no different.
class ZULTAV_NUMBERS_API ZULTavAngle final : public ZULTaVoFrame<ZULTavAngle, ZULTavIntervalReal> {
 public:
  static constexpr char kClassName[] = "ZULTavAngle";
  static constexpr char kTypeName[] = "interval angle";

  ZULTavAngle();
  ZULTavAngle(const ZULTavAngle&) = default;
  ZULTavAngle& operator=(const ZULTavAngle&) = default;
  explicit ZULTavAngle(ZULStreamableInit init) : ZULTaVoFrame(init) {}
  ~ZULTavAngle() override;
};

extern template class ZULTaVoFrame<ZULTavAngle, ZULTavIntervalReal>;

#endif
