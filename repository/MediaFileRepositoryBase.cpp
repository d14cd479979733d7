#include "repository/MediaFileRepositoryBase.h"

#include <string_view>

#include "host/HostServices.h"
#include "host/edit/EditManager.h"
#include "host/files/Paths.h"
#include "host/files/iCacheStore.h"
#include "host/network/OSPrivate.h"
#include "host/object/ExtIDMgr.h"
#include "host/os/OS.h"
#include "host/os/iShell.h"
#include "host/preferences/EditorPreferences.h"
#include "host/text/Unicode.h"

namespace {

// Space, tab, line breaks, and the spaces that other keyboards type.
constexpr std::wstring_view blanks = L" \t\n\v\f\r\u00a0\u3000";

// FNV-1a over the ids in their order, each followed by a mark that no id contains.
std::uint64_t digestOf(std::set<WideString> const& ids) {
    std::uint64_t digest = 0xcbf29ce484222325U;
    auto const take = [&digest](std::uint32_t value) {
        digest ^= value;
        digest *= 0x100000001b3U;
    };
    for (WideString const& id : ids) {
        for (wchar_t const unit : id) {
            take(static_cast<std::uint32_t>(unit));
        }
        take(0xffffffffU);
    }
    return digest;
}

// A page without anything in it may be a failure, which the next try should not inherit.
bool mayBeFailure(SearchResults const& results) {
    return results.assets.empty() && results.totalCount == 0;
}

// The edit of that identity; null where there is none.
Zq::Ptr<Edit> findEdit(Cookie const& cookie) {
    iEditStore* const edits = installedHost().edits;
    return edits != nullptr && !cookie.isNull() ? edits->open(cookie) : Zq::Ptr<Edit>();
}

LogAttribute attributeOf(LogAttributeMap::Entry const& entry) {
    return entry.key.isEmpty()
               ? LogAttribute(entry.type)
               : LogAttribute(UIString(), entry.key.c_str(), DBFieldTypes::text, 0, 1, entry.type);
}

} // namespace

MediaFileRepositoryBase::MediaFileRepositoryBase() = default;
MediaFileRepositoryBase::~MediaFileRepositoryBase() = default;

void MediaFileRepositoryBase::disconnect() {
    ServiceConnection.setServer({});
    searchResultCache.clear();
}

std::int32_t MediaFileRepositoryBase::connectTo(HTTPConnectionInfo const& info) {
    Zq::Ptr<iHTTPServer> const server = OSPrivate().network().createHTTPServer(info);
    if (server) {
        ServiceConnection.setServer(server);
    }
    return isConnected() ? 0 : 11;
}

bool MediaFileRepositoryBase::isConnected() const {
    return ServiceConnection.hasServer();
}

SearchResultCache::Key MediaFileRepositoryBase::makeKey(SearchResultCache::Kind kind, WideString const& text,
                                                        std::uint16_t page, std::uint16_t pageSize) const {
    return {.kind = kind,
            .text = text,
            .page = page,
            .pageSize = pageSize,
            .user = signedInUser,
            .connection = ServiceConnection.getConnectionNumber(),
            .purchases = digestOf(purchasedIds),
            .preferences = prefs().revision()};
}

SearchResults MediaFileRepositoryBase::search(SearchQuery const& query) {
    // The key is taken before the search: an option that changes while the search runs makes another key.
    SearchResultCache::Key const key =
        makeKey(SearchResultCache::Kind::search, getSearchPattern(query), query.page, query.pageSize);
    if (std::optional<SearchResults> known = searchResultCache.find(key)) {
        return *std::move(known);
    }
    std::uint64_t const generation = searchResultCache.generation();
    SearchResults results = searchInternal(query);
    if (!mayBeFailure(results)) {
        searchResultCache.store(key, results, generation);
    }
    return results;
}

SearchResults MediaFileRepositoryBase::getFiles(BrowseQuery const& query, bool refresh) {
    SearchResultCache::Key const key =
        makeKey(SearchResultCache::Kind::place, query.path, query.page, query.pageSize);
    if (!refresh) {
        if (std::optional<SearchResults> known = searchResultCache.find(key)) {
            return *std::move(known);
        }
    }
    std::uint64_t const generation = searchResultCache.generation();
    SearchResults results = getFilesInternal(query);
    if (!mayBeFailure(results)) {
        searchResultCache.store(key, results, generation);
    }
    return results;
}

SearchResults MediaFileRepositoryBase::getFilesInternal(BrowseQuery const& query) {
    if (!query.path.isEmpty()) {
        return {};
    }
    SearchQuery everything;
    everything.page = query.page;
    everything.pageSize = query.pageSize;
    return searchInternal(everything);
}

Zq::Ptr<iHostImage> MediaFileRepositoryBase::getThumbnail(RemoteAsset const& asset) {
    if (installedHost().images == nullptr) {
        return {};
    }
    if (WideString const cached = Thumbnails::find(getRemoteLocation(asset, eThumbnail)); !cached.isEmpty()) {
        if (Zq::Ptr<iHostImage> image = Thumbnails::decode(cached)) {
            return image;
        }
    }
    return Thumbnails::decode(downloadThumbnail(asset));
}

WideString MediaFileRepositoryBase::downloadThumbnail(RemoteAsset const& asset) {
    WideString const address = getRemoteLocation(asset, eThumbnail);
    return address.isEmpty() ? WideString() : thumbnails_.fetch(address, parseURI(address));
}

void MediaFileRepositoryBase::provideFiles(iFileProvider& provider) {
    OS().fileManager().registerProvider(provider);
    providerPointer = &provider;
    thumbInit();
}

void MediaFileRepositoryBase::thumbInit() {
    iCacheStore* const cache = installedHost().cache;
    partialFolder = cache != nullptr ? cache->partialFolder() : WideString();
}

EditModifier MediaFileRepositoryBase::openEdit(RemoteAsset const& asset, eOpenFlags) {
    if (Zq::Ptr<Edit> local = findEdit(findLocalItem(asset))) {
        return EditModifier(std::move(local));
    }
    EditModifier edit = createEdit(asset);
    if (edit.isEmpty()) {
        return edit;
    }
    Cookie const cookie = edit->getCookie();
    if (!asset.id.isEmpty()) {
        ExtIDMgr::instance().setAssociatedID(cookie, getShortName(), asset.id);
    }
    edit->setPreviewLocation(asset.proxyLocation);
    return edit;
}

ContainerModifier<Document> MediaFileRepositoryBase::openDocument(RemoteAsset const& asset) {
    if (asset.id.isEmpty()) {
        return {};
    }
    LogAttributeMap texts = asset.logAttributes;
    for (LogAttributeMap::Entry const& entry : asset.displayAttributes.entries()) {
        texts.add(attributeOf(entry), entry.value);
    }
    WideString title = fromUTF8(texts.find(LogAttribute(LogAttribute::eName)));
    Zq::Ptr<Document> const document = Zq::makeShared<Document>(std::move(title), std::move(texts));
    if (document) {
        document->subject = findLocalItem(asset);
    }
    return ContainerModifier<Document>(document);
}

Cookie MediaFileRepositoryBase::localItem(RemoteAsset const& asset) const {
    if (findEdit(asset.cookie)) {
        return asset.cookie;
    }
    if (asset.id.isEmpty()) {
        return {};
    }
    Cookie const associated = ExtIDMgr::instance().findAssociatedObject(getShortName(), asset.id);
    return findEdit(associated) ? associated : Cookie();
}

Cookie MediaFileRepositoryBase::findLocalItem(RemoteAsset const& asset) {
    return localItem(asset);
}

ImportResult MediaFileRepositoryBase::import(LightweightVector<RemoteAsset> const& assets, LoggerHandle log) {
    ImportResult result;
    for (RemoteAsset const& asset : assets) {
        EditModifier const edit = openEdit(asset, eOpenNormally);
        if (edit.isEmpty()) {
            result.failedIds.push_back(asset.id);
            log.write(getShortName() + L" " + asset.id + L" could not be imported.",
                      LoggerBase::eTransferFailed);
            continue;
        }
        edit->setTemporary(false);
        RemoteAsset imported = asset;
        imported.cookie = edit->getCookie();
        analyse(imported);
        result.edits.push_back(imported.cookie);
        log.write(edit->getName(), LoggerBase::ePlain);
    }
    return result;
}

Zq::Ptr<Zq::Guard> MediaFileRepositoryBase::addListener(Zq::Ptr<Listener> const& listener) {
    return notifier.addListener(listener);
}

bool MediaFileRepositoryBase::isPurchased(RemoteAsset const& asset) const {
    return purchasedIds.contains(asset.id);
}

WideString MediaFileRepositoryBase::getSearchPattern(SearchQuery const& query) {
    std::wstring_view const words = query.words.view();
    std::size_t const first = words.find_first_not_of(blanks);
    if (first == std::wstring_view::npos) {
        return {};
    }
    return WideString(words.substr(first, words.find_last_not_of(blanks) - first + 1));
}

ParsedURI MediaFileRepositoryBase::parseURI(WideString const& address) const {
    return ParsedURI::parse(address);
}

WideString MediaFileRepositoryBase::getLocalMediaLocation(RemoteAsset const& asset,
                                                          eMediaType mediaKind) const {
    if (mediaKind == eThumbnail) {
        return Thumbnails::find(getRemoteLocation(asset, eThumbnail));
    }
    if (mediaKind != ePreview || partialFolder.isEmpty()) {
        return {};
    }
    ParsedURI const place =
        parseURI(asset.proxyLocation.isEmpty() ? getRemoteLocation(asset, ePreview) : asset.proxyLocation);
    if (!place.valid()) {
        return {};
    }
    return partialFolder + OS().fileManager().pathSeparator() +
           stripPathAndExt(fixForeignOSFileName(place.path)) + L".partial";
}

WideString MediaFileRepositoryBase::mediaFolderPath(std::wstring_view folder, RemoteAsset const& asset) {
    // The host's text of its folder ends in a separator.
    WideString place = OS().shell().getStandardFolder(iShell::mediaFolder);
    place.append(folder);
    return joinPaths(place, asset.id + L'.' + asset.mediaExtension);
}

MediaFileRepositoryBase::LocalMedia MediaFileRepositoryBase::useLocalMedia(RemoteAsset const& asset,
                                                                           EditModifier const& edit) const {
    // Looked up as the contract has it. The answer is not needed: a service knows the clip by the asset's id.
    Cookie const cookie = edit->getCookie();
    (void)ExtIDMgr::instance().getAssociatedID(cookie, getShortName());

    LocalMedia local{getLocalMediaLocation(asset, eFullMedia), false};
    local.isThere = OS().fileManager().fileExists(local.path);
    if (local.isThere) {
        replaceProxyMedia(edit.open(), local.path);
    }
    return local;
}

WideString MediaFileRepositoryBase::getDownloadFolder() const {
    return partialFolder;
}

WideString MediaFileRepositoryBase::remoteToVirtualLocal(WideString const& address) const {
    return providerPointer != nullptr ? providerPointer->makeVirtualPath(address) : WideString();
}

bool MediaFileRepositoryBase::replaceProxyMedia(EditPtr const& edit, WideString const& path) {
    iEditStore* const edits = installedHost().edits;
    return edit && edits != nullptr && edits->useMedia(*edit, path);
}

void MediaFileRepositoryBase::analyse(RemoteAsset const& asset) const {
    if (EditPtr const edit = EditPtr::i_open(localItem(asset), 0)) {
        (void)installedHost().edits->analyse(*edit);
    }
}

void MediaFileRepositoryBase::handleProjectExit() {
    searchResultCache.clear();
}
