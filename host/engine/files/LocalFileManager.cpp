#include "host/engine/files/LocalFileManager.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host/engine/files/DiskSpace.h"
#include "host/engine/files/LocalFile.h"
#include "host/engine/files/LocalPath.h"
#include "host/engine/files/copyLocalFile.h"
#include "host/log/Log.h"
#include "host/modules/ZqComponentBase.h"
#include "repository/iFileProvider.h"

namespace engine {

namespace {

constexpr std::wstring_view virtualPrefix = L"Virtual:";

// The path of a file on disk; empty for a virtual path and for text that is no path.
std::filesystem::path diskPath(WideString const& path) {
    return path.startsWith(virtualPrefix) ? std::filesystem::path() : localPath(path);
}

// The file, new or emptied, with room for so many bytes; none where it cannot be had, and an old one is then
// as it was. `errno` tells why.
FileDescriptor openEmptied(std::filesystem::path const& file, std::uint64_t announced_bytes) {
    // O_NONBLOCK: a pipe in the file's place fails here instead of waiting for its reader.
    FileDescriptor opened(::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0644));
    struct stat status {};
    if (!opened || ::fstat(opened.get(), &status) != 0) {
        return {};
    }
    if (!S_ISREG(status.st_mode)) {
        errno = EINVAL;
        return {};
    }
    if (!reserveSpace(opened.get(), announced_bytes)) {
        releaseBehindEnd(opened.get());
        errno = ENOSPC;
        return {};
    }
    if (status.st_size != 0) {
        if (::ftruncate(opened.get(), 0) != 0) {
            return {};
        }
        // What was reserved for the old content is gone with it. Should another take the room in between,
        // writing tells.
        (void)reserveSpace(opened.get(), announced_bytes);
    }
    return opened;
}

} // namespace

bool LocalFileManager::fileExists(WideString const& path) {
    if (iFileProvider const* const provider = findProvider(path)) {
        return provider->handlesFile(path);
    }
    struct stat status {};
    return ::stat(diskPath(path).c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

bool LocalFileManager::deleteFile(WideString const& path) {
    std::filesystem::path const file = diskPath(path);
    if (file.empty() || (::unlink(file.c_str()) != 0 && errno != ENOENT && errno != ENOTDIR)) {
        return false;
    }
    // A note that outlived the file would take the next one at its place for cut short.
    journal_.forgetEnded(file);
    return true;
}

bool LocalFileManager::createDirectory(WideString const& path) {
    std::filesystem::path const folder = diskPath(path);
    std::error_code error;
    if (!folder.empty()) {
        std::filesystem::create_directories(folder, error);
    }
    return !folder.empty() && std::filesystem::is_directory(folder, error);
}

Zq::Ptr<iFile> LocalFileManager::openForWrite(WideString const& path, int, int, int, int) {
    std::filesystem::path const file = diskPath(path);
    if (file.empty()) {
        return {};
    }
    Zq::Ptr<FileTransfer> transfer = FileTransfer::current();
    std::uint64_t const announced = transfer ? transfer->announced_bytes() : 0;
    if (std::string const reason = announced != 0 ? explainNoRoom(file, announced) : std::string();
        !reason.empty()) {
        Log("%s is not written: %s", file.c_str(), reason.c_str());
        return {};
    }
    std::optional<WriteJournal::Note> note = journal_.begin(file);
    if (!note) {
        Log("%s is not written: the journal of unfinished files cannot be", file.c_str());
        return {};
    }
    bool const isNew = ::access(file.c_str(), F_OK) != 0;
    FileDescriptor opened = openEmptied(file, announced);
    if (!opened) {
        Log("%s cannot be written: %s", file.c_str(), std::generic_category().message(errno).c_str());
        if (isNew) {
            ::unlink(file.c_str());
        }
        note->finish();
        return {};
    }
    journal_.forgetEnded(file);
    return Zq::makeShared<LocalFile>(std::move(opened), std::move(note), std::move(transfer));
}

Zq::Ptr<iFile> LocalFileManager::openForRead(WideString const& path) {
    if (iFileProvider* const provider = findProvider(path)) {
        return provider->openFile(path, 1, 0, 1, 0);
    }
    std::filesystem::path const file = diskPath(path);
    if (file.empty()) {
        return {};
    }
    FileDescriptor opened(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status {};
    if (!opened || ::fstat(opened.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return {};
    }
    return Zq::makeShared<LocalFile>(std::move(opened), std::nullopt, Zq::Ptr<FileTransfer>());
}

iFileManager::eCopyRC LocalFileManager::copyFile(WideString const& source, WideString const& destination,
                                                 bool overwrite, ProgressCallback progress) {
    iFileProvider* const provider = findProvider(source);
    std::filesystem::path const file = diskPath(destination);
    eCopyRC const result = provider != nullptr ? provider->copyFile(source, destination, overwrite, progress)
                                               : copyLocalFile(diskPath(source), file, overwrite, progress);
    if (result == eCopied && !file.empty()) {
        journal_.forgetEnded(file);
    }
    return result;
}

void LocalFileManager::registerProvider(iFileProvider& provider) {
    std::lock_guard const lock(mutex_);
    if (std::ranges::find(providers_, &provider) == providers_.end()) {
        providers_.push_back(&provider);
    }
}

void LocalFileManager::forgetProvidersOf(ZqComponentBase& component) {
    std::lock_guard const lock(mutex_);
    std::erase_if(providers_, [&component](iFileProvider* provider) {
        return dynamic_cast<ZqComponentBase*>(provider) == &component;
    });
}

void LocalFileManager::forgetProvider(iFileProvider const& provider) noexcept {
    std::lock_guard const lock(mutex_);
    std::erase(providers_, &provider);
}

iFileProvider* LocalFileManager::findProvider(WideString const& path) {
    if (!path.startsWith(virtualPrefix)) {
        return nullptr;
    }
    std::wstring_view const rest = path.view().substr(virtualPrefix.size());
    std::lock_guard const lock(mutex_);
    iFileProvider* best = nullptr;
    std::uint32_t longest = 0;
    for (iFileProvider* const provider : providers_) {
        WideString const name = provider->getProviderName();
        if (name.length() > longest && rest.starts_with((name + L' ').view())) {
            best = provider;
            longest = name.length();
        }
    }
    return best;
}

} // namespace engine
