#ifndef ZULTAV_INTERVALS_ZULTAV_INTERVALS_H
#define ZULTAV_INTERVALS_ZULTAV_INTERVALS_H

#include "framework/intervals/IntegerInterval.h"
#include "framework/intervals/IntegerRange.h"
#include "framework/intervals/IntervalControl.h"
#include "framework/intervals/Primality.h"
#include "framework/intervals/RealFunctions.h"
#include "framework/intervals/RealInterval.h"
#include "framework/intervals/RealPower.h"
#include "framework/intervals/RealRange.h"
#include "framework/intervals/SubIntBase.h"
#include "framework/intervals/SubdefBool.h"
#include "framework/intervals/SubdefInt.h"
#include "framework/intervals/SubdefReal.h"

#endif
