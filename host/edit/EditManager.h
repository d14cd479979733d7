// The edits of the installed host.
#pragma once

#include "host/edit/EditModifier.h"

// What stands behind the door. Thread: any.
class ZQ_API iEditStore {
public:
    virtual ~iEditStore();
    // Null when no edit can be made.
    [[nodiscard]] virtual Zq::Ptr<Edit> makeNewClip(std::uint8_t videoChannels, std::uint8_t audioChannels,
                                                    double duration_s, Zq::FrameRate rate,
                                                    Cookie const& cookie) = 0;
    // The edit of that identity, temporary ones included; null where there is none.
    [[nodiscard]] virtual Zq::Ptr<Edit> open(Cookie const& cookie) = 0;
    // Has the edit play the file instead of its preview, as one step that can be undone; no cut changes.
    // Looks at the file first: one that no decoder opens is refused, and how it differs from what the edit
    // promises is written to the host's log and kept with the edit. False when the edit plays what it played
    // before.
    virtual bool useMedia(Edit& edit, WideString const& path) = 0;
    // Looks at what the edit plays and records what it finds, such as the bit rate. False when nothing opens.
    virtual bool analyse(Edit& edit) = 0;
};

class ZQ_API EditManager {
public:
    // A new clip. `duration_s` is in the edit's own time; the null cookie has the host choose an identity,
    // and the cookie of an edit that is there makes none. Empty when no edit can be made. Thread: any.
    [[nodiscard]] static EditModifier makeNewClip(std::uint8_t videoChannels, std::uint8_t audioChannels,
                                                  double duration_s, Zq::FrameRate rate,
                                                  Cookie const& cookie);
};
