#include "framework/engine/Program.h"
