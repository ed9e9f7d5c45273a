#ifndef ZULTAV_SOLVE_MODEL_COMMAND_H
#define ZULTAV_SOLVE_MODEL_COMMAND_H

#include "solve/Options.h"

/// `zultav solve` and `zultav check`. Answers an ExitStatus.
int RunModelCommand(const Options& options);

#endif
