// What all repositories share: the host's part of the contract. A resource derives from it and answers the
// protected operations.
//
// The order of the virtual operations is part of the contract. Thread: repository, unless an operation says
// otherwise.
#pragma once

#include <cstdint>
#include <set>
#include <string_view>

#include "host/network/ServiceConnection.h"
#include "host/object/Notifier.h"
#include "host/web/ParsedURI.h"
#include "repository/ProjectListener.h"
#include "repository/SearchResultCache.h"
#include "repository/Thumbnails.h"
#include "repository/iFileProvider.h"
#include "repository/iMediaFileRepository.h"

class ZQ_API MediaFileRepositoryBase : public iMediaFileRepository, public ProjectListener {
public:
    enum eMediaType : std::int32_t {
        eThumbnail = 0,
        eFullMedia = 1,
        ePreview = 2,
    };

    MediaFileRepositoryBase();
    ~MediaFileRepositoryBase() override;

    // Ends the connection and forgets every page of results; sends nothing.
    void disconnect() override;
    [[nodiscard]] bool isConnected() const override;
    // A page that was searched before under the same circumstances costs no request. An empty page may be a
    // failure and is never kept.
    [[nodiscard]] SearchResults search(SearchQuery const& query) override;
    [[nodiscard]] SearchResults getFiles(BrowseQuery const& query, bool refresh) override;
    // A picture in the cache that cannot be read is fetched once more. Thread: any, as far as
    // getRemoteLocation of the resource allows.
    [[nodiscard]] Zq::Ptr<iHostImage> getThumbnail(RemoteAsset const& asset) override;
    // The local item of the asset; where there is none, what createEdit makes, which from then on is the
    // local item of every asset with that id and plays the asset's preview. Empty when no edit could be made.
    [[nodiscard]] EditModifier openEdit(RemoteAsset const& asset, eOpenFlags flags) override;
    // The asset's texts, those of its columns before those that only stay with it, about its local item.
    // Empty for an asset without an id.
    [[nodiscard]] ContainerModifier<Document> openDocument(RemoteAsset const& asset) override;
    // The asset's own cookie where it leads to an edit; else the edit that was associated with the asset's
    // id.
    [[nodiscard]] Cookie findLocalItem(RemoteAsset const& asset) override;
    // Opens an edit for each asset, keeps it and looks at what it plays. A line in the log for each: the name
    // of the edit, or that the asset could not be imported.
    ImportResult import(LightweightVector<RemoteAsset> const& assets, LoggerHandle log) override;
    [[nodiscard]] Zq::Ptr<Zq::Guard> addListener(Zq::Ptr<Listener> const& listener) override;

    // True when the asset's id is among those that the account owns.
    [[nodiscard]] bool isPurchased(RemoteAsset const& asset) const;
    // The words of the query without blanks at their ends, ready to send.
    [[nodiscard]] static WideString getSearchPattern(SearchQuery const& query);
    // Has the edit play the file instead of its preview. False when it plays what it played before: the host
    // refused the file, or there is no edit. The host's log tells why, so nobody has to look. Thread: any.
    static bool replaceProxyMedia(EditPtr const& edit, WideString const& path);

    // For a host's screens: what the protected operations of these names tell.
    [[nodiscard]] WideString describeFileExtension() const { return getFileExtension(); }
    [[nodiscard]] WideString describeRemoteLocation(RemoteAsset const& asset, eMediaType mediaKind) const {
        return getRemoteLocation(asset, mediaKind);
    }
    [[nodiscard]] WideString describeLocalMediaLocation(RemoteAsset const& asset,
                                                        eMediaType mediaKind) const {
        return getLocalMediaLocation(asset, mediaKind);
    }

protected:
    [[nodiscard]] virtual ParsedURI parseURI(WideString const& address) const;
    [[nodiscard]] virtual WideString getFileExtension() const = 0;
    // The address of one of the asset's files, empty when it is not known.
    [[nodiscard]] virtual WideString getRemoteLocation(RemoteAsset const& asset,
                                                       eMediaType mediaKind) const = 0;
    // The local path for one of the asset's files. Here: of the thumbnail, its place in the cache once it was
    // fetched; of the preview, the local store of its stream, whether it exists yet or not. Empty where there
    // is no such place, and for the full media, whose place is the resource's to tell.
    [[nodiscard]] virtual WideString getLocalMediaLocation(RemoteAsset const& asset,
                                                           eMediaType mediaKind) const;
    // Folder for files that are on their way; empty when none can be written.
    [[nodiscard]] virtual WideString getDownloadFolder() const;
    // The virtual path of a remote address; empty without a provider.
    [[nodiscard]] virtual WideString remoteToVirtualLocal(WideString const& address) const;
    [[nodiscard]] virtual EditModifier createEdit(RemoteAsset const& asset) = 0;
    // Here: the root lists what a search without words finds; there is no other place.
    [[nodiscard]] virtual SearchResults getFilesInternal(BrowseQuery const& query);
    [[nodiscard]] virtual SearchResults searchInternal(SearchQuery const& query) = 0;
    // Fetches the asset's picture into the cache and gives its path; empty when it could not be had.
    [[nodiscard]] virtual WideString downloadThumbnail(RemoteAsset const& asset);
    // Looks at the media of the asset's local item and records with it what it finds.
    virtual void analyse(RemoteAsset const& asset) const;

public:
    // Forgets every page of results: its assets may name edits of the project that ends. Declared here
    // because what overrides the second base takes a place of its own in the order, behind all others.
    void handleProjectExit() override;

protected:
    // What a resource calls while it is being built: registers its provider with the host's file layer, makes
    // it providerPointer, and prepares what thumbnails and streams need on disk.
    void provideFiles(iFileProvider& provider);
    // Prepares what thumbnails and streams need on disk. Needs providerPointer.
    void thumbInit();

    // What a resource answers to `connect`: a server made from the record replaces the one before. 0 when
    // connected then, 11 when not.
    [[nodiscard]] std::int32_t connectTo(HTTPConnectionInfo const& info);
    // The place of an asset's full media in the host's media folder, below the folder of that word.
    [[nodiscard]] static WideString mediaFolderPath(std::wstring_view folder, RemoteAsset const& asset);

    struct LocalMedia {
        WideString path;
        bool isThere; // before this call, whether or not the host then took it
    };
    // The asset's full media on this machine. Where it is there, it is handed to the edit as it is; the host
    // may refuse it.
    LocalMedia useLocalMedia(RemoteAsset const& asset, EditModifier const& edit) const;

    class ::ServiceConnection ServiceConnection;
    SearchResultCache searchResultCache;
    std::set<WideString> purchasedIds;
    iFileProvider* providerPointer = nullptr; // the resource's own provider part
    WideString signedInUser;                  // empty means signed out
    WideString partialFolder;
    NotifierBase notifier;

private:
    // findLocalItem of this class, for those that change nothing.
    [[nodiscard]] Cookie localItem(RemoteAsset const& asset) const;
    [[nodiscard]] SearchResultCache::Key makeKey(SearchResultCache::Kind kind, WideString const& text,
                                                 std::uint16_t page, std::uint16_t pageSize) const;

    Thumbnails thumbnails_;
};
