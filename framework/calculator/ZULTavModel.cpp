#include "framework/calculator/ZULTavModel.h"

std::string ZULTavModel::Variable::NameOf(std::size_t value) const {
  if (!IsArray()) return name;
  std::string indices;
  for (std::size_t i = dimensions.size(); i-- > 0; value /= dimensions[i].size) {
    if (!indices.empty()) indices.insert(0, 1, ',');
    const auto position = static_cast<long>(value % dimensions[i].size);
    indices.insert(0, std::to_string(dimensions[i].first + position));
  }
  return name + '[' + indices + ']';
}
