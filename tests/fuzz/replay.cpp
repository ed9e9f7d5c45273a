// Runs a fuzz target on every file of the given folders, where what once failed must not fail
// again, and on as many random inputs as a number among the arguments says.

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>

#include "tests/fuzz/fuzz.h"

namespace {

int gInputs = 0;

/// The name is shown only where the target ends the program.
void Try(const std::string& name, const std::string& input) {
  std::fprintf(stderr, "\r%s", name.c_str());
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
  ++gInputs;
}

void TryRandom(int count) {
  std::mt19937 random(20240611);
  for (int i = 0; i < count; ++i) {
    std::string input(16 + random() % 64, 0);
    for (char& byte : input) byte = static_cast<char>(random());
    Try("random input " + std::to_string(i), input);
  }
}

}  // namespace

int main(int count, char** arguments) {
  for (int i = 1; i < count; ++i) {
    if (const int inputs = std::atoi(arguments[i])) {
      TryRandom(inputs);
      continue;
    }
    for (const auto& entry : std::filesystem::recursive_directory_iterator(arguments[i])) {
      if (!entry.is_regular_file()) continue;
      std::ostringstream bytes;
      bytes << std::ifstream(entry.path(), std::ios::binary).rdbuf();
      Try(entry.path().filename(), bytes.str());
    }
  }
  std::printf("\n%d inputs\n", gInputs);
  return gInputs > 0 ? 0 : 1;
}
