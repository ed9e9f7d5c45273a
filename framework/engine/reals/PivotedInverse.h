#ifndef ZULTAV_ENGINE_REALS_PIVOTED_INVERSE_H
#define ZULTAV_ENGINE_REALS_PIVOTED_INVERSE_H

#include <cstddef>
#include <span>
#include <vector>

namespace zultav::engine {

/// A matrix by those entries of its rows that are not 0.
class SparseMatrix {
 public:
  struct Row {
    std::span<const std::size_t> columns;
    std::span<const double> values;
  };

  void Clear();
  /// Adds an entry to the row that EndRow will end; of each column one.
  void Add(std::size_t column, double value);
  void EndRow() { mEnds.push_back(mColumns.size()); }

  std::size_t GetNumberOfRows() const { return mEnds.size(); }
  Row operator[](std::size_t row) const;

 private:
  std::vector<std::size_t> mEnds, mColumns;
  std::vector<double> mValues;
};

/// Picks a well-conditioned square part of a matrix, as large as its rank, and inverts that part,
/// at a cost that depends on the entries that are not 0. Plain floating point: who needs a
/// guarantee checks what the inverse is used for.
class PivotedInverse {
 public:
  /// @param matrix   finite
  /// @param weights  one for each column; a column of small weight is picked late
  void Compute(const SparseMatrix& matrix, std::span<const double> weights);

  std::size_t GetRank() const { return mRows.size(); }
  /// The rows and columns of the part.
  std::span<const std::size_t> GetRows() const { return mRows; }
  std::span<const std::size_t> GetColumns() const { return mColumns; }
  /// Row i of the inverse belongs to GetColumns()[i]; its columns are rows of the matrix. Entries
  /// are left out that decide nothing beside the largest.
  SparseMatrix::Row GetRow(std::size_t i) const { return mInverse[i]; }

 private:
  struct Entry {
    std::size_t index;
    double value;
  };
  /// A row in work: scaled, and what was eliminated of it.
  struct Line {
    double scale = 0;
    double pivot = 0;
    bool isPicked = false;
    std::vector<Entry> upper;  // by column; when all is picked, by step
    std::vector<Entry> lower;  // multiples of pivot rows that were taken off, by step
  };
  struct Candidate {
    double magnitude;
    std::size_t row, column;

    bool operator<(const Candidate& other) const {
      return magnitude != other.magnitude ? magnitude < other.magnitude : row > other.row;
    }
  };

  void TakeScaled(const SparseMatrix& matrix, std::span<const double> weights);
  void Propose(std::size_t row);
  bool Pick();
  void Eliminate(std::size_t row);
  void NumberBySteps();
  bool SolveRow(std::size_t step, double weight);

  std::vector<Line> mLines;
  std::vector<std::vector<std::size_t>> mUsers;  // rows with an entry in the column
  std::vector<std::size_t> mPlaces;              // by column, of the entries of a row
  std::vector<Candidate> mCandidates;            // a heap; some are out of date
  std::vector<double> mSolution;                 // by step
  std::vector<std::size_t> mRows, mColumns;      // by step
  SparseMatrix mInverse;
};

}  // namespace zultav::engine

#endif
