// Edits, external ids and actions in memory. Every call on an edit is recorded, also when it is opened and
// when it is let go.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "host/edit/EditManager.h"
#include "host/edit/UIStateManager.h"
#include "host/object/ExtIDMgr.h"

namespace fake {

// What is known of one edit.
struct EditState {
    Cookie cookie;
    bool temporary = false;
    std::uint8_t videoChannels = 0;
    std::uint8_t audioChannels = 0;
    double duration_s = 0;
    Zq::FrameRate rate = Zq::FrameRate::unknown;
    LogAttributeMap logAttributes;
    MediumRollMedium sourceMedium = MediumRollMedium::unknown;
    double sourceDuration_s = 0;
    ShotVideoMetadata video;
    bool videoMeasured = false;
    bool frameBased = false;
    transfer_type transfer = static_cast<transfer_type>(-1);
    std::int32_t sequenceKind = -1;
    bool recording = true;
    std::vector<EditLabel> labels;
    std::int64_t bitRate = 0;
    WideString previewLocation;
    WideString mediaLocation;
    int openings = 0; // EditPtrs that lead here now
};

// Tells what happens, to the record and to whoever listens. Thread: any.
class CallRecord {
public:
    using Listener = std::function<void(std::string const& call)>;

    void note(std::string const& call);
    // Called with each call, on its thread, before it takes effect.
    void listen(Listener listener);
    [[nodiscard]] std::vector<std::string> calls() const;
    void forget();

private:
    mutable std::mutex mutex_;
    Listener listener_;
    std::vector<std::string> calls_;
};

// A store whose edits last as long as it does, or as somebody holds them. A file is media when the installed
// host's file layer opens it. Thread: any.
class Edits final : public iEditStore {
public:
    Edits();
    ~Edits() override;

    // The null cookie gets a new identity, one that is taken makes no edit.
    Zq::Ptr<Edit> makeNewClip(std::uint8_t videoChannels, std::uint8_t audioChannels, double duration_s,
                              Zq::FrameRate rate, Cookie const& cookie) override;
    Zq::Ptr<Edit> open(Cookie const& cookie) override;
    bool useMedia(Edit& edit, WideString const& path) override;
    // Finds a bit rate of 8,000,000.
    bool analyse(Edit& edit) override;

    // No clip is made any more.
    void refuseClips() { refuseClips_ = true; }
    // What the edit is now; a default one where there is none.
    [[nodiscard]] EditState stateOf(Cookie const& cookie) const;
    // In the order in which they were made.
    [[nodiscard]] std::vector<Cookie> cookies() const;
    // Ends the edit: its cookie opens nothing any more.
    void remove(Cookie const& cookie);

    // "make 1 2 12.5 3" for the channels, the seconds and the number of the rate; "open", and on an edit
    // "opened", "closed" and each operation's name with its plain values.
    CallRecord record;

private:
    struct Shared;
    class StoredEdit;

    std::unique_ptr<Shared> shared_;
    bool refuseClips_ = false;
};

// Thread: any.
class ExternalIds final : public iExternalIds {
public:
    WideString find(Cookie const& object, WideString const& kind) override;
    Cookie findObject(WideString const& kind, WideString const& id) override;
    void associate(Cookie const& object, WideString const& kind, WideString const& id) override;

    // "find T7", "findObject T7 123", "associate T7 123".
    CallRecord record;

private:
    struct Association {
        Cookie object;
        WideString kind;
        WideString id;
    };
    std::mutex mutex_;
    std::vector<Association> associations_; // the latest last
};

class Actions final : public iActionRecord {
public:
    void recordAction(eUIActionType action) override;

    // "action 34".
    CallRecord record;
};

} // namespace fake
