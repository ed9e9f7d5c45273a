#ifndef ZULTAV_TESTS_SOLVER_WORLD_H
#define ZULTAV_TESTS_SOLVER_WORLD_H

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "framework/solver/ZULTavAbstractTypes.h"

/// The modules and a network over their types. TEST_MODULES is the folder of the test modules.
struct World {
  World() { manager.AddSearchDirectory(TEST_MODULES); }

  ZULTaVoModule& Open(const char* name) {
    ZULTaVoModule* module = manager.OpenModule(name);
    if (module == nullptr) ADD_FAILURE() << manager.GetReason();
    return *module;
  }
  const ZULTaVoObjectDescriptor* Type(std::string_view name) {
    return Open(name == "bit int" ? "BitModule" : "ZULTavNumbers").FindType(name);
  }
  /// A new value; see SetTo for the text.
  ZULTaVoAny* Add(std::string_view type, std::string_view text = "Any");
  bool Post(const char* constraint, std::vector<ZULTaVoObject*> arguments) {
    const std::string name = std::string("ZULTaVo") + constraint + "Constraint";
    return network.AddConstraint(Open("ZULTavAbstractTypes").FindConstraint(name), arguments.data(),
                                 static_cast<unsigned>(arguments.size())) != 0;
  }

  /// Changes a value from outside, as a search does.
  void Change(ZULTaVoAny* value, std::string_view text);

  ZULTaVoModuleManager manager;
  ZULTaVoNetwork network;
};

/// Gives x the domain that the text names: "Any", "Nil", "value" or "lower,upper".
inline void SetTo(ZULTaVoAny& x, std::string_view text) {
  x.SetAny();
  if (text == "Any") return;
  if (text == "Nil") return x.SetNil();
  const std::string lower(text.substr(0, text.find(','))), upper(text.substr(text.rfind(',') + 1));
  if (auto* integer = ZULTaVoCast<ZULTaVoInteger>(&x)) {
    integer->SetLowerBound(std::atol(lower.c_str()));
    integer->SetUpperBound(std::atol(upper.c_str()));
  } else if (auto* real = ZULTaVoCast<ZULTaVoReal>(&x)) {
    real->SetLowerBound(std::atof(lower.c_str()));
    real->SetUpperBound(std::atof(upper.c_str()));
  } else if (auto* boolean = ZULTaVoCast<ZULTaVoBoolean>(&x)) {
    boolean->SetExactValue(text == "1");
  }
}

/// The text that SetTo takes, with ten digits.
inline std::string Show(const ZULTaVoAny& x) {
  if (x.IsNil()) return "Nil";
  if (x.IsAny()) return "Any";
  double lower = 0, upper = 0;
  if (const auto* integer = ZULTaVoCast<ZULTaVoInteger>(&x)) {
    lower = static_cast<double>(integer->GetLowerBound());
    upper = static_cast<double>(integer->GetUpperBound());
  } else if (const auto* real = ZULTaVoCast<ZULTaVoReal>(&x)) {
    lower = real->GetLowerBound();
    upper = real->GetUpperBound();
  } else {
    lower = upper = ZULTaVoCast<ZULTaVoBoolean>(&x)->IsTrue();
  }
  char text[64];
  std::snprintf(text, sizeof text, lower == upper ? "%.10g" : "%.10g,%.10g", lower, upper);
  return text;
}

inline ZULTaVoAny* World::Add(std::string_view type, std::string_view text) {
  ZULTaVoAny* value = network.AddObject(Type(type));
  if (value != nullptr) SetTo(*value, text);
  return value;
}

inline void World::Change(ZULTaVoAny* value, std::string_view text) {
  EXPECT_TRUE(network.SaveValue(value));
  SetTo(*value, text);
  network.PropagateValue(value);
}

#endif
