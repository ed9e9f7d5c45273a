#ifndef ZULTAV_TESTS_SOLVE_ZULTAV_PROGRAM_H
#define ZULTAV_TESTS_SOLVE_ZULTAV_PROGRAM_H

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

/// What one run of the program gave.
struct Result {
  int status = -1;
  std::string out, err;

  /// Standard output as JSON; a discarded value when it is none.
  nlohmann::json Json() const { return nlohmann::json::parse(out, nullptr, false); }
  std::vector<std::string> Lines() const;
};

/// Runs `zultav` with arguments in the shell's syntax.
/// @param input   standard input
/// @param prefix  what stands before the program: environment, another command
Result Zultav(const std::string& arguments, const std::string& input = {},
              const std::string& prefix = {});

/// The path of an example model.
std::string Example(const std::string& name);

#endif
