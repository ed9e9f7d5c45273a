#include "framework/engine/reals/PivotedInverse.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace zultav::engine {

namespace {

constexpr std::size_t kNone = static_cast<std::size_t>(-1);
// What is left of a row that depends on others is not zero but rounding errors.
constexpr double kNegligible = 1e-11;
// The inverse of a sparse matrix is full of entries that are this much less than another of their
// row. Leaving them out costs a step about this share of what it narrows by.
constexpr double kDecidesNothing = 1e-9;

}  // namespace

// --- SparseMatrix -----------------------------------------------------------------------------

void SparseMatrix::Clear() {
  mEnds.clear();
  mColumns.clear();
  mValues.clear();
}

void SparseMatrix::Add(std::size_t column, double value) {
  mColumns.push_back(column);
  mValues.push_back(value);
}

SparseMatrix::Row SparseMatrix::operator[](std::size_t row) const {
  const std::size_t begin = row == 0 ? 0 : mEnds[row - 1], count = mEnds[row] - begin;
  return {std::span(mColumns).subspan(begin, count), std::span(mValues).subspan(begin, count)};
}

// --- PivotedInverse ---------------------------------------------------------------------------

/// Gaussian elimination with complete pivoting; then each row of the inverse is solved for by the
/// triangular factors.
void PivotedInverse::Compute(const SparseMatrix& matrix, std::span<const double> weights) {
  mRows.clear();
  mColumns.clear();
  mInverse.Clear();
  TakeScaled(matrix, weights);
  while (Pick()) {
    const std::size_t column = mColumns.back();
    for (const std::size_t row : mUsers[column])
      if (!mLines[row].isPicked) Eliminate(row);
  }
  NumberBySteps();
  mSolution.assign(GetRank(), 0.0);
  for (std::size_t step = 0; step < GetRank(); ++step) {
    if (SolveRow(step, weights[mColumns[step]])) continue;
    mRows.clear();
    mColumns.clear();
  }
}

/// Scales rows to the maximum 1.
void PivotedInverse::TakeScaled(const SparseMatrix& matrix, std::span<const double> weights) {
  const std::size_t rows = matrix.GetNumberOfRows();
  mLines.resize(std::max(mLines.size(), rows));
  mUsers.resize(std::max(mUsers.size(), weights.size()));
  for (auto& users : mUsers) users.clear();
  mPlaces.assign(weights.size(), kNone);
  mCandidates.clear();
  for (std::size_t i = 0; i < rows; ++i) {
    const auto [columns, values] = matrix[i];
    Line& line = mLines[i];
    line.scale = 0;
    line.isPicked = false;
    line.upper.clear();
    line.lower.clear();
    for (std::size_t k = 0; k < columns.size(); ++k)
      line.scale = std::max(line.scale, std::fabs(values[k] * weights[columns[k]]));
    if (!(line.scale > 0) || std::isinf(line.scale)) continue;
    for (std::size_t k = 0; k < columns.size(); ++k) {
      const double value = values[k] * weights[columns[k]] / line.scale;
      if (value == 0) continue;
      line.upper.push_back({columns[k], value});
      mUsers[columns[k]].push_back(i);
    }
    Propose(i);
  }
}

/// The largest entry of the row.
void PivotedInverse::Propose(std::size_t row) {
  Line& line = mLines[row];
  Candidate best = {0, row, kNone};
  for (const auto& [column, value] : line.upper)
    if (const double magnitude = std::fabs(value); magnitude > best.magnitude)
      best = {magnitude, row, column};
  line.pivot = best.magnitude;
  if (!(best.magnitude > kNegligible)) return;
  mCandidates.push_back(best);
  std::push_heap(mCandidates.begin(), mCandidates.end());
}

/// Picks the largest entry of all that are left. False when there is none.
bool PivotedInverse::Pick() {
  while (!mCandidates.empty()) {
    const auto [magnitude, row, column] = mCandidates.front();
    std::pop_heap(mCandidates.begin(), mCandidates.end());
    mCandidates.pop_back();
    Line& line = mLines[row];
    if (line.isPicked || magnitude != std::fabs(line.pivot)) continue;
    const auto pivot =
        std::find_if(line.upper.begin(), line.upper.end(),
                     [wanted = column](const Entry& entry) { return entry.index == wanted; });
    if (pivot == line.upper.end() || std::fabs(pivot->value) != magnitude) continue;
    line.isPicked = true;
    line.pivot = pivot->value;
    *pivot = line.upper.back();
    line.upper.pop_back();
    mRows.push_back(row);
    mColumns.push_back(column);
    return true;
  }
  return false;
}

/// Takes as much off the row of that which was picked last that it has no entry in its column.
void PivotedInverse::Eliminate(std::size_t row) {
  const Line& pivot = mLines[mRows.back()];
  auto& [scale, magnitude, isPicked, upper, lower] = mLines[row];
  for (std::size_t i = 0; i < upper.size(); ++i) mPlaces[upper[i].index] = i;
  const std::size_t place = mPlaces[mColumns.back()];
  const double factor = upper[place].value / pivot.pivot;
  lower.push_back({mRows.size() - 1, factor});
  for (const auto& [column, value] : pivot.upper) {
    if (mPlaces[column] != kNone) {
      upper[mPlaces[column]].value -= factor * value;
    } else {
      upper.push_back({column, -factor * value});
      mUsers[column].push_back(row);
    }
  }
  for (const Entry& entry : upper) mPlaces[entry.index] = kNone;
  upper[place] = upper.back();
  upper.pop_back();
  Propose(row);
}

void PivotedInverse::NumberBySteps() {
  for (std::size_t step = 0; step < GetRank(); ++step) mPlaces[mColumns[step]] = step;
  for (const std::size_t row : mRows) {
    auto& upper = mLines[row].upper;
    for (Entry& entry : upper) entry.index = mPlaces[entry.index];
    std::erase_if(upper, [](const Entry& entry) { return entry.index == kNone; });
  }
}

/// Solves for the row of the inverse by the upper factor, then by the lower one. False when an
/// entry is too large.
bool PivotedInverse::SolveRow(std::size_t step, double weight) {
  mSolution[step] = 1;
  double largest = 0;
  const auto isNeeded = [&largest](double value) {
    largest = std::max(largest, std::fabs(value));
    return std::fabs(value) >= kDecidesNothing * largest;
  };
  for (std::size_t j = step; j < GetRank(); ++j) {
    if (mSolution[j] == 0) continue;
    const Line& line = mLines[mRows[j]];
    mSolution[j] /= line.pivot;
    if (!isNeeded(mSolution[j]))
      mSolution[j] = 0;
    else
      for (const auto& [later, value] : line.upper) mSolution[later] -= mSolution[j] * value;
  }
  bool isFinite = true;
  for (std::size_t j = GetRank(); j-- > 0;) {
    const double solution = std::exchange(mSolution[j], 0.0);
    if (solution == 0 || !isNeeded(solution)) continue;
    const Line& line = mLines[mRows[j]];
    for (const auto& [earlier, value] : line.lower) mSolution[earlier] -= solution * value;
    mInverse.Add(mRows[j], weight * solution / line.scale);
    isFinite = isFinite && std::isfinite(weight * solution / line.scale);
  }
  mInverse.EndRow();
  return isFinite;
}

}  // namespace zultav::engine
