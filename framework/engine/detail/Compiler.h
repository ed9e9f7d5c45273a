#ifndef ZULTAV_ENGINE_DETAIL_COMPILER_H
#define ZULTAV_ENGINE_DETAIL_COMPILER_H

#include <span>
#include <vector>

#include "framework/engine/Program.h"
#include "framework/engine/detail/Conditions.h"
#include "framework/engine/detail/Draft.h"
#include "framework/engine/detail/Gates.h"
#include "framework/engine/detail/LinearRows.h"
#include "framework/engine/detail/ProgramBuilder.h"

namespace zultav::engine {

/// Compiles a network: reads and simplifies it, sorts what it says into rules over integers,
/// clauses, statements over reals and filters, and narrows integers as far as these do without a
/// search.
class Compiler {
 public:
  Compiler(Program& program, const ZULTaVoNetwork& network, std::span<ZULTaVoAny* const> declared,
           std::span<ZULTaVoAny* const> observed);

  void Compile();

 private:
  bool IsTruth(Slot x) const { return mDraft.slots[x].isBoolean; }
  Flags FindNeeded(const Flags& isTaken, const LinearRows* rows) const;
  void EmitRow(const LinearRows& linear, const LinearRows::Row& row,
               const std::optional<Conditions::Condition>& condition);
  bool EmitCount(const LinearRows::Row& row);
  void EmitGroup(const Group& group);
  bool IsNarrow(Slot x) const;
  void EmitFormulas(const Flags& isTaken);
  bool LeavesComparison(const Flags& isTaken) const;
  void FindSearched();
  void FindHoled();
  void Presolve();
  void KeepValues();

  Program& mProgram;
  ProgramBuilder mBuilder;
  Draft mDraft;
  std::vector<Slot> mRowSlots;  // of the row that is emitted
  std::vector<std::int64_t> mRowFactors;
};

}  // namespace zultav::engine

#endif
