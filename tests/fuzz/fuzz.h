#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "framework/solver/ZULTaVoModule.h"
#include "framework/solver/ZULTaVoModuleManager.h"

/// What every fuzz target defines; null bytes come with size 0.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// Ends the program, so that the input is kept as one that failed. The text about it is made only
/// then.
#define REQUIRE(CONDITION, WHAT, ...)                                                    \
  do {                                                                                   \
    if (!(CONDITION)) {                                                                  \
      std::fprintf(stderr, "violated: %s %s\n", WHAT, std::string(__VA_ARGS__).c_str()); \
      std::abort();                                                                      \
    }                                                                                    \
  } while (false)

/// Takes an input apart; what is beyond its end reads as 0.
class Bytes {
 public:
  Bytes(const std::uint8_t* data, std::size_t size)
      : mRest(reinterpret_cast<const char*>(data), size) {}

  template <class T>
  T Take() {
    T value{};
    const std::size_t size = std::min(sizeof value, mRest.size());
    std::memcpy(&value, mRest.data(), size);
    mRest.remove_prefix(size);
    return value;
  }
  std::uint8_t Below(std::size_t n) { return static_cast<std::uint8_t>(Take<std::uint8_t>() % n); }
  std::string_view Rest() const { return mRest; }

 private:
  std::string_view mRest;
};

/// A module, opened by name and open to the end.
inline ZULTaVoModule& OpenedModule(const char* name) {
  static ZULTaVoModuleManager* const manager = [] {
    auto* made = new ZULTaVoModuleManager;
    made->AddSearchDirectory(ZULTAV_TEST_MODULES);
    return made;
  }();
  ZULTaVoModule* module = manager->OpenModule(name);
  REQUIRE(module != nullptr, "open", manager->GetReason());
  return *module;
}
inline ZULTaVoModule& Numbers() { return OpenedModule("ZULTavNumbers"); }
inline ZULTaVoModule& Relations() { return OpenedModule("ZULTavRelations"); }
