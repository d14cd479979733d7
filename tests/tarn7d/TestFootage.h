// Small real footage files for the tests, made once and kept in the build folder.
#pragma once

#include <filesystem>

namespace test {

enum class Footage {
    plain,      // 320x240, 25 frames a second, 1 s, MPEG-4, no sound
    interlaced, // 720x480, 30000/1001, DV with sound
    large,      // 1920x1080, 24000/1001, H.264, with sound
    fast,       // 1280x720, 50 frames a second, ProRes
};

// A copy of the footage under that path; folders on the way are made.
void putFootage(Footage footage, std::filesystem::path const& target);

} // namespace test
