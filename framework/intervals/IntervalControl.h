#ifndef ZULTAV_INTERVALS_INTERVAL_CONTROL_H
#define ZULTAV_INTERVALS_INTERVAL_CONTROL_H

#include "framework/intervals/Export.h"

/// Sets the process-wide limits and tolerances of the library. A magnitude or tolerance that is not
/// finite and positive, and a window with an end that is not finite, is refused: what was set
/// before stays. To be called before other threads use the library; all else in it may be used by
/// any number of threads.
///
/// @param maxInteger   largest integer magnitude, of 32 bits; an integer bound at or beyond it is
///                     infinite. To store a value one beyond, it must be below 2147483647.
/// @param maxReal      largest finite real magnitude; a real bound at or beyond it is infinite
/// @param trigLow      lower end of the trigonometric window, in half-turns (multiples of pi)
/// @param trigHigh     upper end of the trigonometric window, in half-turns
/// @param precision    absolute comparison tolerance, see GetCompPrecision
ZULTAV_INTERVALS_API void InitIntervals(long maxInteger, double maxReal, double trigLow,
                                        double trigHigh, double precision);

/// Resets the trigonometric window of the process, in half-turns. Inverse periodic functions
/// tighten only the part of an argument that lies inside the window; what lies outside is left as
/// it is. They can be given a window of their own, too, as the domains do.
ZULTAV_INTERVALS_API void SetTrigLimits(double low, double high);

/// The trigonometric window in radians.
ZULTAV_INTERVALS_API double GetTrigLow();
ZULTAV_INTERVALS_API double GetTrigHigh();

/// Relative tolerance for values of the magnitude of `value`: 1e-14 * max(1, |value|).
ZULTAV_INTERVALS_API double GetRelEps(double value);

/// Absolute comparison tolerance, the precision that InitIntervals was given.
ZULTAV_INTERVALS_API double GetCompPrecision();

/// The library's error flag: raised by a narrowing whose result is empty, by clamped integer
/// arithmetic and by functions without a value. Each thread has its own.
class ZULTAV_INTERVALS_API SDErrorFlag {
  friend int SDCheckError();
  friend void SDClearError();
  friend void SDRaiseError();
  // Read and lowered by every operation: at a fixed place of the thread, not behind a call.
  [[gnu::tls_model("initial-exec")]] static constinit thread_local int sRaised;
};
inline int SDCheckError() { return SDErrorFlag::sRaised; }
inline void SDClearError() { SDErrorFlag::sRaised = 0; }
inline void SDRaiseError() { SDErrorFlag::sRaised = 1; }

/// Keeps errors of intermediate computations from reaching whoever looks at the flag later:
/// the flag is down when the scope begins and down again when it ends.
class SDErrorScope {
 public:
  SDErrorScope() { SDClearError(); }
  ~SDErrorScope() { SDClearError(); }
  SDErrorScope(const SDErrorScope&) = delete;
  SDErrorScope& operator=(const SDErrorScope&) = delete;
};

#endif
