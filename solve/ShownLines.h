#ifndef ZULTAV_SOLVE_SHOWN_LINES_H
#define ZULTAV_SOLVE_SHOWN_LINES_H

#include <functional>
#include <string>
#include <vector>

#include "framework/calculator/ZULTavModel.h"
#include "solve/Options.h"

/// The value at a position among all variables' values, in the order of declaration.
using ValueAt = std::function<const ZULTaVoAny&(std::size_t)>;

/// The lines that the model shows: its texts, the values of its variables, and what is computed
/// from them, which encloses all that it may be for these values. It is Nil where it has no value.
/// @param format, digits  how values are printed; a fixed integer is the number alone
std::vector<std::string> ShownLines(const ZULTavModel& model, const ValueAt& values, Format format,
                                    Digits digits);

#endif
