#ifndef ZULTAV_SOLVE_VALUE_TEXT_H
#define ZULTAV_SOLVE_VALUE_TEXT_H

#include <iosfwd>
#include <string>

#include "framework/solver/ZULTaVoAny.h"
#include "solve/Options.h"

/// Prints a value in the module's syntax.
void PrintValue(std::ostream& out, const ZULTaVoAny& value, Digits digits);

/// A value as JSON: a number or a truth value when it is fixed; {"lo": …, "hi": …} for an
/// interval, where null is an infinite side; "Any" for a boolean or a single-value type that is
/// open; "Nil" when it is empty. Reals are the shortest decimals that read back exactly.
std::string JsonValue(const ZULTaVoAny& value);

#endif
