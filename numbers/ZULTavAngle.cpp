#include "numbers/ZULTavAngle.h"

template class ZULTaVoFrame<ZULTavAngle, ZULTavIntervalReal>;

ZULStreamableClass rZULTavAngle_Descriptor = ZULTavAngle::MakeDescriptorRecord();
ZULStreamableClass rZULTavAngle = ZULTavAngle::MakeRecord();

ZULTavAngle::ZULTavAngle() : ZULTaVoFrame(0.0, 6.283185307179586) {}
ZULTavAngle::~ZULTavAngle() = default;
