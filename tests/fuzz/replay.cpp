// Runs a fuzz target on every file of the given folders: what once failed must not fail again.

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "tests/fuzz/fuzz.h"

int main(int count, char** folders) {
  int inputs = 0;
  for (int i = 1; i < count; ++i)
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folders[i])) {
      if (!entry.is_regular_file()) continue;
      std::ostringstream bytes;
      bytes << std::ifstream(entry.path(), std::ios::binary).rdbuf();
      const std::string input = bytes.str();
      // Shown only where the target ends the program.
      std::fprintf(stderr, "\r%s", entry.path().filename().c_str());
      LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
      ++inputs;
    }
  std::printf("\n%d inputs\n", inputs);
  return inputs > 0 ? 0 : 1;
}
