// The repository as a provider of files.

#include "tarn7/Tarn7Resource.h"

bool Tarn7Resource::handlesFile(WideString const& path) const {
    return path.endsWith(L".mp4") || path.endsWith(L".mov");
}

WideString Tarn7Resource::getProviderName() const {
    return getShortName();
}
WideString Tarn7Resource::mapPath(WideString const& path) const {
    return path;
}
bool Tarn7Resource::isRemote() const {
    return true;
}
WideString Tarn7Resource::mapPathForReading(WideString const& path) const {
    return path;
}
WideString Tarn7Resource::mapPathForWriting(WideString const& path) const {
    return path;
}

// The host has no files that stream from a server yet: nothing opens, and so nothing is copied.
Zq::Ptr<iFile> Tarn7Resource::openFile(WideString const&, int, int, int, int) {
    return {};
}

iFileManager::eCopyRC Tarn7Resource::copyFile(WideString const&, WideString const&, bool,
                                              iFileManager::ProgressCallback) {
    return iFileManager::eSourceNotOpened;
}
