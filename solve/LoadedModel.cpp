#include "solve/LoadedModel.h"

#include <utility>

#include "solve/ModelFiles.h"

namespace {

constexpr std::string_view kStandardInput = "-";

/// As messages name it.
std::string NameOf(const std::string& file) { return file == kStandardInput ? "<stdin>" : file; }

}  // namespace

ZULTavDiagnostic Failure(const std::string& message, const std::string& file) {
  ZULTavDiagnostic failure;
  failure.message = message;
  failure.file = file;
  return failure;
}

std::vector<ZULTaVoAny*> ValuesOf(const ZULTavModel& model) {
  std::vector<ZULTaVoAny*> values;
  for (const ZULTavModel::Variable& variable : model.Variables())
    values.insert(values.end(), variable.values.begin(), variable.values.end());
  return values;
}

int LoadedModel::OpenModules(const Options& options, std::vector<ZULTavDiagnostic>& errors) {
  std::string reason;
  if (mModules.Open(options, reason)) return kAnswered;
  errors.push_back(Failure(reason));
  return options.moduleGiven ? kUsage : kInternal;
}

int LoadedModel::Load(const Options& options, std::vector<ZULTavDiagnostic>& errors) {
  if (const int status = OpenModules(options, errors); status != kAnswered) return status;
  ZULTavCalculator::Options reading;
  reading.definitions = options.definitions;
  const std::string name = NameOf(options.modelFile);
  std::string reason, text;
  if (!ReadTextFile(options.modelFile, reading.limits.sourceBytes, text, reason)) {
    errors.push_back(Failure(reason, name));
    return kUsage;
  }
  bool isInputTaken = options.modelFile == kStandardInput;
  for (const std::string& file : options.dataFiles) {
    const bool isInput = file == kStandardInput;
    auto& data = reading.data.emplace_back();
    data.name = NameOf(file);
    if (isInput && std::exchange(isInputTaken, true))
      reason = "two texts cannot both come from standard input";
    else if (ReadTextFile(file, reading.limits.sourceBytes, data.text, reason))
      continue;
    errors.push_back(Failure(reason, data.name));
    return kUsage;
  }
  ModelFiles files;
  if (!files.Open(options.modelFile, options.includeFolders, reason)) {
    errors.push_back(Failure(reason, name));
    return kUsage;
  }
  reading.includes = &files;
  mModel = ZULTavCalculator(mModules.All()).Read(text, name, reading, errors, &mWarnings);
  if (mModel == nullptr) return kModelError;
  if (options.ratio) mModel->Network().SetNarrowingFraction(*options.ratio);
  return kAnswered;
}

int LoadedModel::Load(const Options& options, const Checkpoint& checkpoint,
                      std::vector<ZULTavDiagnostic>& errors) {
  if (const int status = OpenModules(options, errors); status != kAnswered) return status;
  std::string reason;
  mModel = checkpoint.MakeModel(mModules.All(), reason);
  if (mModel == nullptr) {
    errors.push_back(Failure("the checkpoint cannot be used: " + reason, options.checkpointFile));
    return kUsage;
  }
  if (options.ratio) mModel->Network().SetNarrowingFraction(*options.ratio);
  return kAnswered;
}
