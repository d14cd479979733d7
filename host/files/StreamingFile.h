// Files that are read from a server, part by part as they are asked for, with a store on disk.
#pragma once

#include "host/files/iFileManager.h"
#include "host/network/iHTTPServer.h"

class ZQ_API iStreamingFile : public iFile {
public:
    ~iStreamingFile() override;
};

class ZQ_API StreamingFile : public iStreamingFile {
public:
    ~StreamingFile() override;

    // A file whose reads come from that name on the server, kept alive with the file. `source` is the path
    // under which the host knows the file. `cachePath` is the store on disk; empty has what was read kept in
    // bounded memory. Null when no file can be made of these; whether the server has the file shows in
    // getSize, which is 0 where it has not. Thread: any.
    [[nodiscard]] static Zq::Ptr<iStreamingFile> create(Zq::Ptr<iHTTPServer> const& server,
                                                        WideString const& remoteName, WideString source,
                                                        WideString const& cachePath, std::uint32_t unused);
    // Writes the whole remote file to the destination, a new file there or, with `overwrite`, in the place of
    // an old one. The destination is whole or as it was before. Ends when the calling task is cancelled.
    virtual iFileManager::eCopyRC saveAs(WideString const& destination, bool overwrite,
                                         iFileManager::ProgressCallback progress) = 0;
};

// What stands behind the door. Thread: any.
class ZQ_API iStreamingFiles {
public:
    virtual ~iStreamingFiles();
    // As StreamingFile::create.
    [[nodiscard]] virtual Zq::Ptr<StreamingFile> create(Zq::Ptr<iHTTPServer> const& server,
                                                        WideString const& remoteName, WideString source,
                                                        WideString const& cachePath) = 0;
};
