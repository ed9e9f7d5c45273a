#include <algorithm>
#include <limits>
#include <unordered_map>

#include "framework/base/ZULipstream.h"
#include "framework/base/ZULopstream.h"
#include "framework/calculator/ZULTavModel.h"
#include "framework/solver/ZULTaVoModule.h"

// A model in an object stream: the names of the types used, the objects, the names of the
// constraints used, the constraints, the variables. Names are written once and then numbered;
// objects are numbered in the order of the network.

namespace {

constexpr std::size_t kMaxName = 1 << 20;
constexpr std::uint64_t kMaxCount = std::numeric_limits<std::uint32_t>::max();

/// Numbers descriptors in the order in which they are met.
class DescriptorNumbers {
 public:
  std::uint64_t NumberOf(const ZULTaVoObjectDescriptor* descriptor) {
    const auto [place, isNew] = mNumbers.try_emplace(descriptor, mDescriptors.size());
    if (isNew) mDescriptors.push_back(descriptor);
    return place->second;
  }
  void Write(ZULopstream& out) const {
    out.WriteUnsigned(mDescriptors.size());
    for (const auto* descriptor : mDescriptors) out.WriteString(descriptor->GetName());
  }

 private:
  std::unordered_map<const ZULTaVoObjectDescriptor*, std::uint64_t> mNumbers;
  std::vector<const ZULTaVoObjectDescriptor*> mDescriptors;
};

/// The descriptors whose names come next; `find` looks in one module.
template <class Descriptor, class Find>
std::vector<const Descriptor*> ReadDescriptors(ZULipstream& in,
                                               std::span<const ZULTaVoModule* const> modules,
                                               const char* failure, Find find) {
  std::vector<const Descriptor*> descriptors;
  std::uint64_t count = 0;
  in.ReadUnsigned(count, kMaxCount);
  std::string name;
  for (; count > 0 && in.ReadString(name, kMaxName); --count) {
    const Descriptor* descriptor = nullptr;
    for (const ZULTaVoModule* module : modules)
      if (descriptor == nullptr) descriptor = find(*module, name);
    if (descriptor == nullptr) in.Fail(failure);
    descriptors.push_back(descriptor);
  }
  return descriptors;
}

/// An item of the list that is referred to by number; null when there is none.
template <class Item>
Item* ReadItem(ZULipstream& in, const std::vector<Item*>& items) {
  std::uint64_t number = 0;
  in.ReadUnsigned(number);
  if (in.Good() && number < items.size()) return items[static_cast<std::size_t>(number)];
  in.Fail("a number refers to nothing");
  return nullptr;
}

bool ReadFlag(ZULipstream& in) {
  std::uint64_t flag = 0;
  in.ReadUnsigned(flag, 1);
  return flag != 0;
}

std::vector<ZULTaVoAny*> ReadObjects(ZULipstream& in,
                                     const std::vector<const ZULTaVoObjectDescriptor*>& types,
                                     ZULTaVoNetwork& network) {
  std::vector<ZULTaVoAny*> objects;
  std::uint64_t count = 0;
  in.ReadUnsigned(count, kMaxCount);
  for (; count > 0 && in.Good(); --count) {
    const ZULTaVoObjectDescriptor* type = ReadItem(in, types);
    const bool constant = ReadFlag(in);
    ZULTaVoAny* object = in.Good() ? network.AddObject(type) : nullptr;
    if (object == nullptr) {
      in.Fail("a type has no values");
    } else if (in.ReadObject(*object)) {
      if (constant) network.SetConstant(object);
      objects.push_back(object);
    }
  }
  return objects;
}

void ReadConstraints(ZULipstream& in, const std::vector<const ZULTaVoConstraintDescriptor*>& types,
                     const std::vector<ZULTaVoAny*>& objects, ZULTaVoNetwork& network) {
  std::uint64_t count = 0;
  in.ReadUnsigned(count, kMaxCount);
  for (; count > 0 && in.Good(); --count) {
    const ZULTaVoConstraintDescriptor* type = ReadItem(in, types);
    ZULTaVoObject* arguments[ZULTaVoConstraintDescriptor::kMaxArguments] = {};
    std::uint64_t size = 0;
    in.ReadUnsigned(size, ZULTaVoConstraintDescriptor::kMaxArguments);
    for (std::size_t i = 0; i < size && in.Good(); ++i) arguments[i] = ReadItem(in, objects);
    if (in.Good() && network.AddConstraint(type, arguments, static_cast<unsigned int>(size)) == 0)
      in.Fail("a constraint does not take its arguments");
  }
}

bool ReadVariable(ZULipstream& in, const std::vector<ZULTaVoAny*>& objects,
                  const ZULTaVoNetwork& network, ZULTavModel::Variable& variable) {
  in.ReadString(variable.name, kMaxName);
  in.ReadString(variable.typeName, kMaxName);
  variable.isArray = ReadFlag(in);
  in >> variable.firstIndex;
  std::uint64_t count = 0;
  in.ReadUnsigned(count, kMaxCount);
  for (; count > 0 && in.Good(); --count) variable.values.push_back(ReadItem(in, objects));
  if (!in.Good()) return false;
  if (!variable.isArray && variable.values.size() != 1) in.Fail("a variable has no single value");
  if (!variable.values.empty()) variable.type = network.GetType(variable.values.front());
  return in.Good();
}

}  // namespace

void ZULTavModel::Write(ZULopstream& out) const {
  std::unordered_map<const ZULTaVoObject*, std::uint64_t> numbers;
  const auto writeNumber = [&](const ZULTaVoObject* object) {
    out.WriteUnsigned(numbers.at(object));
  };
  DescriptorNumbers types, constraints;
  for (std::size_t i = 0; i < mNetwork.GetNumberOfObjects(); ++i)
    types.NumberOf(mNetwork.GetType(mNetwork.GetObject(i)));
  types.Write(out);
  out.WriteUnsigned(mNetwork.GetNumberOfObjects());
  for (std::size_t i = 0; i < mNetwork.GetNumberOfObjects(); ++i) {
    const ZULTaVoAny* object = mNetwork.GetObject(i);
    numbers.emplace(object, i);
    out.WriteUnsigned(types.NumberOf(mNetwork.GetType(object)));
    out.WriteUnsigned(mNetwork.IsConstant(object));
    out.WriteObject(*object);
  }
  for (std::size_t i = 0; i < mNetwork.GetNumberOfConstraints(); ++i)
    constraints.NumberOf(mNetwork.GetConstraint(i).GetDescriptor());
  constraints.Write(out);
  out.WriteUnsigned(mNetwork.GetNumberOfConstraints());
  for (std::size_t i = 0; i < mNetwork.GetNumberOfConstraints(); ++i) {
    out.WriteUnsigned(constraints.NumberOf(mNetwork.GetConstraint(i).GetDescriptor()));
    const auto arguments = mNetwork.GetArguments(i);
    out.WriteUnsigned(arguments.size());
    std::for_each(arguments.begin(), arguments.end(), writeNumber);
  }
  out.WriteUnsigned(mVariables.size());
  for (const Variable& variable : mVariables) {
    out.WriteString(variable.name);
    out.WriteString(variable.typeName);
    out.WriteUnsigned(variable.isArray);
    out << variable.firstIndex;
    out.WriteUnsigned(variable.values.size());
    std::for_each(variable.values.begin(), variable.values.end(), writeNumber);
  }
}

std::unique_ptr<ZULTavModel> ZULTavModel::Read(ZULipstream& in,
                                               std::span<const ZULTaVoModule* const> modules) {
  auto model = std::make_unique<ZULTavModel>();
  const auto types = ReadDescriptors<ZULTaVoObjectDescriptor>(
      in, modules, "a type is not known",
      [](const ZULTaVoModule& module, const std::string& name) { return module.FindType(name); });
  const auto objects = ReadObjects(in, types, model->mNetwork);
  const auto constraints = ReadDescriptors<ZULTaVoConstraintDescriptor>(
      in, modules, "a constraint is not known",
      [](const ZULTaVoModule& module, const std::string& name) {
        return module.FindConstraint(name);
      });
  ReadConstraints(in, constraints, objects, model->mNetwork);
  std::uint64_t count = 0;
  in.ReadUnsigned(count, kMaxCount);
  for (; count > 0 && in.Good(); --count) {
    Variable variable;
    if (ReadVariable(in, objects, model->mNetwork, variable))
      model->mVariables.push_back(std::move(variable));
  }
  return in.Good() ? std::move(model) : nullptr;
}
