#ifndef ZULTAV_SEARCH_ZULTAV_UTILITIES_H
#define ZULTAV_SEARCH_ZULTAV_UTILITIES_H

/// Umbrella header of the search library.
#include "framework/search/ZULTavBox.h"
#include "framework/search/ZULTavFrontier.h"
#include "framework/search/ZULTavSearch.h"
#include "framework/search/ZULTavSolution.h"

#endif
