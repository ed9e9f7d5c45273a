#include "tests/calculator/calculator_world.h"

#include <sstream>

std::string Reading::ErrorText() const {
  std::ostringstream out;
  for (const ZULTavDiagnostic& error : errors) error.Print(out);
  return out.str();
}

std::string Reading::StatementText() const {
  std::ostringstream out;
  for (const auto& statement : model->Statements()) {
    model->PrintStatement(out, statement);
    out << "; ";
  }
  return out.str();
}

ZULTaVoAny& Reading::Value(const std::string& name, std::size_t element) const {
  return *model->FindVariable(name)->values.at(element);
}

std::string Reading::ValueText(const std::string& name, std::size_t element) const {
  std::ostringstream out;
  Value(name, element).PrintOn(out);
  return out.str();
}

Reading ReadModel(const std::string& text, const ZULTavCalculator::Options& options) {
  Reading reading;
  const ZULTavCalculator calculator({&NumberModule()});
  reading.model = calculator.Read(text, "test", options, reading.errors);
  EXPECT_EQ(reading.model == nullptr, !reading.errors.empty()) << text;
  return reading;
}

Reading ReadModel(const std::string& text, const Definitions& definitions) {
  ZULTavCalculator::Options options;
  options.definitions = definitions;
  return ReadModel(text, options);
}

bool IsConsistent(const std::string& text, const Definitions& definitions) {
  const Reading reading = ReadModel(text, definitions);
  EXPECT_EQ(reading.ErrorText(), "") << text;
  return reading.model != nullptr &&
         reading.model->Network().Propagate() == ZULTaVoNetwork::Status::kConsistent;
}
