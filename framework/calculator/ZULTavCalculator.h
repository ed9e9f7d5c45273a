#ifndef ZULTAV_CALCULATOR_ZULTAV_CALCULATOR_H
#define ZULTAV_CALCULATOR_ZULTAV_CALCULATOR_H

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "framework/calculator/Export.h"
#include "framework/calculator/ZULTavDiagnostic.h"
#include "framework/calculator/ZULTavIncludes.h"
#include "framework/calculator/ZULTavModel.h"
#include "framework/solver/ZULTaVoModule.h"

/// Reads models: text becomes expressions, expressions become a network, through the operators
/// and types that modules registered. The language is described in docs/language.md.
class ZULTAV_CALCULATOR_API ZULTavCalculator {
 public:
  /// What a text may ask for at most. A text that asks for more is refused by an error that
  /// names the limit.
  struct Limits {
    std::size_t sourceBytes = 64u << 20;  ///< the texts that it includes counted
    std::size_t nesting = 1000;           ///< parentheses, unary operators, includes, …
    std::size_t nameLength = 255;         ///< bytes of a name
    std::size_t numberLength = 1000;      ///< bytes of a number
    std::size_t arraySize = 2'000'000;    ///< elements of one array
    std::size_t listItems = 4'000'000;    ///< of all lists that expressions make, at one time
    std::size_t variables = 4'000'000;    ///< all elements of all variables
    std::size_t operations = 4'000'000;   ///< operator applications, `for` written out
    std::size_t shown = 200'000;          ///< texts and values of all lines that are shown
    std::size_t iterations = 32'000'000;  ///< steps of all `for`, `sum`, … together
    std::size_t errors = 20;              ///< reading stops after so many
  };
  struct Options {
    /// Constants from outside, name to text: each replaces the value of the `let` constant of
    /// that name or, without such a `let`, is a constant of that name.
    std::map<std::string, std::string> definitions;
    /// Values for `let` constants, a JSON object from the file of that name.
    struct Data {
      std::string name, text;
    };
    std::vector<Data> data;
    /// Where the texts come from that the model includes; null: it cannot include any.
    ZULTavIncludes* includes = nullptr;
    Limits limits;
  };

  /// Types and operators are looked for in the modules in the given order. The modules must stay
  /// open as long as the calculator and every model that it read.
  explicit ZULTavCalculator(std::vector<const ZULTaVoModule*> modules);
  ~ZULTavCalculator();

  /// The model of the text, not yet propagated. Null when there are errors, which are appended
  /// to `errors`; never throws. (When memory runs out altogether, null may come without an error.)
  /// What is probably not meant is appended to `warnings`, unless that is null, with or without
  /// errors; it does not change the model.
  std::unique_ptr<ZULTavModel> Read(std::string_view text, std::string_view fileName,
                                    const Options& options, std::vector<ZULTavDiagnostic>& errors,
                                    std::vector<ZULTavDiagnostic>* warnings = nullptr) const;

 private:
  std::vector<const ZULTaVoModule*> mModules;
};

#endif
