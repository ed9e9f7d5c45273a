#include "solve/ShownLines.h"

#include <algorithm>
#include <sstream>

#include "framework/search/ZULTavSearch.h"
#include "solve/ValueText.h"

namespace {

/// A computation for some values, which is as it was before when this ends.
class Computed {
 public:
  Computed(const ZULTavModel::Computation& computation, const ValueAt& values)
      : mResults(ResultsOf(computation)), mBefore(computation.model->Network(), mResults) {
    for (std::size_t i = 0; i < computation.inputs.size(); ++i)
      computation.model->Variables()[i].values[0]->Assign(values(computation.inputs[i]));
    ZULTavSearch search(computation.model->Network(), mResults, {});
    ZULTavSearch::Verdict verdict = ZULTavSearch::Verdict::kOpen;
    search.Propagate(verdict);
    if (verdict != ZULTavSearch::Verdict::kContradiction) return;
    for (ZULTaVoAny* result : mResults) result->SetNil();
  }
  ~Computed() {
    for (std::size_t i = 0; i < mBefore.GetSize(); ++i) mResults[i]->Assign(mBefore.GetValue(i));
  }
  Computed(Computed&&) = default;
  Computed& operator=(Computed&&) = delete;

 private:
  static std::vector<ZULTaVoAny*> ResultsOf(const ZULTavModel::Computation& computation) {
    std::vector<ZULTaVoAny*> results;
    const auto& variables = computation.model->Variables();
    for (std::size_t i = computation.inputs.size(); i < variables.size(); ++i)
      results.push_back(variables[i].values[0]);
    return results;
  }

  std::vector<ZULTaVoAny*> mResults;
  ZULTavSolution mBefore;
};

void Print(std::ostream& out, const ZULTaVoAny& value, bool isInteger, Format format,
           Digits digits) {
  if (PrintInteger(out, value, isInteger)) return;
  if (format == Format::kModule)
    value.PrintOn(out);
  else
    PrintValue(out, value, digits);
}

}  // namespace

std::vector<std::string> ShownLines(const ZULTavModel& model, const ValueAt& values, Format format,
                                    Digits digits) {
  std::vector<Computed> computed;
  for (const ZULTavModel::Computation& computation : model.Computations())
    computed.emplace_back(computation, values);
  std::vector<std::string> lines;
  for (const std::vector<ZULTavModel::Shown>& line : model.Lines()) {
    std::ostringstream out;
    out.imbue(std::locale::classic());
    for (const ZULTavModel::Shown& part : line) {
      if (part.IsText()) {
        out << part.text;
      } else if (part.computation == ZULTavModel::kNone) {
        Print(out, values(part.value), false, format, digits);
      } else {
        const auto& results = model.Computations()[part.computation].model->Variables();
        Print(out, *results[part.value].values[0], part.isInteger, format, digits);
      }
    }
    lines.push_back(out.str());
  }
  return lines;
}
