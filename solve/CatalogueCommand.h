#ifndef ZULTAV_SOLVE_CATALOGUE_COMMAND_H
#define ZULTAV_SOLVE_CATALOGUE_COMMAND_H

#include "solve/Options.h"

/// `zultav operators`, `zultav relations` and `zultav types`: what the module registered, in that
/// order.
int RunCatalogueCommand(const Options& options);

#endif
