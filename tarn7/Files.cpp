// The repository as a provider of files.

#include "host/files/Paths.h"
#include "host/files/StreamingFile.h"
#include "host/network/serverAt.h"
#include "host/os/OS.h"
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

Zq::Ptr<iFile> Tarn7Resource::openFile(WideString const& path, int, int, int, int) {
    ParsedURI const address = parseURI(path);
    Zq::Ptr<iHTTPServer> const server = serverAt(address);
    if (!server) {
        return {};
    }
    // The service keeps a clip's files side by side: only their name leads to them, not the folder of the
    // address. Both of them share one store; the file that streams into it sees whose bytes it holds.
    WideString const name = stripPathAndExt(fixForeignOSFileName(address.path));
    WideString const store = partialFolder + OS().fileManager().pathSeparator() + name + L".partial";
    if (hqProxies) {
        Zq::Ptr<iStreamingFile> const file =
            StreamingFile::create(server, name + L"_main_xl.mp4", path, store, 0);
        if (file && file->getSize() != 0) {
            return file;
        }
    }
    return StreamingFile::create(server, name + L"_prev_264.mov", path, store, 0);
}

iFileManager::eCopyRC Tarn7Resource::copyFile(WideString const& source, WideString const& destination,
                                              bool overwrite, iFileManager::ProgressCallback progress) {
    auto const file = Zq::dynamicCast<StreamingFile>(openFile(source, 1, 0, 1, 0));
    return file ? file->saveAs(destination, overwrite, progress) : iFileManager::eSourceNotOpened;
}
