// An edit as the project keeps it. A value.
#pragma once

#include <string>
#include <vector>

#include "host/attributes/LogAttributeMap.h"
#include "host/edit/Edit.h"

namespace engine {

// One way in which a media file differs from what its edit promises.
struct MediaDifference {
    enum class What { rate, length, size, sound };
    What what = What::rate;
    std::string promised; // in words, as "25", "12.48 s", "1920x1080", "2 channels"
    std::string found;
};

struct EditRecord {
    Cookie cookie;
    bool temporary = false;
    std::uint8_t videoChannels = 0;
    std::uint8_t audioChannels = 0;
    double duration_s = 0; // in the edit's own time: whole frames of the rate
    Zq::FrameRate rate = Zq::FrameRate::unknown;
    LogAttributeMap logAttributes;
    MediumRollMedium sourceMedium = MediumRollMedium::unknown;
    double sourceDuration_s = 0;
    ShotVideoMetadata video;
    bool videoMeasured = false;
    bool frameBased = false;
    transfer_type transfer = transfer_type::frameByFrame;
    std::int32_t sequenceKind = 0;
    bool open = false;
    std::vector<EditLabel> labels;
    std::int64_t bitRate = 0; // bits per second
    WideString previewLocation;
    WideString mediaLocation;                 // empty while the edit plays its preview
    std::vector<MediaDifference> differences; // of the media that it plays, since it was relinked
    struct ExternalId {
        WideString kind;
        WideString id;
    };
    std::vector<ExternalId> externalIds;

    [[nodiscard]] std::int64_t durationInFrames() const noexcept;
    // The text of the name attribute.
    [[nodiscard]] WideString name() const;
};

// The cookie as text, 38 hexadecimal digits, and back; the null cookie for any other text.
[[nodiscard]] std::string cookieText(Cookie const& cookie);
[[nodiscard]] Cookie cookieFromText(std::string_view text);

} // namespace engine
