// Where the files of a clip are: on the service's servers, and on this machine.

#include "host/web/URIBuilder.h"
#include "tarn7/Tarn7Resource.h"

namespace {

constexpr std::uint32_t remoteDigits = 9;

// The service's files are named by ids of nine digits; a longer id stays as it is.
WideString remoteName(WideString const& id, wchar_t const* ending) {
    WideString name;
    name.reserve(remoteDigits + 12);
    for (std::uint32_t digits = id.length(); digits < remoteDigits; ++digits) {
        name += L'0';
    }
    name += id;
    name += ending;
    return name;
}

} // namespace

WideString Tarn7Resource::getFileExtension() const {
    return L"mov";
}

// The service has no address for bought media: every kind but the thumbnail leads to the preview.
WideString Tarn7Resource::getRemoteLocation(RemoteAsset const& asset, eMediaType mediaKind) const {
    bool const thumbnail = mediaKind == eThumbnail;
    WideString const& base = thumbnail ? iconBase : previewBase;
    if (base.isEmpty()) {
        return {};
    }
    return URIBuilder::join(base, remoteName(asset.id, thumbnail ? L"_iconm.jpeg" : L".mov"));
}

WideString Tarn7Resource::getLocalMediaLocation(RemoteAsset const& asset, eMediaType mediaKind) const {
    if (mediaKind != eFullMedia) {
        return MediaFileRepositoryBase::getLocalMediaLocation(asset, mediaKind);
    }
    return mediaFolderPath(L"Tarn7", asset);
}
