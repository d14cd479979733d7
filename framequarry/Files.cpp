// The repository as a provider of files.

#include "framequarry/FrameQuarryResource.h"
#include "host/files/StreamingFile.h"
#include "host/network/serverAt.h"

bool FrameQuarryResource::handlesFile(WideString const& path) const {
    return path.endsWith(L".mp4");
}

WideString FrameQuarryResource::getProviderName() const {
    return getShortName();
}
WideString FrameQuarryResource::mapPath(WideString const& path) const {
    return path;
}
bool FrameQuarryResource::isRemote() const {
    return true;
}

Zq::Ptr<iFile> FrameQuarryResource::openFile(WideString const& path, int, int, int, int) {
    ParsedURI const address = parseURI(path);
    Zq::Ptr<iHTTPServer> const server = serverAt(address);
    if (!server) {
        return {};
    }
    // Without a store of its own: nothing of the stream is left on the disk.
    return StreamingFile::create(server, address.path, path, WideString(), 0);
}
