#include "apps/zq/panel/ClipJson.h"

#include <set>

#include "apps/zq/JsonOutput.h"
#include "apps/zq/commands/AssetListing.h"
#include "apps/zq/panel/EditJson.h"
#include "host/engine/project/Project.h"

namespace zq::panel {

namespace {

void addAttributes(JSON::Builder& json, char const* key, RemoteAsset const& asset) {
    json.startChild(key);
    std::set<LogAttribute::eType> written;
    auto const add = [&](LogAttributeMap const& attributes) {
        for (LogAttributeMap::Entry const& entry : attributes.entries()) {
            if (!entry.value.isEmpty() && written.insert(entry.type).second) {
                addText(json, std::to_string(entry.type).c_str(), entry.value.view());
            }
        }
    };
    add(asset.displayAttributes);
    add(asset.logAttributes);
    json.endChild();
}

} // namespace

Cookie editOf(Session& session, RemoteAsset const& asset) {
    return session.repository().findLocalItem(asset);
}

void addClip(JSON::Builder& json, char const* key, Session& session, RepositoryDesk const& desk,
             RemoteAsset const& asset) {
    std::string const id = utf8(asset.id);
    json.startChild(key);
    json.add("id", asset.id, true);
    addText(json, "name", assetCell(asset, LogAttribute(LogAttribute::eName)));
    json.add("owned", desk.owns(session, asset));
    addAttributes(json, "attributes", asset);
    json.add("rate", Zq::getDisplayString(asset.frameRate), true);
    addRateFraction(json, "rateFraction", asset.frameRate);
    std::optional<KnownClip> const known = desk.knownClip(id);
    json.add("hasThumbnail", known && !(known->thumbnailAddress.isEmpty() && known->thumbnailPath.isEmpty()));
    json.add("hasPreview", !asset.proxyLocation.isEmpty());
    addNumber(json, "audioChannels", static_cast<unsigned>(asset.audioChannels));
    Cookie const cookie = editOf(session, asset);
    std::optional<engine::EditRecord> edit;
    if (!cookie.isNull()) {
        edit = session.engine().project().edit(cookie);
    }
    addText(json, "edit", edit ? engine::cookieText(cookie) : std::string());
    addText(json, "state",
            edit ? stateOf(*edit, session.fetches().taskOf(id, session.engine().tasks())) : "");
    json.endChild();
}

std::string pageJson(Session& session, RepositoryDesk const& desk, PageOfClips const& page,
                     LightweightVector<RemoteAsset> const& clips) {
    JSON::Builder json;
    json.startChild(nullptr);
    addNumber(json, "page", page.page);
    addNumber(json, "pageSize", page.pageSize);
    addNumber(json, "pageCount", page.pageCount);
    addNumber(json, "totalCount", page.totalCount);
    json.startArray("clips");
    for (RemoteAsset const& clip : clips) {
        addClip(json, nullptr, session, desk, clip);
    }
    json.endArray();
    json.endChild();
    return utf8(json.getOutput());
}

} // namespace zq::panel
