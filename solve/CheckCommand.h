#ifndef ZULTAV_SOLVE_CHECK_COMMAND_H
#define ZULTAV_SOLVE_CHECK_COMMAND_H

#include "solve/Options.h"

/// `zultav check`: reads a model and says what it holds. Answers an ExitStatus.
int RunCheckCommand(const Options& options);

#endif
