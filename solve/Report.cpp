#include "solve/Report.h"

#include <iomanip>
#include <iostream>
#include <utility>

#include "solve/ValueText.h"

namespace {

using Json = nlohmann::ordered_json;

/// The names and values of the statistics, for both formats.
template <class Use>
void ForEachStatistic(const ZULTavSearch::Statistics& statistics, Use use) {
  use("solutions", statistics.solutions);
  use("nodes", statistics.nodes);
  use("fails", statistics.fails);
  use("narrowings", statistics.narrowings);
  use("propagations", statistics.propagations);
  use("restarts", statistics.restarts);
  use("peak_depth", statistics.peakDepth);
  use("seconds", statistics.seconds);
}

std::string Quote(const std::string& text) {
  return Json(text).dump(-1, ' ', false, Json::error_handler_t::replace);
}

class TextReport final : public Report {
 public:
  explicit TextReport(const Options& options)
      : mFormat(options.format), mDigits(options.digits), mStatistics(options.statistics) {}

  void Errors(const std::vector<ZULTavDiagnostic>& errors) override {
    std::cout.flush();
    PrintErrors(errors);
  }

  void Warnings(const std::vector<ZULTavDiagnostic>& warnings) override { PrintWarnings(warnings); }

  void Solution(const ZULTavModel& model, const ValueAt& values, bool proven,
                const ZULTavObserved* objective) override {
    PrintValues(model, values);
    if (objective != nullptr) PrintComment("objective", *objective);
    if (!proven) std::cout << "// possible\n";
    std::cout << "----------\n";
  }

  void Domains(const ZULTavModel* model, const ValueAt& values) override {
    if (model == nullptr) return;
    PrintValues(*model, values);
    std::cout << "----------\n";
  }

  void End(const Ending& ending) override {
    if (ending.bounds && ending.status != Ending::Status::kUnsatisfiable)
      PrintComment("bounds", *ending.bounds);
    if (ending.status == Ending::Status::kUnsatisfiable) {
      std::cout << "=====UNSATISFIABLE=====\n";
    } else if (ending.status == Ending::Status::kUnbounded) {
      std::cout << "=====UNBOUNDED=====\n";
    } else if (ending.status == Ending::Status::kOptimal) {
      std::cout << "==========\n";
    } else if (ending.limited) {
      std::cout << "=====UNKNOWN=====\n";
    } else if (ending.searched && ending.status == Ending::Status::kAllSolutions) {
      std::cout << "==========\n";
    }
    if (!ending.model.empty()) {
      std::cout << "// model        " << ending.model << "\n// open         "
                << ending.openDecisions << " decisions\n";
    }
    if (!ending.checkpoint.empty()) {
      std::cout.flush();
      std::cerr << "zultav: the run is saved; go on with: zultav resume " << ending.checkpoint
                << '\n';
    }
    if (!mStatistics && ending.model.empty()) return;
    ForEachStatistic(ending.statistics, [](const char* name, auto value) {
      std::cout << "// " << std::left << std::setw(12) << name << ' ' << value << '\n';
    });
  }

 private:
  void PrintComment(const char* name, const ZULTavObserved& value) const {
    std::cout << "// " << name << " = ";
    PrintObserved(std::cout, value, mDigits);
    std::cout << '\n';
  }

  void PrintValues(const ZULTavModel& model, const ValueAt& values) const {
    for (const std::string& line : ShownLines(model, values, mFormat, mDigits))
      std::cout << line << '\n';
    if (!model.Lines().empty()) return;
    std::size_t position = 0;
    for (const ZULTavModel::Variable& variable : model.Variables()) {
      for (std::size_t i = 0; i < variable.values.size(); ++i) {
        std::cout << variable.NameOf(i) << " = ";
        const ZULTaVoAny& value = values(position++);
        if (mFormat == Format::kModule) {
          value.PrintOn(std::cout);
        } else {
          PrintValue(std::cout, value, mDigits);
        }
        std::cout << '\n';
      }
    }
  }

  Format mFormat;
  Digits mDigits;
  bool mStatistics;
};

/// One document, written as far as it is known: solutions one a line, the rest at the end.
class JsonReport final : public Report {
 public:
  explicit JsonReport(const Options& options) : mDigits(options.digits) {}

  void Errors(const std::vector<ZULTavDiagnostic>& errors) override {
    mErrors.insert(mErrors.end(), errors.begin(), errors.end());
  }

  void Warnings(const std::vector<ZULTavDiagnostic>& warnings) override { mWarnings = warnings; }

  void Solution(const ZULTavModel& model, const ValueAt& values, bool proven,
                const ZULTavObserved* objective) override {
    std::cout << (std::exchange(mBegun, true) ? ",\n" : "{\n  \"solutions\": [\n")
              << "    {\"values\": " << ValuesOf(model, values) << ShownFor(model, values);
    if (objective != nullptr) std::cout << ", \"objective\": " << JsonObserved(*objective);
    std::cout << ", \"proven\": " << (proven ? "true" : "false") << '}';
  }

  void Domains(const ZULTavModel* model, const ValueAt& values) override {
    mDomains = "{}";
    if (model != nullptr) mDomains = ValuesOf(*model, values) + ShownFor(*model, values);
  }

  void End(const Ending& ending) override {
    if (!mDomains.empty()) {
      std::cout << "{\n  \"domains\": " << mDomains;
    } else {
      std::cout << (mBegun ? "\n  ]" : "{\n  \"solutions\": []");
    }
    Json statistics = Json::object();
    ForEachStatistic(ending.statistics,
                     [&](const char* name, auto value) { statistics[name] = value; });
    const auto listOf = [](const std::vector<ZULTavDiagnostic>& diagnostics) {
      return JsonOf(diagnostics).dump(-1, ' ', false, Json::error_handler_t::replace);
    };
    std::cout << ",\n  \"status\": \"" << NameOf(ending.status) << '"' << BoundsOf(ending)
              << ",\n  \"statistics\": " << statistics.dump()
              << ",\n  \"errors\": " << listOf(mErrors)
              << ",\n  \"warnings\": " << listOf(mWarnings);
    if (!ending.checkpoint.empty())
      std::cout << ",\n  \"checkpoint\": " << Quote(ending.checkpoint);
    if (!ending.model.empty())
      std::cout << ",\n  \"model\": " << Quote(ending.model)
                << ",\n  \"open_decisions\": " << ending.openDecisions;
    std::cout << "\n}\n";
  }

 private:
  /// A member "bounds", behind others, where something was optimised.
  static std::string BoundsOf(const Ending& ending) {
    return ending.bounds ? ",\n  \"bounds\": " + JsonBounds(*ending.bounds) : std::string();
  }

  static const char* NameOf(Ending::Status status) {
    switch (status) {
      case Ending::Status::kAllSolutions:
        return "ALL_SOLUTIONS";
      case Ending::Status::kOptimal:
        return "OPTIMAL_SOLUTION";
      case Ending::Status::kUnbounded:
        return "UNBOUNDED";
      case Ending::Status::kSatisfied:
        return "SATISFIED";
      case Ending::Status::kUnsatisfiable:
        return "UNSATISFIABLE";
      case Ending::Status::kUnknown:
        break;
    }
    return "UNKNOWN";
  }

  /// How many lists begin with this value, and end before it: the array, its rows, theirs.
  static std::size_t RowsBeginningAt(const ZULTavModel::Variable& variable, std::size_t value) {
    std::size_t rows = 0;
    std::size_t size = 1;
    for (auto i = variable.dimensions.rbegin(); i != variable.dimensions.rend(); ++i, ++rows)
      if (size *= i->size; value % size != 0) break;
    return rows;
  }

  static std::string ValuesOf(const ZULTavModel& model, const ValueAt& values) {
    std::string text = "{";
    std::size_t position = 0;
    for (const ZULTavModel::Variable& variable : model.Variables()) {
      if (text.size() > 1) text += ", ";
      text += Quote(variable.name) + ": ";
      if (variable.IsArray() && variable.values.empty()) text += "[]";
      for (std::size_t i = 0; i < variable.values.size(); ++i) {
        if (i != 0) text += ", ";
        text += std::string(RowsBeginningAt(variable, i), '[') + JsonValue(values(position++)) +
                std::string(RowsBeginningAt(variable, i + 1), ']');
      }
    }
    return text + '}';
  }

  /// A member "shown", behind others, where the model shows anything.
  std::string ShownFor(const ZULTavModel& model, const ValueAt& values) const {
    if (model.Lines().empty()) return {};
    std::string text;
    for (const std::string& line : ShownLines(model, values, Format::kText, mDigits))
      text += (text.empty() ? "" : ", ") + Quote(line);
    return ", \"shown\": [" + text + "]";
  }

  Digits mDigits;
  bool mBegun = false;
  std::string mDomains;
  std::vector<ZULTavDiagnostic> mErrors, mWarnings;
};

}  // namespace

void Report::FlushNowAndThen() {
  constexpr std::chrono::milliseconds kPeriod{100};
  const auto now = std::chrono::steady_clock::now();
  if (now - mFlushed < kPeriod) return;
  mFlushed = now;
  std::cout.flush();
}

std::unique_ptr<Report> MakeReport(const Options& options) {
  if (options.format == Format::kJson) return std::make_unique<JsonReport>(options);
  return std::make_unique<TextReport>(options);
}

nlohmann::ordered_json JsonOf(const std::vector<ZULTavDiagnostic>& errors) {
  Json list = Json::array();
  for (const ZULTavDiagnostic& error : errors) {
    Json item = {
        {"message", error.message},
        {"file",    error.file   },
        {"line",    error.line   },
        {"column",  error.column }
    };
    if (!error.notes.empty()) item["notes"] = error.notes;
    list.push_back(std::move(item));
  }
  return list;
}

void PrintErrors(const std::vector<ZULTavDiagnostic>& errors) {
  bool inModel = false;
  for (const ZULTavDiagnostic& error : errors) {
    inModel = inModel || error.line != 0;
    if (error.line != 0) {
      error.Print(std::cerr);
    } else {
      std::cerr << "zultav: " << error.message << '\n';
    }
  }
  if (inModel) std::cerr << errors.size() << (errors.size() == 1 ? " error\n" : " errors\n");
}

void PrintWarnings(const std::vector<ZULTavDiagnostic>& warnings) {
  for (const ZULTavDiagnostic& warning : warnings) warning.Print(std::cerr);
}
