// A repository without a service: its clips, its account and what goes wrong are the test's.
#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "repository/MediaFileRepositoryBase.h"

namespace panel_tests {

// What a test changes is changed before the desk's thread runs, or by work at the desk.
class ShelfRepository final : public MediaFileRepositoryBase {
public:
    std::int32_t connect(HTTPConnectionInfo const&, LoggerHandle) override {
        return connected = connectResult;
    }
    [[nodiscard]] bool isConnected() const override { return connected == 0; }
    [[nodiscard]] RepositoryDescription getDescription() const override;
    [[nodiscard]] LightweightVector<LogAttribute> getLogAttributes() const override { return columns; }
    [[nodiscard]] WideString getShortName() const override { return L"SH"; }
    [[nodiscard]] LightweightVector<SearchOptionGroup> getSearchOptions() override {
        return makeOptions(*this);
    }
    [[nodiscard]] RemoteAsset findRemoteAsset(Cookie const&) override { return {}; }
    bool fetchFullMedia(LightweightVector<RemoteAsset> const& assets, std::int32_t,
                        LoggerHandle log) override {
        return onFetch(assets, log);
    }
    std::int32_t login(configb const& typed) override { return onLogin(*this, typed); }
    [[nodiscard]] WideString getLoginForm() override { return form; }
    [[nodiscard]] WideString getLoginLinkForm() override { return linkForm; }
    void logout() override {
        signedInUser.clear();
        purchasedIds.clear();
    }
    [[nodiscard]] LightweightVector<RemoteAsset> getPurchasedAssets() override;
    std::int32_t requestExternalPurchase(LightweightVector<RemoteAsset> const& assets) override {
        return onPurchase(*this, assets, true);
    }
    std::int32_t requestCreditPurchase(LightweightVector<RemoteAsset> const& assets) override {
        return onPurchase(*this, assets, false);
    }

    [[nodiscard]] WideString getAttribute(RemoteAsset const& asset,
                                          LogAttribute const& attribute) const override {
        return onAttribute ? onAttribute(asset, attribute)
                           : MediaFileRepositoryBase::getAttribute(asset, attribute);
    }

    void tellOptionsChanged() { notifier.issueNotification(NotifyMsg(), eSearchOptionsChanged); }

    // A clip of that number with a name and a price.
    [[nodiscard]] static RemoteAsset clip(std::string const& id, std::string const& name,
                                          std::string const& price);

    std::int32_t connectResult = 0;
    std::int32_t connected = 11;
    RepositoryDescription description;
    LightweightVector<LogAttribute> columns{LogAttribute(LogAttribute::eName),
                                            LogAttribute(LogAttribute::ePrice)};
    WideString form = L"{\"\":[{\"name\":\"username\",\"type\":\"text\"}]}";
    WideString linkForm;
    std::function<LightweightVector<SearchOptionGroup>(ShelfRepository&)> makeOptions = [](auto&) {
        return LightweightVector<SearchOptionGroup>();
    };
    std::function<std::int32_t(ShelfRepository&, configb const&)> onLogin = [](ShelfRepository& self,
                                                                               configb const&) {
        self.signedInUser = L"ada";
        return 0;
    };
    // On the desk's thread; the default finds nothing of nothing.
    std::function<SearchResults(SearchQuery const&)> onSearch = [](SearchQuery const&) {
        return SearchResults();
    };
    // The list of what is owned; nothing where the service does not answer.
    std::function<LightweightVector<RemoteAsset>(ShelfRepository&)> onOwned = [](auto&) {
        return LightweightVector<RemoteAsset>();
    };
    std::function<std::int32_t(ShelfRepository&, LightweightVector<RemoteAsset> const&, bool byPage)>
        onPurchase = [](auto&, auto&, bool) { return 0; };
    // On a task's thread.
    std::function<bool(LightweightVector<RemoteAsset> const&, LoggerHandle const&)> onFetch =
        [](auto&, auto&) { return false; };
    std::function<WideString(RemoteAsset const&, LogAttribute const&)> onAttribute; // empty: the usual one
    std::map<WideString, WideString> thumbnailPaths;
    WideString thumbnailBase; // empty: pictures have no address
    int ownedReads = 0;

    using MediaFileRepositoryBase::signedInUser;

protected:
    [[nodiscard]] WideString getFileExtension() const override { return L"mov"; }
    [[nodiscard]] WideString getRemoteLocation(RemoteAsset const& asset, eMediaType kind) const override {
        return kind == eThumbnail && !thumbnailBase.isEmpty() ? thumbnailBase + asset.id : WideString();
    }
    [[nodiscard]] WideString getLocalMediaLocation(RemoteAsset const& asset, eMediaType) const override {
        auto const found = thumbnailPaths.find(asset.id);
        return found != thumbnailPaths.end() ? found->second : WideString();
    }
    [[nodiscard]] EditModifier createEdit(RemoteAsset const&) override { return {}; }
    [[nodiscard]] SearchResults searchInternal(SearchQuery const& query) override { return onSearch(query); }
};

} // namespace panel_tests
