// The engine's file layer: files on this system's disks, and the list of providers for virtual paths.
#pragma once

#include <mutex>
#include <vector>

#include "host/engine/files/WriteJournal.h"
#include "host/files/iFileManager.h"

namespace engine {

// A path that begins with "Virtual:" never reaches the disk: it exists where its provider handles it, and it
// cannot be written, deleted or made.
class LocalFileManager final : public iFileManager {
public:
    LocalFileManager(WideString hostName, std::filesystem::path journalFolder)
        : hostName_(std::move(hostName)), journal_(std::move(journalFolder)) {}

    // Only a regular file counts, not a folder.
    bool fileExists(WideString const& path) override;
    // What the journal of unfinished files holds of it from an earlier writer goes with it.
    bool deleteFile(WideString const& path) override;
    bool createDirectory(WideString const& path) override;
    // Every access and every kind of sharing is the same here: the file can be written, and read by all.
    // Until its last owner lets go it stands in the journal of unfinished files; in the scope of a
    // FileTransfer until that has ended whole. A length that such a transfer has announced is reserved on the
    // disk: where it has no room there is no file, an old one stays as it was, and one log line says why.
    Zq::Ptr<iFile> openForWrite(WideString const& path, int access, int sharing, int hint,
                                int further) override;
    Zq::Ptr<iFile> openForRead(WideString const& path) override;
    eCopyRC copyFile(WideString const& source, WideString const& destination, bool overwrite,
                     ProgressCallback progress) override;
    wchar_t pathSeparator() const override { return L'/'; }
    WideString getHostName() const override { return hostName_; }

    void registerProvider(iFileProvider& provider) override;
    void forgetProvidersOf(ZqComponentBase& component) override;
    void forgetProvider(iFileProvider const& provider) noexcept override;
    // Of several whose names fit, the one with the longest name; of equal names, the one that came first.
    iFileProvider* findProvider(WideString const& path) override;

    [[nodiscard]] WriteJournal const& journal() const noexcept { return journal_; }

private:
    WideString const hostName_;
    WriteJournal const journal_;
    std::mutex mutex_;
    std::vector<iFileProvider*> providers_;
};

} // namespace engine
