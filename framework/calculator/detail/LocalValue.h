#ifndef ZULTAV_CALCULATOR_DETAIL_LOCAL_VALUE_H
#define ZULTAV_CALCULATOR_DETAIL_LOCAL_VALUE_H

#include <cstddef>
#include <memory>
#include <new>

#include "framework/solver/ZULTaVoAny.h"
#include "framework/solver/ZULTaVoObjectDescriptor.h"

namespace zultav::detail {

/// A value of a type outside any network.
class LocalValue {
 public:
  explicit LocalValue(const ZULTaVoObjectDescriptor& type)
      : mType(type),
        mMemory(new std::max_align_t[type.GetObjectSize() / sizeof(std::max_align_t) + 1]) {
    if (type.InitObject(mMemory.get()) == nullptr) throw std::bad_alloc();
  }
  ~LocalValue() { mType.DestroyObject(mMemory.get()); }
  LocalValue(const LocalValue&) = delete;
  LocalValue& operator=(const LocalValue&) = delete;

  ZULTaVoAny* Get() const {
    return static_cast<ZULTaVoAny*>(static_cast<ZULTaVoObject*>(static_cast<void*>(mMemory.get())));
  }
  ZULTaVoAny* operator->() const { return Get(); }

 private:
  const ZULTaVoObjectDescriptor& mType;
  std::unique_ptr<std::max_align_t[]> mMemory;
};

}  // namespace zultav::detail

#endif
