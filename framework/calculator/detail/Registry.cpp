#include "framework/calculator/detail/Registry.h"

#include <algorithm>
#include <sstream>

namespace zultav::detail {

namespace {

/// Registered names of the types of literals, in the order of LiteralType.
constexpr std::string_view kLiteralTypes[] = {"interval int", "interval real", "single int",
                                              "single real", "single bool"};

/// What may be left out before the name of a type; where that leaves a choice, the first.
constexpr std::string_view kOptionalWords[] = {"", "interval ", "single "};

constexpr std::size_t kShownSignatures = 10;

bool IsWord(std::string_view name) {
  return !name.empty() &&
         ((name[0] >= 'a' && name[0] <= 'z') || (name[0] >= 'A' && name[0] <= 'Z'));
}

/// Calls use(descriptor) for everything that the modules registered, in order.
template <class Use>
void ForEachDescriptor(const std::vector<const ZULTaVoModule*>& modules, Use use) {
  for (const ZULTaVoModule* module : modules)
    for (const ZULTaVoObjectDescriptor* descriptor : module->GetDescriptors()) use(*descriptor);
}

}  // namespace

Registry::Registry(const std::vector<const ZULTaVoModule*>& modules) {
  std::copy_if(modules.begin(), modules.end(), std::back_inserter(mModules),
               [](const ZULTaVoModule* module) { return module != nullptr; });
  std::transform(std::begin(kLiteralTypes), std::end(kLiteralTypes), mLiterals.begin(),
                 [this](std::string_view name) { return FindType(name); });
}

Registry::Type Registry::FindType(std::string_view name) const {
  for (const std::string_view word : kOptionalWords)
    for (const ZULTaVoModule* module : mModules) {
      const Type type = module->FindType(std::string(word).append(name));
      if (type != nullptr && type->GetObjectSize() != 0) return type;
    }
  return nullptr;
}

std::size_t Registry::Hash::operator()(const Key& key) const {
  constexpr std::size_t kFactor = static_cast<std::size_t>(0x9e3779b97f4a7c15u);
  std::size_t hash = key.name * 4u + key.count;
  for (const Type type : key.operands)
    hash = (hash ^ reinterpret_cast<std::uintptr_t>(type)) * kFactor;
  return hash ^ hash >> (sizeof(std::size_t) * 4);
}

Registry::Operator Registry::FindOperator(std::uint32_t name, std::string_view text,
                                          const Type* operands, unsigned int count) {
  if (count > 2) return nullptr;
  Key key = {
      name, count, {nullptr, nullptr}
  };
  std::copy_n(operands, count, key.operands);
  const auto [place, isNew] = mFound.try_emplace(key, nullptr);
  for (std::size_t i = 0; isNew && i < mModules.size() && place->second == nullptr; ++i)
    place->second = mModules[i]->FindOperator(text, operands, count);
  return place->second;
}

bool Registry::HasOperator(std::string_view name) const {
  return std::any_of(mModules.begin(), mModules.end(), [name](const ZULTaVoModule* module) {
    return !module->FindOperators(name).empty();
  });
}

bool Registry::HasRelation(std::string_view name) const {
  return std::any_of(mModules.begin(), mModules.end(), [name](const ZULTaVoModule* module) {
    return !module->FindRelations(name).empty();
  });
}

const ZULTaVoRelationDescriptor* Registry::FindRelation(std::string_view name,
                                                        std::size_t count) const {
  for (const ZULTaVoModule* module : mModules)
    for (const ZULTaVoRelationDescriptor* relation : module->FindRelations(name))
      if (relation->GetDefinition().parameters.size() == count) return relation;
  return nullptr;
}

std::vector<std::string> Registry::DescribeRelations(std::string_view name) const {
  std::vector<std::string> result;
  for (const ZULTaVoModule* module : mModules)
    for (const ZULTaVoRelationDescriptor* relation : module->FindRelations(name))
      result.push_back("candidate: " + std::string(relation->GetName()));
  return result;
}

bool Registry::HasOperator(std::string_view name, unsigned int operands) const {
  return std::any_of(mModules.begin(), mModules.end(), [&](const ZULTaVoModule* module) {
    const auto& found = module->FindOperators(name);
    return std::any_of(found.begin(), found.end(),
                       [operands](Operator op) { return op->GetNumberOfArguments() == operands; });
  });
}

std::vector<std::string> Registry::DescribeOperators(std::string_view name, const Type* operands,
                                                     unsigned int count) const {
  struct Candidate {
    Operator op;
    unsigned int misfits;
  };
  std::vector<Candidate> candidates;
  for (const ZULTaVoModule* module : mModules)
    for (const Operator op : module->FindOperators(name)) {
      unsigned int misfits = op->GetNumberOfArguments() == count ? 0 : 3;
      for (unsigned int i = 0; misfits < 3 && i < count; ++i)
        if (operands[i] != nullptr && !op->GetOperandType(i)->IsMatched(operands[i])) ++misfits;
      candidates.push_back({op, misfits});
    }
  std::stable_sort(candidates.begin(), candidates.end(),
                   [](const auto& a, const auto& b) { return a.misfits < b.misfits; });
  std::vector<std::string> result;
  for (std::size_t i = 0; i < std::min(candidates.size(), kShownSignatures); ++i) {
    std::ostringstream text;
    candidates[i].op->PrintOn(text);
    result.push_back("candidate: " + text.str());
  }
  if (candidates.size() > kShownSignatures)
    result.push_back("and " + std::to_string(candidates.size() - kShownSignatures) +
                     " more of that name");
  return result;
}

std::vector<std::string> Registry::GetTypeNames() const {
  std::vector<std::string> result;
  std::vector<std::string> shortNames;
  ForEachDescriptor(mModules, [&](const ZULTaVoObjectDescriptor& descriptor) {
    if (descriptor.GetKind() != ZULTaVoObjectDescriptor::Kind::kType ||
        descriptor.GetObjectSize() == 0)
      return;
    result.emplace_back(descriptor.GetName());
    for (const std::string_view word : kOptionalWords) {
      const std::string& name = result.back();
      if (word.empty() || name.compare(0, word.size(), word) != 0) continue;
      const std::string rest = name.substr(word.size());
      if (std::find(shortNames.begin(), shortNames.end(), rest) == shortNames.end())
        shortNames.push_back(rest);
    }
  });
  result.insert(result.begin(), shortNames.begin(), shortNames.end());
  return result;
}

std::vector<std::string> Registry::GetFunctionNames() const {
  std::vector<std::string> result;
  ForEachDescriptor(mModules, [&result](const ZULTaVoObjectDescriptor& descriptor) {
    using Kind = ZULTaVoObjectDescriptor::Kind;
    if (descriptor.GetKind() == Kind::kOperator && IsWord(descriptor.GetName()))
      result.emplace_back(descriptor.GetName());
    if (descriptor.GetKind() == Kind::kRelation)
      result.emplace_back(
          static_cast<const ZULTaVoRelationDescriptor&>(descriptor).GetRelationName());
  });
  return result;
}

// --- Literals ---------------------------------------------------------------------------------

/// The type of literals that the type is or specialises.
Registry::Type Registry::LiteralTypeBelow(Type type) const {
  for (; type != nullptr; type = type->GetBase())
    if (std::find(mLiterals.begin(), mLiterals.end(), type) != mLiterals.end()) break;
  return type;
}

bool Registry::IsSingle(Type type) const {
  return type != nullptr &&
         (type == Get(LiteralType::kSingleInteger) || type == Get(LiteralType::kSingleReal));
}

bool Registry::IsReal(Type type) const {
  type = LiteralTypeBelow(type);
  return type != nullptr &&
         (type == Get(LiteralType::kIntervalReal) || type == Get(LiteralType::kSingleReal));
}

Registry::Type Registry::IntegerTypeLike(Type type) const {
  const Type literal = LiteralTypeBelow(type);
  if (!IsReal(literal)) return type;
  return Get(IsSingle(literal) ? LiteralType::kSingleInteger : LiteralType::kIntervalInteger);
}

Registry::TypeChoice Registry::ChooseTypes(const Constant& literal, Type other) const {
  const Type intervalReal = Get(LiteralType::kIntervalReal);
  const Type singleReal = Get(LiteralType::kSingleReal);
  TypeChoice result = {};
  std::size_t used = 0;
  const auto add = [&](Type type) {
    if (type != nullptr && std::find(result.begin(), result.end(), type) == result.end())
      result[used++] = type;
  };
  other = LiteralTypeBelow(other);
  switch (literal.kind) {
    case Constant::Kind::kBoolean:
      add(Get(LiteralType::kBoolean));
      break;
    case Constant::Kind::kInteger:
      if (other != Get(LiteralType::kBoolean)) add(other);
      add(Get(LiteralType::kIntervalInteger));
      add(intervalReal);
      add(Get(LiteralType::kSingleInteger));
      add(singleReal);
      break;
    case Constant::Kind::kReal: {
      const bool exact = literal.lower == literal.upper;
      if (exact ? IsSingle(other) : other != nullptr && other == singleReal) add(singleReal);
      add(intervalReal);
      add(singleReal);
      break;
    }
  }
  return result;
}

std::string_view Registry::NameOfWanted(const Constant& literal) {
  const LiteralType wanted = literal.IsBoolean()   ? LiteralType::kBoolean
                             : literal.IsInteger() ? LiteralType::kIntervalInteger
                                                   : LiteralType::kIntervalReal;
  return kLiteralTypes[static_cast<std::size_t>(wanted)];
}

}  // namespace zultav::detail
