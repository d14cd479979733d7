// What a media file is against what an edit promises. Thread: any.
#pragma once

#include <vector>

#include "host/engine/media/MediaFacts.h"
#include "host/engine/project/EditRecord.h"

namespace engine {

// Rate, length, size and sound, as far as the edit promises them. A length may differ by one frame. That a
// picture is missing is one difference, of size.
[[nodiscard]] std::vector<MediaDifference> differencesBetween(EditRecord const& promised,
                                                              MediaFacts const& found);

// How many frames of the edit's rate the file has.
[[nodiscard]] std::int64_t framesOf(EditRecord const& edit, MediaFacts const& found);

// False for a file of sound alone.
[[nodiscard]] bool hasPicture(MediaFacts const& found) noexcept;

// Length of the picture, or of the whole where the file does not tell it; in seconds.
[[nodiscard]] double lengthOf(MediaFacts const& found) noexcept;

// The word for a kind of difference, as "length".
[[nodiscard]] char const* wordFor(MediaDifference::What what) noexcept;

} // namespace engine
