#include "apps/zq/panel/ClipJson.h"

#include <algorithm>
#include <set>

#include "apps/zq/JsonOutput.h"
#include "apps/zq/commands/AssetListing.h"
#include "apps/zq/panel/EditJson.h"
#include "host/engine/project/Project.h"

namespace zq::panel {

namespace {

// The columns as the repository tells them, and what else stays with the clip.
void addAttributes(JSON::Builder& json, char const* key, iMediaFileRepository const& repository,
                   LightweightVector<LogAttribute> const& columns, RemoteAsset const& asset) {
    json.startChild(key);
    std::set<LogAttribute::eType> written;
    auto const add = [&](LogAttribute::eType type, std::string_view text) {
        if (!text.empty() && written.insert(type).second) {
            addText(json, std::to_string(type).c_str(), text);
        }
    };
    for (LogAttributeMap::Entry const& entry : asset.displayAttributes.entries()) {
        add(entry.type, entry.value.view());
    }
    for (LogAttribute const& column : columns) {
        if (!written.contains(column.getType())) {
            add(column.getType(), utf8(repository.getAttribute(asset, column)));
        }
    }
    for (LogAttributeMap::Entry const& entry : asset.logAttributes.entries()) {
        add(entry.type, entry.value.view());
    }
    json.endChild();
}

bool hasThumbnail(Session& session, RepositoryDesk const& desk, RemoteAsset const& asset) {
    std::optional<KnownClip> const known = desk.knownClip(utf8(asset.id));
    KnownClip const clip = known ? *known : RepositoryDesk::describe(session, asset);
    return !(clip.thumbnailAddress.isEmpty() && clip.thumbnailPath.isEmpty());
}

std::string nameOf(iMediaFileRepository const& repository, RemoteAsset const& asset) {
    LogAttribute const name(LogAttribute::eName);
    std::string told = assetCell(asset, name);
    return told.empty() ? utf8(repository.getAttribute(asset, name)) : told;
}

// With the repository's columns, which are the same for all clips of a page.
void addClip(JSON::Builder& json, Session& session, RepositoryDesk const& desk,
             LightweightVector<LogAttribute> const& columns, RemoteAsset const& asset) {
    std::string const id = utf8(asset.id);
    json.startChild(nullptr);
    json.add("id", asset.id, true);
    addText(json, "name", nameOf(session.repository(), asset));
    json.add("owned", desk.owns(session, asset));
    addAttributes(json, "attributes", session.repository(), columns, asset);
    json.add("rate", Zq::getDisplayString(asset.frameRate), true);
    addRateFraction(json, "rateFraction", asset.frameRate);
    json.add("hasThumbnail", hasThumbnail(session, desk, asset));
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

// No more than a page of its size has room for.
PageOfClips withClips(PageOfClips page, std::size_t clips) {
    if (clips > 0) {
        std::size_t const before = (page.page - std::size_t{1}) * page.pageSize;
        page.totalCount = std::max(page.totalCount, before + std::min(clips, page.pageSize));
        page.pageCount = std::max<std::size_t>(page.pageCount, page.page);
    }
    return page;
}

} // namespace

Cookie editOf(Session& session, RemoteAsset const& asset) {
    return session.repository().findLocalItem(asset);
}

void addClip(JSON::Builder& json, Session& session, RepositoryDesk const& desk, RemoteAsset const& asset) {
    addClip(json, session, desk, session.repository().getLogAttributes(), asset);
}

std::string pageJson(Session& session, RepositoryDesk const& desk, PageOfClips const& told,
                     LightweightVector<RemoteAsset> const& clips) {
    PageOfClips const page = withClips(told, clips.size());
    JSON::Builder json;
    json.startChild(nullptr);
    addNumber(json, "page", page.page);
    addNumber(json, "pageSize", page.pageSize);
    addNumber(json, "pageCount", page.pageCount);
    addNumber(json, "totalCount", page.totalCount);
    json.startArray("clips");
    LightweightVector<LogAttribute> const columns = session.repository().getLogAttributes();
    for (RemoteAsset const& clip : clips) {
        addClip(json, session, desk, columns, clip);
    }
    json.endArray();
    json.endChild();
    return utf8(json.getOutput());
}

} // namespace zq::panel
