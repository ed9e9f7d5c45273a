#ifndef ZULTAV_SOLVE_COMMAND_LINE_H
#define ZULTAV_SOLVE_COMMAND_LINE_H

#include <optional>

#include "solve/Options.h"

/// Reads the command line. Help and version are printed to standard output and usage errors to
/// standard error; then there is nothing to do and `status` is what the program ends with.
std::optional<Options> ReadCommandLine(int argc, char** argv, int& status);

#endif
