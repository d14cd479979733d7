// From assets to edits and back, and the files that edits play.

#include <algorithm>

#include "FolderRepository.h"
#include "host/tasks/BackgroundTaskQueueBase.h"
#include "repository/ClipEdit.h"

// A file's name tells neither length nor rate, so the edit begins without both.
EditModifier FolderRepository::createEdit(RemoteAsset const& asset) {
    return asset.proxyLocation.isEmpty() ? EditModifier() : makeClipEdit(asset, ClipFacts());
}

// What nobody told of the clip the host finds out: it looks at the file and records what that holds.
EditModifier FolderRepository::openEdit(RemoteAsset const& asset, eOpenFlags flags) {
    EditModifier edit = MediaFileRepositoryBase::openEdit(asset, flags);
    if (!edit.isEmpty() && edit->getSourceFrameRate() == Zq::FrameRate::unknown) {
        analyse(asset);
    }
    return edit;
}

RemoteAsset FolderRepository::findRemoteAsset(Cookie const& cookie) {
    return findAssetOfEdit(cookie, getShortName(), AssetCookie::ofTheEdit);
}

// Nothing travels: the edit is told that the file which it plays as its preview is its full media.
bool FolderRepository::fetchFullMedia(LightweightVector<RemoteAsset> const& assets, std::int32_t,
                                      LoggerHandle log) {
    bool isEachThere = true;
    for (RemoteAsset const& asset : assets) {
        if (BackgroundTaskQueueBase::getCurrentTaskStatus() == iBackgroundTask::eCancelling) {
            return false;
        }
        EditModifier const edit = openEdit(asset, eOpenNormally);
        if (edit.isEmpty()) {
            isEachThere = false;
            continue;
        }
        log.write(edit->getName(), LoggerBase::ePlain);
        LocalMedia const file = useLocalMedia(asset, edit);
        if (!file.isThere) {
            log.write(L"There is no file " + file.path, LoggerBase::eTransferFailed);
            isEachThere = false;
        }
    }
    return isEachThere;
}

WideString FolderRepository::getLocalMediaLocation(RemoteAsset const& asset, eMediaType mediaKind) const {
    WideString file = asset.mediaLocation;
    if (file.isEmpty() && !asset.id.isEmpty()) {
        // An asset that came from an edit has its id alone.
        std::vector<ClipFile> const clips = findClips(folder(), asset.id);
        auto const found = std::ranges::find(clips, asset.id, &ClipFile::id);
        file = found != clips.end() ? wideText(found->path) : WideString();
    }
    return mediaKind == eThumbnail ? wideText(pictureBeside(localPath(file))) : file;
}

// The base asks for the picture's address first, and then has it fetched: ours lies beside the clip.
WideString FolderRepository::downloadThumbnail(RemoteAsset const& asset) {
    return getLocalMediaLocation(asset, eThumbnail);
}

WideString FolderRepository::getRemoteLocation(RemoteAsset const&, eMediaType) const {
    return {};
}

WideString FolderRepository::getFileExtension() const {
    return L"mov";
}
