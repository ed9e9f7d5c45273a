#include "framework/solver/ZULTaVoObject.h"

#include <ostream>

namespace {
const char kIdent[] = "ZULTaVoObject";
}

const char* const ZULTaVoObject::sIdent = kIdent;

ZULTaVoObject::~ZULTaVoObject() = default;

int ZULTaVoObject::Activate(ZULTaVoNetwork*) { return 0; }

int ZULTaVoObject::ActivateByArgument(unsigned int, int, ZULTaVoNetwork*) { return 0; }

int ZULTaVoObject::Filter(const ZULTaVoObjectEnvironment&, int) { return kFilterConsistent; }

std::ostream& operator<<(std::ostream& out, const ZULTaVoObject& object) {
  object.PrintOn(out);
  return out;
}
