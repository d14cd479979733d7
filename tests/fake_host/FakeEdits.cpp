#include "tests/fake_host/FakeEdits.h"

#include <algorithm>
#include <cstdio>

#include "host/HostServices.h"
#include "host/files/iFileManager.h"
#include "tests/fake_host/Texts.h"

namespace fake {

namespace {

std::string figure(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.9g", value);
    return text;
}

template <class Enumeration>
std::string number(Enumeration value) {
    return std::to_string(static_cast<long long>(value));
}

std::string flag(bool value) {
    return value ? "true" : "false";
}

bool isMedia(WideString const& path) {
    iFileManager* const files = installedHost().files;
    return !path.isEmpty() && files != nullptr && files->openForRead(path);
}

} // namespace

void CallRecord::note(std::string const& call) {
    Listener listener;
    {
        std::lock_guard const lock(mutex_);
        calls_.push_back(call);
        listener = listener_;
    }
    if (listener) {
        listener(call);
    }
}

void CallRecord::listen(Listener listener) {
    std::lock_guard const lock(mutex_);
    listener_ = std::move(listener);
}

std::vector<std::string> CallRecord::calls() const {
    std::lock_guard const lock(mutex_);
    return calls_;
}

void CallRecord::forget() {
    std::lock_guard const lock(mutex_);
    calls_.clear();
}

struct Edits::Shared {
    std::mutex mutex;
    std::vector<std::pair<Cookie, Zq::Ptr<StoredEdit>>> edits;
};

class Edits::StoredEdit final : public Edit {
public:
    StoredEdit(CallRecord& record, EditState state) : record_(record), state_(std::move(state)) {}

    Cookie getCookie() const override { return read("getCookie", &EditState::cookie); }
    WideString getName() const override {
        return fromUTF8(read("getName", &EditState::logAttributes).find(LogAttribute(LogAttribute::eName)));
    }
    bool isTemporary() const override { return read("isTemporary", &EditState::temporary); }
    void setTemporary(bool temporary) override {
        write("setTemporary " + flag(temporary), &EditState::temporary, temporary);
    }
    LogAttributeMap getLogAttributes() const override {
        return read("getLogAttributes", &EditState::logAttributes);
    }
    void setLogAttributes(LogAttributeMap const& attributes) override {
        write("setLogAttributes", &EditState::logAttributes, attributes);
    }
    void setSourceMedium(MediumRollMedium medium) override {
        write("setSourceMedium " + number(medium), &EditState::sourceMedium, medium);
    }
    void setSourceMediumDuration(double duration_s) override {
        write("setSourceMediumDuration " + figure(duration_s), &EditState::sourceDuration_s, duration_s);
    }
    double getSourceMediumDuration() const override {
        return read("getSourceMediumDuration", &EditState::sourceDuration_s);
    }
    ShotVideoMetadata getVideoMetadata() const override {
        return read("getVideoMetadata", &EditState::video);
    }
    void setVideoMetadata(ShotVideoMetadata const& metadata, bool measured) override {
        write("setVideoMetadata " + flag(measured), &EditState::video, metadata);
        std::lock_guard const lock(mutex_);
        state_.videoMeasured = measured;
    }
    void setFrameBased(bool frameBased) override {
        write("setFrameBased " + flag(frameBased), &EditState::frameBased, frameBased);
    }
    void setTransfer(transfer_type transfer) override {
        write("setTransfer " + number(transfer), &EditState::transfer, transfer);
    }
    void setSequence(std::int32_t kind, bool recording) override {
        write("setSequence " + number(kind) + " " + flag(recording), &EditState::sequenceKind, kind);
        std::lock_guard const lock(mutex_);
        state_.recording = recording;
    }
    void addLabel(EditLabel const& label, bool first) override {
        record_.note("addLabel " + flag(first));
        std::lock_guard const lock(mutex_);
        state_.labels.insert(first ? state_.labels.begin() : state_.labels.end(), label);
    }
    Zq::FrameRate getSourceFrameRate() const override { return read("getSourceFrameRate", &EditState::rate); }
    std::int64_t getBitRate() const override { return read("getBitRate", &EditState::bitRate); }
    std::uint8_t getAudioChannels() const override {
        return read("getAudioChannels", &EditState::audioChannels);
    }
    WideString getPreviewLocation() const override {
        return read("getPreviewLocation", &EditState::previewLocation);
    }
    void setPreviewLocation(WideString const& path) override {
        write("setPreviewLocation " + utf8(path), &EditState::previewLocation, path);
    }
    WideString getMediaLocation() const override {
        return read("getMediaLocation", &EditState::mediaLocation);
    }

    // What the store itself does to an edit is no call on it.
    [[nodiscard]] EditState state() const {
        std::lock_guard const lock(mutex_);
        return state_;
    }
    template <class Value>
    void keep(Value EditState::*member, Value value) {
        std::lock_guard const lock(mutex_);
        state_.*member = std::move(value);
    }

private:
    void handleOpened() noexcept override { count("opened", 1); }
    void handleClosed() noexcept override { count("closed", -1); }
    void count(char const* call, int by) noexcept {
        record_.note(call);
        std::lock_guard const lock(mutex_);
        state_.openings += by;
    }
    template <class Value>
    Value read(char const* call, Value EditState::*member) const {
        record_.note(call);
        std::lock_guard const lock(mutex_);
        return state_.*member;
    }
    template <class Value>
    void write(std::string const& call, Value EditState::*member, Value value) {
        record_.note(call);
        keep(member, std::move(value));
    }

    CallRecord& record_;
    mutable std::mutex mutex_;
    EditState state_;
};

Edits::Edits() : shared_(std::make_unique<Shared>()) {}
Edits::~Edits() = default;

Zq::Ptr<Edit> Edits::makeNewClip(std::uint8_t videoChannels, std::uint8_t audioChannels, double duration_s,
                                 Zq::FrameRate rate, Cookie const& cookie) {
    record.note("make " + number(videoChannels) + " " + number(audioChannels) + " " + figure(duration_s) +
                " " + number(rate));
    std::lock_guard const lock(shared_->mutex);
    auto const taken = [this](Cookie const& wanted) {
        return std::ranges::any_of(shared_->edits, [&](auto const& known) { return known.first == wanted; });
    };
    if (refuseClips_ || taken(cookie)) {
        return {};
    }
    EditState state;
    state.cookie = cookie;
    state.videoChannels = videoChannels;
    state.audioChannels = audioChannels;
    state.duration_s = duration_s;
    state.rate = rate;
    while (state.cookie.isNull() || taken(state.cookie)) {
        ++state.cookie.uuid.bytes[15];
        state.cookie.kind = {'e', 'd', 't'};
    }
    auto const edit = Zq::makeShared<StoredEdit>(record, state);
    shared_->edits.emplace_back(state.cookie, edit);
    return edit;
}

Zq::Ptr<Edit> Edits::open(Cookie const& cookie) {
    record.note("open");
    std::lock_guard const lock(shared_->mutex);
    auto const found =
        std::ranges::find(shared_->edits, cookie, [](auto const& known) { return known.first; });
    return found != shared_->edits.end() ? Zq::Ptr<Edit>(found->second) : Zq::Ptr<Edit>();
}

bool Edits::useMedia(Edit& edit, WideString const& path) {
    record.note("useMedia " + utf8(path));
    auto* const stored = dynamic_cast<StoredEdit*>(&edit);
    if (stored == nullptr || !isMedia(path)) {
        return false;
    }
    stored->keep(&EditState::mediaLocation, path);
    return true;
}

bool Edits::analyse(Edit& edit) {
    record.note("analyse");
    auto* const stored = dynamic_cast<StoredEdit*>(&edit);
    if (stored == nullptr) {
        return false;
    }
    EditState const state = stored->state();
    if (!isMedia(state.mediaLocation.isEmpty() ? state.previewLocation : state.mediaLocation)) {
        return false;
    }
    stored->keep(&EditState::bitRate, std::int64_t{8'000'000});
    return true;
}

EditState Edits::stateOf(Cookie const& cookie) const {
    std::lock_guard const lock(shared_->mutex);
    auto const found =
        std::ranges::find(shared_->edits, cookie, [](auto const& known) { return known.first; });
    return found != shared_->edits.end() ? found->second->state() : EditState();
}

std::vector<Cookie> Edits::cookies() const {
    std::lock_guard const lock(shared_->mutex);
    std::vector<Cookie> all;
    for (auto const& known : shared_->edits) {
        all.push_back(known.first);
    }
    return all;
}

void Edits::remove(Cookie const& cookie) {
    std::lock_guard const lock(shared_->mutex);
    std::erase_if(shared_->edits, [&cookie](auto const& known) { return known.first == cookie; });
}

WideString ExternalIds::find(Cookie const& object, WideString const& kind) {
    record.note("find " + utf8(kind));
    std::lock_guard const lock(mutex_);
    auto const found = std::ranges::find_if(associations_, [&](Association const& known) {
        return known.object == object && known.kind == kind;
    });
    return found != associations_.end() ? found->id : WideString();
}

Cookie ExternalIds::findObject(WideString const& kind, WideString const& id) {
    record.note("findObject " + utf8(kind) + " " + utf8(id));
    std::lock_guard const lock(mutex_);
    auto const found =
        std::find_if(associations_.rbegin(), associations_.rend(),
                     [&](Association const& known) { return known.kind == kind && known.id == id; });
    return found != associations_.rend() ? found->object : Cookie();
}

void ExternalIds::associate(Cookie const& object, WideString const& kind, WideString const& id) {
    record.note("associate " + utf8(kind) + " " + utf8(id));
    std::lock_guard const lock(mutex_);
    std::erase_if(associations_,
                  [&](Association const& known) { return known.object == object && known.kind == kind; });
    associations_.push_back({object, kind, id});
}

void Actions::recordAction(eUIActionType action) {
    record.note("action " + number(action));
}

} // namespace fake
