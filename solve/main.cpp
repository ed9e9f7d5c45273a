#include <csignal>
#include <exception>
#include <iostream>
#include <new>

#include "solve/CatalogueCommand.h"
#include "solve/CheckCommand.h"
#include "solve/CommandLine.h"
#include "solve/SearchCommand.h"
#include "solve/StandardOutput.h"

namespace {

int Execute(const Options& options) {
  switch (options.command) {
    case Command::kSolve:
    case Command::kResume:
    case Command::kShow:
      return RunSearchCommand(options);
    case Command::kCheck:
      return RunCheckCommand(options);
    case Command::kOperators:
    case Command::kRelations:
    case Command::kTypes:
      return RunCatalogueCommand(options);
  }
  return kInternal;
}

}  // namespace

int main(int argc, char** argv) {
  // A file that may not grow and a reader that went away are failed writes, not the end.
  std::signal(SIGXFSZ, SIG_IGN);
  std::signal(SIGPIPE, SIG_IGN);
  StandardOutput output;
  try {
    int status = kUsage;
    const auto options = ReadCommandLine(argc, argv, status);
    if (options) status = Execute(*options);
    std::cout.flush();
    if (std::cout) return status;
    std::cerr << "zultav: cannot write to standard output: " << output.GetReason() << '\n';
  } catch (const std::bad_alloc&) {
    std::cerr << "zultav: out of memory\n";
  } catch (const std::exception& error) {
    std::cerr << "zultav: internal error: " << error.what() << '\n';
  }
  return kInternal;
}
