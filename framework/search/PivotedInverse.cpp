#include "framework/search/PivotedInverse.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

// What is left of a row that depends on others is not zero but rounding errors.
constexpr double kNegligible = 1e-11;

}  // namespace

void PivotedInverse::Compute(std::span<const double> matrix, std::size_t columns,
                             std::span<const double> weights) {
  PickPart(matrix, columns, weights);
  if (!Invert(matrix, columns)) {
    mRows.clear();
    mColumns.clear();
  }
}

/// Gaussian elimination with complete pivoting on rows scaled to the maximum 1.
void PivotedInverse::PickPart(std::span<const double> matrix, std::size_t columns,
                              std::span<const double> weights) {
  const std::size_t rows = columns == 0 ? 0 : matrix.size() / columns;
  mRows.clear();
  mColumns.clear();
  mWork.assign(matrix.begin(), matrix.end());
  for (std::size_t i = 0; i < rows; ++i) {
    double* row = &mWork[i * columns];
    double largest = 0;
    for (std::size_t j = 0; j < columns; ++j) {
      row[j] *= weights[j];
      largest = std::max(largest, std::fabs(row[j]));
    }
    for (std::size_t j = 0; j < columns && largest > 0; ++j) row[j] /= largest;
  }
  while (mRows.size() < std::min(rows, columns)) {
    std::size_t pivotRow = 0, pivotColumn = 0;
    double largest = kNegligible;
    for (std::size_t i = 0; i < rows; ++i)
      for (std::size_t j = 0; j < columns; ++j)
        if (const double entry = std::fabs(mWork[i * columns + j]); entry > largest) {
          largest = entry;
          pivotRow = i;
          pivotColumn = j;
        }
    if (largest == kNegligible) return;
    mRows.push_back(pivotRow);
    mColumns.push_back(pivotColumn);
    double* pivot = &mWork[pivotRow * columns];
    for (std::size_t i = 0; i < rows; ++i) {
      double* row = &mWork[i * columns];
      const double factor = row[pivotColumn] / pivot[pivotColumn];
      if (i == pivotRow || factor == 0) continue;
      for (std::size_t j = 0; j < columns; ++j) row[j] -= factor * pivot[j];
      row[pivotColumn] = 0;
    }
    std::fill_n(pivot, columns, 0.0);  // no pivot any more
  }
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
  return std::all_of(mInverse.begin(), mInverse.end(), [](double x) { return std::isfinite(x); });
}
