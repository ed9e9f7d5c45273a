#include "framework/solver/ZULTaVoConstraintDescriptor.h"

#include <algorithm>
#include <ostream>
#include <string>

#include "framework/solver/ZULTaVoConstraint.h"

ZULTaVoConstraintDescriptor::ZULTaVoConstraintDescriptor(const ZULString& name,
                                                         const ZULTaVoObjectDescriptor* base,
                                                         int version, unsigned int arguments,
                                                         int flags)
    : ZULTaVoObjectDescriptor(name, base, version),
      mAnnounced(std::min(arguments, kMaxArguments)),
      mFlags(flags) {}

void ZULTaVoConstraintDescriptor::Write(ZULopstream& out) const {
  ZULTaVoObjectDescriptor::Write(out);
  out << mFlags << static_cast<int>(mCount);
  for (unsigned int i = 0; i < mCount; ++i) {
    out.WriteString(mArguments[i].name.Str());
    out << static_cast<int>(mArguments[i].priority);
  }
}

void ZULTaVoConstraintDescriptor::Read(ZULipstream& in) {
  constexpr std::size_t kLongestName = 4096;
  ZULTaVoObjectDescriptor::Read(in);
  int count = 0;
  in >> mFlags >> count;
  if (count < 0 || count > static_cast<int>(kMaxArguments))
    return in.Fail("a constraint descriptor has too many arguments");
  mAnnounced = static_cast<unsigned int>(count);
  mCount = 0;
  for (int i = 0; i < count && in.Good(); ++i) {
    std::string name;
    int priority = 0;
    if (!in.ReadString(name, kLongestName)) return;
    in >> priority;
    AddArgument(ZULString(name.c_str()), nullptr, static_cast<unsigned short>(priority));
  }
}

void ZULTaVoConstraintDescriptor::PrintOn(std::ostream& out) const {
  out << GetName() << '(';
  for (unsigned int i = 0; i < mCount; ++i) {
    out << (i == 0 ? "" : ", ") << mArguments[i].name.Str();
    if (mArguments[i].type != nullptr) out << ": " << mArguments[i].type->GetName();
    if ((mFlags & kRepeatsOperand) != 0 && i + 2 == mCount) out << ", …";
  }
  out << ')';
}

void ZULTaVoConstraintDescriptor::AddArgument(const ZULString& name,
                                              const ZULTaVoObjectDescriptor* type,
                                              unsigned short priority) {
  if (mCount < mAnnounced) mArguments[mCount++] = {name, type, priority};
}

unsigned short ZULTaVoConstraintDescriptor::GetPriority() const {
  unsigned short least = mCount == 0 ? ZULTaVoConstraint::kDefaultPriority : 0xffff;
  for (unsigned int i = 0; i < mCount; ++i) least = std::min(least, mArguments[i].priority);
  return least;
}
