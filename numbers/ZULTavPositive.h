#ifndef ZULTAV_NUMBERS_ZULTAV_POSITIVE_H
#define ZULTAV_NUMBERS_ZULTAV_POSITIVE_H

#include "numbers/ZULTavIntervalReal.h"

/// An interval real that starts as [0, largest real]; else no different.
class ZULTAV_NUMBERS_API ZULTavPositive final
    : public ZULTaVoFrame<ZULTavPositive, ZULTavIntervalReal> {
 public:
  static constexpr char kClassName[] = "ZULTavPositive";
  static constexpr char kTypeName[] = "interval positive";

  ZULTavPositive();
  ZULTavPositive(const ZULTavPositive&) = default;
  ZULTavPositive& operator=(const ZULTavPositive&) = default;
  explicit ZULTavPositive(ZULStreamableInit init) : ZULTaVoFrame(init) {}
  ~ZULTavPositive() override;
};

extern template class ZULTaVoFrame<ZULTavPositive, ZULTavIntervalReal>;

#endif
