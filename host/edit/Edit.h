// An edit: a clip of the host's project, as its parts and its repositories change it.
//
// The interface of the installed host's edits. It is reached through an EditPtr, which opens the edit for as
// long as it lives.
#pragma once

#include "host/attributes/LogAttributeMap.h"
#include "host/edit/EditLabel.h"
#include "host/edit/MediumRoll.h"
#include "host/object/Identity.h"
#include "host/object/Ptr.h"
#include "host/picture/ShotVideoMetadata.h"

// How the frames of the source become those of the edit. Other values than this one are the host's.
enum class transfer_type : std::int32_t { frameByFrame = 0 };

// Thread: any; each operation is one step for those of other threads.
class ZQ_API Edit : public virtual iObject {
public:
    ~Edit() override;

    [[nodiscard]] virtual Cookie getCookie() const = 0;
    // The text of the name attribute.
    [[nodiscard]] virtual WideString getName() const = 0;
    // A temporary edit ends with the host, unless something comes to use it.
    [[nodiscard]] virtual bool isTemporary() const = 0;
    virtual void setTemporary(bool temporary) = 0;

    [[nodiscard]] virtual LogAttributeMap getLogAttributes() const = 0;
    // Replaces all of them.
    virtual void setLogAttributes(LogAttributeMap const& attributes) = 0;

    virtual void setSourceMedium(MediumRollMedium medium) = 0;
    // Length of what the source holds, in seconds as its maker tells it, not in whole frames.
    virtual void setSourceMediumDuration(double duration_s) = 0;
    [[nodiscard]] virtual double getSourceMediumDuration() const = 0;
    [[nodiscard]] virtual ShotVideoMetadata getVideoMetadata() const = 0;
    // `measured`: read off the media, not promised by somebody.
    virtual void setVideoMetadata(ShotVideoMetadata const& metadata, bool measured) = 0;
    virtual void setFrameBased(bool frameBased) = 0;
    virtual void setTransfer(transfer_type transfer) = 0;
    // 0: a clip, not a sequence of others. `open`: being recorded still.
    virtual void setSequence(std::int32_t kind, bool open) = 0;
    // `first`: the label goes before those that are there, else behind them.
    virtual void addLabel(EditLabel const& label, bool first) = 0;

    [[nodiscard]] virtual Zq::FrameRate getSourceFrameRate() const = 0;
    // Bits per second of the media as a whole; 0 while nobody has looked.
    [[nodiscard]] virtual std::int64_t getBitRate() const = 0;
    [[nodiscard]] virtual std::uint8_t getAudioChannels() const = 0;

    // What the edit plays while it has no full media: a path of the host's file layer, usually virtual.
    [[nodiscard]] virtual WideString getPreviewLocation() const = 0;
    virtual void setPreviewLocation(WideString const& path) = 0;
    // The full media that it plays; empty while it plays its preview.
    [[nodiscard]] virtual WideString getMediaLocation() const = 0;

protected:
    friend class EditPtr;
    // An EditPtr has begun, or ended, to lead here. What was changed in between is kept by the host when the
    // last one ends, and does not fail then: a failure to keep it is a line in the host's log.
    virtual void handleOpened() noexcept = 0;
    virtual void handleClosed() noexcept = 0;
};
