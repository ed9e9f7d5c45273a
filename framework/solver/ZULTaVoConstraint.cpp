#include "framework/solver/ZULTaVoConstraint.h"

#include <algorithm>
#include <istream>
#include <ostream>

#include "framework/solver/ZULTaVoNetwork.h"
#include "framework/solver/ZULTaVoObjectDescriptor.h"
#include "framework/solver/ZULTaVoObjectEnvironment.h"

namespace {
const char kIdent[] = "ZULTaVoConstraint";
}

const char* const ZULTaVoConstraint::sIdent = kIdent;

ZULTaVoConstraint::~ZULTaVoConstraint() = default;

void ZULTaVoConstraint::Write(ZULopstream& out) const { out << static_cast<int>(mPriority); }

void ZULTaVoConstraint::Read(ZULipstream& in) {
  int priority = 0;
  in >> priority;
  if (priority < 0 || priority > 0xffff) return in.Fail("a priority is out of range");
  mPriority = static_cast<unsigned short>(priority);
  mPassive = false;
}

int ZULTaVoConstraint::IsDerivedFrom(const char* id) const {
  return id == sIdent || ZULTaVoObject::IsDerivedFrom(id);
}

int ZULTaVoConstraint::ActivateByArgument(unsigned int, int, ZULTaVoNetwork*) {
  const bool was = mPassive;
  mPassive = false;
  return was;
}

void ZULTaVoConstraint::PrintOn(std::ostream& out) const {
  const ZULTaVoObjectDescriptor* type = GetDescriptor();
  out << (type != nullptr ? type->GetName() : CastableID());
}

void ZULTaVoConstraint::InputValue(std::istream& in) { in.setstate(std::ios::failbit); }

int ZULTaVoConstraint::ChangePriority(ZULTaVoNetwork* network, unsigned short priority) {
  if (priority == mPriority) return 0;
  mPriority = priority;
  if (network != nullptr) network->MoveConstraint(this);
  return 1;
}

int ZULTaVoObjectEnvironment::IsArgumentConstant(const ZULTaVoObject* object) const {
  constexpr unsigned int kBits = 32;
  for (unsigned int i = 0; i < std::min(mCount, kBits); ++i)
    if (mArguments[i] == object && object != nullptr)
      return static_cast<int>((mConstants >> i) & 1U);
  if (mCount <= kBits || mNetwork == nullptr || !mNetwork->IsConstant(object)) return 0;
  return static_cast<int>(std::find(mArguments + kBits, mArguments + mCount, object) !=
                          mArguments + mCount);
}
