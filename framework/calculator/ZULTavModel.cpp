#include "framework/calculator/ZULTavModel.h"

std::string ZULTavModel::Variable::NameOf(std::size_t value) const {
  if (!IsArray()) return name;
  std::string indices;
  for (std::size_t i = dimensions.size(); i-- > 0; value /= dimensions[i].size)
    indices = std::to_string(dimensions[i].first + static_cast<long>(value % dimensions[i].size)) +
              (indices.empty() ? "" : ",") + indices;
  return name + '[' + indices + ']';
}
