#ifndef ZULTAV_CALCULATOR_DETAIL_REGISTRY_H
#define ZULTAV_CALCULATOR_DETAIL_REGISTRY_H

#include <array>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "framework/calculator/detail/Constant.h"
#include "framework/solver/ZULTaVoModule.h"

namespace zultav::detail {

/// The types that literals can have.
enum class LiteralType : std::uint8_t {
  kIntervalInteger,
  kIntervalReal,
  kSingleInteger,
  kSingleReal,
  kBoolean
};

/// The types and operators of the modules, and the words that the language has for types.
class Registry {
 public:
  using Type = const ZULTaVoObjectDescriptor*;
  using Operator = const ZULTaVoOperatorDescriptor*;
  /// The types that a literal may take, best first; null where there is none.
  using TypeChoice = std::array<Type, 4>;

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

  /// The integer literal type that is single or an interval as the real `type` is; any other type
  /// is itself.
  Type IntegerTypeLike(Type type) const;
  /// What a literal becomes beside an operand of type `other` (null: beside none).
  TypeChoice ChooseTypes(const Constant& literal, Type other) const;
  /// Whether values of the type are single values, not intervals.
  bool IsSingle(Type type) const;
  /// Whether it is one of the two types of real literals or specialises one.
  bool IsReal(Type type) const;
  /// For messages: the name of the type that literals of this kind would need first.
  static std::string_view NameOfWanted(const Constant& literal);

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
  Type Get(LiteralType type) const { return mLiterals[static_cast<std::size_t>(type)]; }

  std::vector<const ZULTaVoModule*> mModules;
  std::array<Type, 5> mLiterals = {};
  std::unordered_map<Key, Operator, Hash> mFound;
};

}  // namespace zultav::detail

#endif
