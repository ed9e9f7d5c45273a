#ifndef ZULTAV_CALCULATOR_DETAIL_REGISTRY_H
#define ZULTAV_CALCULATOR_DETAIL_REGISTRY_H

#include <map>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "framework/calculator/detail/Constant.h"
#include "framework/solver/ZULTaVoModule.h"

namespace zultav::detail {

/// The types and operators of the modules, and the words that the language has for types.
class Registry {
 public:
  using Type = const ZULTaVoObjectDescriptor*;
  using Operator = const ZULTaVoOperatorDescriptor*;
  /// The types that a literal may take, best first.
  using TypeChoice = std::span<const Type>;

  explicit Registry(const std::vector<const ZULTaVoModule*>& modules);

  /// The type of a registered or short name; null when there is none that variables can have.
  Type FindType(std::string_view name) const;
  /// The operator for operands of these types; `name` is any number that stands for `text`.
  Operator FindOperator(std::uint32_t name, std::string_view text, const Type* operands,
                        unsigned int count);
  bool HasOperator(std::string_view name) const;
  bool HasRelation(std::string_view name) const;
  /// The relation of that name and number of parameters; null when there is none.
  const ZULTaVoRelationDescriptor* FindRelation(std::string_view name, std::size_t count) const;
  /// The signatures of a name.
  std::vector<std::string> DescribeRelations(std::string_view name) const;
  bool HasOperator(std::string_view name, unsigned int operands) const;
  /// The signatures of a name, those nearest to the operand types first.
  std::vector<std::string> DescribeOperators(std::string_view name, const Type* operands,
                                             unsigned int count) const;
  std::vector<std::string> GetTypeNames() const;
  /// Names of operators that can be called, that is, which are words.
  std::vector<std::string> GetFunctionNames() const;

  /// The type of integer literals that is single or not as the real `type` is; any other type is
  /// itself.
  Type IntegerTypeLike(Type type) const;
  /// The first type of integers that takes literals; null when there is none.
  Type GetIntegerType() const { return FindIntegerType(false); }
  /// What a literal becomes beside an operand of type `other` (null: beside none).
  TypeChoice ChooseTypes(const Constant& literal, Type other);
  /// The first of them; null when there is none.
  Type ChooseType(const Constant& literal, Type other) {
    const TypeChoice choice = ChooseTypes(literal, other);
    return choice.empty() ? nullptr : choice[0];
  }
  /// Whether values of the type are single values, not intervals.
  bool IsSingle(Type type) const;
  static bool IsReal(Type type);

 private:
  struct Key {
    std::uint32_t name;
    std::uint32_t count;
    Type operands[2];
    bool operator==(const Key&) const = default;
  };
  struct Hash {
    std::size_t operator()(const Key& key) const;
  };

  Type LiteralTypeBelow(Type type) const;
  Type FindIntegerType(bool isSingle) const;

  std::vector<const ZULTaVoModule*> mModules;
  std::vector<Type> mLiterals;  // the types that take literals, best first
  std::set<Type> mSingles;      // those of them whose values are single ones
  std::map<std::pair<int, Type>, std::vector<Type>> mChoices;
  std::unordered_map<Key, Operator, Hash> mFound;
};

}  // namespace zultav::detail

#endif
