#include "framework/engine/reals/LinearHull.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace zultav::engine {

bool LinearHull::NarrowFrom(bool isUpper) {
  mLinear.ReadBox();
  mLinear.SelectColumns(Linearization::Left::kNarrow);
  const auto& columns = mLinear.columns;
  if (columns.empty() || columns.size() > kMaxColumns) return true;
  MoveToCorner(isUpper);
  if (!mLinear.SelectRows(RealEvaluation::Mode::kSolutions)) return false;
  AddInequalities();
  if (mSources.empty()) return true;
  if (!NarrowToHull()) return false;
  for (const std::size_t i : columns) {
    const Slot slot = mLinear.system.GetTerms()[mLinear.system.GetUnknowns()[i]].slot;
    if (!mEngine.Narrow(slot, mLinear.box[i])) return false;
  }
  return mEngine.Propagate() != Engine::Status::kFailed;
}

void LinearHull::MoveToCorner(bool isUpper) {
  for (const std::size_t i : mLinear.columns) {
    const RealRange& x = mLinear.box[i];
    if (x.IsBounded()) mLinear.middle[i] = isUpper ? x.upper : x.lower;
  }
}

void LinearHull::AddInequalities() {
  mSimplex.Clear(mLinear.columns.size());
  mSources.clear();
  mRows.resize(mLinear.rows.size());
  std::iota(mRows.begin(), mRows.end(), std::size_t{0});
  for (const std::size_t row : mRows)
    for (const bool isUpper : {false, true}) AddInequality(row, isUpper);
}

/// That the least value of the equation's left side is at most 0, or the greatest one at least 0,
/// by the distances of the unknowns from the corner, relative to their widths. What holds
/// everywhere is left out.
void LinearHull::AddInequality(std::size_t index, bool isUpper) {
  const Linearization::Row& row = mLinear.rows[index];
  const auto& unknowns = row.equation->unknowns;
  mCoefficients.assign(mLinear.columns.size(), 0.0);
  double scale = 0, greatest = 0;
  for (std::size_t k = 0; k < unknowns.size(); ++k) {
    const std::size_t column = mLinear.columnOf[unknowns[k]];
    if (column == Linearization::kNoColumn) continue;
    const RealRange distance =
        mLinear.box[unknowns[k]] - RealRange::Point(mLinear.middle[unknowns[k]]);
    const double farthest = distance.upper > -distance.lower ? distance.upper : distance.lower;
    const RealRange change = mLinear.entries[row.first + k] * RealRange::Point(farthest);
    const double coefficient = isUpper ? -change.upper : change.lower;
    mCoefficients[column] = coefficient;
    scale = std::max(scale, std::fabs(coefficient));
    greatest += std::max(coefficient, 0.0);
  }
  const double bound = isUpper ? row.defect.upper : -row.defect.lower;
  if (!(scale > 0) || !std::isfinite(scale) || greatest <= bound) return;
  for (double& coefficient : mCoefficients) coefficient /= scale;
  mSimplex.Add(mCoefficients, bound / scale);
  mSources.push_back({index, (isUpper ? -1 : 1) / scale});
}

bool LinearHull::NarrowToHull() {
  if (mSimplex.FindVertex() == Simplex::Answer::kInfeasible) return NarrowBySum();
  mTargets.clear();
  for (std::size_t column = 0; column < mLinear.columns.size(); ++column)
    for (const bool isUpper : {false, true}) mTargets.push_back({column, isUpper});
  while (!mTargets.empty()) {
    const auto [column, isUpper] = TakeNearest();
    if (mSimplex.Optimize(column, isUpper) == Simplex::Answer::kNarrowed && !NarrowBySum())
      return false;
  }
  return true;
}

/// The bound of an unknown that the vertex is nearest to: few moves lead there, and what is met on
/// the way need not be gone to.
LinearHull::Target LinearHull::TakeNearest() {
  std::size_t nearest = 0;
  double distance = HUGE_VAL;
  for (std::size_t i = 0; i < mTargets.size(); ++i) {
    const double next = mSimplex.GetDistance(mTargets[i].column, mTargets[i].isUpper);
    if (next >= distance) continue;
    nearest = i;
    distance = next;
  }
  std::swap(mTargets[nearest], mTargets.back());
  const Target target = mTargets.back();
  mTargets.pop_back();
  return target;
}

/// Solves the sum of the equations by the weights of the inequalities for each unknown.
bool LinearHull::NarrowBySum() {
  mWeights.assign(mRows.size(), 0.0);
  for (std::size_t i = 0; i < mSources.size(); ++i)
    mWeights[mSources[i].row] += mSimplex.GetWeights()[i] * mSources[i].factor;
  double sum = 0;
  for (const double weight : mWeights) sum += std::fabs(weight);
  if (!(sum > 0) || !std::isfinite(sum)) return true;
  for (double& weight : mWeights) weight /= sum;
  mLinear.Combine(mRows, mWeights);
  for (std::size_t column = 0; column < mLinear.columns.size(); ++column)
    if (!mLinear.SolveCombined(column)) return false;
  return true;
}

}  // namespace zultav::engine
