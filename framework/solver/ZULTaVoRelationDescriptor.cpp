#include "framework/solver/ZULTaVoRelationDescriptor.h"

#include <algorithm>
#include <array>
#include <ostream>
#include <string_view>
#include <utility>

#include "framework/solver/ZULTaVoBoolean.h"
#include "framework/solver/ZULTaVoInteger.h"
#include "framework/solver/ZULTaVoRelation.h"

namespace {

using Descriptor = ZULTaVoRelationDescriptor;

constexpr const char* kElements[] = {"int", "bool", "real", "number"};

/// Like "rows: known int[m, n]", or without the name.
std::string Describe(const Descriptor::Parameter& parameter, bool isNamed) {
  std::string text = isNamed ? std::string(parameter.name) + ": " : "";
  if (parameter.given == Descriptor::Given::kKnown) text += "known ";
  text += kElements[static_cast<std::size_t>(parameter.element)];
  const std::string_view size = parameter.size;
  if (size.size() == 1) text += "[" + std::string(size) + "]";
  if (size.size() > 1) text += "[" + std::string(1, size.front()) + ", " + size.back() + "]";
  return text;
}

std::string Signature(const Descriptor::Definition& definition) {
  std::string text = std::string(definition.name) + " (";
  for (const Descriptor::Parameter& parameter : definition.parameters)
    text += (text.back() == '(' ? "" : ", ") + Describe(parameter, true);
  return text + ")" + (definition.result ? " -> " + Describe(*definition.result, false) : "");
}

/// What a relation announces like any other constraint: where it is a function of single values
/// alone, these and the result, else nothing.
unsigned int CountAnnounced(const Descriptor::Definition& definition) {
  const auto isPlain = [](const Descriptor::Parameter& parameter) {
    return *parameter.size == '\0' && parameter.given == Descriptor::Given::kValues &&
           parameter.element != Descriptor::Element::kNumber;
  };
  const auto& parameters = definition.parameters;
  const bool announces = definition.result && parameters.size() < Descriptor::kMaxArguments &&
                         std::all_of(parameters.begin(), parameters.end(), isPlain);
  return announces ? static_cast<unsigned int>(parameters.size()) + 1 : 0;
}

/// An integer stands where a real is wanted.
const ZULTaVoObjectDescriptor* TypeOf(Descriptor::Element element) {
  if (element == Descriptor::Element::kTruth) return ZULTaVoBoolean::sDescriptor;
  return element == Descriptor::Element::kInteger ? ZULTaVoInteger::sDescriptor
                                                  : ZULTaVoNumber::sDescriptor;
}

/// A size that a letter stands for, and who said so first.
struct Size {
  const char* parameter = nullptr;
  std::uint32_t size = 0;
};

std::string CountOf(std::uint32_t size, const char* what) {
  return std::to_string(size) + " " + what + (size == 1 ? "" : "s");
}

}  // namespace

ZULTaVoRelationDescriptor::ZULTaVoRelationDescriptor(Definition definition)
    : ZULTaVoConstraintDescriptor(ZULString(Signature(definition).c_str()), nullptr, 1,
                                  CountAnnounced(definition), 0),
      mDefinition(std::move(definition)) {
  SetRule(mDefinition.rule);
  if (CountAnnounced(mDefinition) == 0) return;
  const auto announce = [this](const Parameter& parameter) {
    AddArgument(parameter.name, TypeOf(parameter.element), ZULTaVoConstraint::kDefaultPriority);
  };
  std::for_each(mDefinition.parameters.begin(), mDefinition.parameters.end(), announce);
  announce(*mDefinition.result);
}

void* ZULTaVoRelationDescriptor::InitObject(void* place) const {
  return place == nullptr ? nullptr : new (place) ZULTaVoRelation(this);
}

void* ZULTaVoRelationDescriptor::InitObject(void* place, const void* from) const {
  return place == nullptr ? nullptr
                          : new (place) ZULTaVoRelation(*static_cast<const ZULTaVoRelation*>(from));
}

std::size_t ZULTaVoRelationDescriptor::GetObjectSize() const { return sizeof(ZULTaVoRelation); }

void ZULTaVoRelationDescriptor::PrintOn(std::ostream& out) const { out << GetName(); }

std::string ZULTaVoRelationDescriptor::Check(Arguments arguments) const {
  const std::size_t results = mDefinition.result ? 1 : 0;
  if (arguments.size() != mDefinition.parameters.size() + results)
    return std::string(mDefinition.name) + " takes " +
           std::to_string(mDefinition.parameters.size()) + " arguments";
  std::string fault = CheckSizes(arguments);
  if (fault.empty() && mDefinition.check != nullptr) fault = mDefinition.check(arguments);
  return fault;
}

/// That values and numbers stand where they may, and that sizes agree.
std::string ZULTaVoRelationDescriptor::CheckSizes(Arguments arguments) const {
  std::array<Size, 128> sizes = {};
  std::size_t index = 0;
  const auto check = [&](const Parameter& parameter) -> std::string {
    const ZULTaVoRelationArgument& argument = arguments[index++];
    const std::string_view size = parameter.size;
    const std::string name = "'" + std::string(parameter.name) + "'";
    if ((parameter.given == Given::kKnown && !argument.isKnown) ||
        (parameter.given == Given::kValues && argument.isKnown))
      return name + (argument.isKnown ? " must be values" : " must be known");
    const std::size_t numbers =
        argument.isReal ? argument.reals.size() / 2 : argument.integers.size();
    if (argument.isKnown && numbers != argument.GetSize()) return name + " lacks numbers";
    const bool isReal = argument.isReal;
    if ((isReal && parameter.element < Element::kReal) ||
        (!isReal && parameter.element == Element::kReal))
      return name + " is of another type";
    if ((size.size() < 2 && argument.rows != 1) || (size.empty() && argument.columns != 1))
      return name + " has too many dimensions";
    const auto agree = [&](char letter, std::uint32_t count, const char* what) -> std::string {
      Size& known = sizes[static_cast<unsigned char>(letter) % sizes.size()];
      if (known.parameter == nullptr) known = {parameter.name, count};
      if (known.size == count) return {};
      return name + " has " + CountOf(count, what) + ", but '" + known.parameter + "' has " +
             std::to_string(known.size);
    };
    if (size.size() == 1) return agree(size[0], argument.columns, "element");
    if (size.empty()) return {};
    const std::string fault = agree(size.front(), argument.rows, "row");
    return fault.empty() ? agree(size.back(), argument.columns, "column") : fault;
  };
  std::string fault;
  if (mDefinition.result) fault = check(*mDefinition.result);
  for (const Parameter& parameter : mDefinition.parameters)
    if (fault.empty()) fault = check(parameter);
  return fault;
}
