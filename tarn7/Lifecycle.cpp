// How a Tarn7Resource comes to life.

#include "host/object/ExtIDMgr.h"
#include "host/preferences/EditorPreferences.h"
#include "tarn7/Tarn7Resource.h"

namespace {

// "TRN7", the first character in the lowest byte.
constexpr std::uint32_t resourceTag = 0x374e5254;

} // namespace

Tarn7Resource::Tarn7Resource()
    : ZqResourceTypeBase("Tarn7", ZqResourceType::mediaFileRepository, resourceTag) {
    ExtIDMgr::instance(); // exists from here on; relinking relies on it
    digestService = OSPrivate().security().getHash();
    provideFiles(*this);
    hqProxies = prefs().getPreference("T7 HQ Proxies", true);
}

// Nothing is sent to the service. The file layer forgets the provider as that part of the client ends.
Tarn7Resource::~Tarn7Resource() = default;
