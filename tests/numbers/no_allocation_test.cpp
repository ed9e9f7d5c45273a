// No filter of any operator of the module allocates, whatever its operands hold.

#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

#include "framework/solver/ZULTavAbstractTypes.h"
#include "tests/counted_memory.h"

namespace {
void* Count(std::size_t size) {
  ++gAllocations;
  return std::malloc(size);
}

/// Gives an object of the network an interval or a value that suits its type.
void Fill(ZULTaVoAny& object, long lower, long upper) {
  if (auto* integer = ZULTaVoCast<ZULTaVoInteger>(&object)) {
    integer->SetLowerBound(lower);
    integer->SetUpperBound(upper);
  } else if (auto* real = ZULTaVoCast<ZULTaVoReal>(&object)) {
    real->SetLowerBound(static_cast<double>(lower));
    real->SetUpperBound(static_cast<double>(upper));
  }
}
}  // namespace

TEST(NoAllocationTest, FiltersOfAllOperatorsRunWithoutMemory) {
  ZULTaVoModuleManager manager;
  ZULTaVoModule* numbers = manager.OpenModule("ZULTavNumbers");
  ASSERT_NE(numbers, nullptr) << manager.GetReason();
  const ZULTaVoObjectDescriptor* concrete[] = {numbers->FindType("interval int"),
                                               numbers->FindType("interval real")};
  const auto make = [&](ZULTaVoNetwork& network, const ZULTaVoObjectDescriptor* type) {
    if (type == ZULTaVoInteger::sDescriptor) type = concrete[0];
    if (type == ZULTaVoReal::sDescriptor) type = concrete[1];
    return network.AddObject(type);
  };
  int filters = 0;
  for (const ZULTaVoObjectDescriptor* descriptor : numbers->GetDescriptors()) {
    if (descriptor->GetKind() != ZULTaVoObjectDescriptor::Kind::kOperator) continue;
    const auto& op = static_cast<const ZULTaVoOperatorDescriptor&>(*descriptor);
    for (const auto& [lower, upper] : {
             std::pair{2L,  9L         },
             {3L,  3L         },
             {-5L, 5L         },
             {1L,  2000000000L}
    }) {
      ZULTaVoNetwork network;
      ZULTaVoObject* operands[2] = {};
      for (unsigned int i = 0; i < op.GetNumberOfArguments(); ++i) {
        ZULTaVoAny* operand = make(network, op.GetOperandType(i));
        Fill(*operand, lower, upper);
        operands[i] = operand;
      }
      ASSERT_EQ(op.Post(network, operands, make(network, op.GetResultType())), 1) << op.GetName();
      std::vector<ZULTaVoObjectEnvironment> environments;
      for (std::size_t i = 0; i < network.GetNumberOfConstraints(); ++i)
        environments.emplace_back(&network, network.GetArguments(i).data(),
                                  static_cast<unsigned int>(network.GetArguments(i).size()));
      gAllocations = 0;
      ZULTaVoBase::SetAllocator(Count);
      for (std::size_t i = 0; i < environments.size(); ++i) {
        const_cast<ZULTaVoConstraint&>(network.GetConstraint(i)).Filter(environments[i], 0);
        ++filters;
      }
      ZULTaVoBase::SetAllocator(nullptr);
      EXPECT_EQ(gAllocations, 0) << op.GetName() << " on [" << lower << ", " << upper << "]";
    }
  }
  EXPECT_GE(filters, 4 * 495);
}
