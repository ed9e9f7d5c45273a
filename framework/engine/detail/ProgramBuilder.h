#ifndef ZULTAV_ENGINE_DETAIL_PROGRAM_BUILDER_H
#define ZULTAV_ENGINE_DETAIL_PROGRAM_BUILDER_H

#include <cstdint>
#include <span>
#include <vector>

#include "framework/engine/Program.h"

namespace zultav::engine {

/// Puts slots and rules into a program, and works out who watches what.
///
/// A slot that stands twice in a rule is allowed, and the rule then runs until it no longer calls
/// itself. Throws std::bad_alloc when memory ran out.
class ZULTAV_ENGINE_API ProgramBuilder {
 public:
  /// A program of a network in which nothing stands.
  static Program MakeEmpty(const ZULTaVoNetwork& network) { return Program(network); }
  explicit ProgramBuilder(Program& program) : mProgram(program) {}

  Slot AddSlot(const SlotInfo& info, const IntegerRange& range);
  Slot AddSlot(const SlotInfo& info, const RealRange& range);
  /// Keeps a set of values for a bounded integer, so that holes can be made.
  void KeepValues(Slot x);

  /// z = function(x, y) over integers; y is x for a unary function.
  void AddFunction(Function function, Slot z, Slot x, Slot y);
  /// c1 x1 + … + cn xn relation c0, or exactly where `truth` holds. No coefficient is 0.
  void AddLinear(Relation relation, std::span<const Slot> x,
                 std::span<const std::int64_t> coefficients, std::int64_t c0, Slot truth = kNone);
  /// The same, where the literal is true; nothing follows from its being false.
  void AddConditional(Literal condition, Relation relation, std::span<const Slot> x,
                      std::span<const std::int64_t> coefficients, std::int64_t c0);
  /// x <> y + c0.
  void AddUnequal(Slot x, Slot y, std::int64_t c0);
  void AddClause(std::span<const Literal> literals);
  /// Two rules: the cheap one looks at fixed values, the other one at bounds. Answers whether the
  /// slots are; else there is no solution.
  bool AddAllDifferent(std::span<const Slot> x);
  /// z is the number of truths.
  void AddCount(Slot z, std::span<const Slot> truths);
  void AddPrimality(Slot truth, Slot x);
  /// Makes the system of reals, with a rule for each statement, of the program's formulas and
  /// comparisons; they and the declared slots are complete.
  void AddReals();
  /// The propagator of a relation of the network.
  void AddRelation(std::uint32_t constraint, std::span<const Slot> x);
  /// The filter of a constraint of the network.
  void AddFilter(std::uint32_t constraint, std::span<const Slot> x);

  /// After all slots and rules: who is told of what.
  void Finish();

 private:
  void AddStatement(std::uint32_t statement, std::span<const Slot> x);
  Rule& AddRule(Code code, Cost cost, std::span<const Slot> x);
  std::uint32_t AddNumbers(std::int64_t first, std::span<const std::int64_t> rest);
  unsigned int GetEvents(const Rule& rule, std::size_t argument) const;

  bool HasDuplicates(std::span<const Slot> x);

  Program& mProgram;
  std::vector<std::uint32_t> mSeen;  // of each slot: the last list of many in which it stood
  std::uint32_t mList = 0;
};

}  // namespace zultav::engine

#endif
