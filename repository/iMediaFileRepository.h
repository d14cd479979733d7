// A stock-media service as a place to browse, preview, buy and import clips.
//
// The order of the virtual operations is part of the contract: a module and its host may be built apart. An
// operation reports a failure by value: an empty record, false, null, 0 or a result code.
//
// Thread: repository, unless an operation says otherwise. Operations that ask the service block their thread
// until the answer has come.
#pragma once

#include <cstdint>

#include "host/edit/EditModifier.h"
#include "host/log/LoggerHandle.h"
#include "host/object/Notifier.h"
#include "host/picture/iHostImage.h"
#include "host/preferences/configb.h"
#include "repository/RepositoryDescription.h"
#include "repository/SearchRecords.h"

class ZQ_API iMediaFileRepository : public virtual iObject {
public:
    using RemoteAsset = ::RemoteAsset;
    using SearchQuery = ::SearchQuery;
    using BrowseQuery = ::BrowseQuery;
    using SearchResults = ::SearchResults;
    using ImportResult = ::ImportResult;
    using RepositoryDescription = ::RepositoryDescription;
    using SearchOptionGroup = ::SearchOptionGroup;
    using Listener = iCallbackBase<int, NotifyMsg>;

    enum eOpenFlags : std::int32_t { eOpenNormally = 0 };
    // Codes of notifications.
    enum eNotification : std::int32_t {
        eSearchOptionsChanged = 24,
    };

    ~iMediaFileRepository() override;

    // Makes a connection from the record, usually that of getDescription. 0 when connected, 11 when not;
    // where no server can be made from the record an older connection stays, and counts.
    virtual std::int32_t connect(HTTPConnectionInfo const& info, LoggerHandle log) = 0;
    // A record with its defaults.
    [[nodiscard]] virtual RepositoryDescription newDescription() const;
    virtual void disconnect() = 0;
    [[nodiscard]] virtual bool isConnected() const = 0;
    [[nodiscard]] virtual RepositoryDescription getDescription() const = 0;
    // The columns of the results list.
    [[nodiscard]] virtual LightweightVector<LogAttribute> getLogAttributes() const = 0;
    [[nodiscard]] virtual WideString getName() const;
    [[nodiscard]] virtual WideString getShortName() const = 0;
    [[nodiscard]] virtual LightweightVector<std::int32_t> getMediaKinds() const;
    [[nodiscard]] virtual LightweightVector<WideString> getCollections() const;
    // New parameters from the current preferences; they must not outlive the repository.
    [[nodiscard]] virtual LightweightVector<SearchOptionGroup> getSearchOptions() = 0;
    [[nodiscard]] virtual SearchResults search(SearchQuery const& query) = 0;
    [[nodiscard]] virtual LightweightVector<WideString> getSuggestions() const;
    [[nodiscard]] virtual std::int32_t getBrowseStyle() const;
    // The assets of a place; `refresh` passes by what is cached.
    [[nodiscard]] virtual SearchResults getFiles(BrowseQuery const& query, bool refresh) = 0;
    [[nodiscard]] virtual LightweightVector<WideString> getPlaces() const;
    [[nodiscard]] virtual LightweightVector<WideString> getRootPaths() const;
    [[nodiscard]] virtual LightweightVector<WideString> getSecondaryRoots() const;
    [[nodiscard]] virtual RemoteAsset getRootAsset() const;
    [[nodiscard]] virtual bool hasFolders() const;
    [[nodiscard]] virtual WideString getStatusText() const;
    [[nodiscard]] virtual WideString getHelpText() const;
    // The asset's picture, from the cache where it is there; null when there is none.
    [[nodiscard]] virtual Zq::Ptr<iHostImage> getThumbnail(RemoteAsset const& asset) = 0;
    [[nodiscard]] virtual EditModifier openEdit(RemoteAsset const& asset, eOpenFlags flags) = 0;
    [[nodiscard]] virtual ContainerModifier<Document> openDocument(RemoteAsset const& asset) = 0;
    // The local edit of the asset; the null cookie when there is none.
    [[nodiscard]] virtual Cookie findLocalItem(RemoteAsset const& asset) = 0;
    [[nodiscard]] virtual RemoteAsset findRemoteAsset(Cookie const& cookie) = 0;
    // Thread: task. The second value is not read.
    virtual bool fetchFullMedia(LightweightVector<RemoteAsset> const& assets, std::int32_t unused,
                                LoggerHandle log) = 0;
    [[nodiscard]] virtual bool canUpload() const;
    [[nodiscard]] virtual bool canRename() const;
    // The asset's log attribute; never one of its display columns.
    [[nodiscard]] virtual WideString getAttribute(RemoteAsset const& asset,
                                                  LogAttribute const& attribute) const;
    virtual ImportResult import(LightweightVector<RemoteAsset> const& assets, LoggerHandle log) = 0;
    // 0 signed in, 2 unknown user, 7 wrong password, 17 any other failure.
    virtual std::int32_t login(configb const& form) = 0;
    virtual void handleAccountChange();
    [[nodiscard]] virtual std::int32_t isOffered() const;
    // JSON: an object holding an array of fields.
    [[nodiscard]] virtual WideString getLoginForm() = 0;
    [[nodiscard]] virtual WideString getLoginLinkForm() = 0;
    virtual void logout() = 0;
    [[nodiscard]] virtual LightweightVector<RemoteAsset> getPurchasedAssets() = 0;
    // 0 nothing was bought, 2 bought or handed to the payment page, 3 refused with the service's code 106.
    virtual std::int32_t requestExternalPurchase(LightweightVector<RemoteAsset> const& assets) = 0;
    virtual std::int32_t requestCreditPurchase(LightweightVector<RemoteAsset> const& assets) = 0;
    // The listener is called until the guard ends. Thread: any.
    [[nodiscard]] virtual Zq::Ptr<Zq::Guard> addListener(Zq::Ptr<Listener> const& listener) = 0;
};
