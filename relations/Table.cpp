#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>
#include <numeric>
#include <span>
#include <utility>
#include <vector>

#include "relations/Relations.h"

namespace zultav::relations {

namespace {

using Outcome = ZULTaVoPropagator::Outcome;

constexpr std::int64_t kAnything = ZULTaVoRelationArgument::kAnything;

/// 64 rows of a table, of which those that have a certain value are set.
struct Rows {
  std::uint32_t word;
  std::uint64_t bits;
};

/// One column of a table: its values in ascending order, and the rows of each.
struct Column {
  std::uint32_t argument = 0;
  std::vector<std::int64_t> values;              // integers, or
  std::vector<std::pair<double, double>> reals;  // what encloses them
  std::vector<std::uint32_t> firstRows;          // of each value, and the end
  std::vector<Rows> rows;                        // of all values, one after the other
  std::vector<Rows> anyRows;                     // those that take anything here
  std::vector<std::uint32_t> order;              // values; those that are gone in front
  std::vector<std::uint32_t> supports;  // of each value, the place in `rows` that had one last
  std::uint32_t anySupport = 0;
  std::uint32_t state = 0;  // the first of its state words

  bool IsReal() const { return !reals.empty(); }
  std::span<const Rows> RowsOf(std::uint32_t value) const {
    return {rows.data() + firstRows[value], rows.data() + firstRows[value + 1]};
  }
  bool IsLeft(const ZULTaVoDomains& domains, std::uint32_t value) const {
    if (!IsReal()) return domains.Contains(argument, values[value]);
    return reals[value].second >= domains.GetRealLower(argument) &&
           reals[value].first <= domains.GetRealUpper(argument);
  }
};

/// Numbers of a table, row by row.
struct Numbers {
  std::size_t rows = 0, columns = 0;
  std::span<const std::int64_t> integers;
  std::span<const double> reals;

  std::int64_t Integer(std::size_t row, std::size_t column) const {
    return integers[row * columns + column];
  }
  std::pair<double, double> Real(std::size_t row, std::size_t column) const {
    const double* pair = &reals[2 * (row * columns + column)];
    return {pair[0], pair[1]};
  }
  bool IsAnything(std::size_t row, std::size_t column) const {
    if (reals.empty()) return Integer(row, column) == kAnything;
    const auto [lower, upper] = Real(row, column);
    return lower == -std::numeric_limits<double>::infinity() && lower == -upper;
  }
};

/// Which rows of a table are possible, and which values of its columns are left: a reversible
/// sparse bit set as of compact tables (J. Demeulenaere et al., CP 2016). The rows of a value are
/// kept as those words alone in which it has any, so that memory is linear in the table.
class TableRows {
 public:
  /// The rows with these numbers, and of them these columns.
  TableRows(const Numbers& numbers, std::span<const std::uint32_t> rows,
            std::span<const std::uint32_t> columns, std::uint32_t firstState);

  std::span<Column> GetColumns() { return mColumns; }
  std::uint32_t GetStateEnd() const { return mStateEnd; }
  std::uint64_t GetWord(const ZULTaVoDomains& domains, std::uint32_t word) const {
    const std::uint64_t all = word + 1 == mWords ? mLastWord : ~std::uint64_t{0};
    return all & ~static_cast<std::uint64_t>(domains.GetState(mState + 1 + word));
  }
  // The orders outlive what is taken back: what stood in front has stayed there ever since.
  std::span<const std::uint32_t> GetLeft(const ZULTaVoDomains& domains,
                                         const Column& column) const {
    return std::span(column.order)
        .subspan(static_cast<std::size_t>(domains.GetState(column.state + kGone)));
  }
  std::uint64_t CountRows(const ZULTaVoDomains& domains) const;
  std::uint64_t CountRows(const ZULTaVoDomains& domains, std::span<const Rows> rows) const;
  /// Strikes out the rows with values that are no more. Answers whether there are such rows.
  bool Update(ZULTaVoDomains& domains);
  /// Whether any of the rows is possible; begins at the place that it finds to be one.
  bool HasAny(const ZULTaVoDomains& domains, std::span<const Rows> rows,
              std::uint32_t& support) const;
  /// Of the values that are left keeps those that `keeps`, and answers them.
  template <class Keeps>
  std::span<const std::uint32_t> KeepValues(ZULTaVoDomains& domains, Column& column, Keeps keeps);

 private:
  enum ColumnState : std::uint32_t { kGone, kSize, kColumnState };

  void AddColumn(const Numbers& numbers, std::span<const std::uint32_t> rows, std::uint32_t column);
  bool UpdateColumn(ZULTaVoDomains& domains, Column& column);
  void Strike(ZULTaVoDomains& domains, std::uint32_t word, std::uint64_t bits);
  std::span<const std::uint32_t> Words(const ZULTaVoDomains& domains) const {
    return std::span(mOrder).subspan(static_cast<std::size_t>(domains.GetState(mState)));
  }

  std::vector<Column> mColumns;
  std::uint32_t mWords, mState, mStateEnd = 0;  // state: how many words are 0, then the rows gone
  std::uint64_t mLastWord = 0;
  std::vector<std::uint32_t> mOrder;  // words; those without rows that are left in front
  std::vector<std::uint64_t> mMask;
};

TableRows::TableRows(const Numbers& numbers, std::span<const std::uint32_t> rows,
                     std::span<const std::uint32_t> columns, std::uint32_t firstState)
    : mWords(static_cast<std::uint32_t>((rows.size() + 63) / 64)),
      mState(firstState),
      mOrder(mWords),
      mMask(mWords) {
  if (!rows.empty()) mLastWord = ~std::uint64_t{0} >> (mWords * 64 - rows.size());
  std::iota(mOrder.begin(), mOrder.end(), 0u);
  mStateEnd = mState + 1 + mWords;
  mColumns.reserve(columns.size());
  for (const std::uint32_t column : columns) AddColumn(numbers, rows, column);
}

void TableRows::AddColumn(const Numbers& numbers, std::span<const std::uint32_t> rows,
                          std::uint32_t index) {
  Column& column = mColumns.emplace_back();
  column.argument = index;
  column.state = mStateEnd;
  mStateEnd += kColumnState;
  const auto add = [](std::vector<Rows>& list, std::size_t begin, std::uint32_t row) {
    if (list.size() == begin || list.back().word != row / 64) list.push_back({row / 64, 0});
    list.back().bits |= std::uint64_t{1} << (row & 63);
  };
  std::vector<std::uint32_t> order;  // places in `rows`, by their values
  for (std::uint32_t i = 0; i < rows.size(); ++i)
    if (numbers.IsAnything(rows[i], index))
      add(column.anyRows, 0, i);
    else
      order.push_back(i);
  const bool isReal = numbers.integers.empty();
  const auto precedes = [&](std::uint32_t left, std::uint32_t right) {
    return isReal ? numbers.Real(rows[left], index) < numbers.Real(rows[right], index)
                  : numbers.Integer(rows[left], index) < numbers.Integer(rows[right], index);
  };
  std::stable_sort(order.begin(), order.end(), precedes);
  for (std::size_t i = 0; i < order.size(); ++i) {
    if (i == 0 || precedes(order[i - 1], order[i])) {
      column.firstRows.push_back(static_cast<std::uint32_t>(column.rows.size()));
      if (isReal)
        column.reals.push_back(numbers.Real(rows[order[i]], index));
      else
        column.values.push_back(numbers.Integer(rows[order[i]], index));
    }
    add(column.rows, column.firstRows.back(), order[i]);
  }
  const std::size_t values = column.firstRows.size();
  column.firstRows.push_back(static_cast<std::uint32_t>(column.rows.size()));
  column.rows.shrink_to_fit();
  column.order.resize(values);
  std::iota(column.order.begin(), column.order.end(), 0u);
  column.supports.resize(values);
}

std::uint64_t TableRows::CountRows(const ZULTaVoDomains& domains) const {
  std::uint64_t count = 0;
  for (const std::uint32_t word : Words(domains))
    count += static_cast<std::uint64_t>(std::popcount(GetWord(domains, word)));
  return count;
}

std::uint64_t TableRows::CountRows(const ZULTaVoDomains& domains,
                                   std::span<const Rows> rows) const {
  std::uint64_t count = 0;
  for (const auto& [word, bits] : rows)
    count += static_cast<std::uint64_t>(std::popcount(GetWord(domains, word) & bits));
  return count;
}

bool TableRows::HasAny(const ZULTaVoDomains& domains, std::span<const Rows> rows,
                       std::uint32_t& support) const {
  const auto size = static_cast<std::uint32_t>(rows.size());
  for (std::uint32_t i = support; i < size; ++i)
    if ((GetWord(domains, rows[i].word) & rows[i].bits) != 0) {
      support = i;
      return true;
    }
  for (std::uint32_t i = 0; i < support; ++i)
    if ((GetWord(domains, rows[i].word) & rows[i].bits) != 0) {
      support = i;
      return true;
    }
  return false;
}

template <class Keeps>
std::span<const std::uint32_t> TableRows::KeepValues(ZULTaVoDomains& domains, Column& column,
                                                     Keeps keeps) {
  auto gone = static_cast<std::size_t>(domains.GetState(column.state + kGone));
  for (std::size_t i = gone; i < column.order.size(); ++i)
    if (!keeps(column.order[i])) std::swap(column.order[i], column.order[gone++]);
  domains.SetState(column.state + kGone, static_cast<std::int64_t>(gone));
  return GetLeft(domains, column);
}

void TableRows::Strike(ZULTaVoDomains& domains, std::uint32_t word, std::uint64_t bits) {
  const std::int64_t gone = domains.GetState(mState + 1 + word);
  domains.SetState(mState + 1 + word, gone | static_cast<std::int64_t>(bits));
}

bool TableRows::Update(ZULTaVoDomains& domains) {
  bool isNew = false;
  for (Column& column : mColumns) isNew = UpdateColumn(domains, column) || isNew;
  if (!isNew) return !Words(domains).empty();
  auto gone = static_cast<std::size_t>(domains.GetState(mState));
  for (std::size_t i = gone; i < mOrder.size(); ++i)
    if (GetWord(domains, mOrder[i]) == 0) std::swap(mOrder[i], mOrder[gone++]);
  domains.SetState(mState, static_cast<std::int64_t>(gone));
  return gone < mOrder.size();
}

/// By the rows of the values that are gone or of those that are left, whichever are fewer. Answers
/// whether any value is gone.
bool TableRows::UpdateColumn(ZULTaVoDomains& domains, Column& column) {
  const auto size =
      static_cast<std::int64_t>(column.IsReal() ? 0 : domains.GetSize(column.argument));
  if (!column.IsReal() && domains.GetState(column.state + kSize) == size) return false;
  domains.SetState(column.state + kSize, size);
  const std::span<const std::uint32_t> before = GetLeft(domains, column);
  const std::span<const std::uint32_t> left = KeepValues(
      domains, column, [&](std::uint32_t value) { return column.IsLeft(domains, value); });
  const std::span<const std::uint32_t> gone = before.first(before.size() - left.size());
  if (gone.empty()) return false;
  if (gone.size() < left.size()) {
    for (const std::uint32_t value : gone)
      for (const auto& [word, bits] : column.RowsOf(value)) Strike(domains, word, bits);
    return true;
  }
  for (const std::uint32_t word : Words(domains)) mMask[word] = 0;
  for (const auto& [word, bits] : column.anyRows) mMask[word] |= bits;
  for (const std::uint32_t value : left)
    for (const auto& [word, bits] : column.RowsOf(value)) mMask[word] |= bits;
  for (const std::uint32_t word : Words(domains)) Strike(domains, word, ~mMask[word]);
  return true;
}

// --- One of the rows ----------------------------------------------------------------------------

/// The list is one of the rows; arguments: the list.
///
/// Domain consistent where sets of values are kept; of reals, bounds consistent.
class Table final : public ZULTaVoPropagator {
 public:
  explicit Table(const Numbers& numbers);
  Wake GetWake(std::uint32_t /*argument*/) const override { return Wake::kOnValues; }
  Cost GetCost() const override { return Cost::kMore; }
  std::uint32_t GetStateSize() const override { return mClosed + mColumns; }
  Outcome Propagate(ZULTaVoDomains& domains) override;

 private:
  bool HasSame(const ZULTaVoDomains& domains) const;
  bool Filter(ZULTaVoDomains& domains, Column& column);
  bool KeepListed(ZULTaVoDomains& domains, const Column& column) const;

  std::uint32_t mColumns;
  bool mIsExact = true;  // whether each number is a double
  TableRows mRows;
  std::uint32_t mClosed;  // of each column, whether it has lost the values that no row names
};

std::vector<std::uint32_t> AllBelow(std::size_t end) {
  std::vector<std::uint32_t> all(end);
  std::iota(all.begin(), all.end(), 0u);
  return all;
}

Table::Table(const Numbers& numbers)
    : mColumns(static_cast<std::uint32_t>(numbers.columns)),
      mRows(numbers, AllBelow(numbers.rows), AllBelow(numbers.columns), 0),
      mClosed(mRows.GetStateEnd()) {
  for (std::size_t row = 0; row < numbers.rows && !numbers.reals.empty(); ++row)
    for (std::size_t column = 0; column < numbers.columns; ++column) {
      const auto [lower, upper] = numbers.Real(row, column);
      mIsExact = mIsExact && (lower == upper || numbers.IsAnything(row, column));
    }
}

Outcome Table::Propagate(ZULTaVoDomains& domains) {
  if (!mRows.Update(domains)) return Outcome::kFailed;
  std::uint32_t open = 0;
  bool isExact = true;
  for (Column& column : mRows.GetColumns()) {
    if (!Filter(domains, column)) return Outcome::kFailed;
    std::int64_t base = 0;
    const std::uint32_t x = column.argument;
    if (column.IsReal() ? domains.GetRealLower(x) == domains.GetRealUpper(x) : domains.IsFixed(x))
      continue;
    ++open;
    isExact = isExact && !column.IsReal() && domains.GetBits(x, base) != nullptr;
  }
  const bool isDecided = open == 0 || (open == 1 && isExact);
  return isDecided && mIsExact && !HasSame(domains) ? Outcome::kEntailed : Outcome::kFixpoint;
}

/// Whether two columns are one: what one has lost, the other has not been filtered by.
bool Table::HasSame(const ZULTaVoDomains& domains) const {
  for (std::uint32_t x = 1; x < mColumns; ++x)
    for (std::uint32_t y = 0; y < x; ++y)
      if (domains.AreSame(x, y)) return true;
  return false;
}

/// Removes values without a row.
bool Table::Filter(ZULTaVoDomains& domains, Column& column) {
  if (!column.anyRows.empty() && mRows.HasAny(domains, column.anyRows, column.anySupport))
    return true;
  const std::uint32_t x = column.argument;
  bool isPossible = true;
  std::uint32_t least = std::numeric_limits<std::uint32_t>::max(), greatest = 0;
  double upper = -std::numeric_limits<double>::infinity();
  mRows.KeepValues(domains, column, [&](std::uint32_t value) {
    if (!mRows.HasAny(domains, column.RowsOf(value), column.supports[value])) {
      isPossible = isPossible && (column.IsReal() || domains.Remove(x, column.values[value]));
      return column.IsLeft(domains, value);  // where no set of values is kept
    }
    least = std::min(least, value);
    greatest = std::max(greatest, value);
    if (column.IsReal()) upper = std::max(upper, column.reals[value].second);
    return true;
  });
  if (!isPossible || least > greatest) return false;
  if (column.IsReal()) return domains.Intersect(x, column.reals[least].first, upper);
  if (!domains.SetLower(x, column.values[least]) || !domains.SetUpper(x, column.values[greatest]))
    return false;
  if (domains.GetState(mClosed + x) != 0) return true;
  domains.SetState(mClosed + x, 1);
  return KeepListed(domains, column);
}

bool Table::KeepListed(ZULTaVoDomains& domains, const Column& column) const {
  const std::uint32_t x = column.argument;
  std::int64_t base = 0;
  if (domains.GetBits(x, base) == nullptr) return true;
  auto listed = std::ranges::lower_bound(column.values, domains.GetLower(x));
  for (std::int64_t value = domains.GetLower(x), last = domains.GetUpper(x); value < last;
       value = domains.GetNext(x, value)) {
    while (*listed < value) ++listed;
    if (*listed != value && !domains.Remove(x, value)) return false;
  }
  return true;
}

// --- None of the rows ---------------------------------------------------------------------------

/// The list, of integers, is none of the rows; arguments: the list.
///
/// A value goes when the rows that have it are as many as the values of the others allow (as of H.
/// Verhaeghe, C. Lecoutre and P. Schaus, AAAI 2017): domain consistent where sets of values are
/// kept and '*' does not stand in different columns of different rows.
class NoneOfTable final : public ZULTaVoPropagator {
 public:
  explicit NoneOfTable(const Numbers& numbers);
  Wake GetWake(std::uint32_t /*argument*/) const override { return Wake::kOnValues; }
  Cost GetCost() const override { return Cost::kMore; }
  std::uint32_t GetStateSize() const override {
    return mTables.empty() ? 0 : mTables.back().GetStateEnd();
  }
  Outcome Propagate(ZULTaVoDomains& domains) override;

 private:
  static Outcome Narrow(ZULTaVoDomains& domains, TableRows& table);
  static std::uint64_t CountOthers(const ZULTaVoDomains& domains, std::span<const Column> columns,
                                   const Column& column);

  std::vector<TableRows> mTables;  // rows with '*' in the same columns, without these
};

NoneOfTable::NoneOfTable(const Numbers& numbers) {
  std::vector<std::uint32_t> order = AllBelow(numbers.rows);
  const auto compare = [&](std::uint32_t left, std::uint32_t right, auto key) {
    for (std::size_t column = 0; column < numbers.columns; ++column)
      if (key(left, column) != key(right, column))
        return key(left, column) < key(right, column) ? -1 : 1;
    return 0;
  };
  const auto compareStars = [&](std::uint32_t left, std::uint32_t right) {
    return compare(left, right, [&](std::uint32_t row, std::size_t column) {
      return numbers.IsAnything(row, column);
    });
  };
  const auto compareNumbers = [&](std::uint32_t left, std::uint32_t right) {
    return compare(left, right, [&](std::uint32_t row, std::size_t column) {
      return numbers.Integer(row, column);
    });
  };
  std::ranges::sort(order, [&](std::uint32_t left, std::uint32_t right) {
    const int stars = compareStars(left, right);
    return stars != 0 ? stars < 0 : compareNumbers(left, right) < 0;
  });
  const auto same = std::ranges::unique(order, [&](std::uint32_t left, std::uint32_t right) {
    return compareNumbers(left, right) == 0;
  });
  order.erase(same.begin(), same.end());
  for (auto begin = order.begin(); begin != order.end();) {
    const auto end = std::find_if(
        begin, order.end(), [&](std::uint32_t row) { return compareStars(*begin, row) != 0; });
    std::vector<std::uint32_t> columns;
    for (std::uint32_t column = 0; column < numbers.columns; ++column)
      if (!numbers.IsAnything(*begin, column)) columns.push_back(column);
    const std::uint32_t state = GetStateSize();
    mTables.emplace_back(numbers, std::span(begin, end), columns, state);
    begin = end;
  }
}

Outcome NoneOfTable::Propagate(ZULTaVoDomains& domains) {
  bool areAllOut = true, isAgain = false;
  for (TableRows& table : mTables) {
    const Outcome outcome = Narrow(domains, table);
    if (outcome == Outcome::kFailed) return outcome;
    areAllOut = areAllOut && outcome == Outcome::kEntailed;
    isAgain = isAgain || outcome == Outcome::kAgain;
  }
  if (areAllOut) return Outcome::kEntailed;
  return isAgain ? Outcome::kAgain : Outcome::kFixpoint;
}

Outcome NoneOfTable::Narrow(ZULTaVoDomains& domains, TableRows& table) {
  if (!table.Update(domains)) return Outcome::kEntailed;
  const std::span<Column> columns = table.GetColumns();
  if (columns.empty()) return Outcome::kFailed;
  const std::uint64_t possible = table.CountRows(domains);
  bool isNarrowed = false;
  for (Column& column : columns) {
    const std::uint64_t others = CountOthers(domains, columns, column);
    if (others > possible) continue;
    for (const std::uint32_t value : table.GetLeft(domains, column)) {
      if (!domains.Contains(column.argument, column.values[value]) ||
          table.CountRows(domains, column.RowsOf(value)) < others)
        continue;
      if (!domains.Remove(column.argument, column.values[value])) return Outcome::kFailed;
      isNarrowed = isNarrowed || !domains.Contains(column.argument, column.values[value]);
    }
    if (isNarrowed) return Outcome::kAgain;  // there are fewer rows now, too
  }
  return Outcome::kFixpoint;
}

/// In how many ways the other columns can be filled, at most UINT64_MAX.
std::uint64_t NoneOfTable::CountOthers(const ZULTaVoDomains& domains,
                                       std::span<const Column> columns, const Column& column) {
  std::uint64_t count = 1;
  for (const Column& other : columns)
    if (&other != &column && __builtin_mul_overflow(count, domains.GetSize(other.argument), &count))
      return std::numeric_limits<std::uint64_t>::max();
  return count;
}

// --- How models call them -----------------------------------------------------------------------

template <class Propagator>
std::unique_ptr<ZULTaVoPropagator> MakeTable(Arguments arguments) {
  const ZULTaVoRelationArgument& rows = arguments[1];
  return std::make_unique<Propagator>(Numbers{rows.rows, rows.columns, rows.integers, rows.reals});
}

}  // namespace

Definition DescribeTable() {
  return {
      .name = "table",
      .meaning = "the list is one of the rows",
      .parameters = {{.name = "list", .element = Element::kNumber, .size = "n"},
                     {.name = "rows",
                      .element = Element::kNumber,
                      .size = "m n",
                      .given = Given::kKnown,
                      .takesAnything = true}},
      .make = &MakeTable<Table>
  };
}

Definition DescribeNoneOfTable() {
  return {
      .name = "not_table",
      .meaning = "the list is none of the rows",
      .parameters =
          {{.name = "list", .size = "n"},
                       {.name = "rows", .size = "m n", .given = Given::kKnown, .takesAnything = true}},
      .make = &MakeTable<NoneOfTable>
  };
}

}  // namespace zultav::relations
