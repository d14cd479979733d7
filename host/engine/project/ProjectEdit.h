// An edit of the project, as the contract hands it out. It holds no state: what is known of the edit lies
// with the project, and all that lead to one edit see the same.
#pragma once

#include "host/edit/Edit.h"
#include "host/engine/project/ProjectState.h"

namespace engine {

class ProjectEdit final : public Edit {
public:
    ProjectEdit(std::shared_ptr<ProjectState> project, Cookie const& cookie)
        : project_(std::move(project)), cookie_(cookie) {}

    Cookie getCookie() const override { return cookie_; }
    WideString getName() const override;
    bool isTemporary() const override;
    void setTemporary(bool temporary) override;

    LogAttributeMap getLogAttributes() const override;
    void setLogAttributes(LogAttributeMap const& attributes) override;

    void setSourceMedium(MediumRollMedium medium) override;
    void setSourceMediumDuration(double duration_s) override;
    double getSourceMediumDuration() const override;
    ShotVideoMetadata getVideoMetadata() const override;
    void setVideoMetadata(ShotVideoMetadata const& metadata, bool measured) override;
    void setFrameBased(bool frameBased) override;
    void setTransfer(transfer_type transfer) override;
    void setSequence(std::int32_t kind, bool open) override;
    void addLabel(EditLabel const& label, bool first) override;

    Zq::FrameRate getSourceFrameRate() const override;
    std::int64_t getBitRate() const override;
    std::uint8_t getAudioChannels() const override;

    WideString getPreviewLocation() const override;
    void setPreviewLocation(WideString const& path) override;
    WideString getMediaLocation() const override;

protected:
    void handleOpened() noexcept override;
    void handleClosed() noexcept override;

private:
    [[nodiscard]] EditRecord record() const;
    template <class Change>
    void change(Change const& change);

    std::shared_ptr<ProjectState> const project_;
    Cookie const cookie_;
};

} // namespace engine
