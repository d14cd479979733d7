// The host's file layer. Paths are wide text in this system's form; a path that begins with "Virtual:" and
// the name of a registered provider leads to that provider.
#pragma once

#include <cstdint>

#include "host/files/iFile.h"
#include "host/object/Ptr.h"
#include "host/text/LightweightString.h"

class ZqComponentBase;
class iFileProvider;

class ZQ_API iFileManager {
public:
    // Result of a copy.
    enum eCopyRC : std::int32_t {
        eCopied = 0,
        eSourceNotOpened = 1,
        eCancelled = 2,
        eDestinationNotWritten = 3, // it exists, cannot be written, or its disk is full
        eTransferFailed = 4,        // the source ended early or changed
    };
    // Told of bytes done and bytes in all.
    struct ProgressCallback {
        void (*function)(void* context, std::uint64_t done, std::uint64_t total) = nullptr;
        void* context = nullptr;
    };

    virtual ~iFileManager();

    // Thread: any, for all of these.
    [[nodiscard]] virtual bool fileExists(WideString const& path) = 0;
    // True when no such file exists any more.
    virtual bool deleteFile(WideString const& path) = 0;
    // Makes the folder and those above it; true when it is there afterwards.
    virtual bool createDirectory(WideString const& path) = 0;
    // A new or emptied file; null when it cannot be written. The four integers are access, sharing, and two
    // hints; (2, 1, 0, 0) is write, others may read.
    [[nodiscard]] virtual Zq::Ptr<iFile> openForWrite(WideString const& path, int access, int sharing,
                                                      int hint, int further) = 0;
    // The file for reading, of a disk or of a provider; null when it cannot be opened.
    [[nodiscard]] virtual Zq::Ptr<iFile> openForRead(WideString const& path) = 0;
    // Copies a file of a disk or of a provider to a disk. The destination is whole or as it was before; an
    // old one stays, and the copy fails, unless `overwrite`.
    [[nodiscard]] virtual eCopyRC copyFile(WideString const& source, WideString const& destination,
                                           bool overwrite, ProgressCallback progress) = 0;
    [[nodiscard]] virtual wchar_t pathSeparator() const = 0;
    // Name of the host application, as a person reads it.
    [[nodiscard]] virtual WideString getHostName() const = 0;

    // Paths that begin with the provider's name go to it from now on. The provider stays its owner's, and is
    // forgotten when it ends.
    virtual void registerProvider(iFileProvider& provider) = 0;
    // Forgets the providers that are part of this component of a plug-in: before the component ends, so that
    // no path leads to one that is half gone.
    virtual void forgetProvidersOf(ZqComponentBase& component) = 0;
    // Forgets that provider; nothing happens for one that is not registered. Asks the provider nothing.
    virtual void forgetProvider(iFileProvider const& provider) noexcept = 0;
    // The provider of a virtual path; null where there is none.
    [[nodiscard]] virtual iFileProvider* findProvider(WideString const& path) = 0;
};
