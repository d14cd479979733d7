// The connection that requests travel over.

#include "framequarry/FrameQuarryResource.h"

std::int32_t FrameQuarryResource::connect(HTTPConnectionInfo const& info, LoggerHandle) {
    return connectTo(info);
}
