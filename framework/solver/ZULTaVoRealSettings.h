#ifndef ZULTAV_SOLVER_ZULTAVO_REAL_SETTINGS_H
#define ZULTAV_SOLVER_ZULTAVO_REAL_SETTINGS_H

#include "framework/solver/Export.h"

/// What the operations of real domains go by.
///
/// The process has settings, those of ZULTaVoReal. A network may have its own, see
/// ZULTaVoNetwork::SetRealSettings; they hold for the thread that propagates or searches in it.
class ZULTAV_TYPES_API ZULTaVoRealSettings {
 public:
  /// The tolerance of real domains; always positive. Default 1e-6.
  constexpr double GetPrecision() const { return mPrecision; }
  /// Answers 1, or 0 and changes nothing unless 0 < precision < infinity.
  int SetPrecision(double precision);
  /// The window of the inverse trigonometric functions, in radians. Default ±1e14.
  constexpr double GetTrigLow() const { return mTrigLow; }
  constexpr double GetTrigHigh() const { return mTrigHigh; }
  /// Answers 1, or 0 and changes nothing unless low < high, both finite.
  int SetTrigLimits(double low, double high);

 private:
  double mPrecision = 1e-6;
  double mTrigLow = -1e14, mTrigHigh = 1e14;
};

/// Lets the operations of this thread go by the settings as long as the scope lives. Scopes are
/// nested.
class ZULTAV_TYPES_API ZULTaVoRealScope {
 public:
  /// @param settings  must live as long as the scope; null for those of the process
  explicit ZULTaVoRealScope(const ZULTaVoRealSettings* settings) : mOuter(sPresent) {
    sPresent = settings;
  }
  ~ZULTaVoRealScope() { sPresent = mOuter; }
  ZULTaVoRealScope(const ZULTaVoRealScope&) = delete;
  ZULTaVoRealScope& operator=(const ZULTaVoRealScope&) = delete;

  /// The settings of the innermost scope of this thread; null where those of the process hold.
  static const ZULTaVoRealSettings* GetPresent() { return sPresent; }

 private:
  // At a fixed place of the thread, not behind a call.
  [[gnu::tls_model(
      "initial-exec")]] static constinit thread_local const ZULTaVoRealSettings* sPresent;
  const ZULTaVoRealSettings* mOuter;
};

#endif
