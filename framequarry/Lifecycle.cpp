// How a FrameQuarryResource comes to life.

#include "framequarry/FrameQuarryResource.h"
#include "host/object/ExtIDMgr.h"

namespace {

// "FRQY", the first character in the lowest byte.
constexpr std::uint32_t resourceTag = 0x59515246;

} // namespace

FrameQuarryResource::FrameQuarryResource()
    : ZqResourceTypeBase("FrameQuarry", ZqResourceType::mediaFileRepository, resourceTag) {
    ExtIDMgr::instance(); // exists from here on; relinking relies on it
    digestService = OSPrivate().security().getHash();
    provideFiles(*this);
}

// Nothing is sent to the service. The file layer forgets the provider as that part of the client ends.
FrameQuarryResource::~FrameQuarryResource() = default;
