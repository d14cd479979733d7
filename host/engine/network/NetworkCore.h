// What all servers of one network share. They keep it alive, so a server may outlive the network that made
// it.
#pragma once

#include <utility>

#include "host/engine/network/Connector.h"
#include "host/engine/network/HandlePool.h"
#include "host/engine/network/ServerStatistics.h"
#include "host/object/Ptr.h"

namespace engine {

// Thread: any.
class NetworkCore final : public virtual iObject {
public:
    explicit NetworkCore(NetworkSettings settings) : connector(std::move(settings)), pool(connector) {}

    Connector const connector;
    HandlePool pool;
    StatisticsTable statistics;
};

} // namespace engine
