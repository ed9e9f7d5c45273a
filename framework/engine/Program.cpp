#include "framework/engine/Program.h"

#include "framework/engine/detail/Compiler.h"

namespace zultav::engine {

Program::Program(const ZULTaVoNetwork& network, std::span<ZULTaVoAny* const> declared)
    : Program(network) {
  Compiler(*this, network, declared).Compile();
}

}  // namespace zultav::engine
