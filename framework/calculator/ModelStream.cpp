#include <algorithm>
#include <limits>
#include <unordered_map>
#include <unordered_set>

#include "framework/base/ZULipstream.h"
#include "framework/base/ZULopstream.h"
#include "framework/calculator/ZULTavModel.h"
#include "framework/solver/ZULTaVoModule.h"
#include "framework/solver/ZULTaVoReal.h"
#include "framework/solver/ZULTaVoRelation.h"

// A model in an object stream: the names of the types used, the objects, the names of the
// constraints used, the constraints, the variables, the objective; then computations, each as its
// inputs and a model without any, and the lines that are shown. Names are written once and then
// numbered; objects are numbered in the order of the network.

namespace {

constexpr std::size_t kMaxName = 1 << 20;
constexpr std::uint64_t kMaxRule = std::numeric_limits<std::underlying_type_t<ZULTaVoRule>>::max();
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

// Before an object stands a sum of what is known of it beside its value.
constexpr std::uint64_t kIsConstant = 1;  // marked as a constant of its network
constexpr std::uint64_t kIsInteger = 2;   // its exact number follows, an integer
constexpr std::uint64_t kIsReal = 4;      // its exact number follows, a real

std::uint64_t KindOf(const ZULTaVoConstant* number) {
  return number == nullptr ? 0 : number->isInteger ? kIsInteger : kIsReal;
}

void WriteNumber(ZULopstream& out, const ZULTaVoConstant& number) {
  if (number.isInteger) return out.WriteUnsigned(static_cast<std::uint64_t>(number.integer));
  out << number.lower << number.upper;
}

ZULTaVoConstant ReadNumber(ZULipstream& in, bool isInteger) {
  ZULTaVoConstant number;
  number.isInteger = isInteger;
  std::uint64_t integer = 0;
  if (isInteger) {
    in.ReadUnsigned(integer);
    number.integer = static_cast<std::int64_t>(integer);
  } else {
    in >> number.lower >> number.upper;
    if (!(number.lower <= number.upper)) in.Fail("a constant is no number");
  }
  return number;
}

// What is done with the objective; where there is one, its number follows.
constexpr std::uint64_t kNoObjective = 0, kMinimized = 1, kMaximized = 2;

// The number of dimensions is followed by the first index, 0 where there is none, and by the first
// index and the size of each further dimension; the values tell the size of the first one.

void WriteDimensions(ZULopstream& out, const std::vector<ZULTavModel::Dimension>& dimensions) {
  out.WriteUnsigned(dimensions.size());
  out << (dimensions.empty() ? 0L : dimensions[0].first);
  for (std::size_t i = 1; i < dimensions.size(); ++i) {
    out << dimensions[i].first;
    out.WriteUnsigned(dimensions[i].size);
  }
}

bool ReadDimensions(ZULipstream& in, std::vector<ZULTavModel::Dimension>& dimensions) {
  std::uint64_t count = 0;
  long first = 0;
  in.ReadUnsigned(count, kMaxCount);
  in >> first;
  for (std::uint64_t i = 0; i < count && in.Good(); ++i) {
    std::uint64_t size = 0;
    if (i > 0) {
      in >> first;
      in.ReadUnsigned(size, kMaxCount);
    }
    dimensions.push_back({first, static_cast<std::size_t>(size)});
  }
  return in.Good();
}

std::vector<ZULTaVoAny*> ReadObjects(ZULipstream& in,
                                     const std::vector<const ZULTaVoObjectDescriptor*>& types,
                                     ZULTaVoNetwork& network) {
  std::vector<ZULTaVoAny*> objects;
  std::uint64_t count = 0;
  in.ReadUnsigned(count, kMaxCount);
  for (; count > 0 && in.Good(); --count) {
    const ZULTaVoObjectDescriptor* type = ReadItem(in, types);
    std::uint64_t known = 0;
    in.ReadUnsigned(known, kIsConstant + kIsReal);
    ZULTaVoConstant number;
    if (known > kIsConstant) number = ReadNumber(in, (known & kIsInteger) != 0);
    ZULTaVoAny* object = in.Good() ? network.AddObject(type) : nullptr;
    if (object == nullptr) {
      in.Fail("a type has no values");
    } else if (in.ReadObject(*object)) {
      if ((known & kIsConstant) != 0) network.SetConstant(object);
      if (known > kIsConstant && !network.SetConstant(object, number)) in.Fail("out of memory");
      objects.push_back(object);
    }
  }
  return objects;
}

/// Whether a constraint of this type can have the rule: that of the type, or one that an operator
/// replaces it by.
bool CanMean(const ZULTaVoConstraintDescriptor& type, ZULTaVoRule rule) {
  return rule == type.GetRule() ||
         (rule == ZULTaVoRule::kQuotient && type.GetRule() == ZULTaVoRule::kProduct);
}

void ReadConstraints(ZULipstream& in, const std::vector<const ZULTaVoConstraintDescriptor*>& types,
                     const std::vector<ZULTaVoAny*>& objects, ZULTaVoNetwork& network) {
  std::uint64_t count = 0;
  in.ReadUnsigned(count, kMaxCount);
  for (; count > 0 && in.Good(); --count) {
    const ZULTaVoConstraintDescriptor* type = ReadItem(in, types);
    std::uint64_t rule = 0, size = 0;
    in.ReadUnsigned(rule, kMaxRule);
    in.ReadUnsigned(size, kMaxCount);
    std::vector<ZULTaVoObject*> arguments;
    for (; size > 0 && in.Good(); --size) arguments.push_back(ReadItem(in, objects));
    const auto arity = static_cast<unsigned int>(arguments.size());
    if (!in.Good()) return;
    if (type->GetKind() == ZULTaVoObjectDescriptor::Kind::kRelation) {
      ZULTaVoRelation relation(static_cast<const ZULTaVoRelationDescriptor*>(type));
      if (!in.ReadObject(relation)) return;
      if (network.AddRelation(relation, arguments.data(), arity) == 0)
        return in.Fail("a relation does not take its arguments");
      continue;
    }
    if (!CanMean(*type, static_cast<ZULTaVoRule>(rule)) ||
        network.AddConstraint(type, arguments.data(), arity) == 0)
      return in.Fail("a constraint does not take its arguments");
    network.SetRule(network.GetNumberOfConstraints() - 1, static_cast<ZULTaVoRule>(rule));
  }
}

bool ReadVariable(ZULipstream& in, const std::vector<ZULTaVoAny*>& objects,
                  const ZULTaVoNetwork& network, ZULTavModel::Variable& variable) {
  in.ReadString(variable.name, kMaxName);
  in.ReadString(variable.typeName, kMaxName);
  if (!ReadDimensions(in, variable.dimensions)) return false;
  std::uint64_t count = 0;
  in.ReadUnsigned(count, kMaxCount);
  for (; count > 0 && in.Good(); --count) variable.values.push_back(ReadItem(in, objects));
  if (!in.Good()) return false;
  std::size_t rows = variable.values.size();
  for (std::size_t i = 1; i < variable.dimensions.size(); ++i) {
    const std::size_t size = variable.dimensions[i].size;
    if (size != 0 && rows % size != 0) in.Fail("an array does not have the size that it says");
    rows = size != 0 ? rows / size : 0;
  }
  if (variable.IsArray()) variable.dimensions[0].size = rows;
  if (!variable.IsArray() && rows != 1) in.Fail("a variable has no single value");
  if (!variable.values.empty()) variable.type = network.GetType(variable.values.front());
  return in.Good();
}

}  // namespace

void ZULTavModel::WriteNetwork(ZULopstream& out) const {
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
    const ZULTaVoConstant* number = mNetwork.GetConstant(object);
    out.WriteUnsigned((mNetwork.IsConstant(object) ? kIsConstant : 0) + KindOf(number));
    if (number != nullptr) WriteNumber(out, *number);
    out.WriteObject(*object);
  }
  for (std::size_t i = 0; i < mNetwork.GetNumberOfConstraints(); ++i)
    constraints.NumberOf(mNetwork.GetConstraint(i).GetDescriptor());
  constraints.Write(out);
  out.WriteUnsigned(mNetwork.GetNumberOfConstraints());
  for (std::size_t i = 0; i < mNetwork.GetNumberOfConstraints(); ++i) {
    out.WriteUnsigned(constraints.NumberOf(mNetwork.GetConstraint(i).GetDescriptor()));
    out.WriteUnsigned(static_cast<std::uint64_t>(mNetwork.GetRule(i)));
    const auto arguments = mNetwork.GetArguments(i);
    out.WriteUnsigned(arguments.size());
    std::for_each(arguments.begin(), arguments.end(), writeNumber);
    const ZULTaVoConstraint& constraint = mNetwork.GetConstraint(i);
    if (constraint.GetDescriptor()->GetKind() == ZULTaVoObjectDescriptor::Kind::kRelation)
      out.WriteObject(constraint);
  }
  out.WriteUnsigned(mVariables.size());
  for (const Variable& variable : mVariables) {
    out.WriteString(variable.name);
    out.WriteString(variable.typeName);
    WriteDimensions(out, variable.dimensions);
    out.WriteUnsigned(variable.values.size());
    std::for_each(variable.values.begin(), variable.values.end(), writeNumber);
  }
  out.WriteUnsigned(mObjective == nullptr ? kNoObjective : mIsMaximized ? kMaximized : kMinimized);
  if (mObjective != nullptr) writeNumber(mObjective);
}

std::unique_ptr<ZULTavModel> ZULTavModel::ReadNetwork(
    ZULipstream& in, std::span<const ZULTaVoModule* const> modules) {
  auto model = std::make_unique<ZULTavModel>();
  const auto types = ReadDescriptors<ZULTaVoObjectDescriptor>(
      in, modules, "a type is not known",
      [](const ZULTaVoModule& module, const std::string& name) { return module.FindType(name); });
  const auto objects = ReadObjects(in, types, model->mNetwork);
  const auto constraints = ReadDescriptors<ZULTaVoConstraintDescriptor>(
      in, modules, "a constraint is not known",
      [](const ZULTaVoModule& module, const std::string& name) {
        const ZULTaVoConstraintDescriptor* constraint = module.FindConstraint(name);
        return constraint != nullptr ? constraint : module.FindRelation(name);
      });
  ReadConstraints(in, constraints, objects, model->mNetwork);
  std::uint64_t count = 0;
  in.ReadUnsigned(count, kMaxCount);
  for (; count > 0 && in.Good(); --count) {
    Variable variable;
    if (ReadVariable(in, objects, model->mNetwork, variable))
      model->mVariables.push_back(std::move(variable));
  }
  std::uint64_t objective = kNoObjective;
  in.ReadUnsigned(objective, kMaximized);
  model->mIsMaximized = objective == kMaximized;
  if (objective != kNoObjective) model->mObjective = ReadItem(in, objects);
  if (model->mObjective != nullptr &&
      ZULTaVoCast<const ZULTaVoNumber>(model->mObjective) == nullptr)
    in.Fail("the objective is no number");
  return in.Good() ? std::move(model) : nullptr;
}

// --- What is shown ----------------------------------------------------------------------------

namespace {

std::vector<ZULTaVoAny*> AllValues(const std::vector<ZULTavModel::Variable>& variables) {
  std::vector<ZULTaVoAny*> values;
  for (const ZULTavModel::Variable& variable : variables)
    values.insert(values.end(), variable.values.begin(), variable.values.end());
  return values;
}

std::uint32_t ReadIndex(ZULipstream& in) {
  std::uint64_t number = 0;
  in.ReadUnsigned(number, kMaxCount);
  return static_cast<std::uint32_t>(number);
}

/// Whether the first variables of the computation are copies of its inputs, and all are different.
bool IsComputation(const ZULTavModel::Computation& computation,
                   const std::vector<ZULTaVoAny*>& values) {
  const auto& variables = computation.model->Variables();
  if (computation.inputs.size() > variables.size()) return false;
  std::unordered_set<const ZULTaVoAny*> known;
  for (std::size_t i = 0; i < variables.size(); ++i) {
    if (variables[i].IsArray() || !known.insert(variables[i].values[0]).second) return false;
    if (i >= computation.inputs.size()) continue;
    const std::uint32_t position = computation.inputs[i];
    if (position >= values.size() ||
        values[position]->GetDescriptor() != variables[i].values[0]->GetDescriptor())
      return false;
  }
  return true;
}

}  // namespace

void ZULTavModel::WriteShown(ZULopstream& out) const {
  out.WriteUnsigned(mComputations.size());
  for (const Computation& computation : mComputations) {
    out.WriteUnsigned(computation.inputs.size());
    for (const std::uint32_t input : computation.inputs) out.WriteUnsigned(input);
    computation.model->WriteNetwork(out);
  }
  out.WriteUnsigned(mLines.size());
  for (const std::vector<Shown>& line : mLines) {
    out.WriteUnsigned(line.size());
    for (const Shown& part : line) {
      out.WriteUnsigned(part.value);
      out.WriteUnsigned(part.computation);
      out.WriteUnsigned(part.isInteger);
      out.WriteString(part.text);
    }
  }
}

bool ZULTavModel::CanShow(const Shown& part, const std::vector<ZULTaVoAny*>& values) const {
  if (part.IsText()) return true;
  if (part.computation == kNone) return part.value < values.size() && !part.isInteger;
  if (part.computation >= mComputations.size()) return false;
  const auto& variables = mComputations[part.computation].model->Variables();
  if (part.value >= variables.size()) return false;
  return !part.isInteger ||
         ZULTaVoCast<const ZULTaVoReal>(variables[part.value].values[0]) != nullptr;
}

void ZULTavModel::ReadShown(ZULipstream& in, std::span<const ZULTaVoModule* const> modules) {
  const std::vector<ZULTaVoAny*> values = AllValues(mVariables);
  for (std::uint32_t count = ReadIndex(in); count > 0 && in.Good(); --count) {
    Computation& computation = mComputations.emplace_back();
    for (std::uint32_t inputs = ReadIndex(in); inputs > 0 && in.Good(); --inputs)
      computation.inputs.push_back(ReadIndex(in));
    computation.model = ReadNetwork(in, modules);
    if (in.Good() && !IsComputation(computation, values))
      in.Fail("a computation does not fit to the variables");
  }
  for (std::uint32_t count = ReadIndex(in); count > 0 && in.Good(); --count) {
    std::vector<Shown>& line = mLines.emplace_back();
    for (std::uint32_t parts = ReadIndex(in); parts > 0 && in.Good(); --parts) {
      Shown& part = line.emplace_back();
      part.value = ReadIndex(in);
      part.computation = ReadIndex(in);
      part.isInteger = ReadIndex(in) != 0;
      in.ReadString(part.text, std::numeric_limits<std::uint32_t>::max());
      if (in.Good() && !CanShow(part, values)) in.Fail("a value that is shown is none");
    }
  }
}

void ZULTavModel::Write(ZULopstream& out) const {
  WriteNetwork(out);
  WriteShown(out);
}

std::unique_ptr<ZULTavModel> ZULTavModel::Read(ZULipstream& in,
                                               std::span<const ZULTaVoModule* const> modules) {
  auto model = ReadNetwork(in, modules);
  if (model != nullptr) model->ReadShown(in, modules);
  return in.Good() ? std::move(model) : nullptr;
}
