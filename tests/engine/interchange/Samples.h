// Sequences for the tests of all formats.
#pragma once

#include "host/engine/interchange/Export.h"

namespace test {

inline engine::ExportClip ownedClip() {
    engine::ExportClip clip;
    clip.placement.edit.uuid.bytes[0] = 1;
    clip.placement.in = 10;
    clip.placement.out = 40;
    clip.placement.start = 0;
    clip.placement.length = 30;
    clip.name = "Sunset";
    clip.kind = "T7";
    clip.id = "12";
    clip.source = "Tarn7";
    clip.previewUrl = "https://www.tarn7.example/previews/000000012.mov?a=1&b=2";
    clip.mediaPath = "/media/Tarn7/12 a.mov";
    clip.rate = Zq::FrameRate::f25;
    clip.duration = 100;
    clip.width = 640;
    clip.height = 360;
    clip.audioChannels = 2;
    return clip;
}

inline engine::ExportClip previewClip() {
    engine::ExportClip clip = ownedClip();
    clip.placement.edit.uuid.bytes[0] = 2;
    clip.placement.in = 0;
    clip.placement.out = 25;
    clip.placement.start = 30;
    clip.placement.length = 25;
    clip.name = "Waves <&> \"foam\"";
    clip.id = "7";
    clip.previewUrl = "https://www.tarn7.example/previews/000000007.mov";
    clip.mediaPath.clear();
    clip.audioChannels = 0;
    return clip;
}

inline engine::ExportSequence sampleSequence() {
    engine::ExportSequence sequence;
    sequence.name = "First cut";
    sequence.rate = Zq::FrameRate::f25;
    sequence.length = 55;
    sequence.clips = {ownedClip(), previewClip()};
    return sequence;
}

} // namespace test
