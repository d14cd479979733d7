// A module with a repository of a single clip, which needs no service.

#include "host/modules/PluginEntry.h"
#include "host/modules/ZqPluginBase.h"
#include "repository/MediaFileRepositoryBase.h"

namespace {

constexpr std::uint32_t shelfTag = 0x53484c46; // "SHLF"

class ShelfRepository final : public MediaFileRepositoryBase, public ZqResourceTypeBase {
public:
    ShelfRepository() : ZqResourceTypeBase("shelf", ZqResourceType::mediaFileRepository, shelfTag) {}

    std::int32_t connect(HTTPConnectionInfo const&, LoggerHandle) override { return 0; }
    bool isConnected() const override { return true; }
    RepositoryDescription getDescription() const override {
        RepositoryDescription description = newDescription();
        description.name = L"Shelf";
        description.shortName = getShortName();
        return description;
    }
    LightweightVector<LogAttribute> getLogAttributes() const override {
        return {LogAttribute(LogAttribute::eName)};
    }
    WideString getShortName() const override { return L"SH"; }
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

protected:
    WideString getFileExtension() const override { return L"mov"; }
    WideString getRemoteLocation(RemoteAsset const&, eMediaType) const override { return {}; }
    EditModifier createEdit(RemoteAsset const&) override { return {}; }
    SearchResults searchInternal(SearchQuery const& query) override {
        RemoteAsset asset;
        asset.id = L"1";
        asset.logAttributes.add(LogAttribute(LogAttribute::eName), getSearchPattern(query));
        SearchResults results;
        results.assets.push_back(asset);
        results.pageCount = 1;
        results.totalCount = 1;
        return results;
    }
};

class ShelfPlugin final : public ZqDeviceDriverBase {
public:
    ShelfPlugin() : ZqDeviceDriverBase(PluginCategory::deviceDriver, "1.0", "Shelf") {}

    void postLoadInitialization() override {
        ZqDeviceDriverBase::postLoadInitialization();
        registerComponent(new ShelfRepository);
    }
};

} // namespace

extern "C" ZQ_API std::uint8_t zqPluginInstance(ZqPluginBase** instance) {
    static ShelfPlugin plugin;
    *instance = &plugin;
    return plugin.isLoaded();
}
