#include "framework/intervals/IntervalControl.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <utility>

#include "framework/intervals/SubdefInt.h"
#include "framework/intervals/SubdefReal.h"

namespace {

std::atomic<double> trigLow = -1e14;  // radians
std::atomic<double> trigHigh = 1e14;  // radians
double compPrecision = 1e-6;

bool IsLimit(double value) { return std::isfinite(value) && value > 0; }

}  // namespace

constinit thread_local int SDErrorFlag::sRaised = 0;

void InitIntervals(long maxInteger, double maxReal, double low, double high, double precision) {
  if (maxInteger > 0 && std::in_range<std::int32_t>(maxInteger)) SubdefInt::sMaxValue = maxInteger;
  if (IsLimit(maxReal)) SubdefReal::sMaxValue = maxReal;
  SetTrigLimits(low, high);
  if (IsLimit(precision)) compPrecision = precision;
}

void SetTrigLimits(double low, double high) {
  if (!std::isfinite(low) || !std::isfinite(high)) return;
  trigLow = low * std::numbers::pi;
  trigHigh = high * std::numbers::pi;
}

double GetTrigLow() { return trigLow; }
double GetTrigHigh() { return trigHigh; }

double GetRelEps(double value) { return 1e-14 * std::max(1.0, std::fabs(value)); }
double GetCompPrecision() { return compPrecision; }
