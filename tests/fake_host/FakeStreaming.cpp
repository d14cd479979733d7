#include "tests/fake_host/FakeStreaming.h"

#include "host/os/OS.h"
#include "host/tasks/BackgroundTaskQueueBase.h"
#include "tests/fake_host/FakeNetwork.h"
#include "tests/fake_host/Texts.h"

namespace fake {

namespace {

class File final : public StreamingFile {
public:
    File(Zq::Ptr<iHTTPServer> server, std::string content, std::shared_ptr<int> alive)
        : server_(std::move(server)), content_(std::move(content)), alive_(std::move(alive)) {}

    bool write(void const*, std::uint32_t) override { return false; }
    std::int64_t read(void* bytes, std::uint32_t size) override {
        std::size_t const count = content_.copy(static_cast<char*>(bytes), size, position_);
        position_ += count;
        return static_cast<std::int64_t>(count);
    }
    bool setPosition(std::uint64_t position) override {
        if (position > content_.size()) {
            return false;
        }
        position_ = position;
        return true;
    }
    std::uint64_t getPosition() override { return position_; }
    std::uint64_t getSize() override { return content_.size(); }
    iFileManager::eCopyRC saveAs(WideString const& destination, bool overwrite,
                                 iFileManager::ProgressCallback progress) override {
        iFileManager& files = OS().fileManager();
        if (BackgroundTaskQueueBase::getCurrentTaskStatus() == iBackgroundTask::eCancelling) {
            return iFileManager::eCancelled;
        }
        if (!overwrite && files.fileExists(destination)) {
            return iFileManager::eDestinationNotWritten;
        }
        Zq::Ptr<iFile> const file = files.openForWrite(destination, 2, 1, 0, 0);
        if (!file || !file->write(content_.data(), static_cast<std::uint32_t>(content_.size()))) {
            return iFileManager::eDestinationNotWritten;
        }
        if (progress.function != nullptr) {
            progress.function(progress.context, content_.size(), content_.size());
        }
        return iFileManager::eCopied;
    }

private:
    Zq::Ptr<iHTTPServer> server_;
    std::string content_;
    std::shared_ptr<int> alive_;
    std::size_t position_ = 0;
};

} // namespace

Zq::Ptr<StreamingFile> StreamingFiles::create(Zq::Ptr<iHTTPServer> const& server,
                                              WideString const& remoteName, WideString source,
                                              WideString const& cachePath) {
    std::lock_guard const lock(mutex_);
    Open const open{server ? serverName(*server) : std::string(), utf8(remoteName), utf8(source),
                    utf8(cachePath)};
    opened_.push_back(open);
    if (!server || refused_.contains(open.remoteName)) {
        return {};
    }
    auto const found = contents_.find({open.server, open.remoteName});
    return Zq::makeShared<File>(server, found != contents_.end() ? found->second : std::string(), alive_);
}

void StreamingFiles::put(std::string const& server, std::string const& name, std::string content) {
    std::lock_guard const lock(mutex_);
    contents_[{server, name}] = std::move(content);
}

void StreamingFiles::refuse(std::string const& name) {
    std::lock_guard const lock(mutex_);
    refused_.insert(name);
}

std::vector<StreamingFiles::Open> StreamingFiles::opened() const {
    std::lock_guard const lock(mutex_);
    return opened_;
}

} // namespace fake
