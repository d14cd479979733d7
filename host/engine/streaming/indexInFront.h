// Where a media file keeps its index.
#pragma once

#include <string_view>

namespace engine {

// True when the first bytes of a file show an ISO base media file (ISO/IEC 14496-12) whose index, the box
// "moov", stands before its media, "mdat". Thread: any.
[[nodiscard]] bool indexStandsInFront(std::string_view firstBytes) noexcept;

} // namespace engine
