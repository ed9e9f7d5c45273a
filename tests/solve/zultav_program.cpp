#include "tests/solve/zultav_program.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

namespace {

std::string Contents(const std::string& file) {
  std::ifstream in(file, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

}  // namespace

std::vector<std::string> Result::Lines() const {
  std::vector<std::string> lines;
  std::istringstream in(out);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

Result Zultav(const std::string& arguments, const std::string& input, const std::string& prefix) {
  const std::string base = testing::TempDir() + "zultav_" + std::to_string(getpid());
  std::ofstream(base + ".in", std::ios::binary) << input;
  const std::string command = prefix + " '" ZULTAV_TEST_PROGRAM "' " + arguments + " < " + base +
                              ".in > " + base + ".out 2> " + base + ".err";
  const int answer = std::system(command.c_str());
  Result result;
  if (WIFEXITED(answer)) result.status = WEXITSTATUS(answer);
  result.out = Contents(base + ".out");
  result.err = Contents(base + ".err");
  for (const char* suffix : {".in", ".out", ".err"}) std::remove((base + suffix).c_str());
  return result;
}

std::string Example(const std::string& name) { return ZULTAV_TEST_EXAMPLES "/" + name + ".zul"; }
