#include "framework/calculator/ZULTavCalculator.h"

#include <algorithm>
#include <new>
#include <utility>

#include "framework/calculator/detail/Interpreter.h"
#include "framework/calculator/detail/Parser.h"

using namespace zultav::detail;

namespace {

constexpr std::size_t kLargestSource = std::size_t{1} << 31;  // positions are 32 bits wide

/// One text on its way to a model.
class Reader {
 public:
  Reader(const Source& source, const std::vector<const ZULTaVoModule*>& modules,
         const ZULTavCalculator::Options& options, ErrorList& errors)
      : mSource(source),
        mOptions(options),
        mErrors(errors),
        mData(options.dataName, options.data),
        mModel(std::make_unique<ZULTavModel>()),
        mRegistry(modules),
        mBuilder(*mModel, mRegistry, mNames, options.limits),
        mInterpreter(mBuilder, mRegistry, mNames, options.limits) {}

  std::unique_ptr<ZULTavModel> Read() {
    TakeDefinitions();
    TakeData();
    ReadStatements();
    if (mErrors.IsEmpty()) CheckDefinitions();
    return mErrors.IsEmpty() ? std::move(mModel) : nullptr;
  }

  void Warn(std::vector<ZULTavDiagnostic>& warnings) const {
    for (const auto& [position, warning] : mBuilder.GetWarnings()) {
      warnings.push_back(mSource.Describe(warning));
      warnings.back().isWarning = true;
    }
    if (!mErrors.IsEmpty()) return;
    for (const ModelError& unused : mInterpreter.GetUnusedData()) {
      if (warnings.size() >= mOptions.limits.errors) return;
      warnings.push_back(mData.Describe(unused));
      warnings.back().isWarning = true;
    }
  }

 private:
  void TakeDefinitions() {
    for (const auto& [name, text] : mOptions.definitions) {
      const Source definition("definition of '" + name + "'", text);
      try {
        mInterpreter.Define(name, definition);
      } catch (const ModelError& error) {
        mErrors.Add(definition, error);
      }
    }
  }

  void TakeData() {
    if (mOptions.data.empty() && mOptions.dataName.empty()) return;
    try {
      if (mOptions.data.size() > std::min(mOptions.limits.sourceBytes, kLargestSource))
        Fail({}, "the data are longer than the limit of " +
                     std::to_string(mOptions.limits.sourceBytes) + " bytes");
      mInterpreter.TakeData(mData);
    } catch (const ModelError& error) {
      mErrors.Add(mData, error);
    }
  }

  void ReadStatements() {
    const Span all = {0, static_cast<std::uint32_t>(mSource.GetText().size())};
    Parser parser(mSource, all, mOptions.limits, mNames,
                  [this](std::string_view name) { return mRegistry.HasOperator(name); });
    Syntax syntax;
    for (bool more = true; more && !mErrors.IsFull();) {
      try {
        more = parser.Next(syntax);
      } catch (const ModelError& error) {
        mErrors.Add(mSource, error);
        for (const std::uint32_t name : parser.GetDeclared()) mInterpreter.MarkBroken(name);
        parser.Skip();
        continue;
      }
      try {
        if (more) mInterpreter.Run(mSource, syntax);
      } catch (const ModelError& error) {
        if (!error.message.empty()) mErrors.Add(mSource, error);
        for (const std::uint32_t name : parser.GetDeclared()) mInterpreter.MarkBroken(name);
      }
    }
  }

  void CheckDefinitions() {
    for (const std::string& name : mInterpreter.GetUnusedDefinitions())
      mErrors.Add(Source("definition of '" + name + "'", mOptions.definitions.at(name)),
                  {{}, "the model does not use '" + name + "'", mInterpreter.SuggestName(name)});
  }

  const Source& mSource;
  const ZULTavCalculator::Options& mOptions;
  ErrorList& mErrors;
  Source mData;
  std::unique_ptr<ZULTavModel> mModel;
  Registry mRegistry;
  NameTable mNames;
  ModelBuilder mBuilder;
  Interpreter mInterpreter;
};

}  // namespace

ZULTavCalculator::ZULTavCalculator(std::vector<const ZULTaVoModule*> modules)
    : mModules(std::move(modules)) {}

ZULTavCalculator::~ZULTavCalculator() = default;

std::unique_ptr<ZULTavModel> ZULTavCalculator::Read(std::string_view text,
                                                    std::string_view fileName,
                                                    const Options& options,
                                                    std::vector<ZULTavDiagnostic>& errors,
                                                    std::vector<ZULTavDiagnostic>* warnings) const {
  const std::size_t limit = std::min(options.limits.sourceBytes, kLargestSource);
  const auto refuse = [&](const std::string& message) {
    ZULTavDiagnostic diagnostic;
    diagnostic.message = message;
    diagnostic.file = fileName;
    errors.push_back(diagnostic);
  };
  try {
    try {
      constexpr std::string_view kByteOrderMark = "\ufeff";
      if (text.substr(0, kByteOrderMark.size()) == kByteOrderMark)
        text.remove_prefix(kByteOrderMark.size());
      if (text.size() <= limit) {
        const Source source(fileName, text);
        ErrorList list(errors, options.limits.errors);
        Reader reader(source, mModules, options, list);
        auto model = reader.Read();
        if (warnings != nullptr) reader.Warn(*warnings);
        return model;
      }
      refuse("the text of " + std::to_string(text.size()) + " bytes is longer than the limit of " +
             std::to_string(limit));
    } catch (const std::exception&) {  // std::bad_alloc, or a length that no container can have
      refuse("there is not enough memory for this model");
    }
  } catch (const std::exception&) {  // nor for saying so
  }
  return nullptr;
}
