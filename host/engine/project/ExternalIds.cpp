// The external ids of a project's objects, in its file and in memory.

#include <algorithm>

#include "host/engine/project/ProjectState.h"
#include "host/text/Unicode.h"

namespace engine {

namespace {

std::string kept(WideString const& text) {
    return std::string(toUTF8(text).view());
}

KeptId const* ofKind(std::vector<KeptId> const& ids, std::string const& kind) {
    auto const found = std::ranges::find(ids, kind, &KeptId::kind);
    return found != ids.end() ? &*found : nullptr;
}

} // namespace

std::int64_t ProjectState::nextSerial() {
    lastSerial_ =
        1 + std::max(lastSerial_, reading(std::int64_t{0}, [this] { return tables_->ids.lastSerial(); }));
    return lastSerial_;
}

WideString ProjectState::findId(Cookie const& object, WideString const& kind) {
    std::string const wanted = kept(kind);
    std::lock_guard const lock(mutex_);
    if (Held const* const held = find(object)) {
        if (KeptId const* const id = ofKind(held->ids, wanted)) {
            return fromUTF8(std::string_view(id->id));
        }
    }
    return reading(WideString(), [this, &object, &wanted] {
        std::vector<KeptId> const ids = tables_->ids.of(object);
        KeptId const* const id = ofKind(ids, wanted);
        return id != nullptr ? fromUTF8(std::string_view(id->id)) : WideString();
    });
}

Cookie ProjectState::findObject(WideString const& kind, WideString const& id) {
    std::string const wantedKind = kept(kind);
    std::string const wantedId = kept(id);
    std::lock_guard const lock(mutex_);
    auto latest = reading(std::optional<ExternalIdTable::Owner>(), [&] {
                      return tables_->ids.findOwner(wantedKind, wantedId);
                  }).value_or(ExternalIdTable::Owner());
    for (auto const& [object, held] : held_) {
        KeptId const* const own = ofKind(held.ids, wantedKind);
        if (own != nullptr && own->id == wantedId && own->serial > latest.serial) {
            latest = {object, own->serial};
        }
    }
    return latest.object;
}

void ProjectState::associate(Cookie const& object, WideString const& kind, WideString const& id) {
    Changing const lock(*this);
    if (object.isNull() || tables_ == nullptr) {
        return;
    }
    KeptId fresh{kept(kind), kept(id), nextSerial()};
    bool const inFile =
        reading(false, [this, &object] { return tables_->edits.numberOf(object).has_value(); });
    if (inFile) {
        Result<bool> const written = writing([this, &object, &fresh] {
            tables_->ids.put(object, fresh);
            return true;
        });
        if (!written) {
            Log("The id %s of %s is not kept: %s", fresh.id.c_str(), fresh.kind.c_str(),
                written.error().c_str());
        }
        return;
    }
    std::vector<KeptId>& ids = held_[object].ids;
    std::erase_if(ids, [&fresh](KeptId const& old) { return old.kind == fresh.kind; });
    ids.push_back(std::move(fresh));
}

} // namespace engine
