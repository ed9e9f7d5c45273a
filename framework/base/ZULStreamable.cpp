#include "framework/base/ZULStreamable.h"

ZULStreamable::~ZULStreamable() = default;
