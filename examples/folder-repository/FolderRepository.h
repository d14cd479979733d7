// A folder of media files as a repository of the host: it is searched by name, its clips play where they lie,
// and there is nothing to sign in to and nothing to buy.
//
// It keeps no state of its own: which folder it is stands in a preference, and each operation looks at the
// disk. So the host's task that fetches and the thread that searches have nothing to share.
#pragma once

#include "ClipFile.h"
#include "host/modules/ZqComponentBase.h"
#include "repository/MediaFileRepositoryBase.h"

class FolderRepository final : public MediaFileRepositoryBase, public ZqResourceTypeBase {
public:
    FolderRepository();

    // Who it is
    [[nodiscard]] RepositoryDescription getDescription() const override;
    [[nodiscard]] WideString getShortName() const override;
    [[nodiscard]] int priority() const override;

    // The folder in a connection's place
    std::int32_t connect(HTTPConnectionInfo const& info, LoggerHandle log) override;
    [[nodiscard]] bool isConnected() const override;
    [[nodiscard]] WideString getStatusText() const override;
    [[nodiscard]] LightweightVector<SearchOptionGroup> getSearchOptions() override;

    // Searching
    [[nodiscard]] LightweightVector<LogAttribute> getLogAttributes() const override;
    [[nodiscard]] SearchResults search(SearchQuery const& query) override;
    [[nodiscard]] SearchResults getFiles(BrowseQuery const& query, bool refresh) override;

    // Edits and their files
    [[nodiscard]] EditModifier openEdit(RemoteAsset const& asset, eOpenFlags flags) override;
    [[nodiscard]] RemoteAsset findRemoteAsset(Cookie const& cookie) override;
    bool fetchFullMedia(LightweightVector<RemoteAsset> const& assets, std::int32_t unused,
                        LoggerHandle log) override;

    // Accounts and purchases: none
    [[nodiscard]] WideString getLoginForm() override;
    [[nodiscard]] WideString getLoginLinkForm() override;
    std::int32_t login(configb const& form) override;
    void logout() override;
    [[nodiscard]] LightweightVector<RemoteAsset> getPurchasedAssets() override;
    std::int32_t requestExternalPurchase(LightweightVector<RemoteAsset> const& assets) override;
    std::int32_t requestCreditPurchase(LightweightVector<RemoteAsset> const& assets) override;

protected:
    [[nodiscard]] SearchResults searchInternal(SearchQuery const& query) override;
    [[nodiscard]] EditModifier createEdit(RemoteAsset const& asset) override;
    [[nodiscard]] WideString getFileExtension() const override;
    [[nodiscard]] WideString getRemoteLocation(RemoteAsset const& asset, eMediaType mediaKind) const override;
    [[nodiscard]] WideString getLocalMediaLocation(RemoteAsset const& asset,
                                                   eMediaType mediaKind) const override;
    [[nodiscard]] WideString downloadThumbnail(RemoteAsset const& asset) override;

private:
    [[nodiscard]] static std::filesystem::path folder();
    void handleFolderChange(WideString path);
    [[nodiscard]] RemoteAsset assetOf(ClipFile const& clip) const;
};
