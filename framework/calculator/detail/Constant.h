#ifndef ZULTAV_CALCULATOR_DETAIL_CONSTANT_H
#define ZULTAV_CALCULATOR_DETAIL_CONSTANT_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "framework/calculator/detail/Lexer.h"

namespace zultav::detail {

/// A value that is known while a model is read.
struct Constant {
  enum class Kind : std::uint8_t { kInteger, kReal, kBoolean };

  Kind kind = Kind::kInteger;
  std::int64_t integer = 0;  ///< of an integer or, 0 or 1, of a boolean
  /// Of a real: doubles that enclose it, and one that is near it.
  double lower = 0;
  double upper = 0;
  double nearest = 0;

  static Constant Integer(std::int64_t value) { return {Kind::kInteger, value, 0, 0, 0}; }
  static Constant Boolean(bool value) { return {Kind::kBoolean, value ? 1 : 0, 0, 0, 0}; }
  static Constant Real(double lower, double upper, double nearest) {
    return {Kind::kReal, 0, lower, upper, nearest};
  }
  static Constant FromDecimal(std::string_view text);
  /// The integer of these digits; nothing beyond 64 bits.
  static std::optional<Constant> FromDigits(std::string_view text);

  bool IsInteger() const { return kind == Kind::kInteger; }
  bool IsReal() const { return kind == Kind::kReal; }
  bool IsBoolean() const { return kind == Kind::kBoolean; }
  bool IsTrue() const { return IsBoolean() && integer != 0; }
  /// Of numbers: as a real.
  Constant AsReal() const;
  /// As in messages: "the integer 3".
  std::string Describe() const;
};

/// The comparison that has a truth value in place of one that is stated; any other stays.
Op WithoutAssertion(Op op);

/// Thrown by FoldConstants, with the reason.
struct ConstantError {
  std::string message;
};

/// The value of `a op b` (without b: of the prefix operator) or nothing when the operator does
/// not apply to such constants or its value cannot be decided. Integer arithmetic is exact,
/// a quotient that is no integer is a real; real arithmetic encloses. The asserting comparisons
/// (=, <, …) fold to booleans like the others. Throws ConstantError on overflow and on division
/// by zero.
std::optional<Constant> FoldConstants(Op op, const Constant& a, const Constant* b);

}  // namespace zultav::detail

#endif
