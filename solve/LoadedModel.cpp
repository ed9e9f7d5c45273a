#include "solve/LoadedModel.h"

#include "solve/ModelFiles.h"

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
  const std::string name = options.modelFile == "-" ? "<stdin>" : options.modelFile;
  std::string reason, text;
  if (!ReadTextFile(options.modelFile, reading.limits.sourceBytes, text, reason)) {
    errors.push_back(Failure(reason, name));
    return kUsage;
  }
  reading.dataName = options.dataFile;
  if (options.modelFile == "-" && options.dataFile == "-") {
    errors.push_back(Failure("the model and its data cannot both come from standard input"));
    return kUsage;
  }
  if (!options.dataFile.empty() &&
      !ReadTextFile(options.dataFile, reading.limits.sourceBytes, reading.data, reason)) {
    errors.push_back(Failure(reason, options.dataFile));
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
