// Puts one HTTP transfer into a local file, block by block as it arrives.
//
// The data go straight to the final path. A transfer that failed or was cancelled leaves there what it got so
// far; whoever started it deletes the path unless the status was 200.
//
// Thread: the one that called httpGetToReceiver, a background task's own where the transfer is to be
// cancellable.
#pragma once

#include <cstdint>

#include "host/files/iFileManager.h"
#include "host/log/LoggerHandle.h"
#include "host/network/iHTTPServer.h"

// Lives on the stack of one transfer.
class ZQ_API HTTPFileSaver : public iHTTPServer::iDataReceiver {
public:
    // Neither touches the disk nor reports anything yet.
    HTTPFileSaver(WideString destination, LoggerHandle log);
    ~HTTPFileSaver() override;
    HTTPFileSaver(HTTPFileSaver const&) = delete;
    HTTPFileSaver& operator=(HTTPFileSaver const&) = delete;

    // Opens the file, new or emptied; its folder must exist. False, and no transfer, when it cannot be
    // written.
    [[nodiscard]] bool beginReceive(std::uint64_t totalLength) override;
    // Writes the block and reports how far the file is, unless the server announced no length. False when not
    // all of it could be written and when the calling task is being cancelled; the block of a cancelled task
    // is not written.
    [[nodiscard]] bool receiveData(std::uint64_t offset, Zq::Ptr<iMemHolder> const& block) override;
    // Closes the file.
    void endReceive() override;

protected:
    Zq::Ptr<iFile> file; // while a transfer runs
    WideString path;
    LoggerHandle logger;
    std::uint64_t totalBytes = 0; // as the server announced; 0 when it did not
    // Told of progress in the logger's place where its function is set. Nothing here sets it: it is for a
    // receiver that derives from this one.
    iFileManager::ProgressCallback progress;
};
