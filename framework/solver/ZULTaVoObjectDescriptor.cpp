#include "framework/solver/ZULTaVoObjectDescriptor.h"

#include <ostream>
#include <string>

#include "framework/solver/ZULTaVoObject.h"

namespace {
constexpr std::size_t kLongestName = 4096;
}

ZULTaVoObjectDescriptor::ZULTaVoObjectDescriptor(const ZULString& name,
                                                 const ZULTaVoObjectDescriptor* base, int version)
    : mName(name), mBase(base), mVersion(version) {}

ZULTaVoObjectDescriptor::~ZULTaVoObjectDescriptor() = default;

void ZULTaVoObjectDescriptor::Write(ZULopstream& out) const {
  out.WriteString(mName.Str());
  out << mVersion;
}

void ZULTaVoObjectDescriptor::Read(ZULipstream& in) {
  std::string name;
  if (!in.ReadString(name, kLongestName)) return;
  mName = ZULString(name.c_str());
  in >> mVersion;
}

void* ZULTaVoObjectDescriptor::InitObject(void*) const { return nullptr; }

void* ZULTaVoObjectDescriptor::InitObject(void*, const void*) const { return nullptr; }

void ZULTaVoObjectDescriptor::DestroyObject(void* object) const {
  if (object != nullptr) static_cast<ZULTaVoObject*>(object)->~ZULTaVoObject();
}

int ZULTaVoObjectDescriptor::IsMatched(const ZULTaVoObjectDescriptor* other) const {
  for (; other != nullptr; other = other->GetBase())
    if (other == this) return 1;
  return 0;
}

void ZULTaVoObjectDescriptor::PrintOn(std::ostream& out) const { out << GetName(); }
