#include "framework/intervals/IntervalControl.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "framework/intervals/SubdefInt.h"
#include "framework/intervals/SubdefReal.h"

namespace {

double trigLow = -1e14;  // radians
double trigHigh = 1e14;  // radians
double compPrecision = 1e-6;

}  // namespace

int SDErrorFlag::sRaised = 0;

void InitIntervals(long maxInteger, double maxReal, double low, double high, double precision) {
  SubdefInt::sMaxValue = std::clamp(maxInteger, 1L, 2147483646L);
  SubdefReal::sMaxValue = maxReal;
  SetTrigLimits(low, high);
  compPrecision = precision;
}

void SetTrigLimits(double low, double high) {
  trigLow = low * std::numbers::pi;
  trigHigh = high * std::numbers::pi;
}

double GetTrigLow() { return trigLow; }
double GetTrigHigh() { return trigHigh; }

double GetRelEps(double value) { return 1e-14 * std::max(1.0, std::fabs(value)); }
double GetCompPrecision() { return compPrecision; }
