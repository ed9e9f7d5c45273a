#ifndef ZULTAV_SOLVE_LOADED_MODEL_H
#define ZULTAV_SOLVE_LOADED_MODEL_H

#include <memory>
#include <string>
#include <vector>

#include "framework/calculator/ZULTavCalculator.h"
#include "solve/Checkpoint.h"
#include "solve/Modules.h"

/// An error that is not about a place in a model.
ZULTavDiagnostic Failure(const std::string& message, const std::string& file = {});

/// Of all variables, in the order of declaration.
std::vector<ZULTaVoAny*> ValuesOf(const ZULTavModel& model);

/// A model, and what it needs to live.
class LoadedModel {
 public:
  /// Reads the model file. Answers an ExitStatus; unless it is kAnswered, `errors` says why.
  int Load(const Options& options, std::vector<ZULTavDiagnostic>& errors);
  /// The model of a checkpoint, with the options that Checkpoint::Restore left.
  int Load(const Options& options, const Checkpoint& checkpoint,
           std::vector<ZULTavDiagnostic>& errors);

  ZULTavModel& Get() { return *mModel; }
  /// What is probably not meant in the model file.
  const std::vector<ZULTavDiagnostic>& GetWarnings() const { return mWarnings; }

 private:
  int OpenModules(const Options& options, std::vector<ZULTavDiagnostic>& errors);

  Modules mModules;  // first, so that they outlive the model
  std::unique_ptr<ZULTavModel> mModel;
  std::vector<ZULTavDiagnostic> mWarnings;
};

#endif
