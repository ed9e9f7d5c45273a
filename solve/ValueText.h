#ifndef ZULTAV_SOLVE_VALUE_TEXT_H
#define ZULTAV_SOLVE_VALUE_TEXT_H

#include <iosfwd>
#include <string>

#include "framework/search/ZULTavSolution.h"
#include "framework/solver/ZULTaVoAny.h"
#include "solve/Options.h"

/// Prints a value in the syntax of models. Bounds of reals are rounded outward to the precision, or
/// are the shortest decimals that read back exactly; the value of a type of single reals, which
/// counts to within the precision anyway, is rounded to nearest.
void PrintValue(std::ostream& out, const ZULTaVoAny& value, Digits digits);

/// Prints an integer, or a real that stands for one: the number alone where it is fixed. False, and
/// nothing is printed, where the value is neither, or Nil or Any, or beyond the integers that
/// doubles tell apart.
bool PrintInteger(std::ostream& out, const ZULTaVoAny& value, bool isInteger);

/// A value as JSON: a number or a truth value when it is fixed; {"lo": …, "hi": …} for an
/// interval, where null is an infinite side, of a point as well; "Any" for a boolean or a
/// single-value type that is open; "Nil" when it is empty. Reals are the shortest decimals that
/// read back exactly.
std::string JsonValue(const ZULTaVoAny& value);

/// The same of a value that has no type: an objective, or what is known of it.
void PrintObserved(std::ostream& out, const ZULTavObserved& value, Digits digits);
std::string JsonObserved(const ZULTavObserved& value);
/// Always {"lo": …, "hi": …}.
std::string JsonBounds(const ZULTavObserved& value);

#endif
