#ifndef ZULTAV_SEARCH_DETAIL_VARIABLE_CHOOSER_H
#define ZULTAV_SEARCH_DETAIL_VARIABLE_CHOOSER_H

#include <cstdint>
#include <vector>

#include "framework/engine/reals/Newton.h"
#include "framework/search/ZULTavSearch.h"
#include "framework/search/detail/SearchTree.h"

namespace zultav::detail {

/// Decides which variable is split next.
class VariableChooser {
 public:
  static constexpr std::uint32_t kNone = UINT32_MAX;

  VariableChooser(const Engine& engine, engine::Newton& newton, const SearchSpace& space,
                  ZULTavSearch::VariableChoice choice, const WidthLimit& limit,
                  ZULTavFrontier::Experience& experience);

  /// The declared variable, or the boolean that follows from these, to split at the end of the
  /// path; kNone where all declared ones are decided, or splitting reals would decide nothing.
  std::uint32_t ChooseDeclared(const SearchTree& tree);
  /// The first undecided hidden variable, or kNone.
  std::uint32_t ChooseHidden(const SearchTree& tree) const;
  /// The declared variable of the widest domain, or kNone.
  std::uint32_t ChooseLargest() const;

  /// The rule has failed.
  void Learn(std::uint32_t rule);

 private:
  bool IsOpen(std::uint32_t variable) const { return mSpace.IsOpen(mEngine, variable, mLimit); }
  std::uint32_t FirstOpen(std::size_t from, std::size_t to) const;
  template <class Better>
  std::uint32_t FindBest(Better better) const;
  std::uint32_t ChooseByOption(const SearchTree& tree);
  std::uint32_t ChooseByKind(const SearchTree& tree) const;
  std::uint32_t ChooseInTurn(const SearchTree& tree) const;
  std::uint32_t ChooseAdaptively(const SearchTree& tree);
  std::uint32_t ChooseDiscrete() const;
  std::uint32_t ChooseReal(const SearchTree& tree);

  const Engine& mEngine;
  engine::Newton& mNewton;
  const SearchSpace& mSpace;
  ZULTavSearch::VariableChoice mChoice;
  WidthLimit mLimit;
  ZULTavFrontier::Experience& mExperience;
  std::vector<std::uint32_t> mVariableOf;  // of each slot
  std::vector<double> mSmears;             // of the declared ones, to work with
};

}  // namespace zultav::detail

#endif
