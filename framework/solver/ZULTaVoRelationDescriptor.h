#ifndef ZULTAV_SOLVER_ZULTAVO_RELATION_DESCRIPTOR_H
#define ZULTAV_SOLVER_ZULTAVO_RELATION_DESCRIPTOR_H

#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "framework/solver/ZULTaVoConstraintDescriptor.h"
#include "framework/solver/ZULTaVoPropagator.h"

/// What one parameter of a relation got: one value, a list or a matrix, of values that the
/// propagator narrows, or of plain numbers.
struct ZULTaVoRelationArgument {
  /// The number that stands for any number whatever, where a parameter takes it; of reals, the
  /// bounds of all.
  static constexpr std::int64_t kAnything = std::numeric_limits<std::int64_t>::min();

  std::uint32_t rows = 1;
  std::uint32_t columns = 1;  ///< of a list, which is one row, how many there are
  bool isKnown = false;       ///< plain numbers, and no values
  bool isReal = false;        ///< else integers, of which a truth value is 0 or 1
  std::uint32_t first = 0;    ///< the propagator's number of the first value; the others follow it
  std::int64_t firstIndex = 1;             ///< what models call the first entry of the list
  std::span<const std::int64_t> integers;  ///< known ones, row by row
  std::span<const double> reals;  ///< known ones, row by row: two doubles that enclose each

  std::size_t GetSize() const { return std::size_t{rows} * columns; }
};

/// A constraint of a module over any number of values, as models call it: its name, its parameters
/// and, where it is a function of them, its result.
class ZULTAV_TYPES_API ZULTaVoRelationDescriptor : public ZULTaVoConstraintDescriptor {
 public:
  enum class Element : std::uint8_t {
    kInteger,
    kTruth,
    kReal,
    kNumber  ///< integers or, where any number of the call's parameters of this kind is none, reals
  };
  enum class Given : std::uint8_t {
    kValues,  ///< constants are values, too, which are fixed
    kKnown,   ///< plain numbers, known while the model is read
    kEither   ///< plain numbers where all of them are known, else values
  };
  struct Parameter {
    const char* name;
    Element element = Element::kInteger;
    /// "" for one value; "n" for a list; "m n" for a matrix of m rows and n columns. What has the
    /// same letter has the same size.
    const char* size = "";
    Given given = Given::kValues;
    bool takesAnything = false;  ///< a known number may be '*'
  };
  /// Arguments in the order of the parameters; where there is a result, it comes first, before
  /// the parameters, and is value 0.
  using Arguments = std::span<const ZULTaVoRelationArgument>;

  /// All that a relation is.
  struct Definition {
    const char* name;
    /// In one line, for those who list what there is.
    const char* meaning;
    std::vector<Parameter> parameters;
    /// One value, which all others determine.
    std::optional<Parameter> result = std::nullopt;
    /// The propagator of arguments whose sizes fit. What is known outlives it.
    std::unique_ptr<ZULTaVoPropagator> (*make)(Arguments) = nullptr;
    /// What is wrong with arguments whose sizes fit; empty where nothing is. Null: nothing ever is.
    std::string (*check)(Arguments) = nullptr;
    /// What it says of one value for each parameter and the result, where it is not reified; a
    /// search goes by the rule and needs no propagator.
    ZULTaVoRule rule = ZULTaVoRule::kNone;
  };

  explicit ZULTaVoRelationDescriptor(Definition definition);

  const char* CastableID() const override { return "ZULTaVoRelationDescriptor"; }
  Kind GetKind() const override { return Kind::kRelation; }
  unsigned int GetNumberOfArguments() const override {
    return static_cast<unsigned int>(mDefinition.parameters.size());
  }
  void* InitObject(void* place) const override;
  /// `from`: a ZULTaVoRelation.
  void* InitObject(void* place, const void* from) const override;
  std::size_t GetObjectSize() const override;
  std::size_t GetArgumentsSize() const override { return 0; }
  /// Like "element (list: number[n], index: int) -> number".
  void PrintOn(std::ostream& out) const override;

  const Definition& GetDefinition() const { return mDefinition; }
  /// Whether it is a function of single values alone. Then it can be posted by these and the result
  /// like any other constraint, and operators can be made of it.
  bool IsPlain() const { return TakesNumberOfArguments(GetNumberOfArguments() + 1); }
  const char* GetRelationName() const { return mDefinition.name; }
  /// What is wrong with these arguments; empty where nothing is.
  std::string Check(Arguments arguments) const;

 private:
  std::string CheckSizes(Arguments arguments) const;

  Definition mDefinition;
};

#endif
