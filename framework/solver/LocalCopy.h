#ifndef ZULTAV_SOLVER_LOCAL_COPY_H
#define ZULTAV_SOLVER_LOCAL_COPY_H

#include <cstddef>

#include "framework/solver/ZULTaVoAny.h"
#include "framework/solver/ZULTaVoObjectDescriptor.h"

namespace zultav {

/// A copy of a domain for the length of a scope, on the stack unless the object is uncommonly
/// large. Null where the copy could not be made.
class LocalCopy {
 public:
  explicit LocalCopy(const ZULTaVoAny& original) : mType(original.GetDescriptor()) {
    if (mType == nullptr) return;
    const std::size_t size = mType->GetObjectSize();
    mPlace = size <= sizeof(mBuffer) ? mBuffer : ZULTaVoBase::operator new(size);
    mCopy =
        static_cast<ZULTaVoAny*>(static_cast<ZULTaVoObject*>(mType->InitObject(mPlace, &original)));
  }
  ~LocalCopy() {
    if (mCopy != nullptr) mType->DestroyObject(mCopy);
    if (mPlace != mBuffer) ZULTaVoBase::operator delete(mPlace);
  }
  LocalCopy(const LocalCopy&) = delete;
  LocalCopy& operator=(const LocalCopy&) = delete;

  explicit operator bool() const { return mCopy != nullptr; }
  ZULTaVoAny& operator*() const { return *mCopy; }
  ZULTaVoAny* operator->() const { return mCopy; }

 private:
  alignas(std::max_align_t) unsigned char mBuffer[64];
  const ZULTaVoObjectDescriptor* mType;
  void* mPlace = nullptr;
  ZULTaVoAny* mCopy = nullptr;
};

}  // namespace zultav

#endif
