// Any bytes as a checkpoint whose checksums fit: refused with a reason, or a search that goes on.

#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "tests/fuzz/fuzz.h"
#include "tests/solve/resumed_run.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Numbers();  // stays open from one input to the next
  const std::string file =
      std::filesystem::temp_directory_path() / ("zultav_fuzz_" + std::to_string(getpid()));
  std::ofstream(file, std::ios::binary)
      << WithChecksums(std::string(reinterpret_cast<const char*>(data), size));
  std::string reason;
  const bool goesOn = GoesOn(file, reason);
  std::remove(file.c_str());
  REQUIRE(goesOn || !reason.empty(), "a refusal has its reason");
  return 0;
}
