// The smallest repository: its searches and addresses are functions of the test, all else is the base's.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/network/OSPrivate.h"
#include "repository/MediaFileRepositoryBase.h"

namespace repository_tests {

// A page of so many assets; their ids are the words, a hyphen and a number.
inline SearchResults pageOf(WideString const& words, std::uint16_t count) {
    SearchResults results;
    for (std::uint16_t number = 0; number < count; ++number) {
        RemoteAsset asset;
        asset.id = words + L"-" + WideString(std::to_wstring(number).c_str());
        results.assets.push_back(asset);
    }
    results.pageCount = 1;
    results.totalCount = count;
    return results;
}

inline RemoteAsset assetWithId(wchar_t const* id) {
    RemoteAsset asset;
    asset.id = id;
    return asset;
}

inline HTTPConnectionInfo serverNamed(wchar_t const* name) {
    HTTPConnectionInfo info;
    info.server = name;
    info.secure = 1;
    return info;
}

// A provider that opens nothing.
class TestProvider : public iFileProvider {
public:
    Zq::Ptr<iFile> openFile(WideString const&, int access, int sharing, int hint, int further) override {
        opened.push_back({access, sharing, hint, further});
        return file;
    }
    bool handlesFile(WideString const&) const override { return true; }
    iFileManager::eCopyRC copyFile(WideString const&, WideString const&, bool,
                                   iFileManager::ProgressCallback) override {
        return iFileManager::eSourceNotOpened;
    }
    WideString getProviderName() const override { return name; }
    WideString mapPath(WideString const& path) const override { return path; }
    bool isRemote() const override { return true; }
    WideString mapPathForReading(WideString const& path) const override { return path; }
    WideString mapPathForWriting(WideString const& path) const override { return path; }

    std::vector<std::vector<int>> opened;
    Zq::Ptr<iFile> file;
    WideString name = L"T7";
};

class TestRepository : public MediaFileRepositoryBase {
public:
    std::int32_t connect(HTTPConnectionInfo const& info, LoggerHandle) override {
        if (Zq::Ptr<iHTTPServer> const server = OSPrivate().network().createHTTPServer(info)) {
            ServiceConnection.setServer(server);
        }
        return isConnected() ? 0 : 11;
    }
    RepositoryDescription getDescription() const override {
        RepositoryDescription description = newDescription();
        description.name = L"Test";
        return description;
    }
    LightweightVector<LogAttribute> getLogAttributes() const override { return {}; }
    WideString getShortName() const override { return L"TR"; }
    LightweightVector<SearchOptionGroup> getSearchOptions() override { return {}; }
    RemoteAsset findRemoteAsset(Cookie const&) override { return {}; }
    bool fetchFullMedia(LightweightVector<RemoteAsset> const&, std::int32_t, LoggerHandle) override {
        return false;
    }
    std::int32_t login(configb const&) override { return 17; }
    WideString getLoginForm() override { return {}; }
    WideString getLoginLinkForm() override { return {}; }
    void logout() override {}
    LightweightVector<RemoteAsset> getPurchasedAssets() override { return {}; }
    std::int32_t requestExternalPurchase(LightweightVector<RemoteAsset> const&) override { return 0; }
    std::int32_t requestCreditPurchase(LightweightVector<RemoteAsset> const&) override { return 0; }

    // Answers a search; pages of one asset unless the test sets another.
    std::function<SearchResults(SearchQuery const&)> answer = [](SearchQuery const& query) {
        return pageOf(getSearchPattern(query), 1);
    };
    std::vector<SearchQuery> searches; // what reached searchInternal
    // Address of an asset's file.
    std::function<WideString(RemoteAsset const&, eMediaType)> remote = [](RemoteAsset const& asset,
                                                                          eMediaType kind) {
        return L"https://media.test/" + asset.id + (kind == eThumbnail ? L".jpeg" : L".mov");
    };
    std::function<EditModifier(RemoteAsset const&)> edits = [](RemoteAsset const&) { return EditModifier(); };

    using MediaFileRepositoryBase::analyse;
    using MediaFileRepositoryBase::downloadThumbnail;
    using MediaFileRepositoryBase::getDownloadFolder;
    using MediaFileRepositoryBase::getFilesInternal;
    using MediaFileRepositoryBase::getLocalMediaLocation;
    using MediaFileRepositoryBase::notifier;
    using MediaFileRepositoryBase::parseURI;
    using MediaFileRepositoryBase::partialFolder;
    using MediaFileRepositoryBase::providerPointer;
    using MediaFileRepositoryBase::purchasedIds;
    using MediaFileRepositoryBase::remoteToVirtualLocal;
    using MediaFileRepositoryBase::searchResultCache;
    using MediaFileRepositoryBase::ServiceConnection;
    using MediaFileRepositoryBase::signedInUser;
    using MediaFileRepositoryBase::thumbInit;

protected:
    WideString getFileExtension() const override { return L"mov"; }
    WideString getRemoteLocation(RemoteAsset const& asset, eMediaType kind) const override {
        return remote(asset, kind);
    }
    EditModifier createEdit(RemoteAsset const& asset) override { return edits(asset); }
    SearchResults searchInternal(SearchQuery const& query) override {
        searches.push_back(query);
        return answer(query);
    }
};

} // namespace repository_tests
