// The full media of a clip: fetched, and put in the place of its preview.

#include "host/edit/UIStateManager.h"
#include "host/files/Paths.h"
#include "host/network/serverAt.h"
#include "host/os/OS.h"
#include "host/resources/resourceStr.h"
#include "host/tasks/BackgroundTaskQueueBase.h"
#include "host/text/Numbers.h"
#include "repository/HTTPFileSaver.h"
#include "tarn7/Command.h"

namespace {

constexpr ResId downloading = 13365;
constexpr ResId transferFailed = 13656; // holds "$CLIP$"
constexpr ResId refused = 13771;
constexpr ResId noAddress = 13772;

void writeRefusal(LoggerHandle const& log, WideString const& reason) {
    log.write(paddedResourceStrW(refused, nullptr, L" : ", ResStrFmt::plain) + reason, LoggerBase::ePlain);
}

// Nothing for a person who cancelled: that is no failure.
void writeFailure(LoggerHandle const& log, WideString const& clip, int status) {
    if (BackgroundTaskQueueBase::getCurrentTaskStatus() == iBackgroundTask::eCancelling) {
        return;
    }
    WideString text = resourceStrW(transferFailed);
    text.replaceAll(L"$CLIP$", clip.view());
    text += L" (" + Zq::WStringFromInteger(status) + L')';
    log.write(text, LoggerBase::eTransferFailed);
}

} // namespace

bool Tarn7Resource::fetchFullMedia(LightweightVector<RemoteAsset> const& assets, std::int32_t,
                                   LoggerHandle log) {
    bool allOffered = true;
    for (RemoteAsset const& asset : assets) {
        EditModifier const edit = openEdit(asset, eOpenNormally);
        if (!edit.isEmpty() && !fetchMedia(asset, edit, log)) {
            allOffered = false;
        }
    }
    return allOffered;
}

bool Tarn7Resource::fetchMedia(RemoteAsset const& asset, EditModifier const& edit, LoggerHandle const& log) {
    WideString const name = edit->getName();
    log.write(name, LoggerBase::ePlain);
    LocalMedia const local = useLocalMedia(asset, edit);
    if (local.isThere) {
        return true;
    }

    Item const& item = JSON::orEmpty(Zq::dynamicCast<Item>(asset.payload));
    Command command(L"download");
    command.addParam("bid", asset.id);
    command.addParam("tr", item.getWString("tr"));
    command.addParam("v", item.getWString("v"));
    Response const response = sendCommand(command);
    Response const reply = commandReply(response, 0);
    // The failure test is asked of the reply itself, as with the cart: an error text beside its flag is none.
    if (responseFailed(reply)) {
        writeRefusal(log, commandStatusText(response, 0));
        return false;
    }
    WideString const address = reply->getWString("url");
    if (address.isEmpty()) {
        writeRefusal(log, resourceStrW(noAddress));
        return false;
    }

    iFileManager& files = OS().fileManager();
    files.createDirectory(getPath(local.path));
    UIStateManager::instance().recordAction(eUIActionType::downloadMedia);
    log.write(local.path, LoggerBase::ePlain);
    log.incIndent();
    log.write(resourceStrW(downloading), LoggerBase::eTransferStarts);
    int const status = transferTo(local.path, address, log);
    if (status == 200) {
        replaceProxyMedia(edit.open(), local.path);
    } else {
        writeFailure(log, name, status);
        files.deleteFile(local.path);
    }
    log.decIndent();
    // Bytes that could not be fetched do not count: the service has given the clip.
    return true;
}

int Tarn7Resource::transferTo(WideString const& path, WideString const& address, LoggerHandle const& log) {
    ParsedURI const place = parseURI(address);
    Zq::Ptr<iHTTPServer> const server = serverAt(place);
    if (!server) {
        return 0;
    }
    HTTPFileSaver saver(path, log);
    return server->httpGetToReceiver(place.path, saver);
}
