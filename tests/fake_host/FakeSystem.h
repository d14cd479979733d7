// Files, shell, clock, log, tasks, cache and pictures in memory.
#pragma once

#include <algorithm>
#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "host/files/iCacheStore.h"
#include "host/files/iFileManager.h"
#include "host/log/Log.h"
#include "host/log/LoggerHandle.h"
#include "host/os/getTime32.h"
#include "host/os/iShell.h"
#include "host/picture/iHostImage.h"
#include "host/tasks/BackgroundTaskQueueBase.h"
#include "repository/iFileProvider.h"

namespace fake {

// A disk in memory, shared by the files that are open on it. Thread: any.
struct Disk {
    std::mutex mutex;
    std::map<WideString, std::string> files;
    std::vector<WideString> folders;
};

class FileManager final : public iFileManager {
public:
    bool fileExists(WideString const& path) override;
    bool deleteFile(WideString const& path) override;
    bool createDirectory(WideString const& path) override;
    Zq::Ptr<iFile> openForWrite(WideString const& path, int access, int sharing, int hint,
                                int further) override;
    // Leads to the provider of a virtual path.
    Zq::Ptr<iFile> openForRead(WideString const& path) override;
    eCopyRC copyFile(WideString const& source, WideString const& destination, bool overwrite,
                     ProgressCallback progress) override;
    wchar_t pathSeparator() const override { return L'/'; }
    WideString getHostName() const override { return hostName; }
    void registerProvider(iFileProvider& provider) override { providers.push_back(&provider); }
    void forgetProvidersOf(ZqComponentBase& component) override;
    void forgetProvider(iFileProvider const& provider) noexcept override { std::erase(providers, &provider); }
    iFileProvider* findProvider(WideString const& path) override;

    WideString hostName = L"zq host";
    std::vector<iFileProvider*> providers;
    bool refuseWriting = false;
    bool throwOnForgetting = false;
    std::shared_ptr<Disk> disk = std::make_shared<Disk>();
};

class Shell final : public iShell {
public:
    bool openInBrowser(WideString const& url) override {
        opened.push_back(url);
        return true;
    }
    WideString getStandardFolder(int number) override {
        return number == mediaFolder ? WideString(L"/media/") : WideString();
    }
    std::vector<WideString> opened;
};

// Stands still until the test moves it.
class Clock final : public iClock {
public:
    std::uint32_t seconds() override { return now; }
    std::atomic<std::uint32_t> now{1'700'000'000};
};

class LogSink final : public iLogSink {
public:
    void write(std::string_view line) override {
        std::lock_guard const lock(mutex_);
        lines_.emplace_back(line);
    }
    [[nodiscard]] std::vector<std::string> lines() const {
        std::lock_guard const lock(mutex_);
        return lines_;
    }

private:
    mutable std::mutex mutex_;
    std::vector<std::string> lines_;
};

class TaskContext final : public iTaskContext {
public:
    iBackgroundTask::eStatus currentTaskStatus() override { return status; }
    std::atomic<iBackgroundTask::eStatus> status{iBackgroundTask::eRunning};
};

// Entries in memory, with a path each that leads nowhere on the real disk. Thread: any.
class Cache final : public iCacheStore {
public:
    WideString find(WideString const& key) override;
    WideString store(WideString const& key, void const* bytes, std::size_t size) override;
    WideString partialFolder() override { return L"/cache/partial"; }
    // The bytes behind a path that find or store gave.
    [[nodiscard]] std::string bytesAt(WideString const& path) const;
    void forget(WideString const& key);

private:
    mutable std::mutex mutex_;
    std::map<WideString, std::string> entries_;
};

class Image final : public iHostImage {
public:
    std::uint32_t getWidth() const noexcept override { return 1; }
    std::uint32_t getHeight() const noexcept override { return 1; }
    std::uint8_t const* getPixels() const noexcept override { return pixel_; }

private:
    std::uint8_t pixel_[4] = {255, 128, 0, 255};
};

// Takes every cached file that begins with "picture" for a picture.
class ImageDecoder final : public iImageDecoder {
public:
    explicit ImageDecoder(Cache& cache) : cache_(cache) {}
    Zq::Ptr<iHostImage> decodeFile(WideString const& path) override {
        return cache_.bytesAt(path).starts_with("picture") ? Zq::makeShared<Image>() : Zq::Ptr<Image>();
    }

private:
    Cache& cache_;
};

// Records what an operation tells its user.
class ImportLog final : public LoggerBase {
public:
    struct Line {
        WideString text;
        eOutputType type;
        int indent;
    };
    void write(WideString const& text, eOutputType type) override { lines.push_back({text, type, indent}); }
    void incIndent() override { ++indent; }
    void decIndent() override { --indent; }
    void reportProgress(double fraction, WideString const&) override { progress.push_back(fraction); }

    std::vector<Line> lines;
    std::vector<double> progress;
    int indent = 0;
};

} // namespace fake
