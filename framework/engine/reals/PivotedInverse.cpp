#include "framework/engine/reals/PivotedInverse.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace zultav::engine {

namespace {

// What is left of a row that depends on others is not zero but rounding errors.
constexpr double kNegligible = 1e-11;
// Nor does what is so much less than another entry of the row make the inverse a worse one.
constexpr double kDecidesNothing = 1e-15;

}  // namespace

void PivotedInverse::Compute(std::span<const double> matrix, std::size_t columns,
                             std::span<const double> weights) {
  PickPart(matrix, columns, weights);
  if (!Invert(matrix, columns)) {
    mRows.clear();
    mColumns.clear();
  }
}

/// Gaussian elimination with complete pivoting on rows scaled to the maximum 1. Each row knows its
/// largest entry, for most rows of a sparse matrix stay as they are from step to step.
void PivotedInverse::PickPart(std::span<const double> matrix, std::size_t columns,
                              std::span<const double> weights) {
  const std::size_t rows = columns == 0 ? 0 : matrix.size() / columns;
  mRows.clear();
  mColumns.clear();
  mWork.assign(matrix.begin(), matrix.end());
  mPivots.resize(rows);
  for (std::size_t i = 0; i < rows; ++i) {
    double* row = &mWork[i * columns];
    for (std::size_t j = 0; j < columns; ++j) row[j] *= weights[j];
    FindPivot(i, columns);
    const double largest = mPivots[i].magnitude;
    for (std::size_t j = 0; j < columns && largest > 0; ++j) row[j] /= largest;
    mPivots[i].magnitude = largest > 0 ? 1 : 0;
  }
  while (mRows.size() < std::min(rows, columns)) {
    const auto best =
        std::max_element(mPivots.begin(), mPivots.end(),
                         [](const Pivot& a, const Pivot& b) { return a.magnitude < b.magnitude; });
    if (best->magnitude <= kNegligible) return;
    const auto pivotRow = static_cast<std::size_t>(best - mPivots.begin());
    const std::size_t pivotColumn = best->column;
    mRows.push_back(pivotRow);
    mColumns.push_back(pivotColumn);
    const double* pivot = &mWork[pivotRow * columns];
    for (std::size_t i = 0; i < rows; ++i) {
      double* row = &mWork[i * columns];
      if (mPivots[i].magnitude == 0 || i == pivotRow || row[pivotColumn] == 0) continue;
      const double factor = row[pivotColumn] / pivot[pivotColumn];
      for (std::size_t j = 0; j < columns; ++j) row[j] -= factor * pivot[j];
      row[pivotColumn] = 0;
      FindPivot(i, columns);
    }
    best->magnitude = 0;  // no pivot any more
  }
}

void PivotedInverse::FindPivot(std::size_t row, std::size_t columns) {
  Pivot best = {0, 0};
  for (std::size_t j = 0; j < columns; ++j)
    if (const double entry = std::fabs(mWork[row * columns + j]); entry > best.magnitude)
      best = {entry, j};
  mPivots[row] = best;
}

/// Gauss-Jordan elimination on (part | unit matrix); the pivots are on the diagonal already.
bool PivotedInverse::Invert(std::span<const double> matrix, std::size_t columns) {
  const std::size_t n = mRows.size();
  mWork.resize(n * n);
  mInverse.assign(n * n, 0.0);
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t j = 0; j < n; ++j) mWork[i * n + j] = matrix[mRows[i] * columns + mColumns[j]];
    mInverse[i * n + i] = 1;
  }
  for (std::size_t k = 0; k < n; ++k) {
    const double pivot = mWork[k * n + k];
    if (pivot == 0 || !std::isfinite(pivot)) return false;
    for (std::size_t j = 0; j < n; ++j) {
      mWork[k * n + j] /= pivot;
      mInverse[k * n + j] /= pivot;
    }
    for (std::size_t i = 0; i < n; ++i) {
      const double factor = mWork[i * n + k];
      if (i == k || factor == 0) continue;
      for (std::size_t j = 0; j < n; ++j) {
        mWork[i * n + j] -= factor * mWork[k * n + j];
        mInverse[i * n + j] -= factor * mInverse[k * n + j];
      }
    }
  }
  Thin(matrix, columns);
  return std::all_of(mInverse.begin(), mInverse.end(), [](double x) { return std::isfinite(x); });
}

/// The inverse of a sparse matrix is full of entries that decide nothing, but cost.
void PivotedInverse::Thin(std::span<const double> matrix, std::size_t columns) {
  const std::size_t n = mRows.size();
  mScales.assign(n, 0.0);
  for (std::size_t j = 0; j < n; ++j)
    for (std::size_t k = 0; k < columns; ++k)
      mScales[j] = std::max(mScales[j], std::fabs(matrix[mRows[j] * columns + k]));
  for (std::size_t i = 0; i < n; ++i) {
    double* row = &mInverse[i * n];
    double largest = 0;
    for (std::size_t j = 0; j < n; ++j) largest = std::max(largest, std::fabs(row[j]) * mScales[j]);
    for (std::size_t j = 0; j < n; ++j)
      if (std::fabs(row[j]) * mScales[j] < kDecidesNothing * largest) row[j] = 0;
  }
}

}  // namespace zultav::engine
