// A module whose repository needs no service: its one clip is fixed, and its texts are as hostile as texts
// get.

#include "host/web/URIBuilder.h"
#include "repository/MediaFileRepositoryBase.h"
#include "tests/zq/modules/ModulePlugin.h"

namespace {

class FixedRepository final : public MediaFileRepositoryBase, public ZqResourceTypeBase {
public:
    FixedRepository() : ZqResourceTypeBase("fixed", ZqResourceType::mediaFileRepository, 0x46495845) {}

    std::int32_t connect(HTTPConnectionInfo const&, LoggerHandle) override { return 0; }
    bool isConnected() const override { return true; }
    RepositoryDescription getDescription() const override {
        RepositoryDescription description = newDescription();
        description.name = L"Fixed \x1b[5m\x202e";
        description.shortName = getShortName();
        return description;
    }
    LightweightVector<LogAttribute> getLogAttributes() const override {
        return {LogAttribute(LogAttribute::eName), LogAttribute(LogAttribute::ePrice)};
    }
    WideString getShortName() const override { return FIXED_NAME; }
    int priority() const override { return FIXED_PRIORITY; }
    LightweightVector<SearchOptionGroup> getSearchOptions() override { return {}; }
    RemoteAsset findRemoteAsset(Cookie const&) override { return {}; }
    bool fetchFullMedia(LightweightVector<RemoteAsset> const&, std::int32_t, LoggerHandle) override {
        return false;
    }
    std::int32_t login(configb const&) override { return 17; }
    WideString getLoginForm() override { return L"{no json"; }
    WideString getLoginLinkForm() override { return {}; }
    void logout() override {}
    LightweightVector<RemoteAsset> getPurchasedAssets() override { return {}; }
    std::int32_t requestExternalPurchase(LightweightVector<RemoteAsset> const&) override { return 0; }
    std::int32_t requestCreditPurchase(LightweightVector<RemoteAsset> const&) override { return 0; }

protected:
    WideString getFileExtension() const override { return L"mov"; }
    WideString getRemoteLocation(RemoteAsset const& asset, eMediaType kind) const override {
        return URIBuilder::join(L"https://fixed.example/",
                                asset.id + (kind == eThumbnail ? L".jpeg" : L".mov"));
    }
    WideString getLocalMediaLocation(RemoteAsset const& asset, eMediaType) const override {
        return L"/media/" + asset.id;
    }
    EditModifier createEdit(RemoteAsset const&) override { return {}; }
    SearchResults searchInternal(SearchQuery const&) override {
        RemoteAsset asset;
        asset.id = L"7";
        asset.frameRate = Zq::FrameRate::f29_97;
        asset.videoChannels = 1;
        asset.mediaExtension = L"mov";
        asset.proxyLocation = L"Virtual:FX https://fixed.example/7.mov";
        asset.proxyExtension = L"mov";
        asset.logAttributes.add(LogAttribute(LogAttribute::eName),
                                WideString(L"\x1b]0;owned\a\nred\x202e car \x6771\x4eac"));
        asset.displayAttributes.add(LogAttribute(LogAttribute::ePrice), WideString(L"$5"));
        SearchResults results;
        results.assets.push_back(asset);
        results.pageCount = 2;
        results.totalCount = 26;
        return results;
    }
};

class FixedPlugin final : public ZqDeviceDriverBase {
public:
    FixedPlugin() : ZqDeviceDriverBase(PluginCategory::deviceDriver, "0.1", "Fixed") {}
    void postLoadInitialization() override {
        ZqDeviceDriverBase::postLoadInitialization();
        registerComponent(new FixedRepository);
    }
};

} // namespace

ZQ_TEST_MODULE(FixedPlugin)
