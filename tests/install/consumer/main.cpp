// What an embedder writes: opens the module by name, reads a model, and searches.

#include <fstream>
#include <iostream>
#include <sstream>

#include "framework/calculator/ZULTavCalculator.h"
#include "framework/search/ZULTavUtilities.h"
#include "framework/solver/ZULTavAbstractTypes.h"

int main(int count, char** arguments) {
  if (count != 2) return 2;
  std::ifstream file(arguments[1]);
  std::ostringstream text;
  text << file.rdbuf();

  ZULTaVoModuleManager manager;
  ZULTaVoModule* numbers = manager.OpenModule("ZULTavNumbers");
  if (numbers == nullptr) {
    std::cerr << manager.GetReason() << '\n';
    return 1;
  }
  std::vector<ZULTavDiagnostic> errors;
  const auto model = ZULTavCalculator({numbers}).Read(text.str(), arguments[1], {}, errors);
  for (const ZULTavDiagnostic& error : errors) error.Print(std::cerr);
  if (model == nullptr) return 1;

  std::vector<ZULTaVoAny*> values;
  for (const auto& variable : model->Variables())
    values.insert(values.end(), variable.values.begin(), variable.values.end());
  ZULTavSearch search(model->Network(), values, {});
  bool right = false;
  search.Run([&](const ZULTavSolution& solution) {
    std::cout << "x = " << solution.GetValue(0) << ", y = " << solution.GetValue(1) << '\n';
    std::ostringstream found;
    found << solution.GetValue(0) << solution.GetValue(1);
    right = found.str() == "[5,5][2,2]";
    return true;
  });
  return right ? 0 : 1;
}
