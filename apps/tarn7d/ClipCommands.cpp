// The commands about clips that need no account.
#include <algorithm>
#include <limits>

#include "apps/tarn7d/Commands.h"
#include "apps/tarn7d/Text.h"

namespace tarn7d {

namespace {

constexpr std::int64_t usualPageSize = 50;
constexpr std::int64_t largestPageSize = 1000;

} // namespace

void addFormat(JSON::Builder& reply, Clip const& clip) {
    addText(reply, "coda", clip.media.sound);
    addText(reply, "fps_real", exactRateText(clip.media.rate));
    addText(reply, "fps", coarseRateText(clip.media.rate));
    addText(reply, "dur", std::to_string(clip.media.duration_ms));
    addInteger(reply, "vs", clip.media.standard);
    addInteger(reply, "ox", clip.media.width);
    addInteger(reply, "oy", clip.media.height);
    addText(reply, "ar", clip.media.aspect);
    addText(reply, "codg", clip.media.codec);
}

Reply search(ServiceParts& parts, CommandRequest const& request, JSON::Builder& reply) {
    JSON::Element const& parameters = request.parameters;
    std::int64_t const page =
        std::clamp<std::int64_t>(parameters.getInt("p", 0), 0, std::numeric_limits<std::int32_t>::max());
    std::int64_t const size =
        std::clamp<std::int64_t>(parameters.getInt("no", usualPageSize), 0, largestPageSize);
    ClipPage const found =
        parts.catalogue.search(parseClipQuery(parameters.getStringView("query")), page * size, size);
    addSuccess(reply);
    reply.startArray("items");
    for (Clip const& clip : found.clips) {
        reply.startChild(nullptr);
        addInteger(reply, "id", clip.id);
        addText(reply, "n", clip.description.title);
        addText(reply, "pr", priceText(clip.description.price_cents));
        addFormat(reply, clip);
        reply.endChild();
    }
    reply.endArray();
    addText(reply, "icon_base", parts.iconBase);
    addText(reply, "flv_base", parts.previewBase);
    addInteger(reply, "tot_nbr_rows", found.total);
    return std::nullopt;
}

Reply getClipData(ServiceParts& parts, CommandRequest const& request, JSON::Builder& reply) {
    std::int64_t id = 0;
    if (!parseInteger(request.parameters.getStringView("itemid"), id)) {
        return CommandError{ErrorCode::badParameter, "The itemid is not a number"};
    }
    // The owned clips of an account may be asked about after their files are gone.
    std::vector<Clip> const clips = parts.catalogue.findAll({&id, 1}, Catalogue::Presence::ever);
    if (clips.empty()) {
        return CommandError{ErrorCode::noSuchClip, "There is no clip of that number"};
    }
    Clip const& clip = clips.front();
    addSuccess(reply);
    reply.startChild("clip_data");
    addText(reply, "pim_aut_duration_ms", std::to_string(clip.media.duration_ms));
    addText(reply, "pim_aut_fps_real", exactRateText(clip.media.rate));
    reply.endChild();
    return std::nullopt;
}

} // namespace tarn7d
