#include "tests/fake_host/FakeSystem.h"

#include <stdexcept>

#include "host/modules/ZqComponentBase.h"
#include "host/text/Numbers.h"

namespace fake {

namespace {

class File final : public iFile {
public:
    File(std::shared_ptr<Disk> disk, WideString path) : disk_(std::move(disk)), path_(std::move(path)) {}

    bool write(void const* bytes, std::uint32_t size) override {
        std::lock_guard const lock(disk_->mutex);
        std::string& content = disk_->files[path_];
        content.resize(std::max<std::size_t>(content.size(), position_ + size));
        content.replace(position_, size, static_cast<char const*>(bytes), size);
        position_ += size;
        return true;
    }
    std::int64_t read(void* bytes, std::uint32_t size) override {
        std::lock_guard const lock(disk_->mutex);
        std::size_t const count = disk_->files[path_].copy(static_cast<char*>(bytes), size, position_);
        position_ += count;
        return static_cast<std::int64_t>(count);
    }
    bool setPosition(std::uint64_t position) override {
        if (position > getSize()) {
            return false;
        }
        position_ = position;
        return true;
    }
    std::uint64_t getPosition() override { return position_; }
    std::uint64_t getSize() override {
        std::lock_guard const lock(disk_->mutex);
        return disk_->files[path_].size();
    }

private:
    std::shared_ptr<Disk> disk_;
    WideString path_;
    std::size_t position_ = 0;
};

} // namespace

bool FileManager::fileExists(WideString const& path) {
    std::lock_guard const lock(disk->mutex);
    return disk->files.contains(path);
}

bool FileManager::deleteFile(WideString const& path) {
    std::lock_guard const lock(disk->mutex);
    disk->files.erase(path);
    return true;
}

bool FileManager::createDirectory(WideString const& path) {
    std::lock_guard const lock(disk->mutex);
    disk->folders.push_back(path);
    return true;
}

Zq::Ptr<iFile> FileManager::openForWrite(WideString const& path, int, int, int, int) {
    if (refuseWriting) {
        return {};
    }
    std::lock_guard const lock(disk->mutex);
    disk->files[path].clear();
    return Zq::makeShared<File>(disk, path);
}

Zq::Ptr<iFile> FileManager::openForRead(WideString const& path) {
    if (iFileProvider* const provider = findProvider(path)) {
        return provider->openFile(path, 1, 0, 1, 0);
    }
    std::lock_guard const lock(disk->mutex);
    return disk->files.contains(path) ? Zq::Ptr<iFile>(Zq::makeShared<File>(disk, path)) : Zq::Ptr<iFile>();
}

iFileManager::eCopyRC FileManager::copyFile(WideString const& source, WideString const& destination,
                                            bool overwrite, ProgressCallback progress) {
    if (iFileProvider* const provider = findProvider(source)) {
        return provider->copyFile(source, destination, overwrite, progress);
    }
    std::lock_guard const lock(disk->mutex);
    auto const found = disk->files.find(source);
    if (found == disk->files.end()) {
        return eSourceNotOpened;
    }
    if (!overwrite && disk->files.contains(destination)) {
        return eDestinationNotWritten;
    }
    disk->files[destination] = found->second;
    return eCopied;
}

void FileManager::forgetProvidersOf(ZqComponentBase& component) {
    if (throwOnForgetting) {
        throw std::runtime_error("the file layer has failed");
    }
    std::erase_if(providers, [&component](iFileProvider* provider) {
        return dynamic_cast<ZqComponentBase*>(provider) == &component;
    });
}

iFileProvider* FileManager::findProvider(WideString const& path) {
    for (iFileProvider* const provider : providers) {
        if (path.startsWith((L"Virtual:" + provider->getProviderName() + L' ').view())) {
            return provider;
        }
    }
    return nullptr;
}

WideString Cache::find(WideString const& key) {
    std::lock_guard const lock(mutex_);
    return entries_.contains(key) ? L"/cache/" + key : WideString();
}

WideString Cache::store(WideString const& key, void const* bytes, std::size_t size) {
    std::lock_guard const lock(mutex_);
    entries_[key].assign(static_cast<char const*>(bytes), size);
    return L"/cache/" + key;
}

std::string Cache::bytesAt(WideString const& path) const {
    std::lock_guard const lock(mutex_);
    static constexpr std::wstring_view folder = L"/cache/";
    auto const found =
        path.startsWith(folder) ? entries_.find(path.substr(std::uint32_t{folder.size()})) : entries_.end();
    return found != entries_.end() ? found->second : std::string();
}

void Cache::forget(WideString const& key) {
    std::lock_guard const lock(mutex_);
    entries_.erase(key);
}

} // namespace fake
