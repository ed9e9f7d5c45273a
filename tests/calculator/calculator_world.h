#pragma once

#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "framework/calculator/ZULTavCalculator.h"
#include "tests/number_module.h"

using Definitions = std::map<std::string, std::string>;

/// What came out of reading a text.
struct Reading {
  std::unique_ptr<ZULTavModel> model;
  std::vector<ZULTavDiagnostic> errors;

  /// All errors as they are printed.
  std::string ErrorText() const;
  /// All statements as they are printed, each followed by "; ".
  std::string StatementText() const;
  /// The object of a variable, or of the element at a place of an array.
  ZULTaVoAny& Value(const std::string& name, std::size_t element = 0) const;
  std::string ValueText(const std::string& name, std::size_t element = 0) const;
};

/// Reads a model with the operators of the module.
Reading ReadModel(const std::string& text, const ZULTavCalculator::Options& options = {});
Reading ReadModel(const std::string& text, const Definitions& definitions);
/// Reads a model that must be without errors, and propagates it: whether it may have solutions.
bool IsConsistent(const std::string& text, const Definitions& definitions = {});
