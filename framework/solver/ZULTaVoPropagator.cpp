#include "framework/solver/ZULTaVoPropagator.h"

ZULTaVoPropagator::~ZULTaVoPropagator() = default;
