// Files that do not lie on a disk: a provider answers for paths that begin with "Virtual:" and its name.
//
// The order of the virtual operations is part of the contract. Thread: any; the host calls from the thread of
// whichever of its parts asks.
#pragma once

#include <cstdint>

#include "host/files/iFileManager.h"

// What is known of a file.
struct FileInfo {
    WideString path;
    std::int32_t kind = 1;
    std::uint64_t size = 0; // in bytes; 0 for a file that cannot be opened
    std::int64_t created = 0;
    std::int64_t modified = 0;
};

class ZQ_API iFileProvider : public virtual iObject {
public:
    // The host's file layer forgets the provider.
    ~iFileProvider() override;

    // The file behind the path; null when there is none. The four integers are those of the file manager.
    [[nodiscard]] virtual Zq::Ptr<iFile> openFile(WideString const& path, int access, int sharing, int hint,
                                                  int further) = 0;
    [[nodiscard]] virtual bool handlesFile(WideString const& path) const = 0;
    // Opens the file to ask it; 0 if nothing opens.
    [[nodiscard]] virtual std::uint64_t getFileSize(WideString const& path);
    [[nodiscard]] virtual std::int32_t getFileKind(WideString const& path);
    [[nodiscard]] virtual FileInfo getFileInfo(WideString const& path);
    virtual iFileManager::eCopyRC copyFile(WideString const& source, WideString const& destination,
                                           bool overwrite, iFileManager::ProgressCallback progress) = 0;
    [[nodiscard]] virtual bool isWritable() const;
    [[nodiscard]] virtual WideString getProviderName() const;
    // "Virtual:", the provider's name, one blank, the location.
    [[nodiscard]] virtual WideString makeVirtualPath(WideString const& location) const;
    [[nodiscard]] virtual WideString mapPath(WideString const& path) const = 0;
    [[nodiscard]] virtual bool isRemote() const = 0;
    [[nodiscard]] virtual bool isTemporary() const;
    virtual void handleFolderChange();
    [[nodiscard]] virtual WideString mapPathForReading(WideString const& path) const = 0;
    [[nodiscard]] virtual WideString mapPathForWriting(WideString const& path) const = 0;
};
