// Memory that runs out: whichever allocation fails, the modules and the network answer for it.

#include "tests/solver/world.h"

namespace {

int sCountdown = 0;

void* AllocateUntilTheEnd(std::size_t size) {
  return --sCountdown == 0 ? nullptr : std::malloc(size);
}

/// Opens all, builds a small network, propagates and goes back. True when it came to the end.
bool RunOnce() {
  World world;
  ZULTaVoModule* numbers = world.manager.OpenModule("ZULTavNumbers");
  if (numbers == nullptr || world.manager.OpenModule("BitModule") == nullptr) {
    EXPECT_NE(world.manager.GetReason(), "");
    return false;
  }
  std::vector<ZULTaVoAny*> values;
  std::vector<const ZULTaVoObjectDescriptor*> types;
  for (const char* name : {"interval int", "single int", "interval real", "single bool"}) {
    types.push_back(numbers->FindType(name));
    values.push_back(world.network.AddObject(types.back()));
    if (values.back() == nullptr) return false;
  }
  ZULTaVoObject* const operands[] = {values[0], values[2]};
  const ZULTaVoObjectDescriptor* const wanted[] = {types[0], types[2]};
  for (const auto& [name, result] : {
           std::pair{"-",  2},
           {"==", 3},
           {"<<", 3}
  }) {
    const auto* found = numbers->FindOperator(name, wanted, 2);
    if (found == nullptr ||
        !found->Post(world.network, operands, values[static_cast<std::size_t>(result)]))
      return false;
  }
  for (int i = 0; i < 300; ++i)  // more than one chunk
    if (world.network.AddObject(types[0]) == nullptr) return false;
  using Status = ZULTaVoNetwork::Status;
  if (world.network.Propagate() == Status::kOutOfMemory || !world.network.PushState() ||
      !world.network.SaveValue(values[0]))
    return false;
  SetTo(*values[0], "3");
  world.network.PropagateValue(values[0]);
  if (world.network.Propagate() == Status::kOutOfMemory) return false;
  world.network.PopState();
  return Show(*values[0]) == "Any";
}

}  // namespace

TEST(AllocationTest, AnyAllocationMayFail) {
  bool complete = false;
  int n = 0;
  do {
    sCountdown = ++n;
    ZULTaVoBase::SetAllocator(AllocateUntilTheEnd);
    complete = RunOnce();
    ZULTaVoBase::SetAllocator(nullptr);
  } while (sCountdown <= 0);  // until nothing fails any more
  EXPECT_TRUE(complete);
  EXPECT_GT(n, 540) << "descriptors of two modules, and the network";
}
