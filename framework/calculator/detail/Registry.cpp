#include "framework/calculator/detail/Registry.h"

#include <algorithm>
#include <iterator>
#include <sstream>
#include <tuple>

#include "framework/calculator/detail/LocalValue.h"
#include "framework/solver/SingleValue.h"
#include "framework/solver/ZULTaVoBoolean.h"
#include "framework/solver/ZULTaVoInteger.h"
#include "framework/solver/ZULTaVoReal.h"

namespace zultav::detail {

namespace {

using Descriptor = ZULTaVoObjectDescriptor;

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

bool IsVariableType(const Descriptor& descriptor) {
  return descriptor.GetKind() == Descriptor::Kind::kType && descriptor.GetObjectSize() != 0;
}

/// Those of the literals that the type says it takes which such values can take at all.
int LiteralsOf(Registry::Type type) {
  const int possible = ZULTaVoInteger::sDescriptor->IsMatched(type)   ? Descriptor::kIntegers
                       : ZULTaVoBoolean::sDescriptor->IsMatched(type) ? Descriptor::kTruths
                       : Registry::IsReal(type) ? Descriptor::kIntegers | Descriptor::kReals
                                                : 0;
  return type->GetLiterals() & possible;
}

}  // namespace

/// Of several types for a literal sets of values come first, which lose nothing, integers before
/// reals, and then those that hold more.
Registry::Registry(const std::vector<const ZULTaVoModule*>& modules) {
  std::copy_if(modules.begin(), modules.end(), std::back_inserter(mModules),
               [](const ZULTaVoModule* module) { return module != nullptr; });
  using Rank = std::tuple<bool, bool, double>;
  std::vector<std::pair<Rank, Type>> ranked;
  ForEachDescriptor(mModules, [&](const Descriptor& type) {
    if (!IsVariableType(type) || LiteralsOf(&type) == 0) return;
    const LocalValue any(type);
    any->SetAny();
    const bool isSingle = any->GetCardinality() == kSingleAny;
    if (isSingle) mSingles.insert(&type);
    ranked.push_back({
        {isSingle, IsReal(&type), -any->GetWidth()},
        &type
    });
  });
  std::stable_sort(ranked.begin(), ranked.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  for (const auto& [rank, type] : ranked) mLiterals.push_back(type);
}

Registry::Type Registry::FindType(std::string_view name) const {
  for (const ZULTaVoModule* module : mModules) {
    const Type type = module->FindType(name);
    if (type != nullptr && type->GetObjectSize() != 0) return type;
  }
  Type found = nullptr;
  ForEachDescriptor(mModules, [&](const Descriptor& type) {
    if (found == nullptr && IsVariableType(type) && !name.empty() && name == type.GetShortName())
      found = &type;
  });
  return found;
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
  ForEachDescriptor(mModules, [&](const Descriptor& descriptor) {
    if (!IsVariableType(descriptor)) return;
    result.emplace_back(descriptor.GetName());
    const std::string shortName = descriptor.GetShortName();
    if (!shortName.empty() &&
        std::find(shortNames.begin(), shortNames.end(), shortName) == shortNames.end())
      shortNames.push_back(shortName);
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

bool Registry::IsSingle(Type type) const { return mSingles.contains(LiteralTypeBelow(type)); }

bool Registry::IsReal(Type type) { return ZULTaVoReal::sDescriptor->IsMatched(type) != 0; }

Registry::Type Registry::FindIntegerType(bool isSingle) const {
  const auto found = std::find_if(mLiterals.begin(), mLiterals.end(), [&](Type type) {
    return ZULTaVoInteger::sDescriptor->IsMatched(type) && IsSingle(type) == isSingle;
  });
  return found != mLiterals.end() ? *found : nullptr;
}

Registry::Type Registry::IntegerTypeLike(Type type) const {
  const Type literal = LiteralTypeBelow(type);
  return IsReal(literal) ? FindIntegerType(IsSingle(literal)) : type;
}

/// Beside an operand the type of the operand comes first. A real that is one double is no worse as
/// a single value, where the operand is one.
Registry::TypeChoice Registry::ChooseTypes(const Constant& literal, Type other) {
  const int wanted = literal.IsBoolean()   ? Descriptor::kTruths
                     : literal.IsInteger() ? Descriptor::kIntegers
                                           : Descriptor::kReals;
  const bool isExact = !literal.IsReal() || literal.lower == literal.upper;
  other = LiteralTypeBelow(other);
  const auto [place, isNew] = mChoices.try_emplace({isExact ? wanted : -wanted, other});
  std::vector<Type>& choice = place->second;
  if (!isNew) return choice;
  std::copy_if(mLiterals.begin(), mLiterals.end(), std::back_inserter(choice),
               [wanted](Type type) { return (LiteralsOf(type) & wanted) != 0; });
  if (literal.IsReal() && isExact && IsSingle(other))
    std::stable_partition(choice.begin(), choice.end(),
                          [this](Type type) { return IsSingle(type); });
  std::stable_partition(choice.begin(), choice.end(), [other](Type type) { return type == other; });
  return choice;
}

}  // namespace zultav::detail
