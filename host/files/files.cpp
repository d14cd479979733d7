#include "host/HostServices.h"
#include "host/files/StreamingFile.h"
#include "host/files/iCacheStore.h"
#include "host/files/iFile.h"

iFile::~iFile() = default;
iFileManager::~iFileManager() = default;
iCacheStore::~iCacheStore() = default;
iStreamingFile::~iStreamingFile() = default;
StreamingFile::~StreamingFile() = default;
iStreamingFiles::~iStreamingFiles() = default;

Zq::Ptr<iStreamingFile> StreamingFile::create(Zq::Ptr<iHTTPServer> const& server,
                                              WideString const& remoteName, WideString source,
                                              WideString const& cachePath, std::uint32_t) {
    iStreamingFiles* const streams = installedHost().streams;
    return streams != nullptr ? streams->create(server, remoteName, std::move(source), cachePath)
                              : Zq::Ptr<StreamingFile>();
}
