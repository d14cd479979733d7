// The edits of a project, in its file and in memory.

#include <algorithm>
#include <set>

#include "host/engine/crypto/Digest.h"
#include "host/engine/project/ProjectEdit.h"
#include "host/engine/project/ProjectState.h"
#include "host/text/Unicode.h"

namespace engine {

namespace {

Cookie randomCookie() {
    std::string const uuid = randomHex(std::tuple_size_v<decltype(Zq::UUID::bytes)>);
    Cookie cookie = cookieFromText(uuid + "000000"); // three more bytes, which say nothing here
    auto& bytes = cookie.uuid.bytes;
    bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0f) | 0x40); // a random UUID, RFC 9562
    bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3f) | 0x80);
    return cookie;
}

std::vector<EditRecord::ExternalId> wideIds(std::vector<KeptId> const& ids) {
    std::vector<EditRecord::ExternalId> wide;
    wide.reserve(ids.size());
    for (KeptId const& id : ids) {
        wide.push_back({fromUTF8(std::string_view(id.kind)), fromUTF8(std::string_view(id.id))});
    }
    return wide;
}

} // namespace

ProjectState::Held* ProjectState::find(Cookie const& cookie) {
    auto const held = held_.find(cookie);
    return held != held_.end() ? &held->second : nullptr;
}

std::optional<EditRecord> ProjectState::recordOf(Cookie const& cookie) {
    Held const* const held = find(cookie);
    if (held != nullptr && held->record) {
        return held->record;
    }
    return reading(std::optional<EditRecord>(), [this, &cookie] { return tables_->edits.find(cookie); });
}

std::optional<EditRecord> ProjectState::lookUp(Cookie const& cookie) {
    Held const* const held = find(cookie);
    return held != nullptr && held->record ? held->record : tables_->edits.find(cookie);
}

void ProjectState::forgetIfIdle(HeldEdits::iterator held) {
    if (held->second.opened == 0 && !held->second.record && held->second.ids.empty()) {
        held_.erase(held);
    }
}

std::int64_t ProjectState::store(EditRecord const& record) {
    std::int64_t const number = tables_->edits.save(record);
    if (Held const* const held = find(record.cookie)) {
        for (KeptId const& id : held->ids) {
            tables_->ids.put(record.cookie, id);
        }
    }
    return number;
}

void ProjectState::settle(Cookie const& cookie) {
    if (auto const held = held_.find(cookie); held != held_.end()) {
        held->second.record.reset();
        held->second.stored = false;
        held->second.ids.clear();
        forgetIfIdle(held);
    }
}

void ProjectState::keepChanges(HeldEdits::iterator held) {
    Held& edit = held->second;
    if (edit.record && (edit.stored || !edit.record->temporary)) {
        Result<std::int64_t> const kept = writing([this, &edit] { return store(*edit.record); });
        if (kept) {
            settle(held->first);
            return;
        }
        Log("%s: its changes are not kept: %s", plainName(*edit.record).c_str(), kept.error().c_str());
        if (edit.stored) {
            edit.record.reset(); // what the file has stands
            edit.stored = false;
        } else {
            edit.record->temporary = true;
        }
    }
    forgetIfIdle(held);
}

Zq::Ptr<Edit> ProjectState::makeNewClip(EditRecord record) {
    if (record.cookie.isNull()) {
        record.cookie = randomCookie();
    }
    record.temporary = true;
    Zq::Ptr<Edit> edit = Zq::makeShared<ProjectEdit>(shared_from_this(), record.cookie);
    std::lock_guard const lock(mutex_);
    Held const* const known = find(record.cookie);
    bool const isTaken = (known != nullptr && known->record) || reading(true, [this, &record] {
                             return tables_->edits.numberOf(record.cookie).has_value();
                         });
    if (edit == nullptr || isTaken) {
        return {};
    }
    Held& held = held_[record.cookie];
    held.record = std::move(record);
    held.stored = false;
    return edit;
}

Zq::Ptr<Edit> ProjectState::openEdit(Cookie const& cookie) {
    {
        std::lock_guard const lock(mutex_);
        Held const* const held = find(cookie);
        bool const there = (held != nullptr && held->record) || reading(false, [this, &cookie] {
                               return tables_->edits.numberOf(cookie).has_value();
                           });
        if (!there) {
            return {};
        }
    }
    return Zq::makeShared<ProjectEdit>(shared_from_this(), cookie);
}

std::vector<EditRecord> ProjectState::edits() {
    std::lock_guard const lock(mutex_);
    return reading(std::vector<EditRecord>(), [this] {
        std::vector<EditRecord> all = tables_->edits.all();
        for (EditRecord& record : all) {
            if (Held const* const held = find(record.cookie); held != nullptr && held->record) {
                record = *held->record;
            }
            record.externalIds = wideIds(tables_->ids.of(record.cookie));
        }
        return all;
    });
}

std::optional<EditRecord> ProjectState::edit(Cookie const& cookie) {
    std::lock_guard const lock(mutex_);
    std::optional<EditRecord> record = recordOf(cookie);
    if (record) {
        Held const* const held = find(cookie);
        record->externalIds = wideIds(
            held != nullptr && !held->ids.empty()
                ? held->ids
                : reading(std::vector<KeptId>(), [this, &cookie] { return tables_->ids.of(cookie); }));
    }
    return record;
}

std::map<Cookie, EditRecord> ProjectState::editsOf(Sequence const& sequence) {
    std::lock_guard const lock(mutex_);
    std::map<Cookie, EditRecord> edits;
    std::set<Cookie> stored;
    for (Placement const& placement : sequence.placements) {
        Held const* const held = find(placement.edit);
        if (held != nullptr && held->record) {
            edits.try_emplace(placement.edit, *held->record);
        } else {
            stored.insert(placement.edit);
        }
    }
    return reading(edits, [this, &edits, &stored] {
        for (EditRecord& record : tables_->edits.find(stored)) {
            edits.emplace(record.cookie, std::move(record));
        }
        for (auto& [cookie, record] : edits) {
            Held const* const held = find(cookie);
            record.externalIds =
                wideIds(held != nullptr && !held->ids.empty() ? held->ids : tables_->ids.of(cookie));
        }
        return std::move(edits);
    });
}

void ProjectState::handleOpened(Cookie const& cookie) {
    std::lock_guard const lock(mutex_);
    if (tables_ != nullptr) {
        ++held_[cookie].opened;
    }
}

void ProjectState::handleClosed(Cookie const& cookie) {
    Changing const lock(*this);
    auto const held = held_.find(cookie);
    if (held != held_.end() && held->second.opened > 0 && --held->second.opened == 0) {
        keepChanges(held);
    }
}

void ProjectState::change(Cookie const& cookie, std::function<void(EditRecord&)> const& change) {
    Changing const lock(*this);
    std::optional<EditRecord> record = recordOf(cookie);
    if (!record) {
        return;
    }
    change(*record);
    auto const held = held_.try_emplace(cookie).first;
    held->second.stored = held->second.record ? held->second.stored : true;
    held->second.record = std::move(record);
    if (held->second.opened == 0) {
        keepChanges(held);
    }
}

void ProjectState::setTemporary(Cookie const& cookie, bool temporary) {
    Changing const lock(*this);
    auto const held = held_.find(cookie);
    if (held == held_.end() || !held->second.record || held->second.stored) {
        if (std::optional<EditRecord> const record = temporary ? recordOf(cookie) : std::nullopt) {
            Log("%s stays in the project: it was kept before", plainName(*record).c_str());
        }
        return;
    }
    held->second.record->temporary = temporary;
    if (held->second.opened == 0) {
        keepChanges(held);
    }
}

} // namespace engine
