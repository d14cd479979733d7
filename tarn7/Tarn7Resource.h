// The Tarn7 stock-media service as a repository of the host.
//
// Everything that the class knows of the service stands in its own sources, one per capability: identity,
// sign-in, options, search request, results, formats, clip data, locations, files, edits, cart, purchases,
// owned media, download, transport.
//
// Thread: repository; openFile: any. Nothing here is locked but the refill of purchasedIds.
#pragma once

#include <atomic>
#include <cstdint>
#include <map>

#include "host/modules/ZqComponentBase.h"
#include "host/network/OSPrivate.h"
#include "host/picture/ShotVideoMetadata.h"
#include "host/tasks/CriticalSection.h"
#include "repository/MediaFileRepositoryBase.h"

// What is known of a clip beyond its search result. The first value stored for a clip stays.
struct Tarn7ClipData {
    Zq::FrameRate frameRate = Zq::FrameRate::unknown;
    double duration = 0; // in seconds
};

class Tarn7Resource : public MediaFileRepositoryBase, public ZqResourceTypeBase, public iFileProvider {
public:
    class Command;
    using Item = JSON::Element; // one clip in an answer of the service
    using Response = Zq::Ptr<JSON::Element>;

    // Neither connects nor signs in. Registers its file provider with the host.
    Tarn7Resource();
    ~Tarn7Resource() override;

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
    iFileManager::eCopyRC copyFile(WideString const& source, WideString const& destination, bool overwrite,
                                   iFileManager::ProgressCallback progress) override;
    [[nodiscard]] WideString getProviderName() const override;
    [[nodiscard]] WideString mapPath(WideString const& path) const override;
    [[nodiscard]] bool isRemote() const override;
    [[nodiscard]] WideString mapPathForReading(WideString const& path) const override;
    [[nodiscard]] WideString mapPathForWriting(WideString const& path) const override;

    // The filter handlers take the chosen entry's tag, -1 for no filter; a tag that no entry has is ignored.
    void handlePriceChange(std::int32_t tag);
    void handleSizeChange(std::int32_t tag);
    void handleLengthChange(std::int32_t tag);
    void handleProxyQualityChange(bool useHighQuality);

    // The column of a clip's length: one for all assets, callers get a copy. Thread: any.
    [[nodiscard]] static LogAttribute getDurationAttribute();

    // Reading an answer. The reply of a command: null if the response is null or has no such reply.
    [[nodiscard]] static Response commandReply(Response const& response, std::uint16_t index);
    // The error text of a reply, empty when the reply is null.
    [[nodiscard]] static WideString commandStatusText(Response const& response, std::uint16_t index);
    // True for no response, a set error flag at the top, or an error text in the first reply.
    [[nodiscard]] static bool responseFailed(Response const& response);

    // Reading an item.
    [[nodiscard]] static Zq::Image::Format getImageFormat(Item const& item);
    [[nodiscard]] static WideString getFormatDescription(Item const& item);
    [[nodiscard]] static WideString getDurationText(Item const& item);
    [[nodiscard]] static std::uint8_t getAudioChannels(Item const& item);
    [[nodiscard]] static Zq::FrameRate frameRateFromText(WideString const& text);
    // The rate of the coarse figure where that figure cannot be mistaken for another rate, else unknown.
    [[nodiscard]] static Zq::FrameRate getTrustedFrameRate(Item const& item);

    // Reading an asset. Needs the asset's payload and its settled frame rate.
    [[nodiscard]] static ShotVideoMetadata getVideoMetadata(RemoteAsset const& asset);
    [[nodiscard]] static WideString getFrameRateText(RemoteAsset const& asset);
    [[nodiscard]] WideString getPriceText(RemoteAsset const& asset) const;
    // In seconds.
    [[nodiscard]] double getClipDuration(RemoteAsset const& asset) const;

    // The URL with this host named as the partner that sends the visitor.
    [[nodiscard]] static WideString addPartnerTags(WideString const& url);
    // The host's name with each word in capital and small letters.
    [[nodiscard]] static WideString titleCaseHostName();

protected:
    [[nodiscard]] WideString getFileExtension() const override;
    [[nodiscard]] WideString getRemoteLocation(RemoteAsset const& asset, eMediaType mediaKind) const override;
    [[nodiscard]] WideString getLocalMediaLocation(RemoteAsset const& asset,
                                                   eMediaType mediaKind) const override;
    [[nodiscard]] EditModifier createEdit(RemoteAsset const& asset) override;
    [[nodiscard]] SearchResults searchInternal(SearchQuery const& query) override;

    // Sends the commands in one signed request, waits, and gives the parsed answer; null when there is none.
    [[nodiscard]] Response sendCommands(LightweightVector<Command> const& commands);
    [[nodiscard]] Response sendCommand(Command const& command);
    // The digest of the text with the service's salt and pepper.
    [[nodiscard]] WideString signedHash(WideString const& text) const;

    // The first reply of a "search" for the query, null on any failure.
    [[nodiscard]] Response runSearch(SearchQuery const& query);
    // Settles the frame rate of each asset, with one request at most.
    void getClipData(LightweightVector<RemoteAsset>& assets);
    // Makes the account's cart hold exactly these assets, with as small a change as does it. False when the
    // service refused the change.
    [[nodiscard]] bool syncCart(LightweightVector<RemoteAsset> const& assets);

    Zq::Ptr<iHash> digestService;
    CriticalSection purchaseLock; // held while getPurchasedAssets refills purchasedIds, and only there
    WideString iconBase;          // base URL of thumbnails, from the last answer that had one
    WideString previewBase;       // the same of previews
    std::map<std::uint32_t, Tarn7ClipData> clipCache;
    std::atomic<bool> hqProxies = true; // files are opened on any thread
    std::int32_t sessionContext = -1;
    std::int32_t sessionMarker = -1;

private:
    void handleFilterChange(char const* preference, std::int32_t value);

    // Has the edit play the asset's full media, which is fetched where it is not on this machine yet. False
    // when the service refused the asset or gave no address.
    bool fetchMedia(RemoteAsset const& asset, EditModifier const& edit, LoggerHandle const& log);
    // The HTTP status of the transfer, 0 when there was none to speak of. What arrived is at the path.
    [[nodiscard]] int transferTo(WideString const& path, WideString const& address, LoggerHandle const& log);
    // Appends an asset for each item of the reply that has a version to download.
    void readOwnedItems(JSON::Element const& reply, LightweightVector<RemoteAsset>& assets);
};
