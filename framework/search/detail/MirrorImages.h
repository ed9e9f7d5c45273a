#ifndef ZULTAV_SEARCH_DETAIL_MIRROR_IMAGES_H
#define ZULTAV_SEARCH_DETAIL_MIRROR_IMAGES_H

#include <cstdint>
#include <span>
#include <vector>

#include "framework/search/detail/SearchSpace.h"

namespace zultav::detail {

/// Solutions that follow from each other by changing signs.
///
/// Where the constraints look at a variable through even functions only, its sign does not matter:
/// the search explores the negative half, and every box stands for its images in all such
/// variables. An image knows its place in their order, the lesser values first; so what is left
/// of them needs no record but the image that is next.
class MirrorImages {
 public:
  /// Chooses those of the declared variables that have a symmetric domain.
  MirrorImages(const Engine& engine, const SearchSpace& space,
               const std::vector<std::uint32_t>& candidates, const WidthLimit& limit);

  /// Restricts the variables to their negative halves.
  void Restrict(Engine& engine, const SearchSpace& space) const;
  /// Makes a box that reaches 0 one with its image where the width limit allows or both overlap.
  void JoinAtZero(ZULTavBox& box) const;
  /// Turns an image into the next one. Answers the variables in which both may differ; none after
  /// the last image.
  std::span<const std::uint32_t> Next(ZULTavBox& image) const;

 private:
  std::vector<std::uint32_t> mMirrored;
  WidthLimit mLimit;
};

}  // namespace zultav::detail

#endif
