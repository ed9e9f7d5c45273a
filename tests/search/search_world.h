#ifndef ZULTAV_TESTS_SEARCH_SEARCH_WORLD_H
#define ZULTAV_TESTS_SEARCH_SEARCH_WORLD_H

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <memory>
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
    model = ZULTavCalculator({&NumberModule(), &RelationModule()}).Read(text, "text", {}, errors);
    if (model == nullptr) {
      error = errors.front().message;
      return;
    }
    for (const auto& variable : model->Variables())
      declared.insert(declared.end(), variable.values.begin(), variable.values.end());
  }

  std::unique_ptr<ZULTavModel> model;
  std::string error;
  std::vector<ZULTaVoAny*> declared;
};

using Solutions = std::vector<std::vector<double>>;

/// Of an integer or boolean; NaN where it is not decided.
inline double ValueOf(const ZULTaVoAny& value) {
  if (const auto* boolean = ZULTaVoCast<ZULTaVoBoolean>(&value))
    return boolean->IsTrue() ? 1 : boolean->IsFalse() ? 0 : NAN;
  const auto* integer = ZULTaVoCast<ZULTaVoInteger>(&value);
  return integer->GetLowerBound() == integer->GetUpperBound()
             ? static_cast<double>(integer->GetLowerBound())
             : NAN;
}

/// What is wrong with the solutions that the search reports of a model of integers and booleans;
/// empty when nothing is. Each must be proven.
/// @param seed      chooses among the options of the search
/// @param expected  all solutions, in order
inline std::string WrongSolutions(const std::string& text, std::uint64_t seed,
                                  const Solutions& expected) {
  TextModel read(text);
  if (read.model == nullptr) return read.error + '\n' + text;
  ZULTavSearch::Options options;
  options.limits.solutions = ZULTavSearch::kUnlimited;
  options.limits.nodes = 100000;
  options.choice = static_cast<ZULTavSearch::VariableChoice>(seed % ZULTavSearch::kVariableChoices);
  options.restartAfter = seed % 3;
  options.selection = static_cast<ZULTaVoAny::ValueSelection>(seed / 5 % 4);
  ZULTavSearch search(read.model->Network(), read.declared, options);
  Solutions found;
  const auto outcome = search.Run([&](const ZULTavSolution& solution) {
    found.emplace_back();
    for (std::size_t i = 0; i < solution.GetSize(); ++i)
      found.back().push_back(ValueOf(solution.GetValue(i)));
    if (!solution.IsProven()) found.back().push_back(NAN);
    return true;
  });
  if (outcome != ZULTavSearch::Outcome::kExhausted)
    return "the search ends with outcome " + std::to_string(static_cast<int>(outcome)) + '\n' +
           text;
  std::sort(found.begin(), found.end());
  if (found == expected) return {};
  const auto first = std::mismatch(found.begin(), found.end(), expected.begin(), expected.end());
  const bool isLost = first.first == found.end() ||
                      (first.second != expected.end() && *first.second < *first.first);
  std::string wrong = isLost ? "lost:" : "wrong, undecided, unproven or repeated:";
  for (const double value : isLost ? *first.second : *first.first)
    wrong += " " + (std::isnan(value) ? "?" : std::to_string(static_cast<long>(value)));
  return wrong + '\n' + text;
}

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
