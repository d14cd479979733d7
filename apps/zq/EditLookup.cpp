#include "apps/zq/EditLookup.h"

#include <algorithm>

#include "apps/zq/Reason.h"
#include "apps/zq/Text.h"

namespace zq {

namespace {

// Cookies are told from clips' numbers by their length.
constexpr std::size_t cookieDigits = 38;

RemoteAsset bareAsset(std::string const& id) {
    RemoteAsset asset;
    asset.id = wide(id);
    return asset;
}

} // namespace

EditModifier openAsset(Session& session, RemoteAsset const& asset) {
    ServiceWatch const watch = session.watch();
    EditModifier edit = session.repository().openEdit(asset, iMediaFileRepository::eOpenNormally);
    if (!edit) {
        std::optional<std::string> const failure = watch.failure();
        throw ReasonedError(failure ? reasonOf(watch) : Reason::noEdit,
                            "no edit could be made of clip " + utf8(asset.id) + ": " +
                                failure.value_or("the service tells too little of it"));
    }
    return edit;
}

EditModifier openClip(Session& session, std::string const& id) {
    // A clip that the project has needs no service.
    RemoteAsset const bare = bareAsset(id);
    bool const isLocal = !session.repository().findLocalItem(bare).isNull();
    return openAsset(session, isLocal ? bare : session.knownAsset(id));
}

engine::EditRecord findEdit(Session& session, std::string const& text) {
    bool const isCookie = text.size() == cookieDigits;
    Cookie const cookie =
        isCookie ? engine::cookieFromText(text) : session.repository().findLocalItem(bareAsset(text));
    std::optional<engine::EditRecord> record;
    if (!cookie.isNull()) {
        record = session.engine().project().edit(cookie);
    }
    if (!record) {
        throw CommandError(isCookie
                               ? "the project has no edit " + text
                               : "the project has no edit of clip " + text + "; \"edits\" lists what it has");
    }
    return *std::move(record);
}

engine::EditRecord recordOf(Session& session, EditModifier const& edit) {
    std::optional<engine::EditRecord> record = session.engine().project().edit(edit->getCookie());
    if (!record) {
        throw CommandError("the edit is no longer in the project");
    }
    return *std::move(record);
}

std::string clipIdOf(engine::EditRecord const& edit, WideString const& shortName) {
    auto const found = std::ranges::find(edit.externalIds, shortName, &engine::EditRecord::ExternalId::kind);
    return found != edit.externalIds.end() ? utf8(found->id) : std::string();
}

} // namespace zq
