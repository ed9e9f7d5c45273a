// Constraints whose rule the engine is not told: their filters run in its queue.

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <optional>

#include "framework/calculator/ZULTavCalculator.h"
#include "framework/engine/Engine.h"
#include "framework/engine/detail/ProgramBuilder.h"
#include "framework/solver/SingleValue.h"
#include "framework/solver/ZULTaVoNetwork.h"
#include "tests/number_module.h"

namespace zultav::engine {
namespace {

/// A program that knows nothing of a model but the filters of its constraints.
class FilterWorld {
 public:
  FilterWorld(const std::string& text, bool isOpaque) {
    std::vector<ZULTavDiagnostic> errors;
    mModel = ZULTavCalculator({&NumberModule()}).Read(text, "text", {}, errors);
    const ZULTaVoNetwork& network = mModel->Network();
    ProgramBuilder builder(mProgram.emplace(ProgramBuilder::MakeEmpty(network)));
    std::map<const ZULTaVoObject*, Slot> slots;
    for (std::uint32_t i = 0; i < network.GetNumberOfObjects(); ++i) {
      const ZULTaVoAny* object = network.GetObject(i);
      SlotInfo info;
      info.object = i;
      slots[object] = AddSlot(builder, info, *object, isOpaque);
    }
    for (std::uint32_t i = 0; i < network.GetNumberOfConstraints(); ++i) {
      std::vector<Slot> x;
      for (const ZULTaVoObject* argument : network.GetArguments(i)) x.push_back(slots[argument]);
      builder.AddFilter(i, x);
    }
    builder.Finish();
    mEngine = std::make_unique<Engine>(*mProgram, &mModel->Network());
  }

  Engine& GetEngine() { return *mEngine; }
  ZULTaVoNetwork& GetNetwork() { return mModel->Network(); }

  int CountSolutions() {
    if (mEngine->Propagate() != Engine::Status::kFixpoint) return 0;
    Slot x = 0;
    while (x < mProgram->GetNumberOfSlots() && mEngine->IsFixed(x)) ++x;
    if (x == mProgram->GetNumberOfSlots()) return 1;
    int solutions = 0;
    for (const bool above : {false, true}) {
      mEngine->Push();
      if (Split(x, above)) solutions += CountSolutions();
      mEngine->Pop();
    }
    return solutions;
  }

 private:
  static Slot AddSlot(ProgramBuilder& builder, SlotInfo info, const ZULTaVoAny& object,
                      bool isOpaque) {
    if (isOpaque) {
      info.kind = Kind::kOpaque;
    } else if (const auto* integer = ZULTaVoCast<const ZULTaVoInteger>(&object)) {
      return builder.AddSlot(info,
                             IntegerRange(integer->GetLowerBound(), integer->GetUpperBound()));
    } else if (const auto* boolean = ZULTaVoCast<const ZULTaVoBoolean>(&object)) {
      return builder.AddSlot(info, IntegerRange(boolean->IsTrue(), 1 - boolean->IsFalse()));
    } else if (const auto* real = ZULTaVoCast<const ZULTaVoReal>(&object)) {
      info.kind = Kind::kReal;
      return builder.AddSlot(info, RealRange(real->GetLowerBound(), real->GetUpperBound()));
    }
    return builder.AddSlot(info, IntegerRange());
  }
  /// Halves a slot; an opaque one by its object.
  bool Split(Slot x, bool above) {
    if (mProgram->GetSlot(x).kind == Kind::kInteger) {
      const std::int64_t lower = mEngine->GetLower(x);
      return above ? mEngine->SetLower(x, lower + 1) : mEngine->SetUpper(x, lower);
    }
    ZULTaVoAny* object = GetNetwork().GetObject(mProgram->GetSlot(x).object);
    if (!GetNetwork().SaveValue(object)) return false;
    if (auto* integer = ZULTaVoCast<ZULTaVoInteger>(object)) {
      const long lower = integer->GetLowerBound();
      above ? integer->SetLowerBound(lower + 1) : integer->SetUpperBound(lower);
    } else {
      ZULTaVoCast<ZULTaVoBoolean>(object)->SetExactValue(above ? 1 : 0);
    }
    mEngine->TellChanged(x);
    return true;
  }

  std::unique_ptr<ZULTavModel> mModel;
  std::optional<Program> mProgram;
  std::unique_ptr<Engine> mEngine;
};

TEST(EngineFilters, FindTheSolutionsOfModelsWithoutRules) {
  struct Case {
    const char* text;
    int solutions;
  };
  const Case kCases[] = {
      {"q[1..4] : int = [1, 4]; for i in 1..4, j in i+1..4 : { q[i] <> q[j];"
       " q[i] + i <> q[j] + j; q[i] - i <> q[j] - j; }",                     2},
      {"x, y : int = [0, 9]; p : bool; p == (x << y); x + y = 7; p || x == y + 1;", 5},
      {"x : int = [10, 20]; PrimeNumber(x);",                                       4},
      {"x, y : int = [1, 5]; x * y = 7;",                                           0},
  };
  for (const Case& row : kCases)
    for (const bool isOpaque : {false, true}) {
      SCOPED_TRACE(std::string(row.text) + (isOpaque ? " as opaque values" : ""));
      EXPECT_EQ(FilterWorld(row.text, isOpaque).CountSolutions(), row.solutions);
    }
}

TEST(EngineFilters, TellWhatTheyHaveNarrowedAndNothingElse) {
  // The module cannot hold the endless range of a slot: its own limits are no finding.
  FilterWorld world("x, y : int; a, b : real; x + 1 = y; a + b = 3;", false);
  Engine& engine = world.GetEngine();
  const Slot x = 0, y = 1, a = 2, b = 3;
  engine.Push();
  ASSERT_TRUE(engine.SetLower(x, 5));
  ASSERT_TRUE(engine.Narrow(a, RealRange(1, 2)));
  ASSERT_EQ(engine.Propagate(), Engine::Status::kFixpoint);
  EXPECT_EQ(engine.GetLower(y), 6);
  EXPECT_EQ(engine.GetReals(b), RealRange(1, 2));
  engine.Pop();
  const auto& object = *ZULTaVoCast<const ZULTaVoInteger>(world.GetNetwork().GetObject(0));
  EXPECT_EQ(engine.GetLower(y), engine.GetLower(x));
  EXPECT_EQ(object.GetLowerBound(), engine.GetLower(x)) << "the network went back, too";
}

}  // namespace
}  // namespace zultav::engine
