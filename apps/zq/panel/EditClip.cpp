#include "apps/zq/panel/EditClip.h"

#include "apps/zq/Text.h"

namespace zq::panel {

std::optional<engine::EditRecord> editOfClip(engine::Project& project, std::string const& repository,
                                             std::string const& id) {
    Cookie const cookie = project.findObject(wide(repository), wide(id));
    return cookie.isNull() ? std::nullopt : project.edit(cookie);
}

std::optional<RemoteAsset> clipOfEdit(engine::Project& project, std::string const& repository,
                                      std::string const& id) {
    std::optional<engine::EditRecord> const edit = editOfClip(project, repository, id);
    if (!edit) {
        return std::nullopt;
    }
    RemoteAsset asset;
    asset.id = wide(id);
    asset.cookie = edit->cookie;
    asset.logAttributes = edit->logAttributes;
    asset.proxyLocation = edit->previewLocation;
    asset.frameRate = edit->rate;
    asset.videoChannels = edit->videoChannels;
    asset.audioChannels = edit->audioChannels;
    return asset;
}

} // namespace zq::panel
