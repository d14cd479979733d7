#include "apps/zq/panel/EditClip.h"

#include "apps/zq/Text.h"

namespace zq::panel {

std::optional<RemoteAsset> clipOfEdit(engine::Project& project, std::string const& repository,
                                      std::string const& id) {
    WideString const wideId = wide(id);
    Cookie const cookie = project.findObject(wide(repository), wideId);
    std::optional<engine::EditRecord> const edit = cookie.isNull() ? std::nullopt : project.edit(cookie);
    if (!edit) {
        return std::nullopt;
    }
    RemoteAsset asset;
    asset.id = wideId;
    asset.cookie = edit->cookie;
    asset.logAttributes = edit->logAttributes;
    asset.proxyLocation = edit->previewLocation;
    asset.frameRate = edit->rate;
    asset.videoChannels = edit->videoChannels;
    asset.audioChannels = edit->audioChannels;
    return asset;
}

} // namespace zq::panel
