// Copies a remote file to a disk.
#pragma once

#include <filesystem>
#include <memory>

#include "host/engine/streaming/StreamSession.h"
#include "host/files/iFileManager.h"

namespace engine {

// What a store holds comes from there, the rest from the server. The destination is whole or as it was
// before; an old one stays, and the copy fails, unless `overwrite`. A file that changes on the way is begun
// anew once. Ends when the calling task is cancelled. Thread: any.
[[nodiscard]] iFileManager::eCopyRC saveRemoteFile(std::shared_ptr<StreamingCore> const& core,
                                                   StreamSource const& source,
                                                   std::filesystem::path const& destination, bool overwrite,
                                                   iFileManager::ProgressCallback progress);

} // namespace engine
