#ifndef ZULTAV_ENGINE_ZULTAV_ENGINE_H
#define ZULTAV_ENGINE_ZULTAV_ENGINE_H

/// Umbrella header of the engine: a network compiled, and the state of a search over it.
#include "framework/engine/Engine.h"
#include "framework/engine/ExactCheck.h"
#include "framework/engine/Program.h"

#endif
