// The commands of the service, one handler each, and the table of them.
#include <algorithm>
#include <limits>

#include "apps/tarn7d/Protocol.h"
#include "apps/tarn7d/Text.h"
#include "host/text/Unicode.h"

namespace tarn7d {

namespace {

constexpr std::int64_t usualPageSize = 50;
constexpr std::int64_t largestPageSize = 1000;

void addText(JSON::Builder& builder, char const* key, std::string_view text) {
    builder.add(key, fromUTF8(text), true);
}

std::int32_t toInt32(std::int64_t value) {
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(value, std::numeric_limits<std::int32_t>::min(),
                                                              std::numeric_limits<std::int32_t>::max()));
}

// The members of a good reply that all commands share.
void addSuccess(JSON::Builder& reply) {
    reply.add("e", false);
    addText(reply, "s", "");
}

std::optional<CommandError> login(ServiceParts& parts, CommandRequest const& request, JSON::Builder& reply) {
    std::string_view const name = request.parameters.getStringView("username");
    std::string_view const password = request.parameters.getStringView("password");
    if (auto const wait = parts.throttle.waitFor(name); wait.count() > 0) {
        return CommandError{ErrorCode::tooManyAttempts,
                            "Too many attempts. Try again in " + std::to_string(wait.count()) + " s"};
    }
    Accounts::CheckResult const result = parts.accounts.check(name, password);
    if (result.check != Accounts::Check::good) {
        parts.throttle.noteFailure(name);
        return result.check == Accounts::Check::unknownName
                   ? CommandError{ErrorCode::unknownUser, "Failed to find user"}
                   : CommandError{ErrorCode::wrongPassword, "Wrong password"};
    }
    parts.throttle.noteSuccess(name);
    SessionKey const session = parts.sessions.open(result.account.id);
    addSuccess(reply);
    reply.add("cx", session.context);
    reply.add("cm", session.marker);
    return std::nullopt;
}

std::optional<CommandError> logout(ServiceParts& parts, CommandRequest const& request, JSON::Builder& reply) {
    parts.sessions.close(request.session);
    addSuccess(reply);
    return std::nullopt;
}

void addClip(JSON::Builder& reply, Clip const& clip) {
    reply.startChild(nullptr);
    reply.add("id", toInt32(clip.id));
    addText(reply, "n", clip.description.title);
    addText(reply, "pr", priceText(clip.description.price_cents));
    addText(reply, "coda", clip.media.sound);
    addText(reply, "fps_real", exactRateText(clip.media.rate));
    addText(reply, "fps", coarseRateText(clip.media.rate));
    addText(reply, "dur", std::to_string(clip.media.duration_ms));
    reply.add("vs", static_cast<std::int32_t>(clip.media.standard));
    reply.add("ox", static_cast<std::int32_t>(clip.media.width));
    reply.add("oy", static_cast<std::int32_t>(clip.media.height));
    addText(reply, "ar", clip.media.aspect);
    addText(reply, "codg", clip.media.codec);
    reply.endChild();
}

std::optional<CommandError> search(ServiceParts& parts, CommandRequest const& request, JSON::Builder& reply) {
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
        addClip(reply, clip);
    }
    reply.endArray();
    addText(reply, "icon_base", parts.iconBase);
    addText(reply, "flv_base", parts.previewBase);
    reply.add("tot_nbr_rows", toInt32(found.total));
    return std::nullopt;
}

std::optional<CommandError> getClipData(ServiceParts& parts, CommandRequest const& request,
                                        JSON::Builder& reply) {
    std::int64_t id = 0;
    if (!parseInteger(request.parameters.getStringView("itemid"), id)) {
        return CommandError{ErrorCode::badParameter, "The itemid is not a number"};
    }
    std::optional<Clip> const clip = parts.catalogue.find(id);
    if (!clip) {
        return CommandError{ErrorCode::noSuchClip, "There is no clip of that number"};
    }
    addSuccess(reply);
    reply.startChild("clip_data");
    addText(reply, "pim_aut_duration_ms", std::to_string(clip->media.duration_ms));
    addText(reply, "pim_aut_fps_real", exactRateText(clip->media.rate));
    reply.endChild();
    return std::nullopt;
}

using Needs = CommandRow::Needs;

constexpr CommandRow commands[] = {
    {"login", login, Needs::nothing},
    {"logout", logout, Needs::nothing},
    {"search", search, Needs::nothing},
    {"get_clip_data", getClipData, Needs::nothing},
    {"get_cart_formatted", nullptr, Needs::account},
    {"modify_active_cart", nullptr, Needs::account},
    {"purchase_using_cash", nullptr, Needs::account},
    {"purchase_using_credits", nullptr, Needs::account},
    {"get_downloads_formatted", nullptr, Needs::account},
    {"download", nullptr, Needs::account},
};

} // namespace

std::span<CommandRow const> commandTable() {
    return commands;
}

} // namespace tarn7d
