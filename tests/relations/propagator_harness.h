#ifndef ZULTAV_TESTS_RELATIONS_PROPAGATOR_HARNESS_H
#define ZULTAV_TESTS_RELATIONS_PROPAGATOR_HARNESS_H

#include <cstdint>
#include <functional>
#include <memory>
#include <random>
#include <span>
#include <string>
#include <vector>

#include "framework/solver/ZULTaVoPropagator.h"
#include "framework/solver/ZULTaVoRelationDescriptor.h"

namespace zultav::relations {

using Values = std::vector<std::int64_t>;

/// What a fixpoint promises of an variable.
enum class Strength : std::uint8_t {
  kSound,   ///< nothing: values may be left that are in no solution
  kBounds,  ///< each bound is in a solution
  kDomain   ///< each value is in a solution
};

struct Variable {
  Values values;  ///< ascending: all of it, or of an open or real argument those that are tried
  Strength strength = Strength::kSound;
  bool isReal = false;
  bool isTruth = false;
};

/// A relation as a model calls it. Its values are numbered in the order of the parts.
class Call {
 public:
  explicit Call(ZULTaVoRelationDescriptor::Definition (*describe)()) : mDescribe(describe) {}
  Call& Values(std::size_t count, std::int64_t firstIndex = 1, bool isReal = false);
  Call& Known(std::vector<std::int64_t> numbers, std::size_t rows = 1, std::int64_t firstIndex = 1);
  Call& KnownReals(std::vector<double> pairs, std::size_t rows = 1, std::int64_t firstIndex = 1);
  /// Makes its propagator, which this has to outlive.
  std::unique_ptr<ZULTaVoPropagator> operator()() const;

 private:
  struct Part {
    ZULTaVoRelationArgument argument;
    std::vector<std::int64_t> integers;
    std::vector<double> reals;
  };
  ZULTaVoRelationDescriptor::Definition (*mDescribe)();
  std::vector<Part> mParts;
  std::uint32_t mCount = 0;
};

/// One relation over variables, and what it means.
struct Instance {
  std::vector<Variable> variables;
  std::function<bool(std::span<const std::int64_t>)> holds;
  Call call;
};

/// Draws what tests are made of; the same each time.
class Draw {
 public:
  explicit Draw(std::uint64_t seed) : mEngine(seed) {}
  std::int64_t Between(std::int64_t least, std::int64_t greatest);
  bool Chance(int percent) { return Between(0, 99) < percent; }
  std::size_t Size(std::size_t least, std::size_t greatest);
  /// A set of 1 to `most` + 1 values of [least, greatest].
  Values Set(std::int64_t least, std::int64_t greatest, std::size_t most);
  /// 0, or a place where [it, it + 20] touches the limits of 64 bits.
  std::int64_t Base();

 private:
  std::mt19937_64 mEngine;
};

struct RelationCase {
  std::string name;
  /// At most some 10^4 combinations of values.
  std::function<Instance(Draw&)> draw;
};
inline std::ostream& operator<<(std::ostream& out, const RelationCase& row) {
  return out << row.name;
}

/// Searches random instances as an engine would, and compares each node with all solutions that
/// are left: none is lost, what is fixed is decided, what is entailed holds, a fixpoint is one and
/// is as strong as promised, and after levels were taken back it is all the same. Some instances
/// have variables without bounds or sets of values, or the same argument twice.
void CheckRelation(const RelationCase& row, int instances = 30000);

}  // namespace zultav::relations

#endif
