// Any text as a model: it is refused with messages, or it can be propagated, searched a little,
// written and read back, and shows its solutions.

#include <sstream>

#include "framework/calculator/ZULTavCalculator.h"
#include "framework/search/ZULTavUtilities.h"
#include "solve/ShownLines.h"
#include "tests/fuzz/fuzz.h"

namespace {

/// What stands between the quotation marks of an `include` is what it includes.
class NamesAsTexts final : public ZULTavIncludes {
 public:
  bool Find(const std::string& name, const std::string&, std::string& found,
            std::string& reason) override {
    found = name;
    reason = "it is empty";
    return !name.empty();
  }
  std::string IdentityOf(const std::string& found) override { return found; }
  bool Read(const std::string& found, std::size_t, std::string& text, std::string&) override {
    text = found;
    return true;
  }
};

std::string Written(const ZULTavModel& model) {
  std::ostringstream bytes;
  ZULopstream out(bytes);
  model.Write(out);
  REQUIRE(out.Good(), "a model can be written");
  return bytes.str();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  NamesAsTexts includes;
  ZULTavCalculator::Options options;
  options.includes = &includes;
  options.limits.arraySize = options.limits.variables = 1000;
  options.limits.operations = 1000;
  options.limits.iterations = 10000;
  std::vector<ZULTavDiagnostic> errors;
  const auto model =
      ZULTavCalculator({&Numbers(), &Relations()})
          .Read({reinterpret_cast<const char*>(data), size}, "input", options, errors);
  REQUIRE((model == nullptr) == !errors.empty(), "a model or messages");
  if (model == nullptr) return 0;

  const std::string bytes = Written(*model);
  std::istringstream stream(bytes);
  ZULipstream in(stream);
  std::vector<const ZULTaVoModule*> modules = {&Numbers(), &Relations()};
  for (const ZULTaVoModule* module : Numbers().GetLoadedModules()) modules.push_back(module);
  const auto copy = ZULTavModel::Read(in, modules);
  REQUIRE(copy != nullptr, "a model can be read back", in.Reason());
  REQUIRE(Written(*copy) == bytes, "the copy is the same");

  model->Network().SetFilterLimit(2000);
  std::vector<ZULTaVoAny*> values;
  for (const auto& variable : model->Variables())
    values.insert(values.end(), variable.values.begin(), variable.values.end());
  ZULTavSearch::Options searching;
  searching.limits.nodes = 5;
  ZULTavSearch search(model->Network(), values, searching);
  const auto outcome = search.Run([&](const ZULTavSolution& solution) {
    std::ostringstream text;
    for (std::size_t i = 0; i < solution.GetSize(); ++i) text << solution.GetValue(i);
    const auto valueAt = [&](std::size_t i) -> const ZULTaVoAny& { return solution.GetValue(i); };
    const auto lines = ShownLines(*model, valueAt, Format::kText, Digits::kPrecision);
    REQUIRE(lines == ShownLines(*copy, valueAt, Format::kText, Digits::kPrecision), "same lines");
    REQUIRE(lines.size() == model->Lines().size(), "all lines");
    REQUIRE(text.str().find("nan") == std::string::npos, "numbers", text.str());
    return true;
  });
  REQUIRE(outcome != ZULTavSearch::Outcome::kBadModel, "constraints know their arguments");
  return 0;
}
