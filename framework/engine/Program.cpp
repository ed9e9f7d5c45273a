#include "framework/engine/Program.h"

#include "framework/engine/detail/Compiler.h"

namespace zultav::engine {

Program::Program(const ZULTaVoNetwork& network, std::span<ZULTaVoAny* const> declared,
                 std::span<ZULTaVoAny* const> observed)
    : Program(network) {
  Compiler(*this, network, declared, observed).Compile();
}

}  // namespace zultav::engine
