// No filter of any operator of the module allocates, whatever its operands hold.

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <vector>

#include "framework/solver/ZULTavAbstractTypes.h"

namespace {
long allocations = 0;

void* Count(std::size_t size) {
  ++allocations;
  return std::malloc(size != 0 ? size : 1);
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

void* operator new(std::size_t size) {
  void* memory = Count(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

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
      allocations = 0;
      ZULTaVoBase::SetAllocator(Count);
      for (std::size_t i = 0; i < environments.size(); ++i) {
        const_cast<ZULTaVoConstraint&>(network.GetConstraint(i)).Filter(environments[i], 0);
        ++filters;
      }
      ZULTaVoBase::SetAllocator(nullptr);
      EXPECT_EQ(allocations, 0) << op.GetName() << " on [" << lower << ", " << upper << "]";
    }
  }
  EXPECT_GE(filters, 4 * 495);
}
