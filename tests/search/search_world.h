#ifndef ZULTAV_TESTS_SEARCH_SEARCH_WORLD_H
#define ZULTAV_TESTS_SEARCH_SEARCH_WORLD_H

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "framework/calculator/ZULTavCalculator.h"
#include "framework/search/ZULTavUtilities.h"
#include "framework/solver/ZULTavAbstractTypes.h"
#include "tests/number_module.h"

/// A model that was read from text, or why it could not.
struct TextModel {
  explicit TextModel(const std::string& text) {
    std::vector<ZULTavDiagnostic> errors;
    model = ZULTavCalculator({&NumberModule()}).Read(text, "text", {}, errors);
    if (model == nullptr) {
      error = errors.front().message;
      return;
    }
    for (const auto& variable : model->Variables())
      declared.insert(declared.end(), variable.values.begin(), variable.values.end());
    newton.emplace(model->Network(), declared);
  }

  std::unique_ptr<ZULTavModel> model;
  std::string error;
  std::vector<ZULTaVoAny*> declared;
  std::optional<ZULTavNewton> newton;
};

inline std::uint64_t FromEnvironment(const char* name, std::uint64_t otherwise) {
  const char* text = std::getenv(name);
  return text == nullptr ? otherwise : std::strtoull(text, nullptr, 10);
}

/// Tries so many seeds, or as many as ZULTAV_CASES says, until five are wrong; answers how many.
/// `difference` tells of a seed what is wrong, or nothing.
template <class Difference>
std::uint64_t TrySeeds(std::uint64_t cases, Difference difference) {
  const std::uint64_t first = FromEnvironment("ZULTAV_SEED", 1) << 32;
  const std::uint64_t count = FromEnvironment("ZULTAV_CASES", cases);
  int failures = 0;
  for (std::uint64_t seed = first; seed < first + count && failures < 5; ++seed) {
    const std::string wrong = difference(seed);
    if (wrong.empty()) continue;
    ++failures;
    ADD_FAILURE() << "seed " << seed << ": " << wrong;
  }
  return count;
}

#endif
