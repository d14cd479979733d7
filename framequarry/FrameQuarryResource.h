// The FrameQuarry stock-media service as a repository of the host: it searches, plays previews and makes
// clips. It signs nobody in and sells nothing.
//
// Dormant: nothing constructs it, and it stays abstract. What the host would copy or map of its files is not
// decided, so a class that takes it into use has to decide that first: copyFile, mapPathForReading and
// mapPathForWriting have no body. A sibling of Tarn7Resource, with sources of the same names.
//
// Thread: repository; openFile: any. Nothing here is locked.
#pragma once

#include <cstdint>

#include "host/modules/ZqComponentBase.h"
#include "host/network/OSPrivate.h"
#include "host/tasks/CriticalSection.h"
#include "repository/MediaFileRepositoryBase.h"

class FrameQuarryResource : public MediaFileRepositoryBase, public ZqResourceTypeBase, public iFileProvider {
public:
    using Item = JSON::Element; // one clip in an answer of the service

    // Neither connects nor reads a preference. Registers its file provider with the host.
    FrameQuarryResource();
    ~FrameQuarryResource() override;

    // iMediaFileRepository
    std::int32_t connect(HTTPConnectionInfo const& info, LoggerHandle log) override;
    [[nodiscard]] RepositoryDescription getDescription() const override;
    [[nodiscard]] LightweightVector<LogAttribute> getLogAttributes() const override;
    [[nodiscard]] WideString getShortName() const override;
    [[nodiscard]] LightweightVector<SearchOptionGroup> getSearchOptions() override;
    [[nodiscard]] RemoteAsset findRemoteAsset(Cookie const& cookie) override;
    bool fetchFullMedia(LightweightVector<RemoteAsset> const& assets, std::int32_t unused,
                        LoggerHandle log) override;
    std::int32_t login(configb const& form) override;
    [[nodiscard]] WideString getLoginForm() override;
    [[nodiscard]] WideString getLoginLinkForm() override;
    void logout() override;
    [[nodiscard]] LightweightVector<RemoteAsset> getPurchasedAssets() override;
    std::int32_t requestExternalPurchase(LightweightVector<RemoteAsset> const& assets) override;
    std::int32_t requestCreditPurchase(LightweightVector<RemoteAsset> const& assets) override;

    // iFileProvider
    [[nodiscard]] Zq::Ptr<iFile> openFile(WideString const& path, int access, int sharing, int hint,
                                          int further) override;
    [[nodiscard]] bool handlesFile(WideString const& path) const override;
    [[nodiscard]] WideString getProviderName() const override;
    [[nodiscard]] WideString mapPath(WideString const& path) const override;
    [[nodiscard]] bool isRemote() const override;

protected:
    [[nodiscard]] WideString getFileExtension() const override;
    [[nodiscard]] WideString getRemoteLocation(RemoteAsset const& asset, eMediaType mediaKind) const override;
    [[nodiscard]] WideString getLocalMediaLocation(RemoteAsset const& asset,
                                                   eMediaType mediaKind) const override;
    [[nodiscard]] EditModifier createEdit(RemoteAsset const& asset) override;
    [[nodiscard]] SearchResults searchInternal(SearchQuery const& query) override;

    // Sends one signed request for the query, waits, and gives the parsed answer; null when there is none.
    [[nodiscard]] Zq::Ptr<JSON::Element> runSearch(SearchQuery const& query);
    // The signature of a resource path at that time, which is part of the key.
    [[nodiscard]] NarrowString sign(WideString const& path, WideString const& time) const;

    Zq::Ptr<iHash> digestService;
    CriticalSection lock; // entered by nobody
};
