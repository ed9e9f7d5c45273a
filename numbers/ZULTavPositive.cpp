#include "numbers/ZULTavPositive.h"

#include "numbers/ZULTavSingleReal.h"

template class ZULTaVoFrame<ZULTavPositive, ZULTavIntervalReal>;

ZULStreamableClass rZULTavPositive_Descriptor = ZULTavPositive::MakeDescriptorRecord();
ZULStreamableClass rZULTavPositive = ZULTavPositive::MakeRecord();

ZULTavPositive::ZULTavPositive() : ZULTaVoFrame(0.0, ZULTavSingleReal::sNC_REAL_MAX) {}
ZULTavPositive::~ZULTavPositive() = default;
