#ifndef ZULTAV_SEARCH_ZULTAV_SOLUTION_H
#define ZULTAV_SEARCH_ZULTAV_SOLUTION_H

#include <cstddef>
#include <memory>
#include <span>
#include <vector>

#include "framework/search/Export.h"
#include "framework/solver/ZULTaVoAny.h"

class ZULipstream;
class ZULopstream;
class ZULTaVoNetwork;

/// Copies of the searched values, in the order in which they were given to the search. Lives
/// independently of the network, but not longer than the module that made its types.
class ZULTAV_UTILITIES_API ZULTavSolution {
 public:
  ZULTavSolution() = default;
  /// Copies the present values of objects of the network. Throws std::bad_alloc when memory ran
  /// out.
  ZULTavSolution(const ZULTaVoNetwork& network, std::span<ZULTaVoAny* const> values);
  ~ZULTavSolution();
  ZULTavSolution(ZULTavSolution&& other) noexcept = default;
  ZULTavSolution& operator=(ZULTavSolution&& other) noexcept;

  std::size_t GetSize() const { return mEntries.size(); }
  const ZULTaVoAny& GetValue(std::size_t index) const { return *mEntries[index].value; }
  ZULTaVoAny& GetValue(std::size_t index) { return *mEntries[index].value; }

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
  bool mProven = false;
};

#endif
