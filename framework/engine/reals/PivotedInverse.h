#ifndef ZULTAV_ENGINE_REALS_PIVOTED_INVERSE_H
#define ZULTAV_ENGINE_REALS_PIVOTED_INVERSE_H

#include <cstddef>
#include <span>
#include <vector>

namespace zultav::engine {

/// Picks a well-conditioned square part of a matrix, as large as its rank, and inverts that part.
/// Plain floating point: who needs a guarantee checks what the inverse is used for.
class PivotedInverse {
 public:
  /// @param matrix   rows one after the other; finite
  /// @param weights  one for each column; a column of small weight is picked late
  void Compute(std::span<const double> matrix, std::size_t columns,
               std::span<const double> weights);

  std::size_t GetRank() const { return mRows.size(); }
  /// The rows and columns of the part.
  std::span<const std::size_t> GetRows() const { return mRows; }
  std::span<const std::size_t> GetColumns() const { return mColumns; }
  /// Row i of the inverse belongs to GetColumns()[i], its column j to GetRows()[j].
  std::span<const double> GetRow(std::size_t i) const {
    return std::span(mInverse).subspan(i * GetRank(), GetRank());
  }

 private:
  struct Pivot {
    double magnitude;  // 0 for a row that is used up
    std::size_t column;
  };
  void PickPart(std::span<const double> matrix, std::size_t columns,
                std::span<const double> weights);
  void FindPivot(std::size_t row, std::size_t columns);
  void Thin(std::span<const double> matrix, std::size_t columns);
  bool Invert(std::span<const double> matrix, std::size_t columns);

  std::vector<std::size_t> mRows, mColumns;
  std::vector<Pivot> mPivots;  // of the rows
  std::vector<double> mScales;
  std::vector<double> mWork, mInverse;
};

}  // namespace zultav::engine

#endif
