#include "framework/solver/ZULTaVoRealSettings.h"

#include <atomic>
#include <cmath>
#include <mutex>

#include "framework/solver/ZULTaVoReal.h"

constinit thread_local const ZULTaVoRealSettings* ZULTaVoRealScope::sPresent = nullptr;

int ZULTaVoRealSettings::SetPrecision(double precision) {
  if (!(precision > 0 && std::isfinite(precision))) return 0;
  mPrecision = precision;
  return 1;
}

int ZULTaVoRealSettings::SetTrigLimits(double low, double high) {
  if (!(low < high && std::isfinite(low) && std::isfinite(high))) return 0;
  mTrigLow = low;
  mTrigHigh = high;
  return 1;
}

// --- The settings of the process --------------------------------------------------------------

namespace {

constexpr ZULTaVoRealSettings kDefault;
constinit std::mutex sLock;  // of the setters
// Read without a lock: the count is odd while the two ends are being changed.
constinit std::atomic<unsigned> sTrigChanges = 0;
constinit std::atomic<double> sTrigLow = kDefault.GetTrigLow();
constinit std::atomic<double> sTrigHigh = kDefault.GetTrigHigh();
constinit ZULTaVoReal::TrigLimitsListener sListener = nullptr;

}  // namespace

constinit std::atomic<double> ZULTaVoReal::sPrecision = kDefault.GetPrecision();

int ZULTaVoReal::SetPrecision(double precision) {
  ZULTaVoRealSettings wanted;
  if (!wanted.SetPrecision(precision)) return 0;
  sPrecision = precision;
  return 1;
}

void ZULTaVoReal::GetTrigLimits(double& low, double& high) {
  const ZULTaVoRealSettings* settings = ZULTaVoRealScope::GetPresent();
  if (settings != nullptr) {
    low = settings->GetTrigLow();
    high = settings->GetTrigHigh();
    return;
  }
  for (unsigned before = 1, after = 0; before % 2 != 0 || before != after; after = sTrigChanges) {
    before = sTrigChanges;
    low = sTrigLow;
    high = sTrigHigh;
  }
}

int ZULTaVoReal::SetTrigLimits(double low, double high) {
  ZULTaVoRealSettings wanted;
  if (!wanted.SetTrigLimits(low, high)) return 0;
  const std::lock_guard lock(sLock);
  ++sTrigChanges;
  sTrigLow = low;
  sTrigHigh = high;
  ++sTrigChanges;
  if (sListener != nullptr) sListener(low, high);
  return 1;
}

void ZULTaVoReal::ListenToTrigLimits(TrigLimitsListener listener) {
  const std::lock_guard lock(sLock);
  sListener = listener;
}
