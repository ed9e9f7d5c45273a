#ifndef ZULTAV_SEARCH_ZULTAV_SOLUTION_H
#define ZULTAV_SEARCH_ZULTAV_SOLUTION_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "framework/intervals/IntegerRange.h"
#include "framework/intervals/RealRange.h"
#include "framework/search/Export.h"
#include "framework/solver/ZULTaVoAny.h"

class ZULipstream;
class ZULopstream;
class ZULTaVoNetwork;

/// What an observed value is, without the limits of the type that it has in the network.
struct ZULTAV_UTILITIES_API ZULTavObserved {
  enum class Kind : std::uint8_t { kTruth, kInteger, kReal };
  Kind kind = Kind::kInteger;
  /// Of a truth, 0 is false and 1 is true; bounds at the ends of 64 bits are infinite.
  zultav::IntegerRange integers;
  zultav::RealRange reals;
};

/// Copies of the searched values, in the order in which they were given to the search. Lives
/// independently of the network, but not longer than the module that made its types.
class ZULTAV_UTILITIES_API ZULTavSolution {
 public:
  ZULTavSolution() = default;
  /// Copies the present values of objects of the network; nothing is known of what is observed.
  /// Throws std::bad_alloc when memory ran out.
  ZULTavSolution(const ZULTaVoNetwork& network, std::span<ZULTaVoAny* const> values,
                 std::size_t observed = 0);
  ~ZULTavSolution();
  ZULTavSolution(ZULTavSolution&& other) noexcept = default;
  ZULTavSolution& operator=(ZULTavSolution&& other) noexcept;

  std::size_t GetSize() const { return mEntries.size(); }
  const ZULTaVoAny& GetValue(std::size_t index) const { return *mEntries[index].value; }
  ZULTaVoAny& GetValue(std::size_t index) { return *mEntries[index].value; }

  /// In the order in which they were given to the search.
  const std::vector<ZULTavObserved>& GetObserved() const { return mObserved; }
  std::vector<ZULTavObserved>& GetObserved() { return mObserved; }

  void Write(ZULopstream& out) const;
  /// Reads what was written of a solution of the same types, into this one's values.
  bool Read(ZULipstream& in);

  /// Whether a solution of the model certainly lies within the values. When it is false, one may.
  bool IsProven() const { return mProven; }
  void SetProven(bool proven) { mProven = proven; }

 private:
  struct Entry {
    ZULTaVoAny* value;
    const ZULTaVoObjectDescriptor* type;
  };
  void Destroy() noexcept;

  std::unique_ptr<std::max_align_t[]> mMemory;
  std::vector<Entry> mEntries;
  std::vector<ZULTavObserved> mObserved;
  bool mProven = false;
};

#endif
