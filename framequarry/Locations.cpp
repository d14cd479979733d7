// Where the files of a clip are: on the service's servers, and on this machine.

#include "framequarry/FrameQuarryResource.h"

WideString FrameQuarryResource::getFileExtension() const {
    return L"mov";
}

// Whole addresses, as the service gives them. It has none for full media: every kind but the thumbnail leads
// to the preview.
WideString FrameQuarryResource::getRemoteLocation(RemoteAsset const& asset, eMediaType mediaKind) const {
    Item const& item = JSON::orEmpty(Zq::dynamicCast<Item>(asset.payload));
    return item.getWString(mediaKind == eThumbnail ? "thumbnail_url" : "preview_url");
}

WideString FrameQuarryResource::getLocalMediaLocation(RemoteAsset const& asset, eMediaType mediaKind) const {
    if (mediaKind != eFullMedia) {
        return MediaFileRepositoryBase::getLocalMediaLocation(asset, mediaKind);
    }
    return mediaFolderPath(L"FrameQuarry", asset);
}
