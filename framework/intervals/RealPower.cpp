#include "framework/intervals/RealPower.h"
