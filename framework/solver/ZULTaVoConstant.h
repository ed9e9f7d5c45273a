#ifndef ZULTAV_SOLVER_ZULTAVO_CONSTANT_H
#define ZULTAV_SOLVER_ZULTAVO_CONSTANT_H

#include <cstdint>

/// The number that a constant of a model is, where the type of its object may be too small for it.
struct ZULTaVoConstant {
  bool isInteger = false;
  std::int64_t integer = 0;  ///< of an integer
  /// Of a real: the doubles that enclose it; equal where one double is the number. It is any number
  /// of the enclosure and no other, so that nothing may choose among them.
  double lower = 0;
  double upper = 0;

  static ZULTaVoConstant Integer(std::int64_t value) { return {true, value, 0, 0}; }
  static ZULTaVoConstant Real(double lower, double upper) { return {false, 0, lower, upper}; }
  bool operator==(const ZULTaVoConstant&) const = default;
};

#endif
