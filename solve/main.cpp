#include <exception>
#include <iostream>
#include <new>

#include "solve/CatalogueCommand.h"
#include "solve/CommandLine.h"
#include "solve/ModelCommand.h"

int main(int argc, char** argv) {
  try {
    int status = kUsage;
    const auto options = ReadCommandLine(argc, argv, status);
    if (options) {
      const bool reads = options->command == Command::kSolve || options->command == Command::kCheck;
      status = reads ? RunModelCommand(*options) : RunCatalogueCommand(*options);
    }
    std::cout.flush();
    if (std::cout) return status;
    std::cerr << "zultav: cannot write to standard output\n";
  } catch (const std::bad_alloc&) {
    std::cerr << "zultav: out of memory\n";
  } catch (const std::exception& error) {
    std::cerr << "zultav: internal error: " << error.what() << '\n';
  }
  return kInternal;
}
