#ifndef ZULTAV_SEARCH_DETAIL_SEARCH_SPACE_H
#define ZULTAV_SEARCH_DETAIL_SEARCH_SPACE_H

#include <cstdint>
#include <span>
#include <vector>

#include "framework/engine/Engine.h"
#include "framework/search/ZULTavFrontier.h"
#include "framework/solver/ZULTavAbstractTypes.h"

namespace zultav::detail {

using engine::Engine;
using engine::Kind;
using engine::Program;
using engine::Slot;
using Half = ZULTavFrontier::Half;
using Range = ZULTavBox::Range;

/// How narrow a real domain must be to count as decided: either bound suffices.
struct WidthLimit {
  double absolute;
  double relative;

  /// False of what is not bounded.
  bool Holds(const RealRange& range) const;
};

/// A slot as the search sees it.
struct SearchVariable {
  Slot slot = 0;
  Kind kind = Kind::kInteger;
  bool isBoolean = false;
  /// Of a type that holds one value or Any: it is not split.
  bool isSingle = false;

  bool IsDiscrete() const { return kind == Kind::kInteger; }
};

/// A slot whose value is told with each box, and not searched.
struct ObservedSlot {
  Slot slot = 0;
  ZULTavObserved::Kind kind = ZULTavObserved::Kind::kInteger;
  bool isOpaque = false;  // only its object knows its bounds
};

/// The variables of a search, numbered: the declared ones, the hidden ones that it has to find, and
/// truth values that follow from the declared ones, on which it may split. Knows how their values
/// go over from slots to boxes, and from boxes to objects of their types.
class SearchSpace {
 public:
  /// Of a network, its program, and the values for which this was made.
  SearchSpace(const ZULTaVoNetwork& network, const Program& program,
              std::span<ZULTaVoAny* const> declared);

  std::span<const SearchVariable> GetVariables() const { return mVariables; }
  const SearchVariable& operator[](std::uint32_t variable) const { return mVariables[variable]; }
  std::span<const SearchVariable> GetDeclared() const {
    return GetVariables().first(mObjects.size());
  }
  /// What is observed; in a box their ranges follow those of the declared variables.
  std::span<const ObservedSlot> GetObserved() const { return mObserved; }
  std::uint32_t GetNumberOfDeclared() const { return static_cast<std::uint32_t>(mObjects.size()); }
  /// Where the hidden ones that have to be found end.
  std::uint32_t GetHiddenEnd() const { return mHiddenEnd; }
  bool IsHidden(std::uint32_t variable) const {
    return variable >= mObjects.size() && variable < mHiddenEnd;
  }
  bool IsDerived(std::uint32_t variable) const { return variable >= mHiddenEnd; }
  /// Whether there are values, hidden or not, that are no integers.
  bool HasContinuousValues() const { return mContinuous; }

  // --- Splitting ------------------------------------------------------------------------------

  /// Whether the search may still split it.
  bool IsOpen(const Engine& engine, std::uint32_t index, const WidthLimit& limit) const;
  /// The half that is explored first. End points of reals are no values of their own, so that
  /// these are halved; what lies far out is left for later.
  Half Split(const Engine& engine, std::uint32_t variable,
             ZULTaVoAny::ValueSelection selection) const;
  /// What the half leaves of the variable.
  Half OppositeOf(const Half& half) const;
  /// Narrows to the half. False when nothing is left.
  bool Enter(Engine& engine, const Half& half) const;
  /// Of integers: whether the present values lie within the half, or outside of it.
  bool Holds(const Engine& engine, const Half& half) const;
  bool Fails(const Engine& engine, const Half& half) const;
  /// Upper minus lower bound.
  double GetWidth(const Engine& engine, std::uint32_t variable) const;

  // --- Values ---------------------------------------------------------------------------------

  Range GetRange(const Engine& engine, std::uint32_t index) const;
  /// The present values of the declared variables and of what is observed.
  ZULTavBox Capture(const Engine& engine) const;
  /// The same as objects of the types that they are declared with.
  void Fill(const ZULTavBox& box, ZULTavSolution& solution) const;
  /// Of some that are numbers.
  void Fill(const ZULTavBox& box, std::span<const std::uint32_t> variables,
            ZULTavSolution& solution) const;
  ZULTavSolution MakeSolution() const {
    return ZULTavSolution(mNetwork, mObjects, mObserved.size());
  }

  // False when the bytes are none of this space: in.Reason() says why.
  bool Read(ZULipstream& in, ZULTavBox& box) const;
  bool Read(ZULipstream& in, Half& half) const;

  /// Whether one range of the declared variable lies within another; where it is no real, whether
  /// both are the same single value.
  bool IsWithin(std::uint32_t variable, const Range& inner, const Range& outer) const;
  bool IsWithin(const ZULTavBox& inner, const ZULTavBox& outer) const;
  /// Whether two ranges of the variable have a value in common.
  bool Meet(std::uint32_t variable, const Range& a, const Range& b) const;

 private:
  void AddObserved(const Program& program);
  static Range GetObservedRange(const Engine& engine, const ObservedSlot& observed);
  void AddTruths(const Program& program, std::vector<bool>& known);

  const ZULTaVoNetwork& mNetwork;
  std::vector<ZULTaVoAny*> mObjects, mOpaque;
  std::vector<SearchVariable> mVariables;
  std::vector<ObservedSlot> mObserved;
  std::uint32_t mHiddenEnd = 0;
  bool mContinuous = false;
};

}  // namespace zultav::detail

#endif
