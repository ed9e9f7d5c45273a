// Runs a fuzz target on every file of the given folders, where what once failed must not fail
// again; and, as often as a number among the arguments says, on damaged ones and on random bytes.

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <vector>

#include "tests/fuzz/fuzz.h"

namespace {

int gInputs = 0;
std::mt19937 gRandom(20240611);

/// The name is shown only where the target ends the program.
void Try(const std::string& name, const std::string& input) {
  std::fprintf(stderr, "\r%s", name.c_str());
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
  ++gInputs;
}

std::vector<std::string> ReadFolder(const char* folder) {
  std::vector<std::string> files;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    if (!entry.is_regular_file()) continue;
    std::ostringstream bytes;
    bytes << std::ifstream(entry.path(), std::ios::binary).rdbuf();
    files.push_back(bytes.str());
    Try(entry.path().filename(), files.back());
  }
  return files;
}

std::string RandomBytes() {
  std::string input(16 + gRandom() % 64, 0);
  for (char& byte : input) byte = static_cast<char>(gRandom());
  return input;
}

/// With up to four pieces changed, cut out, repeated elsewhere or written over others.
std::string Damaged(std::string input) {
  for (auto change = gRandom() % 4; change < 4 && !input.empty(); ++change) {
    const std::size_t at = gRandom() % input.size(), length = gRandom() % 12;
    const std::string piece = input.substr(gRandom() % input.size(), gRandom() % 12);
    const auto kind = gRandom() % 4;
    if (kind == 0) input[at] = static_cast<char>(gRandom());
    if (kind == 1) input.erase(at, length);
    if (kind == 2) input.insert(at, piece);
    if (kind == 3) input.replace(at, length, piece);
  }
  return input;
}

}  // namespace

int main(int count, char** arguments) {
  std::vector<std::string> files;
  for (int i = 1; i < count; ++i) {
    if (const int inputs = std::atoi(arguments[i])) {
      for (int n = 0; n < inputs; ++n)
        Try("input " + std::to_string(n),
            n % 2 != 0 || files.empty() ? RandomBytes() : Damaged(files[gRandom() % files.size()]));
      continue;
    }
    for (std::string& file : ReadFolder(arguments[i])) files.push_back(std::move(file));
  }
  std::printf("\n%d inputs\n", gInputs);
  return gInputs > 0 ? 0 : 1;
}
