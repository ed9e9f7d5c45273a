#ifndef ZULTAV_SOLVE_SEARCH_COMMAND_H
#define ZULTAV_SOLVE_SEARCH_COMMAND_H

#include "solve/Options.h"

/// `zultav solve`, `zultav resume` and `zultav show`. Answers an ExitStatus.
int RunSearchCommand(const Options& options);

#endif
