#ifndef ZULTAV_ENGINE_DETAIL_NETWORK_READER_H
#define ZULTAV_ENGINE_DETAIL_NETWORK_READER_H

#include <span>

#include "framework/engine/detail/Draft.h"

class ZULTaVoAny;
class ZULTaVoNetwork;

namespace zultav::engine {

/// What the network says, by the rules that its constraints carry. What has no rule that the engine
/// can use becomes a group that runs the constraint's filter.
Draft ReadNetwork(const ZULTaVoNetwork& network, std::span<ZULTaVoAny* const> declared,
                  std::span<ZULTaVoAny* const> observed);

}  // namespace zultav::engine

#endif
