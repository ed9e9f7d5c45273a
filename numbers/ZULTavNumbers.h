#ifndef ZULTAV_NUMBERS_ZULTAV_NUMBERS_H
#define ZULTAV_NUMBERS_ZULTAV_NUMBERS_H

#include "numbers/InitModule.h"
#include "numbers/ZULTavAngle.h"
#include "numbers/ZULTavIntervalInteger.h"
#include "numbers/ZULTavIntervalReal.h"
#include "numbers/ZULTavPositive.h"
#include "numbers/ZULTavPrimeNumber.h"
#include "numbers/ZULTavSingleBoolean.h"
#include "numbers/ZULTavSingleInteger.h"
#include "numbers/ZULTavSingleReal.h"

#endif
