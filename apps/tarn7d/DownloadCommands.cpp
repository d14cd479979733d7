// The commands about what an account owns.
#include "apps/tarn7d/ClipVersion.h"
#include "apps/tarn7d/Commands.h"
#include "apps/tarn7d/DownloadAddresses.h"
#include "apps/tarn7d/Shop.h"
#include "apps/tarn7d/Text.h"

namespace tarn7d {

namespace {

void addVersion(JSON::Builder& reply, Clip const& clip, ClipVersion version) {
    VersionRow const& row = versionRow(version);
    reply.startChild(nullptr);
    if (version == ClipVersion::transcoded) {
        addInteger(reply, "bitoffset", 0);
    }
    addText(reply, "ext", extensionOf(clip, version));
    addText(reply, "n", clip.description.title);
    addText(reply, "tr", row.tr);
    addText(reply, "v", row.v);
    addText(reply, "pr", priceText(clip.description.price_cents));
    addFormat(reply, describeVersion(clip, version));
    reply.endChild();
}

} // namespace

Reply listOwned(ServiceParts& parts, CommandRequest const& request, JSON::Builder& reply) {
    std::vector<std::int64_t> const ids = parts.shop.owned(request.account->id);
    // What was bought stays bought, also while its file is not there.
    std::vector<Clip> const clips = parts.catalogue.findAll(ids, Catalogue::Presence::ever);
    addSuccess(reply);
    addText(reply, "flv_base", parts.previewBase);
    addText(reply, "icon_base", parts.iconBase);
    reply.startArray("items");
    for (Clip const& clip : clips) {
        reply.startChild(nullptr);
        addText(reply, "bid", std::to_string(clip.id));
        reply.startArray("versions");
        for (ClipVersion const version : {ClipVersion::transcoded, ClipVersion::original}) {
            if (hasVersion(clip, version)) {
                addVersion(reply, clip, version);
            }
        }
        reply.endArray();
        reply.endChild();
    }
    reply.endArray();
    return std::nullopt;
}

Reply download(ServiceParts& parts, CommandRequest const& request, JSON::Builder& reply) {
    JSON::Element const& parameters = request.parameters;
    std::int64_t id = 0;
    if (!parseInteger(parameters.getStringView("bid"), id)) {
        return CommandError{ErrorCode::badParameter, "The bid is not a number"};
    }
    auto const version = parseVersion(parameters.getStringView("tr"), parameters.getStringView("v"));
    if (!version) {
        return CommandError{ErrorCode::badParameter, "There is no such version"};
    }
    std::vector<Clip> const known = parts.catalogue.findAll({&id, 1}, Catalogue::Presence::ever);
    if (known.empty()) {
        return CommandError{ErrorCode::noSuchClip, "There is no clip of that number"};
    }
    if (!hasVersion(known.front(), *version)) {
        return CommandError{ErrorCode::badParameter, "The clip has no such version"};
    }
    if (!parts.shop.owns(request.account->id, id)) {
        return CommandError{ErrorCode::notOwned, "The account does not own this clip"};
    }
    std::optional<Clip> const clip = parts.catalogue.find(id);
    if (!clip) {
        return CommandError{ErrorCode::fileGone, "The file of this clip is not there at the moment"};
    }
    addSuccess(reply);
    addText(reply, "url",
            parts.downloadBase +
                parts.downloads.make({id, *version, extensionOf(*clip, *version)}, request.addressExpiry));
    return std::nullopt;
}

} // namespace tarn7d
