// Services of the installed host with somebody looking on: what happens between them, in its order.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/HostServices.h"
#include "host/files/iCacheStore.h"
#include "host/files/iFileManager.h"
#include "host/network/OSPrivate.h"
#include "host/preferences/EditorPreferences.h"

namespace fake {

class WatchedPreferences final : public iPreferenceStore {
public:
    using Watcher = std::function<void(char const* key)>;

    explicit WatchedPreferences(iPreferenceStore& store) : store_(store) {}
    std::optional<bool> readBool(char const* key) override { return told(onRead, key), store_.readBool(key); }
    std::optional<std::int32_t> readInt(char const* key) override {
        return told(onRead, key), store_.readInt(key);
    }
    std::optional<WideString> readText(char const* key) override {
        return told(onRead, key), store_.readText(key);
    }
    void write(char const* key, bool value) override { told(onWrite, key), store_.write(key, value); }
    void write(char const* key, std::int32_t value) override { told(onWrite, key), store_.write(key, value); }
    void write(char const* key, WideString const& value) override {
        told(onWrite, key), store_.write(key, value);
    }
    std::uint64_t revision() override { return store_.revision(); }

    // Called before the store is.
    Watcher onRead;
    Watcher onWrite;

private:
    static void told(Watcher const& watcher, char const* key) {
        if (watcher) {
            watcher(key);
        }
    }
    iPreferenceStore& store_;
};

class WatchedFiles final : public iFileManager {
public:
    explicit WatchedFiles(iFileManager& files) : files_(files) {}
    bool fileExists(WideString const& path) override {
        onCall("fileExists", path);
        return files_.fileExists(path);
    }
    bool deleteFile(WideString const& path) override {
        onCall("deleteFile", path);
        return files_.deleteFile(path);
    }
    bool createDirectory(WideString const& path) override {
        onCall("createDirectory", path);
        return files_.createDirectory(path);
    }
    Zq::Ptr<iFile> openForWrite(WideString const& path, int access, int sharing, int hint,
                                int further) override {
        onCall("openForWrite", path);
        return files_.openForWrite(path, access, sharing, hint, further);
    }
    Zq::Ptr<iFile> openForRead(WideString const& path) override { return files_.openForRead(path); }
    eCopyRC copyFile(WideString const& source, WideString const& destination, bool overwrite,
                     ProgressCallback progress) override {
        return files_.copyFile(source, destination, overwrite, progress);
    }
    wchar_t pathSeparator() const override { return files_.pathSeparator(); }
    WideString getHostName() const override { return files_.getHostName(); }
    void registerProvider(iFileProvider& provider) override {
        onRegister(provider);
        files_.registerProvider(provider);
    }
    void forgetProvidersOf(ZqComponentBase& component) override { files_.forgetProvidersOf(component); }
    void forgetProvider(iFileProvider const& provider) noexcept override { files_.forgetProvider(provider); }
    iFileProvider* findProvider(WideString const& path) override { return files_.findProvider(path); }

    std::function<void(iFileProvider&)> onRegister = [](iFileProvider&) {};
    // Before a question about a path on the disk, and before a change of it.
    std::function<void(char const* call, WideString const& path)> onCall = [](char const*,
                                                                              WideString const&) {};

private:
    iFileManager& files_;
};

class WatchedCache final : public iCacheStore {
public:
    explicit WatchedCache(iCacheStore& cache) : cache_(cache) {}
    WideString find(WideString const& key) override { return cache_.find(key); }
    WideString store(WideString const& key, void const* bytes, std::size_t size) override {
        return cache_.store(key, bytes, size);
    }
    WideString partialFolder() override {
        onPartialFolder();
        return cache_.partialFolder();
    }

    std::function<void()> onPartialFolder;

private:
    iCacheStore& cache_;
};

class WatchedSecurity final : public iSecurity {
public:
    explicit WatchedSecurity(iSecurity& security) : security_(security) {}
    Zq::Ptr<iHash> getHash() override {
        onGetHash();
        return security_.getHash();
    }

    std::function<void()> onGetHash;

private:
    iSecurity& security_;
};

// The watched services in place of the installed ones, from construction to destruction.
class WatchedHost {
public:
    WatchedHost()
        : preferences(*installedHost().preferences), files(*installedHost().files),
          cache(*installedHost().cache), security(*installedHost().security) {
        HostServices services = installedHost();
        services.preferences = &preferences;
        services.files = &files;
        services.cache = &cache;
        services.security = &security;
        cache.onPartialFolder = [] {};
        security.onGetHash = [] {};
        before_ = installHost(services);
    }
    ~WatchedHost() { installHost(before_); }
    WatchedHost(WatchedHost const&) = delete;
    WatchedHost& operator=(WatchedHost const&) = delete;

    WatchedPreferences preferences;
    WatchedFiles files;
    WatchedCache cache;
    WatchedSecurity security;

private:
    HostServices before_;
};

} // namespace fake
