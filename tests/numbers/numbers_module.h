#pragma once

#include "framework/solver/ZULTaVoModule.h"
#include "framework/solver/ZULTaVoModuleManager.h"

/// The module as a solver opens it: by name, through a manager. It is open while tests run.
ZULTaVoModuleManager& NumbersManager();
ZULTaVoModule& NumbersModule();
